#include "sql/sqlite/Connection.h"

#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <optional>
#include <thread>
#include <unordered_map>
#include <utility>
#include <vector>

#include "core/HeldFiles.h"
#include "sql/sqlite/Cursor.h"
#include "sql/sqlite/Errors.h"
#include "sql/sqlite/Functions.h"
#include "sql/sqlite/Tokenizer.h"

namespace kxudm::sql::sqlite {
namespace {

constexpr std::size_t KEPT_TEXTS = 32;

constexpr NamedStatement BEGIN_READ{"begin reading", "BEGIN"};
constexpr NamedStatement BEGIN_WRITE{"begin writing", "BEGIN IMMEDIATE"};
constexpr NamedStatement COMMIT{"commit", "COMMIT"};
constexpr NamedStatement DATA_VERSION{"data version", "PRAGMA data_version"};
constexpr NamedStatement INTEGRITY{"integrity check", "PRAGMA integrity_check"};
constexpr NamedStatement USER_VERSION{"schema version", "PRAGMA user_version"};

// By what a change of a file shows.
struct FileState {
    std::uint64_t file = 0;
    std::int64_t size = -1;  // -1: there is none
    std::int64_t seconds = 0;
    std::int64_t nanoseconds = 0;
    bool operator==(const FileState&) const = default;
};

FileState StateOf(const std::string& path) {
    struct stat state {};
    if (::stat(path.c_str(), &state) != 0) {
        return {};
    }
    return {state.st_ino, state.st_size, state.st_mtim.tv_sec, state.st_mtim.tv_nsec};
}

std::string FolderOf(const std::string& file) {
    const std::size_t slash = file.rfind('/');
    return slash == std::string::npos ? "." : file.substr(0, slash + 1);
}

// SQLite takes options only from a URI.
std::string ImmutableUri(const std::string& file) {
    std::string uri = "file:";
    for (const char letter : file) {
        if (letter == '%' || letter == '?' || letter == '#') {
            char escape[4];
            std::snprintf(escape, sizeof escape, "%%%02X", static_cast<unsigned char>(letter));
            uri += escape;
        } else {
            uri += letter;
        }
    }
    return uri + "?immutable=1";
}

class Connection final : public sql::Connection {
  public:
    explicit Connection(const OpenOptions& options);
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection() override;

    const std::string& File() const override { return place_.file; }
    void Execute(const std::string& script) override;
    std::unique_ptr<sql::Cursor> Acquire(const NamedStatement& statement) override;
    void Release(const NamedStatement& statement,
                 std::unique_ptr<sql::Cursor> cursor) noexcept override;
    std::unique_ptr<sql::Cursor> Acquire(const std::string& text) override;
    void Release(const std::string& text, std::unique_ptr<sql::Cursor> cursor) noexcept override;
    std::int64_t LastInsertId() const override { return sqlite3_last_insert_rowid(database_); }
    std::int64_t Changes() const override { return sqlite3_changes64(database_); }
    std::int64_t TotalChanges() const override { return sqlite3_total_changes64(database_); }
    bool InTransaction() const override { return sqlite3_get_autocommit(database_) == 0; }
    std::int64_t DataVersion() override;
    std::int64_t SeenVersion() const override;
    std::int64_t SchemaVersion() override { return Number(USER_VERSION); }
    void SetSchemaVersion(std::int64_t version) override;
    std::vector<std::string> IntegrityProblems() override;
    void SetPatient(bool patient) override;
    void Flush() override;
    void RequireWritable() override;

  private:
    void Begin(bool write, bool durable) override;
    void CommitOutermost() override;
    void RollbackOutermost() noexcept override;

    void Prepare();
    void Close() noexcept;
    void OpenFile();
    void CheckApplication();
    void SetUp();
    [[nodiscard]] bool IsWhereNobodyWrites() const;
    [[nodiscard]] FileState State() const;
    void RequireUntouched() const;
    void SwitchToWriteAheadLog();
    void BackToNormal() noexcept;
    void RequireFileInPlace();
    std::int64_t Number(const NamedStatement& statement);
    std::int64_t Number(const char* text);
    [[noreturn]] void Fail(int code, const char* doing) const;

