// The runtime as a program that keeps folders of files, to be measured beside others that do: each
// step is one process, as a user of those would run it.
//
//     adapter STEP REPOSITORY ARGUMENT
//
//     import  REPOSITORY TREE    makes the repository and takes the tree, published
//     wc      REPOSITORY TREE    prepares the tree for commit: there is nothing to do
//     commit  REPOSITORY TREE    publishes each file that has changed since, as a new revision
//     list    REPOSITORY         prints the path of every file
//     log     REPOSITORY FILE    prints the revisions of a file, newest first
//     export  REPOSITORY FOLDER  writes the newest revision of all into a new folder
//     verify  REPOSITORY         reads everything and compares it with its hash, and all rows with
//                                each other
//     verify-all  REPOSITORY     compares the full text index as well, of which others have none
//
// REPOSITORY is a folder. The catalogue is KXCT_DATA_DIR/catalogue/engineering.xml, unless the
// environment's KXCT_CATALOGUE names another one.
#include <kxudm/IUDMProfile.h>
#include <kxudm/UDMBulkEdit.h>
#include <kxudm/UDMBulkRetrieval.h>
#include <kxudm/UDMMaintenance.h>
#include <kxudm/UDMProfileMgr.h>
#include <kxudm/UDMProgress.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iostream>
#include <limits>

namespace {

namespace fs = std::filesystem;

using kxudm::UDMItemHandle;
using ProfilePtr = boost::shared_ptr<kxudm::IUDMProfile>;

constexpr char kRoot[] = "/tree";

class Repository {
  public:
    explicit Repository(const fs::path& folder) {
        const fs::path whole = fs::absolute(folder);
        const char* catalogue = std::getenv("KXCT_CATALOGUE");
        kxudm::UDMProfileMgr::Parameters params;
        params["DataSource"] = "local";
        params["MasterDBFile"] = (whole / "master.mdb").string();
        params["UDMConfigFile"] =
            catalogue != nullptr ? catalogue : KXCT_DATA_DIR "/catalogue/engineering.xml";
        params["RepositoryName"] = "Files";
        params["RepositoryBaseDir"] = whole.string();
        params["ProfileName"] = "Local";
        params["WorkspaceName"] = "desk";
        params["WorkspaceBaseDir"] = (whole / "workspace").string();
        params["username"] = "n";
        _profile = kxudm::UDMProfileMgr::GetProfile(params);
    }
    ~Repository() { kxudm::UDMProfileMgr::DiscardProfile(_profile); }
    Repository(const Repository&) = delete;
    Repository& operator=(const Repository&) = delete;

    kxudm::IUDMProfile& Session() const { return *_profile; }
    const ProfilePtr& Shared() const { return _profile; }

  private:
    ProfilePtr _profile;
};

class Failures : public kxudm::IUDMProgressListener {
  public:
    bool Advance(const kxudm::UDMProgress& /*progress*/) override { return true; }
    void Failed(const kxString& item, const kxString& reason) override {
        std::cerr << item << ": " << reason << '\n';
    }
};

using Visit = std::function<void(const UDMItemHandle& content, const fs::path& relative)>;

bool IsFolder(const UDMItemHandle& handle) {
    return handle.GetCdef() == "Foldertype";
}

// Folders before what is in them.
void ForEach(kxudm::IUDMProfile& session,
             const UDMItemHandle& folder,
             const fs::path& relative,
             const Visit& visit) {
    kxStlVector<UDMItemHandle> children;
    session.GetChildren(children, folder, "folder", "");
    for (const UDMItemHandle& child : children) {
        const fs::path path = relative / std::string(child.GetDisplayName());
        visit(child, path);
        if (IsFolder(child)) {
            ForEach(session, child, path, visit);
        }
    }
}

void ForEach(const Repository& repository, const Visit& visit) {
    UDMItemHandle root;
    repository.Session().GetFolder(root, kRoot, false);
    ForEach(repository.Session(), root, {}, visit);
}

// Imports what is in the tree, not the tree's own name, so that it is found again under any.
int Import(const fs::path& folder, const fs::path& tree) {
    fs::create_directories(folder);
    const Repository repository(folder);
    Failures failures;
    const kxudm::UDMProgressScope scope(repository.Shared(), failures);
    kxStlVector<kxString> folders;
    kxStlVector<kxString> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(tree)) {
        (entry.is_directory() ? folders : files).push_back(entry.path().string());
    }
    const int made = repository.Session().AddFoldersAndFiles(
        folders, files, kRoot, {{"publish", "true"}, {"comment", "first"}});
    std::cout << made << " files\n";
    return scope.FailureCount() == 0 ? 0 : 1;
}

