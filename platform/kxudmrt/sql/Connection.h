// One connection to a database, the statements that are prepared on it, and transactions.
//
// Layer: sql, the lowest of the runtime; knows nothing of tables. What a dialect needs stands in
// sql/<backend>/ (open with sql/sqlite/Connection.h), the SQL itself in store/Statements.h.
//
// A connection belongs to one thread at a time and must not be carried over a fork. It owns its
// prepared statements; a Statement borrows one and gives it back reset, so it must not outlive the
// connection.
//
//     auto connection = sql::sqlite::Open({.file = "/data/N.ldb", .create = true});
//     constexpr sql::NamedStatement FIND{"find", "SELECT id FROM entity WHERE uid = ?1"};
//     sql::Transaction transaction(*connection, sql::Transaction::Mode::Write);
//     sql::Statement find(*connection, FIND);
//     find.BindAll(uid);
//     if (find.Step()) use(find.Int64(0));
//     transaction.Commit();
#ifndef KXUDMRT_SQL_CONNECTION_H
#define KXUDMRT_SQL_CONNECTION_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

#include "sql/Error.h"

namespace kxudm::sql {

// A statement with its name, of static lifetime: the address is the key of the statement cache.
struct NamedStatement {
    const char* name;
    const char* text;
};

// Bytes that are to be bound as BLOB.
struct Blob {
    std::string_view bytes;
};

// A value that is bound to SQL made at run time.
using Value = std::variant<std::monostate, std::int64_t, double, std::string>;

enum class ColumnKind { Null, Integer, Real, Text, Blob };

// A compiled statement as a backend implements it. Parameters count from 1, columns from 0.
class Cursor {
  public:
    virtual ~Cursor() = default;
    virtual void BindNull(int parameter) = 0;
    virtual void BindInt64(int parameter, std::int64_t value) = 0;
    virtual void BindDouble(int parameter, double value) = 0;
    // The bytes of a text or BLOB are not copied: they must live until the last Step.
    virtual void BindText(int parameter, std::string_view value) = 0;
    virtual void BindBlob(int parameter, std::string_view value) = 0;
    // True: a row is there. False: the statement is done.
    virtual bool Step() = 0;
    // Ends the statement and forgets the bound values; never fails.
    virtual void Reset() noexcept = 0;
    [[nodiscard]] virtual ColumnKind Kind(int column) const = 0;
    [[nodiscard]] virtual std::int64_t Int64(int column) const = 0;
    [[nodiscard]] virtual double Double(int column) const = 0;
    // Views into the row, valid until the next Step. NULL gives an empty view.
    [[nodiscard]] virtual std::string_view Text(int column) const = 0;
    [[nodiscard]] virtual std::string_view Bytes(int column) const = 0;
};

class Transaction;

class Connection {
  public:
    virtual ~Connection() = default;
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    // The file of the database, for messages.
    [[nodiscard]] virtual const std::string& File() const = 0;

    // Runs one or more statements without parameters and rows (schema, settings).
    virtual void Execute(const std::string& script) = 0;

    // A compiled statement out of the cache, compiled first if needed; given back by Release.
    // Acquired again while in use, a further one is compiled.
    [[nodiscard]] virtual std::unique_ptr<Cursor> Acquire(const NamedStatement& statement) = 0;
    virtual void Release(const NamedStatement& statement,
                         std::unique_ptr<Cursor> cursor) noexcept = 0;
    // The same for SQL that is made at run time; the newest few texts are kept.
    [[nodiscard]] virtual std::unique_ptr<Cursor> Acquire(const std::string& text) = 0;
    virtual void Release(const std::string& text, std::unique_ptr<Cursor> cursor) noexcept = 0;

    [[nodiscard]] virtual std::int64_t LastInsertId() const = 0;
    // Rows changed by the last INSERT, UPDATE or DELETE.
    [[nodiscard]] virtual std::int64_t Changes() const = 0;
    // Rows changed since the connection was opened.
    [[nodiscard]] virtual std::int64_t TotalChanges() const = 0;
    [[nodiscard]] virtual bool InTransaction() const = 0;
    // A number that changes whenever another connection has committed something. Cheap.
    [[nodiscard]] virtual std::int64_t DataVersion() = 0;
    // Changes whenever a statement of this connection came upon a commit, its own ones too. Asks
    // nothing of the file: it tells what the last statement saw.
    [[nodiscard]] virtual std::int64_t SeenVersion() const = 0;
    [[nodiscard]] virtual std::int64_t SchemaVersion() = 0;
    virtual void SetSchemaVersion(std::int64_t version) = 0;
    // What the database itself finds wrong with its file, one text each; looks at all of it. Empty
    // where a server takes care of that.
    [[nodiscard]] virtual std::vector<std::string> IntegrityProblems() { return {}; }
    // Throws Error of kind ReadOnly if this connection can't write at all.
    virtual void RequireWritable() {}
    // Whether a statement waits for the locks of others, up to the busy timeout, as it does at
    // first; else it fails at once with the kind Busy.
    virtual void SetPatient(bool /*patient*/) {}
    // Makes what was committed survive a loss of power. Not inside of a transaction.
    virtual void Flush() = 0;

