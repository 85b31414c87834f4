#include "store/MasterStore.h"

#include <utility>

#include "sql/sqlite/Connection.h"
#include "store/Attributes.h"
#include "store/MasterStatements.h"
#include "store/schema/Schema.h"

namespace kxudm::store {
namespace {

constexpr const char* WHAT = "master database";

// Losing a library's place would cost the user the library: every change is durable.
class Change {
  public:
    explicit Change(sql::Connection& connection)
        : connection_(connection),
          transaction_(
              connection, sql::Transaction::Mode::Write, sql::Transaction::Durability::Full) {}

    // Runs one statement; the number of rows that it changed.
    template <typename... T>
    std::int64_t Run(const sql::NamedStatement& named, const T&... values) {
        sql::Statement statement(connection_, named);
        statement.BindAll(values...);
        statement.Run();
        return connection_.Changes();
    }
    // Commits if `done`; without it the transaction is rolled back.
    bool Finish(bool done) {
        if (done) {
            transaction_.Commit();
        }
        return done;
    }

  private:
    sql::Connection& connection_;
    sql::Transaction transaction_;
};

void Read(const sql::Statement& statement, LibraryRecord& record) {
    record.id = statement.Int64(0);
    record.name = statement.String(1);
    record.profileName = statement.String(2);
    record.dataSource = statement.String(3);
    record.ldbFile = statement.String(4);
    record.baseDirectory = statement.String(5);
    record.isDefault = statement.Int(6) != 0;
    record.dbHost = statement.String(7);
    record.dbPort = statement.String(8);
}

void Read(const sql::Statement& statement, WorkspaceRecord& record) {
    record.user = statement.String(0);
    record.name = statement.String(1);
    record.workingDirectory = statement.String(2);
    record.clientWorkingDirectory = statement.String(3);
    record.hostName = statement.String(4);
    record.userDisplayName = statement.String(5);
    record.isDefault = statement.Int(6) != 0;
}

template <typename Record, typename... T>
bool FindOne(sql::Connection& connection,
             const sql::NamedStatement& named,
             Record& record,
             const T&... values) {
    sql::Statement statement(connection, named);
    statement.BindAll(values...);
    if (!statement.Step()) {
        return false;
    }
    Read(statement, record);
    return true;
}

template <typename Record>
std::vector<Record> FindAll(sql::Connection& connection,
                            const sql::NamedStatement& named,
                            std::string_view value) {
    sql::Statement statement(connection, named);
    statement.BindAll(value);
    std::vector<Record> records;
    while (statement.Step()) {
        Read(statement, records.emplace_back());
    }
    return records;
}

[[noreturn]] void ThrowKnownLibrary(const LibraryRecord& known) {
    throw UDMException("library '" + known.name + "' is known already, with base directory '" +
                       known.baseDirectory + "'; choose another name");
}

}  // namespace

MasterStore::MasterStore(std::unique_ptr<sql::Connection> connection)
    : connection_(std::move(connection)) {}

MasterStore::~MasterStore() = default;

std::unique_ptr<MasterStore> MasterStore::Open(const std::string& file) {
    auto connection = sql::sqlite::Open(
        {.file = file, .what = WHAT, .create = true, .applicationId = MASTER_APPLICATION_ID});
    BringForward(*connection, MasterSchema(), WHAT);
    return std::unique_ptr<MasterStore>(new MasterStore(std::move(connection)));
}

std::unique_ptr<sql::Transaction> MasterStore::Alone() {
    return std::make_unique<sql::Transaction>(
        *connection_, sql::Transaction::Mode::Write, sql::Transaction::Durability::Full);
}

std::vector<LibraryRecord> MasterStore::Libraries(std::string_view dataSource) {
    return FindAll<LibraryRecord>(*connection_, statements::LIBRARIES, dataSource);
}

bool MasterStore::FindLibrary(std::string_view name, LibraryRecord& record) {
    return FindOne(*connection_, statements::LIBRARY_BY_NAME, record, name);
}

bool MasterStore::FindLibrary(std::int64_t id, LibraryRecord& record) {
    return FindOne(*connection_, statements::LIBRARY_BY_ID, record, id);
}

std::int64_t MasterStore::AddLibrary(const LibraryRecord& record) {
    Change change(*connection_);
    LibraryRecord known;
    if (FindLibrary(record.name, known)) {
        ThrowKnownLibrary(known);
    }
    change.Run(statements::INSERT_LIBRARY,
               record.name,
               record.profileName,
               record.dataSource,
               record.ldbFile,
               record.baseDirectory,
               record.dbHost,
               record.dbPort);
    const std::int64_t id = connection_->LastInsertId();
    change.Finish(true);
    return id;
}

bool MasterStore::UpdateLibrary(const LibraryRecord& record) {
    Change change(*connection_);
    LibraryRecord known;
    if (FindLibrary(record.name, known) && known.id != record.id) {
        ThrowKnownLibrary(known);
    }
    return change.Finish(change.Run(statements::UPDATE_LIBRARY,
                                    record.name,
                                    record.profileName,
                                    record.dataSource,
                                    record.ldbFile,
                                    record.baseDirectory,
                                    record.dbHost,
                                    record.dbPort,
                                    record.id) > 0);
}

bool MasterStore::SetDefaultLibrary(std::int64_t id) {
    Change change(*connection_);
    change.Run(statements::NO_DEFAULT_LIBRARY);
    return change.Finish(change.Run(statements::DEFAULT_LIBRARY, id) > 0);
}

bool MasterStore::RemoveLibrary(std::int64_t id) {
    Change change(*connection_);
    return change.Finish(change.Run(statements::DELETE_LIBRARY, id) > 0);
}

ClientSettings MasterStore::LibraryClientSettings(std::int64_t id) {
    sql::Statement statement(*connection_, statements::CLIENT_SETTINGS);
    statement.BindAll(id);
    ClientSettings settings;
    if (statement.Step()) {
        for (auto& [name, value] : UnpackAttributes(statement.Bytes(0))) {
            settings.emplace_back(std::move(name), std::move(value));
        }
    }
    return settings;
}

bool MasterStore::SetLibraryClientSettings(std::int64_t id, const ClientSettings& settings) {
    const std::string packed = PackAttributes(AttributeList(settings.begin(), settings.end()));
    Change change(*connection_);
    return change.Finish(change.Run(statements::SET_CLIENT_SETTINGS, id, sql::Blob{packed}) > 0);
}

std::vector<WorkspaceRecord> MasterStore::Workspaces(std::string_view user) {
    return FindAll<WorkspaceRecord>(*connection_, statements::WORKSPACES, user);
}

bool MasterStore::FindWorkspace(std::string_view user,
                                std::string_view name,
                                WorkspaceRecord& record) {
    return FindOne(*connection_, statements::WORKSPACE, record, user, name);
}

bool MasterStore::AddWorkspace(const WorkspaceRecord& record) {
    Change change(*connection_);
    return change.Finish(change.Run(statements::INSERT_WORKSPACE,
                                    record.user,
                                    record.name,
                                    record.workingDirectory,
                                    record.clientWorkingDirectory,
                                    record.hostName,
                                    record.userDisplayName) > 0);
}

bool MasterStore::UpdateWorkspace(const WorkspaceRecord& record) {
    Change change(*connection_);
    return change.Finish(change.Run(statements::UPDATE_WORKSPACE,
                                    record.user,
                                    record.name,
                                    record.workingDirectory,
                                    record.clientWorkingDirectory,
                                    record.hostName,
                                    record.userDisplayName) > 0);
}

bool MasterStore::SetDefaultWorkspace(std::string_view user, std::string_view name) {
    Change change(*connection_);
    change.Run(statements::NO_DEFAULT_WORKSPACE, user);
    return change.Finish(change.Run(statements::DEFAULT_WORKSPACE, user, name) > 0);
}

bool MasterStore::RemoveWorkspace(std::string_view user, std::string_view name) {
    Change change(*connection_);
    return change.Finish(change.Run(statements::DELETE_WORKSPACE, user, name) > 0);
}

}  // namespace kxudm::store