bool HasChanged(const Repository& repository, const UDMItemHandle& content, const fs::path& file) {
    struct stat status {};
    kxStlVector<kxudm::UDMGenericDocument> documents;
    repository.Session().GetDocuments(content, documents, true);
    if (stat(file.c_str(), &status) != 0 || documents.empty()) {
        return false;
    }
    std::tm parts{};
    gmtime_r(&status.st_mtime, &parts);
    char time[40];
    std::strftime(time, sizeof time, "%Y-%m-%dT%H:%M:%S", &parts);
    const kxudm::UDMGenericDocument& document = documents.front();
    constexpr auto kMost = std::numeric_limits<std::int32_t>::max();
    return document.GetSize() != std::min<std::int64_t>(status.st_size, kMost) ||
           document.GetLastmodTime().compare(0, 19, time) != 0;
}

int Commit(const fs::path& folder, const fs::path& tree) {
    const Repository repository(folder);
    kxudm::IUDMProfile& session = repository.Session();
    std::vector<std::pair<UDMItemHandle, fs::path>> changed;
    ForEach(repository, [&](const UDMItemHandle& content, const fs::path& relative) {
        if (!IsFolder(content) && HasChanged(repository, content, tree / relative)) {
            changed.emplace_back(content, tree / relative);
        }
    });
    kxudm::UDMBulkEdit edit(repository.Shared());
    for (const auto& [content, file] : changed) {
        session.Checkout(content, "");
        const UDMItemHandle working = session.GetWorkingHandle(content);
        session.ReAddFile(working, file.string(), false, false);
        session.PersistEntity(working, "second", false, true, true);
    }
    edit.Commit();
    std::cout << changed.size() << " files\n";
    return 0;
}

int List(const fs::path& folder) {
    const Repository repository(folder);
    ForEach(repository, [](const UDMItemHandle& content, const fs::path& relative) {
        if (!IsFolder(content)) {
            std::cout << relative.string() << '\n';
        }
    });
    return 0;
}

int Log(const fs::path& folder, const fs::path& file) {
    const Repository repository(folder);
    kxudm::IUDMProfile& session = repository.Session();
    UDMItemHandle place;
    session.GetFolder(place, (fs::path(kRoot) / file.parent_path()).string(), false);
    kxStlVector<UDMItemHandle> found;
    session.GetChildren(found, place, "folder", "name == \"" + file.filename().string() + "\"");
    if (found.empty()) {
        std::cerr << file << " is not there\n";
        return 1;
    }
    const auto history = session.GetHistory(found.front());
    const auto& versions = history->GetVersionList();
    for (auto version = versions.rbegin(); version != versions.rend(); ++version) {
        const UDMItemHandle revision = session.GetEntity((*version)->GetBaseUID() + ":" +
                                                         std::to_string((*version)->GetVersion()));
        std::cout << revision.GetUID() << ' ' << revision.GetModifiedBy().GetString() << ' '
                  << revision.GetModifiedTime().GetString() << ' '
                  << revision.GetAttributeValue("smd_comment").GetString() << '\n';
    }
    return 0;
}

int Export(const fs::path& folder, const fs::path& target) {
    const Repository repository(folder);
    fs::create_directories(target);
    kxudm::UDMBulkRetrieval retrieval(repository.Shared());
    ForEach(repository, [&](const UDMItemHandle& content, const fs::path& relative) {
        if (IsFolder(content)) {
            fs::create_directory(target / relative);
        } else {
            retrieval.Add(content, (target / relative).parent_path().string());
        }
    });
    kxStlVector<kxString> paths;
    retrieval.Run(paths);
    return 0;
}

int Verify(const fs::path& folder, bool words) {
    const Repository repository(folder);
    const auto findings = kxudm::UDMMaintenance(repository.Shared()).Verify({.words = words});
    for (const kxudm::UDMFinding& finding : findings) {
        std::cout << kxudm::UDMMaintenance::Name(finding.kind) << ' ' << finding.object << ": "
                  << finding.text << '\n';
    }
    return findings.empty() ? 0 : 1;
}

int Run(const std::string& step, const fs::path& repository, const fs::path& argument) {
    if (step == "import") {
        return Import(repository, argument);
    }
    if (step == "wc") {
        return 0;
    }
    if (step == "commit") {
        return Commit(repository, argument);
    }
    if (step == "list") {
        return List(repository);
    }
    if (step == "log") {
        return Log(repository, argument);
    }
    if (step == "export") {
        return Export(repository, argument);
    }
    if (step == "verify" || step == "verify-all") {
        return Verify(repository, step == "verify-all");
    }
    std::cerr << "There is no step \"" << step << "\"\n";
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::cerr << "usage: adapter STEP REPOSITORY [ARGUMENT]\n";
        return 2;
    }
    try {
        return Run(argv[1], argv[2], argc > 3 ? argv[3] : "");
    } catch (const std::exception& failure) {
        std::cerr << "adapter: " << failure.what() << '\n';
        return 1;
    }
}