  protected:
    Connection() = default;

  private:
    friend class Transaction;
    virtual void Begin(bool write, bool durable) = 0;
    virtual void CommitOutermost() = 0;
    virtual void RollbackOutermost() noexcept = 0;

    int depth_ = 0;
    bool writing_ = false;
    bool durable_ = false;
    bool flushWanted_ = false;
    bool doomed_ = false;
};

// A borrowed prepared statement. Copying is impossible, it lives on the stack around one use.
class Statement {
  public:
    Statement(Connection& connection, const NamedStatement& named);
    // SQL made at run time. The connection keeps the compiled form of the newest few.
    Statement(Connection& connection, std::string text);
    ~Statement();
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    void BindNull(int parameter) { cursor_->BindNull(parameter); }
    void Bind(int parameter, std::nullptr_t) { cursor_->BindNull(parameter); }
    void Bind(int parameter, double value) { cursor_->BindDouble(parameter, value); }
    // Texts and BLOBs are not copied and must live until the last Step; so no temporary string.
    void Bind(int parameter, std::string_view value) { cursor_->BindText(parameter, value); }
    void Bind(int parameter, const char* value) { cursor_->BindText(parameter, value); }
    void Bind(int parameter, const std::string& value) { cursor_->BindText(parameter, value); }
    void Bind(int parameter, std::string&& value) = delete;
    void Bind(int parameter, Blob value) { cursor_->BindBlob(parameter, value.bytes); }
    void Bind(int parameter, const Value& value);
    void Bind(int parameter, Value&& value) = delete;
    template <typename T>
    requires std::is_integral_v<T> || std::is_enum_v<T>
    void Bind(int parameter, T value) {
        cursor_->BindInt64(parameter, static_cast<std::int64_t>(value));
    }
    template <typename T>
    void Bind(int parameter, const std::optional<T>& value) {
        value ? Bind(parameter, *value) : BindNull(parameter);
    }
    // Binds parameters 1, 2, ... in this order.
    template <typename... T>
    void BindAll(const T&... values) {
        int parameter = 0;
        (Bind(++parameter, values), ...);
    }

    // True: a row is there. False: done; a further Step would start anew.
    bool Step() { return cursor_->Step(); }
    // Runs a statement that gives no rows, and makes it ready for the next values.
    void Run();
    void Reset() noexcept { cursor_->Reset(); }

    [[nodiscard]] ColumnKind Kind(int column) const { return cursor_->Kind(column); }
    [[nodiscard]] bool IsNull(int column) const { return Kind(column) == ColumnKind::Null; }
    [[nodiscard]] std::int64_t Int64(int column) const { return cursor_->Int64(column); }
    [[nodiscard]] int Int(int column) const { return static_cast<int>(cursor_->Int64(column)); }
    [[nodiscard]] double Double(int column) const { return cursor_->Double(column); }
    [[nodiscard]] std::string_view Text(int column) const { return cursor_->Text(column); }
    [[nodiscard]] std::string_view Bytes(int column) const { return cursor_->Bytes(column); }
    [[nodiscard]] std::string String(int column) const { return std::string(Text(column)); }

  private:
    Connection& connection_;
    const NamedStatement* named_ = nullptr;
    std::string text_;
    std::unique_ptr<Cursor> cursor_;
};

// A scope of one transaction. Without Commit the destructor rolls back.
//
// Scopes nest: an inner one joins the outer, and only the outermost commits. An inner scope that
// ends without Commit after having changed rows dooms the outer one, whose Commit then throws and
// rolls back: half an operation is never committed. One that failed before it changed anything does
// no harm.
class Transaction {
  public:
    // Write takes the write lock at once and waits for it up to the busy timeout.
    enum class Mode { Read, Write };
    // Normal: survives the death of the process. Full: survives a loss of power, too. A Full scope
    // inside of a Normal one makes the outermost commit Full.
    enum class Durability { Normal, Full };

    explicit Transaction(Connection& connection,
                         Mode mode = Mode::Write,
                         Durability durability = Durability::Normal);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;

    // Ends the scope. A failure leaves everything rolled back.
    void Commit();

  private:
    void Leave() noexcept;

    Connection& connection_;
    std::int64_t changesBefore_ = 0;
    bool outermost_ = false;
    bool open_ = true;
};

}  // namespace kxudm::sql

#endif
