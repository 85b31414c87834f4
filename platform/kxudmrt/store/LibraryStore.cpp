#include "store/LibraryStore.h"

#include <charconv>
#include <cstdlib>
#include <utility>

#include "sql/sqlite/Connection.h"
#include "store/Statements.h"
#include "store/schema/Schema.h"

namespace kxudm::store {
namespace {

constexpr const char* WHAT = "library";

// Keys of the table info. Notes have a prefix, so that they never meet these.
constexpr std::string_view NAME = "name";
constexpr std::string_view ID = "id";
constexpr std::string_view BASE_DIRECTORY = "base_directory";
constexpr std::string_view CREATED = "created";
constexpr std::string_view CATALOGUE = "catalogue";

std::string NoteKey(std::string_view key) {
    return "note:" + std::string(key);
}

std::string ReadInfo(sql::Connection& connection, std::string_view key) {
    sql::Statement statement(connection, statements::INFO);
    statement.BindAll(key);
    return statement.Step() ? statement.String(0) : std::string();
}

void WriteInfo(sql::Connection& connection, std::string_view key, std::string_view value) {
    sql::Statement statement(connection, statements::SET_INFO);
    statement.BindAll(key, value);
    statement.Run();
}

void WriteInfoDurably(sql::Connection& connection, std::string_view key, std::string_view value) {
    sql::Transaction transaction(
        connection, sql::Transaction::Mode::Write, sql::Transaction::Durability::Full);
    WriteInfo(connection, key, value);
    transaction.Commit();
}

}  // namespace

LibraryStore::LibraryStore(std::unique_ptr<sql::Connection> connection)
    : connection_(std::move(connection)) {}

LibraryStore::~LibraryStore() = default;

std::unique_ptr<LibraryStore> LibraryStore::Create(const std::string& file,
                                                   const LibraryInfo& info,
                                                   std::string_view catalogueXml) {
    return Create(
        sql::sqlite::Open(
            {.file = file, .what = WHAT, .create = true, .applicationId = LIBRARY_APPLICATION_ID}),
        info,
        catalogueXml);
}

std::unique_ptr<LibraryStore> LibraryStore::Open(const std::string& file) {
    return Open(
        sql::sqlite::Open({.file = file, .what = WHAT, .applicationId = LIBRARY_APPLICATION_ID}));
}

std::unique_ptr<LibraryStore> LibraryStore::Create(std::unique_ptr<sql::Connection> connection,
                                                   const LibraryInfo& info,
                                                   std::string_view catalogueXml) {
    sql::Transaction transaction(
        *connection, sql::Transaction::Mode::Write, sql::Transaction::Durability::Full);
    if (connection->SchemaVersion() != 0) {
        throw UDMStoreException("library '" + connection->File() +
                                "' exists already; open it, or choose another name");
    }
    BringForward(*connection, LibrarySchema(), WHAT);
    WriteInfo(*connection, NAME, info.name);
    WriteInfo(*connection, ID, info.id);
    WriteInfo(*connection, BASE_DIRECTORY, info.baseDirectory);
    WriteInfo(*connection, CREATED, std::to_string(info.created));
    WriteInfo(*connection, CATALOGUE, catalogueXml);
    transaction.Commit();
    return std::unique_ptr<LibraryStore>(new LibraryStore(std::move(connection)));
}

std::unique_ptr<LibraryStore> LibraryStore::Open(std::unique_ptr<sql::Connection> connection) {
    if (connection->SchemaVersion() == 0) {
        throw sql::Error(sql::ErrorKind::NotDatabase,
                         "'" + connection->File() +
                             "' is empty, so it is no library; create the library, or name another "
                             "file");
    }
    BringForward(*connection, LibrarySchema(), WHAT);
    return std::unique_ptr<LibraryStore>(new LibraryStore(std::move(connection)));
}

LibraryInfo LibraryStore::Info() {
    LibraryInfo info;
    info.name = ReadInfo(*connection_, NAME);
    info.id = ReadInfo(*connection_, ID);
    info.baseDirectory = ReadInfo(*connection_, BASE_DIRECTORY);
    const std::string created = ReadInfo(*connection_, CREATED);
    std::from_chars(created.data(), created.data() + created.size(), info.created);
    return info;
}

void LibraryStore::SetBaseDirectory(std::string_view directory) {
    WriteInfoDurably(*connection_, BASE_DIRECTORY, directory);
}

std::string LibraryStore::CatalogueXml() {
    std::string text = ReadInfo(*connection_, CATALOGUE);
    if (text.empty()) {
        throw UDMStoreException("library '" + connection_->File() +
                                "' has lost its catalogue of content definitions, so that it can't "
                                "be opened; restore the library from a backup");
    }
    return text;
}

void LibraryStore::SetCatalogueXml(std::string_view xml) {
    WriteInfoDurably(*connection_, CATALOGUE, xml);
}

std::string LibraryStore::Note(std::string_view key) {
    const std::string noteKey = NoteKey(key);
    return ReadInfo(*connection_, noteKey);
}

void LibraryStore::SetNote(std::string_view key, std::string_view text) {
    const std::string noteKey = NoteKey(key);
    WriteInfoDurably(*connection_, noteKey, text);
}

// --- Journal ---

std::int64_t LibraryStore::Append(const JournalEntry& entry) {
    return Update([&] {
        sql::Statement statement(*connection_, statements::APPEND);
        statement.BindAll(entry.time,
                          entry.others ? -entry.op : entry.op,
                          entry.entity,
                          entry.revision,
                          entry.parent,
                          entry.child,
                          entry.session,
                          entry.process,
                          entry.user,
                          entry.workspace);
        statement.Run();
        return connection_->LastInsertId();
    });
}

std::int64_t LibraryStore::LastSequence() {
    sql::Statement statement(*connection_, statements::LAST_SEQUENCE);
    return statement.Step() ? statement.Int64(0) : 0;
}

void LibraryStore::Journal(std::int64_t sequence,
                           const Viewer& viewer,
                           std::vector<JournalEntry>& out,
                           int limit) {
    sql::Statement statement(*connection_, statements::JOURNAL);
    statement.BindAll(viewer.user, viewer.workspace, sequence, limit);
    while (statement.Step()) {
        JournalEntry& entry = out.emplace_back();
        entry.sequence = statement.Int64(0);
        entry.time = statement.Int64(1);
        entry.op = std::abs(statement.Int(2));
        entry.others = statement.Int(2) < 0;
        entry.entity = statement.Int64(3);
        entry.revision = statement.Int(4);
        entry.parent = statement.Int64(5);
        entry.child = statement.Int64(6);
        entry.session = statement.String(7);
        entry.process = statement.Int64(8);
        entry.user = statement.String(9);
        entry.workspace = statement.String(10);
        entry.entityUid = statement.String(11);
        entry.parentUid = statement.String(12);
        entry.childUid = statement.String(13);
    }
}

bool LibraryStore::ChangedByOthers() {
    const std::int64_t version = connection_->DataVersion();
    versionWhenAsked_ = connection_->SeenVersion();
    return std::exchange(seenDataVersion_, version) != version;
}

bool LibraryStore::ReadNothingNew() const {
    return connection_->SeenVersion() == versionWhenAsked_;
}

}  // namespace kxudm::store
