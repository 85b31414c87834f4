// LibraryStore: the files of entities. How intervals follow the life of revisions stands in
// LibraryRevisions.cpp.
#include <algorithm>
#include <optional>

#include "store/FileStatements.h"
#include "store/LibraryStore.h"
#include "store/RowReader.h"

namespace kxudm::store {
namespace {

void ReadFileRow(const sql::Statement& statement, FileRow& row) {
    row.name.assign(statement.Text(0));
    row.hash.assign(statement.Text(1));
    row.size = statement.Int64(2);
    row.modified = statement.Int64(3);
    row.added = statement.Int64(4);
    row.isText = statement.Int(5) != 0;
    row.externalPath.assign(statement.Text(6));
    row.vault.assign(statement.Text(7));
}

std::optional<std::string_view> TextOrNull(const std::string& text) {
    return text.empty() ? std::nullopt : std::optional<std::string_view>(text);
}

std::string UidOf(sql::Connection& connection, EntityId id) {
    sql::Statement find(connection, statements::UID_OF);
    find.BindAll(id);
    return find.Step() ? find.String(0) : "#" + std::to_string(id);
}

// First of all: a refusal then has changed nothing.
void TouchEditable(sql::Connection& connection, EntityId id, int revision, const Stamp& stamp) {
    sql::Statement touch(connection, statements::TOUCH_EDITABLE);
    touch.BindAll(RevisionId(id, revision), stamp.time, stamp.by.user);
    touch.Run();
    if (connection.Changes() == 0) {
        throw UDMException("the files of revision " + std::to_string(revision) + " of '" +
                           UidOf(connection, id) +
                           "' can't be changed, it is published or not there; check it out first");
    }
}

void InsertRow(sql::Connection& connection,
               EntityId id,
               int revision,
               const FileRow& file,
               const Stamp& stamp) {
    sql::Statement insert(connection, statements::INSERT_FILE);
    insert.BindAll(id,
                   file.name,
                   revision,
                   TextOrNull(file.hash),
                   file.size,
                   file.modified,
                   stamp.time,
                   file.isText,
                   TextOrNull(file.externalPath),
                   TextOrNull(file.vault),
                   file.text);
    insert.Run();
}

bool EndRows(sql::Connection& connection, EntityId id, int revision, std::string_view name) {
    bool found = false;
    for (const auto* named : {&statements::DROP_FILE, &statements::END_FILE}) {
        sql::Statement end(connection, *named);
        end.BindAll(id, revision, name);
        end.Run();
        found = found || connection.Changes() != 0;
    }
    return found;
}

}  // namespace

bool LibraryStore::AddFile(EntityId id, int revision, const FileRow& file, const Stamp& stamp) {
    sql::Transaction transaction(*connection_);
    FileRow taken;
    if (FindFile(id, revision, file.name, taken)) {
        return false;
    }
    TouchEditable(*connection_, id, revision, stamp);
    InsertRow(*connection_, id, revision, file, stamp);
    transaction.Commit();
    return true;
}

bool LibraryStore::ReplaceFile(EntityId id, int revision, const FileRow& file, const Stamp& stamp) {
    sql::Transaction transaction(*connection_);
    TouchEditable(*connection_, id, revision, stamp);
    const bool replaced = EndRows(*connection_, id, revision, file.name);
    InsertRow(*connection_, id, revision, file, stamp);
    transaction.Commit();
    return replaced;
}

bool LibraryStore::RemoveFile(EntityId id,
                              int revision,
                              std::string_view name,
                              const Stamp& stamp) {
    sql::Transaction transaction(*connection_);
    FileRow there;
    if (!FindFile(id, revision, name, there)) {
        return false;
    }
    TouchEditable(*connection_, id, revision, stamp);
    static_cast<void>(EndRows(*connection_, id, revision, name));
    transaction.Commit();
    return true;
}

void LibraryStore::Files(EntityId id, int revision, std::vector<FileRow>& out) {
    const auto first = static_cast<std::ptrdiff_t>(out.size());
    sql::Statement find(*connection_, statements::FILES);
    find.BindAll(id, revision);
    while (find.Step()) {
        ReadFileRow(find, out.emplace_back());
    }
    std::sort(out.begin() + first, out.end(), [](const FileRow& a, const FileRow& b) {
        return a.name < b.name;
    });
}

bool LibraryStore::FindFile(EntityId id, int revision, std::string_view name, FileRow& file) {
    sql::Statement find(*connection_, statements::FIND_FILE);
    find.BindAll(id, revision, name);
    if (!find.Step()) {
        return false;
    }
    ReadFileRow(find, file);
    return true;
}

bool LibraryStore::IsExternalSomewhere(std::string_view path) {
    sql::Statement find(*connection_, statements::IS_EXTERNAL);
    find.BindAll(path);
    return find.Step();
}

std::vector<std::string> LibraryStore::Vaults() {
    std::vector<std::string> vaults;
    sql::Statement find(*connection_, statements::VAULTS);
    while (find.Step()) {
        vaults.push_back(find.String(0));
    }
    return vaults;
}

}  // namespace kxudm::store