    // Constant after construction
    const OpenOptions options_;
    const Place place_;
    sqlite3* database_ = nullptr;
    std::optional<core::HeldFiles> held_;  // as long as the database is open
    std::optional<FileState> frozen_;      // of a file that is read without the log and its locks

    // Compiled statements that nobody uses just now
    std::unordered_map<const NamedStatement*, std::vector<std::unique_ptr<sql::Cursor>>> named_;
    std::vector<std::pair<std::string, std::unique_ptr<sql::Cursor>>> texts_;  // oldest first
    bool full_ = false;
    std::int64_t dataVersion_ = -1;       // as it was when it was asked last
    std::int64_t versionWhenAsked_ = -1;  // what was seen then, or as of the commits since
};

Connection::Connection(const OpenOptions& options)
    : options_(options), place_{options.what, options.file, {}} {
    try {
        try {
            Prepare();
        } catch (const Error& error) {
            const bool place =
                error.Kind() == ErrorKind::CannotOpen || error.Kind() == ErrorKind::ReadOnly;
            if (!place || !IsWhereNobodyWrites()) {
                throw;
            }
            Close();
            frozen_ = State();
            Prepare();
        }
    } catch (...) {
        Close();
        throw;
    }
}

Connection::~Connection() {
    Close();
}

void Connection::Close() noexcept {
    named_.clear();
    texts_.clear();
    sqlite3_close(database_);
    database_ = nullptr;
    held_.reset();
}

void Connection::Prepare() {
    OpenFile();
    CheckApplication();
    SetUp();
    // Reading makes the log and its index, where they were not there.
    static_cast<void>(Number(USER_VERSION));
    held_.emplace(std::vector{options_.file, options_.file + "-wal", options_.file + "-shm"});
}

// A log can't be made there, and there is none that would have to be read.
bool Connection::IsWhereNobodyWrites() const {
    return options_.vfs.empty() && StateOf(options_.file).size > 0 &&
           StateOf(options_.file + "-wal").size <= 0 &&
           ::access(FolderOf(options_.file).c_str(), W_OK) != 0;
}

FileState Connection::State() const {
    return StateOf(options_.file);
}

// The database doesn't look for itself where it can't lock.
void Connection::RequireUntouched() const {
    if (frozen_ && (State() != *frozen_ || StateOf(options_.file + "-wal").size > 0)) {
        throw Error(ErrorKind::ReadOnly,
                    place_.what + " '" + place_.file +
                        "': it can't be written from here, so that it was read as it stood when it "
                        "was opened, and somebody has written to it since; open it anew");
    }
}

// Where a transaction has its view already, what that saw tells whether there is anything to ask.
std::int64_t Connection::DataVersion() {
    RequireUntouched();
    const bool viewing = sqlite3_txn_state(database_, "main") != SQLITE_TXN_NONE;
    if (!viewing || SeenVersion() != versionWhenAsked_) {
        dataVersion_ = Number(DATA_VERSION);
        versionWhenAsked_ = SeenVersion();
    }
    return dataVersion_;
}

void Connection::RequireWritable() {
    if (sqlite3_db_readonly(database_, "main") == 1) {
        ThrowCode(SQLITE_READONLY, place_, "this session can only read it");
    }
}

void Connection::Fail(int code, const char* doing) const {
    Place place = place_;
    place.doing = doing;
    ThrowCode(code, place, database_ != nullptr ? sqlite3_errmsg(database_) : sqlite3_errstr(code));
}

void Connection::OpenFile() {
    const bool readOnly = options_.readOnly || frozen_;
    int flags = SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
    flags |= readOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE;
    flags |= frozen_ ? SQLITE_OPEN_URI : 0;
    if (options_.create && !readOnly) {
        flags |= SQLITE_OPEN_CREATE;
    }
    const std::string name = frozen_ ? ImmutableUri(options_.file) : options_.file;
    const int code = sqlite3_open_v2(
        name.c_str(), &database_, flags, options_.vfs.empty() ? nullptr : options_.vfs.c_str());
    if (code != SQLITE_OK) {
        Fail(code, "open");
    }
    sqlite3_busy_timeout(database_, options_.busyTimeoutMilliseconds);
    if (const int added = AddFunctions(database_); added != SQLITE_OK) {
        Fail(added, "open");
    }
    const int added = AddTokenizer(database_);
    if (added == SQLITE_NOTFOUND) {
        throw Error(ErrorKind::Other,
                    place_.what + " '" + place_.file +
                        "' can't be opened: this program runs with an SQLite without full text "
                        "search; use one that was built with SQLITE_ENABLE_FTS5");
    }
    if (added != SQLITE_OK) {
        Fail(added, "open");
    }
}

// Before anything is written: the file may belong to somebody else.
void Connection::CheckApplication() {
    std::int64_t id = Number("PRAGMA application_id");
    if (id == 0 && Number("SELECT count(*) FROM sqlite_schema") == 0) {
        return;
    }
    if (id == 0) {
        // Another process may have made the file what it is since the first look.
        id = Number("PRAGMA application_id");
    }
    if (id != options_.applicationId) {
        throw Error(ErrorKind::NotDatabase,
                    "'" + place_.file + "' is an SQLite file, but no " + place_.what +
                        "; name a file that this program has made");
    }
}

void Connection::SetUp() {
    // Temporary tables may be as large as the library: in memory as long as they are small.
    Execute("PRAGMA foreign_keys=ON; PRAGMA temp_store=FILE; PRAGMA cache_size=-32768;");
    if (sqlite3_db_readonly(database_, "main") == 1) {
        return;
    }
    SwitchToWriteAheadLog();
    Execute("PRAGMA synchronous=NORMAL; PRAGMA journal_size_limit=67108864;");
}

// The switch fails at once, without the busy timeout, while another process does the same.
void Connection::SwitchToWriteAheadLog() {
    const auto end = std::chrono::steady_clock::now() +
                     std::chrono::milliseconds(options_.busyTimeoutMilliseconds);
    for (;;) {
        try {
            Execute("PRAGMA journal_mode=WAL");
            return;
        } catch (const Error& error) {
            if (error.Kind() != ErrorKind::Busy || std::chrono::steady_clock::now() >= end) {
                throw;
            }
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

void Connection::Execute(const std::string& script) {
    const int code = sqlite3_exec(database_, script.c_str(), nullptr, nullptr, nullptr);
    if (code != SQLITE_OK) {
        Fail(code, "a script");
    }
}

std::unique_ptr<sql::Cursor> Connection::Acquire(const NamedStatement& statement) {
    auto& idle = named_[&statement];
    if (idle.empty()) {
        // Room for it beforehand, so that giving it back can't fail.
        idle.reserve(4);
        return std::make_unique<Cursor>(database_, place_, statement.name, statement.text);
    }
    auto cursor = std::move(idle.back());
    idle.pop_back();
    return cursor;
}

void Connection::Release(const NamedStatement& statement,
                         std::unique_ptr<sql::Cursor> cursor) noexcept {
    cursor->Reset();
    auto& idle = named_.find(&statement)->second;
    if (idle.size() < idle.capacity()) {
        idle.push_back(std::move(cursor));
    }
}

std::unique_ptr<sql::Cursor> Connection::Acquire(const std::string& text) {
    texts_.reserve(KEPT_TEXTS);
    for (auto entry = texts_.begin(); entry != texts_.end(); ++entry) {
        if (entry->first == text) {
            auto cursor = std::move(entry->second);
            texts_.erase(entry);
            return cursor;
        }
    }
    return std::make_unique<Cursor>(database_, place_, "a query", text);
}

void Connection::Release(const std::string& text, std::unique_ptr<sql::Cursor> cursor) noexcept {
    cursor->Reset();
    if (texts_.size() >= KEPT_TEXTS) {
        texts_.erase(texts_.begin());
    }
    try {
        texts_.emplace_back(text, std::move(cursor));
    } catch (const std::bad_alloc&) {
        // Not kept; it will be compiled again.
    }
}

std::int64_t Connection::Number(const NamedStatement& statement) {
    Statement query(*this, statement);
    return query.Step() ? query.Int64(0) : 0;
}

std::int64_t Connection::Number(const char* text) {
    Cursor query(database_, place_, "open", text);
    return query.Step() ? query.Int64(0) : 0;
}

std::int64_t Connection::SeenVersion() const {
    unsigned int version = 0;
    sqlite3_file_control(database_, "main", SQLITE_FCNTL_DATA_VERSION, &version);
    return version;
}

void Connection::SetSchemaVersion(std::int64_t version) {
    Execute("PRAGMA application_id=" + std::to_string(options_.applicationId) +
            "; PRAGMA user_version=" + std::to_string(version));
}

std::vector<std::string> Connection::IntegrityProblems() {
    std::vector<std::string> problems;
    Statement check(*this, INTEGRITY);
    while (check.Step()) {
        problems.push_back(check.String(0));
    }
    return problems == std::vector<std::string>{"ok"} ? std::vector<std::string>() : problems;
}

// The setting can't change inside of a transaction, so it goes around it.
void Connection::Begin(bool write, bool durable) {
    RequireUntouched();
    if (write) {
        // It would begin all the same, for reading.
        RequireWritable();
    }
    if (durable) {
        Execute("PRAGMA synchronous=FULL");
        full_ = true;
    }
    try {
        Statement(*this, write ? BEGIN_WRITE : BEGIN_READ).Run();
        if (write) {
            RequireFileInPlace();
        }
    } catch (...) {
        RollbackOutermost();
        throw;
    }
}

// What is written to a file that has lost its name is gone with the connection.
void Connection::RequireFileInPlace() {
    int moved = 0;
    sqlite3_file_control(database_, "main", SQLITE_FCNTL_HAS_MOVED, &moved);
    if (moved != 0) {
        throw Error(ErrorKind::Other,
                    place_.what + " '" + place_.file +
                        "': the file was moved, replaced or deleted while it is open, so nothing "
                        "can be written; put it back, or close it and open it anew");
    }
}

void Connection::CommitOutermost() {
    const bool asked = SeenVersion() == versionWhenAsked_;
    Statement(*this, COMMIT).Run();
    if (asked) {
        // Nobody else could commit since then: only this commit is new.
        versionWhenAsked_ = SeenVersion();
    }
    BackToNormal();
}

void Connection::RollbackOutermost() noexcept {
    // After a failure of its own the database may have rolled back already.
    if (InTransaction()) {
        sqlite3_exec(database_, "ROLLBACK", nullptr, nullptr, nullptr);
    }
    BackToNormal();
}

void Connection::BackToNormal() noexcept {
    if (full_) {
        sqlite3_exec(database_, "PRAGMA synchronous=NORMAL", nullptr, nullptr, nullptr);
        full_ = false;
    }
}

void Connection::SetPatient(bool patient) {
    sqlite3_busy_timeout(database_, patient ? options_.busyTimeoutMilliseconds : 0);
}

// A flushed commit flushes the whole log before it; writing the version again is the smallest one.
void Connection::Flush() {
    Transaction transaction(*this, Transaction::Mode::Write, Transaction::Durability::Full);
    SetSchemaVersion(SchemaVersion());
    transaction.Commit();
}

}  // namespace

std::unique_ptr<sql::Connection> Open(const OpenOptions& options) {
    return std::make_unique<Connection>(options);
}

}  // namespace kxudm::sql::sqlite
