// The master database: which libraries and workspaces there are.
//
// Layer: store. One SQLite file that several processes share; a store owns its connection and
// belongs to one thread at a time. Every change survives a loss of power when the operation
// returns. The runtime's operations open a store, ask, and close it again: opening costs less than
// a millisecond, and a host that only sits there keeps no file open.
//
//     auto master = MasterStore::Open("/home/u/master.db");
//     LibraryRecord library;
//     if (!master->FindLibrary("Crash", library)) master->AddLibrary({.name = "Crash", ...});
#ifndef KXUDMRT_STORE_MASTERSTORE_H
#define KXUDMRT_STORE_MASTERSTORE_H

#include <kxutl/kxVariant.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "sql/Connection.h"

namespace kxudm::store {

// A library. The key names of the interface stand behind the fields.
struct LibraryRecord {
    std::int64_t id = 0;           // "id", given by the store
    std::string name = {};         // "name", unique among all libraries
    std::string profileName = {};  // "profile_name"
    std::string dataSource = {};   // "type": "local", "PostGres", ...
    std::string ldbFile = {};      // "ldbFile"
    std::string baseDirectory = {};
    bool isDefault = false;   // "is_default", of at most one library
    std::string dbHost = {};  // "dbhost"
    std::string dbPort = {};  // "dbport"
};

// A workspace of a user.
struct WorkspaceRecord {
    std::string user = {};                    // "user_name"
    std::string name = {};                    // "name", unique for the user
    std::string workingDirectory = {};        // "workingDir"
    std::string clientWorkingDirectory = {};  // "client_working_dir"
    std::string hostName = {};                // "host_name"
    std::string userDisplayName = {};         // "uname"
    bool isDefault = false;                   // "is_default", of at most one workspace of a user
};

using ClientSettings = std::vector<std::pair<std::string, kxVariant>>;

class MasterStore {
  public:
    // Makes the file on first use, also where an empty one lies; its folder must be there. A file
    // that is no master database, and one with a newer schema, are errors that name it.
    [[nodiscard]] static std::unique_ptr<MasterStore> Open(const std::string& file);
    MasterStore(const MasterStore&) = delete;
    MasterStore& operator=(const MasterStore&) = delete;
    ~MasterStore();

    // Until its end nobody else changes the master database, other processes neither; they can
    // read. What is changed meanwhile is there with its Commit, or not at all without. Waits for
    // others who are alone.
    [[nodiscard]] std::unique_ptr<sql::Transaction> Alone();

    // --- Libraries, in the order of their names ---

    // An empty data source means all.
    [[nodiscard]] std::vector<LibraryRecord> Libraries(std::string_view dataSource = {});
    bool FindLibrary(std::string_view name, LibraryRecord& record);
    bool FindLibrary(std::int64_t id, LibraryRecord& record);
    // Returns the id. A known name is an error that names it and the base directory it has. The
    // first library becomes the default.
    std::int64_t AddLibrary(const LibraryRecord& record);
    // Everything but id and default by id. False: unknown.
    bool UpdateLibrary(const LibraryRecord& record);
    bool SetDefaultLibrary(std::int64_t id);
    bool RemoveLibrary(std::int64_t id);
    [[nodiscard]] ClientSettings LibraryClientSettings(std::int64_t id);
    // Replaces all of them. False: unknown library.
    bool SetLibraryClientSettings(std::int64_t id, const ClientSettings& settings);

    // --- Workspaces, in the order of their names ---

    [[nodiscard]] std::vector<WorkspaceRecord> Workspaces(std::string_view user);
    bool FindWorkspace(std::string_view user, std::string_view name, WorkspaceRecord& record);
    // Adds it, or leaves the one that is there as it is: two processes may ask at once. True:
    // added. The first workspace of a user becomes the default.
    bool AddWorkspace(const WorkspaceRecord& record);
    bool UpdateWorkspace(const WorkspaceRecord& record);
    bool SetDefaultWorkspace(std::string_view user, std::string_view name);
    bool RemoveWorkspace(std::string_view user, std::string_view name);

  private:
    explicit MasterStore(std::unique_ptr<sql::Connection> connection);

    std::unique_ptr<sql::Connection> connection_;
};

}  // namespace kxudm::store

#endif
