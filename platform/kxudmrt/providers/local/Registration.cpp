#include "providers/local/Registration.h"

#include <kxudm/UDMException.h>
#include <unistd.h>

#include <charconv>
#include <filesystem>

#include "catalogue/Value.h"
#include "providers/local/LibraryFile.h"

namespace kxudm::providers {

namespace {

constexpr const char* DATA_SOURCE = "local";

kxString HostName() {
    char name[256] = {};
    return ::gethostname(name, sizeof name - 1) == 0 ? kxString(name) : kxString();
}

kxString Flag(bool value) {
    return value ? "true" : "false";
}

}  // namespace

std::unique_ptr<store::MasterStore> OpenMaster(const Parameters& parameters) {
    const kxString file = parameters.RequiredPath("MasterDBFile");
    MakeDirectories(std::filesystem::path(file.c_str()).parent_path().string(),
                    "directory of the master database (MasterDBFile)");
    return store::MasterStore::Open(file);
}

store::LibraryRecord LibraryOfName(store::MasterStore& master, const kxString& name) {
    store::LibraryRecord record;
    if (!master.FindLibrary(name, record)) {
        throw UDMNotFoundException("The library \"" + catalogue::Printable(name) +
                                   "\" is not in the master database; create it or add it first");
    }
    return record;
}

store::LibraryRecord LibraryOfId(store::MasterStore& master, const kxString& id) {
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(id.data(), id.data() + id.size(), number);
    store::LibraryRecord record;
    if (error != std::errc() || end != id.data() + id.size() ||
        !master.FindLibrary(number, record)) {
        throw UDMNotFoundException("No library has the id \"" + catalogue::Printable(id) +
                                   "\"; use one that GetRepositoryIds gives");
    }
    return record;
}

void RequireSameLibrary(const Parameters& parameters, const store::LibraryRecord& library) {
    if (library.dataSource != DATA_SOURCE) {
        throw UDMException("The library \"" + library.name + "\" is of the data source \"" +
                           library.dataSource + "\"; \"DataSource\" must say so instead of \"" +
                           DATA_SOURCE + "\"");
    }
    const kxString asked = parameters.Path("RepositoryBaseDir");
    if (!asked.empty() && asked != NormalPath(library.baseDirectory)) {
        throw UDMException("The library \"" + library.name + "\" lies in \"" +
                           library.baseDirectory + "\", but \"RepositoryBaseDir\" says \"" + asked +
                           "\"; use the first, or another RepositoryName");
    }
}

void RegisterLibrary(store::MasterStore& master, const store::LibraryRecord& library) {
    const auto alone = master.Alone();
    for (const store::LibraryRecord& known : master.Libraries()) {
        const bool sameFile = known.ldbFile == library.ldbFile;
        if (known.name == library.name && sameFile) {
            return;
        }
        if (known.name == library.name) {
            throw UDMException("The library name \"" + library.name + "\" is taken by \"" +
                               known.ldbFile + "\"; register \"" + library.ldbFile +
                               "\" under another name");
        }
        if (sameFile) {
            throw UDMException("The library file \"" + library.ldbFile + "\" is registered as \"" +
                               known.name + "\" already; use that name instead of \"" +
                               library.name + "\"");
        }
    }
    static_cast<void>(master.AddLibrary(library));
    alone->Commit();
}

store::WorkspaceRecord WantedWorkspace(store::MasterStore& master, const Parameters& parameters) {
    const kxString user = parameters.Required("username");
    const kxString name = parameters.Required("WorkspaceName");
    const kxString directory = parameters.Path("WorkspaceBaseDir");
    store::WorkspaceRecord workspace;
    if (!master.FindWorkspace(user, name, workspace)) {
        workspace.user = user;
        workspace.name = name;
        workspace.workingDirectory = parameters.RequiredPath("WorkspaceBaseDir");
        workspace.clientWorkingDirectory = workspace.workingDirectory;
        workspace.hostName = HostName();
        workspace.userDisplayName = user;
    } else if (!directory.empty() && directory != NormalPath(workspace.workingDirectory)) {
        throw UDMException("The workspace \"" + name + "\" of " + user + " lies in \"" +
                           workspace.workingDirectory + "\", but \"WorkspaceBaseDir\" says \"" +
                           directory + "\"; use the first, or another WorkspaceName");
    }
    return workspace;
}

kxStlMap<kxString, kxString> LibraryFields(const store::LibraryRecord& library) {
    kxStlMap<kxString, kxString> fields;
    fields["id"] = std::to_string(library.id);
    fields["name"] = library.name;
    fields["profile_name"] = library.profileName;
    fields["is_default"] = Flag(library.isDefault);
    fields["type"] = library.dataSource;
    fields["ldbFile"] = library.ldbFile;
    if (!library.dbHost.empty()) {
        fields["dbhost"] = library.dbHost;
    }
    if (!library.dbPort.empty()) {
        fields["dbport"] = library.dbPort;
    }
    return fields;
}

kxStlMap<kxString, kxString> WorkspaceFields(const store::WorkspaceRecord& workspace) {
    kxStlMap<kxString, kxString> fields;
    fields["name"] = workspace.name;
    fields["workingDir"] = workspace.workingDirectory;
    fields["client_working_dir"] = workspace.clientWorkingDirectory;
    fields["host_name"] = workspace.hostName;
    fields["user_name"] = workspace.user;
    fields["uname"] = workspace.userDisplayName;
    fields["is_default"] = Flag(workspace.isDefault);
    return fields;
}

}  // namespace kxudm::providers
