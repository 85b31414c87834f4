#include "providers/local/LocalProvider.h"

#include <algorithm>
#include <boost/smart_ptr/make_shared.hpp>
#include <exception>
#include <filesystem>
#include <optional>
#include <utility>

#include "core/LocalProvider.h"
#include "profile/Merge.h"
#include "profile/Peers.h"
#include "profile/Profile.h"
#include "providers/local/LibraryFile.h"
#include "providers/local/Registration.h"

namespace kxudm {

boost::shared_ptr<spi::IUDMProvider> core::MakeLocalProvider() {
    return boost::make_shared<providers::LocalProvider>();
}

namespace providers {

namespace {

using SessionPtr = boost::shared_ptr<profile::Session>;

// Connection types of libraries, as the interface numbers them.
constexpr unsigned int LIBRARIES = 1;
constexpr unsigned int EXTERNAL_REPOSITORIES = 2;

bool IsOfType(const store::LibraryRecord& library, unsigned int connType) {
    const bool ours = library.dataSource == "local" || library.dataSource == "PostGres";
    return ours == (connType == LIBRARIES);
}

void RequireConnType(unsigned int connType) {
    if (connType != LIBRARIES && connType != EXTERNAL_REPOSITORIES) {
        throw UDMException("The connection type " + std::to_string(connType) +
                           " is unknown; use 1 for libraries or 2 for external repositories");
    }
}

void Pick(const kxStlMap<kxString, kxString>& fields,
          const kxStlVector<kxString>& keys,
          kxStlMap<kxString, kxString>& out) {
    for (const kxString& key : keys) {
        if (const auto found = fields.find(key); found != fields.end()) {
            out[key] = found->second;
        }
    }
}

LibraryPlan PlanOf(const Parameters& parameters, const store::LibraryRecord& library) {
    const kxString config = parameters.Required("UDMConfigFile");
    const auto catalogue =
        catalogue::Catalogue::ReadFiles(config, parameters.Text("CustomEntityDefinitionsFolder"));
    return {library.name, library.baseDirectory, library.ldbFile, catalogue->ToXml()};
}

// A path that still means the same when the process has gone to another directory. Links are not
// followed: they may lead somewhere else by then.
kxString AbsoluteText(const Parameters& parameters, const kxString& key) {
    const kxString path = parameters.Text(key);
    return path.empty() ? path : kxString(std::filesystem::absolute(path.c_str()).native());
}

store::LibraryRecord NewRecord(const Parameters& parameters, const kxString& name) {
    store::LibraryRecord library;
    library.name = name;
    library.profileName = parameters.Text("ProfileName");
    library.dataSource = "local";
    library.baseDirectory = parameters.RequiredPath("RepositoryBaseDir");
    library.ldbFile = LibraryFileName(library.baseDirectory, parameters.RepositoryName());
    return library;
}

}  // namespace

boost::shared_ptr<IUDMProfile> LocalProvider::OpenProfile(const Parameters& params) {
    const providers::Parameters parameters(params);
    const kxString name = parameters.RepositoryName();
    const auto master = OpenMaster(parameters);
    const store::WorkspaceRecord workspace = WantedWorkspace(*master, parameters);

    store::LibraryRecord library;
    bool known = master->FindLibrary(name, library);
    // Who makes a library is alone until it is registered: somebody else would open a file that is
    // taken back if a later step fails.
    std::unique_ptr<sql::Transaction> alone;
    if (!known) {
        alone = master->Alone();
        known = master->FindLibrary(name, library);
    }
    std::optional<NewLibraryFile> made;
    if (known) {
        RequireSameLibrary(parameters, library);
    } else {
        library = NewRecord(parameters, name);
        if (!FileExists(library.ldbFile)) {
            made.emplace(PlanOf(parameters, library));
        }
    }
    auto store = OpenLibraryFile(library.ldbFile, _options.busyTimeoutMilliseconds);
    MakeDirectories(workspace.workingDirectory, "directory of the workspace (WorkspaceBaseDir)");
    const SessionPtr session = boost::make_shared<profile::Session>(
        std::move(store),
        profile::SessionOptions{
            .libraryName = library.name,
            .libraryFile = NormalPath(library.ldbFile),
            .masterFile = parameters.RequiredPath("MasterDBFile"),
            .profileName = library.profileName,
            .user = workspace.user,
            .workspace = workspace.name,
            .workspaceDirectory = workspace.workingDirectory,
            .baseDirectory = NormalPath(library.baseDirectory),
            .catalogueFile = AbsoluteText(parameters, "UDMConfigFile"),
            .customDefinitions = AbsoluteText(parameters, "CustomEntityDefinitionsFolder"),
            .clock = _options.clock,
            .files = _options.files});
    // The library's row comes last: without it nothing of the library is there.
    store::WorkspaceRecord there;
    if (!master->FindWorkspace(workspace.user, workspace.name, there)) {
        static_cast<void>(master->AddWorkspace(workspace));
    }
    if (!known) {
        RegisterLibrary(*master, library);
    }
    if (alone) {
        alone->Commit();
    }
    if (made) {
        made->Keep();
    }
    profile::peers::Join(session);
    return boost::make_shared<profile::Profile>(session);
}

void LocalProvider::CloseProfile(const boost::shared_ptr<IUDMProfile>& profile) {
    if (const auto ours = boost::dynamic_pointer_cast<profile::Profile>(profile)) {
        ours->Close();
    }
}

bool LocalProvider::CheckConnection(const kxString& /*dataSource*/,
                                    const kxString& a,
                                    const kxString& b,
                                    const kxString& /*host*/,
                                    const kxString& /*c*/,
                                    const kxString& /*username*/,
                                    const kxString& /*password*/,
                                    kxString& message) {
    std::error_code error;
    const bool cut = a.find('\0') != kxString::npos;
    if (a.empty() || cut || !std::filesystem::is_directory(a.c_str(), error)) {
        message = "The base directory \"" + catalogue::Printable(a) + "\" is not there.";
        return false;
    }
    const kxString directory = NormalPath(a);
    if (b.empty()) {
        message = "The base directory \"" + directory + "\" is there.";
        return true;
    }
    try {
        RequireLibraryName(b);
        const kxString file = LibraryFileName(directory, b);
        if (!FileExists(file)) {
            message = "The base directory \"" + directory + "\" has no library \"" + b + "\".";
            return false;
        }
        const auto reached = OpenLibraryFile(file, _options.busyTimeoutMilliseconds);
        message = "The library \"" + b + "\" in \"" + directory + "\" can be reached.";
        return true;
    } catch (const std::exception& failure) {
        message = kxString(std::string(failure.what()) + ".");
        return false;
    }
}

void LocalProvider::GetRepositoryIds(kxStlVector<kxString>& ids,
                                     const Parameters& params,
                                     unsigned int connType) {
    RequireConnType(connType);
    auto libraries = OpenMaster(providers::Parameters(params))->Libraries();
    std::sort(libraries.begin(), libraries.end(), [](const auto& a, const auto& b) {
        return a.id < b.id;
    });
    for (const store::LibraryRecord& library : libraries) {
        if (IsOfType(library, connType)) {
            ids.push_back(std::to_string(library.id));
        }
    }
}

void LocalProvider::GetRepositoryInfo(kxStlMap<kxString, kxString>& info,
                                      const kxString& id,
                                      const kxStlVector<kxString>& keys,
                                      const Parameters& params,
                                      unsigned int connType) {
    RequireConnType(connType);
    const auto master = OpenMaster(providers::Parameters(params));
    Pick(LibraryFields(LibraryOfId(*master, id)), keys, info);
}

void LocalProvider::GetRepositoryClientSettings(kxStlMap<kxString, kxVariant>& out,
                                                const kxString& id,
                                                const Parameters& params) {
    const auto master = OpenMaster(providers::Parameters(params));
    for (const auto& [key, value] : master->LibraryClientSettings(LibraryOfId(*master, id).id)) {
        out[kxString(key)] = value;
    }
}

void LocalProvider::GetWorkspaces(kxStlVector<kxString>& ids, const Parameters& params) {
    const providers::Parameters parameters(params);
    const kxString user = parameters.Required("username");
    for (const store::WorkspaceRecord& workspace : OpenMaster(parameters)->Workspaces(user)) {
        ids.push_back(workspace.name);
    }
}

void LocalProvider::GetWorkspaceInfo(kxStlMap<kxString, kxString>& info,
                                     const kxString& id,
                                     const kxStlVector<kxString>& keys,
                                     const Parameters& params) {
    const providers::Parameters parameters(params);
    const kxString user = parameters.Required("username");
    store::WorkspaceRecord workspace;
    if (!OpenMaster(parameters)->FindWorkspace(user, id, workspace)) {
        throw UDMNotFoundException("The user \"" + catalogue::Printable(user) +
                                   "\" has no workspace \"" + catalogue::Printable(id) +
                                   "\"; open a session in it to make it");
    }
    Pick(WorkspaceFields(workspace), keys, info);
}

void LocalProvider::AddExistingRepository(const Parameters& params, const kxString& name) {
    const providers::Parameters parameters(params);
    RequireLibraryName(name);
    const store::LibraryRecord library = NewRecord(parameters, name);
    const auto store = OpenLibraryFile(library.ldbFile, _options.busyTimeoutMilliseconds);
    RegisterLibrary(*OpenMaster(parameters), library);
    // It may have been moved or copied here.
    if (store->Info().baseDirectory != library.baseDirectory) {
        store->SetBaseDirectory(library.baseDirectory);
    }
}

void LocalProvider::SetDefaultRepository(const Parameters& params) {
    const providers::Parameters parameters(params);
    const auto master = OpenMaster(parameters);
    master->SetDefaultLibrary(LibraryOfName(*master, parameters.RepositoryName()).id);
}

void LocalProvider::DeleteRepository(const Parameters& params, bool deleteFiles, bool force) {
    const providers::Parameters parameters(params);
    const auto master = OpenMaster(parameters);
    const store::LibraryRecord library = LibraryOfName(*master, parameters.RepositoryName());
    RequireSameLibrary(parameters, library);
    const std::vector<SessionPtr> open = profile::peers::On(NormalPath(library.ldbFile));
    if (!open.empty() && !force) {
        throw UDMException("The library \"" + library.name + "\" is open in " +
                           std::to_string(open.size()) +
                           " sessions of this program; close them before deleting it");
    }
    for (const SessionPtr& session : open) {
        session->Close();
    }
    master->RemoveLibrary(library.id);
    if (deleteFiles) {
        RemoveLibraryFiles(library.ldbFile);
    }
}

// The session that this one has on the library, opened the first time.
SessionPtr LocalProvider::TargetOf(profile::Session& source, const kxString& library) const {
    UDMProfileMgr::Parameters map;
    map["MasterDBFile"] = source.Options().masterFile;
    const store::LibraryRecord record =
        LibraryOfName(*OpenMaster(providers::Parameters(map)), library);
    const kxString file = NormalPath(record.ldbFile);
    if (SessionPtr known = source.AttachedOn(file)) {
        return known;
    }
    profile::SessionOptions options = source.Options();
    options.libraryName = record.name;
    options.libraryFile = file;
    options.profileName = record.profileName;
    options.baseDirectory = NormalPath(record.baseDirectory);
    SessionPtr target = boost::make_shared<profile::Session>(
        OpenLibraryFile(record.ldbFile, _options.busyTimeoutMilliseconds), std::move(options));
    profile::peers::Join(target);
    source.Attach(target);
    return target;
}

boost::shared_ptr<UDMKXMergeToCatalog> LocalProvider::CreateMerge(
    const kxString& library,
    const kxString& folder,
    const boost::shared_ptr<IUDMProfile>& profile,
    const kxString& comment) {
    const auto source = boost::dynamic_pointer_cast<profile::Profile>(profile);
    if (!source) {
        return {};
    }
    SessionPtr target;
    try {
        target = TargetOf(*source->TheSession(), library);
    } catch (const UDMException&) {
        // The interface tells a target that can't be opened by no engine.
        return {};
    }
    return boost::make_shared<profile::Merge>(source, target, folder, comment);
}

void LocalProvider::DispatchUpdates() {
    std::exception_ptr failure;
    for (const SessionPtr& session : profile::peers::All()) {
        const std::exception_ptr one = session->Dispatch();
        failure = failure ? failure : one;
    }
    if (failure) {
        std::rethrow_exception(failure);
    }
}

}  // namespace providers
}  // namespace kxudm
