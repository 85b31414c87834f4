// A tree of files to import, a library with the shipped definitions, and a listener that writes
// down what it hears.
#pragma once

#include <kxudm/UDMProgress.h>

#include <filesystem>
#include <fstream>

#include "Library.h"

namespace kxudm::test {

class ImportListener : public IUDMProgressListener {
  public:
    bool Advance(const UDMProgress& progress) override {
        heard.push_back(progress);
        return !onAdvance || onAdvance(progress);
    }
    void Failed(const kxString& item, const kxString& reason) override {
        failed.push_back(item);
        reasons.push_back(reason);
    }

    std::vector<UDMProgress> heard;
    Names failed;
    Names reasons;
    std::function<bool(const UDMProgress&)> onAdvance;
};

class ImportFixture : public testing::Test {
  protected:
    using Options = kxStlMap<kxString, kxString>;

    static Parameters Shipped(Parameters params) {
        params["UDMConfigFile"] = KXUDMRT_SHIPPED_CATALOGUE;
        return params;
    }

    ProfilePtr Open(const std::string& user, const std::string& workspace = "desk") {
        return library.Keep(UDMProfileMgr::GetProfile(Shipped(library.Params(user, workspace))));
    }

    [[nodiscard]] std::string Path(const std::string& relative) const {
        return library.Folder().File("in/" + relative);
    }
    // Makes the file with its folders.
    std::string Write(const std::string& relative, const std::string& text) const {
        const std::filesystem::path path = Path(relative);
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << text;
        return path;
    }

    int Import(const Options& options = {}, const kxString& root = "") {
        return ann->AddFoldersAndFiles({Path("tree")}, {}, root, options);
    }
    // "name: definition" of all in the folder, or "absent".
    static Names In(const ProfilePtr& profile, const kxString& path) {
        UDMItemHandle folder;
        try {
            profile->GetFolder(folder, path, false);
        } catch (const UDMNotFoundException&) {
            return {"absent"};
        }
        kxStlVector<UDMItemHandle> children;
        profile->GetChildren(children, folder, "folder", "");
        Names names;
        for (const UDMItemHandle& child : children) {
            names.push_back(child.GetDisplayName() + ": " + child.GetCdef());
        }
        std::sort(names.begin(), names.end());
        return names;
    }
    static UDMItemHandle Find(const ProfilePtr& profile,
                              const kxString& path,
                              const std::string& name) {
        UDMItemHandle folder;
        profile->GetFolder(folder, path, false);
        kxStlVector<UDMItemHandle> children;
        profile->GetChildren(children, folder, "folder", "");
        for (const UDMItemHandle& child : children) {
            if (child.GetDisplayName() == name) {
                return child;
            }
        }
        throw std::runtime_error("nothing is named " + name);
    }
    static Names Documents(const ProfilePtr& profile, const UDMItemHandle& content) {
        kxStlVector<UDMGenericDocument> documents;
        profile->GetDocuments(content, documents, true);
        Names names;
        for (const UDMGenericDocument& document : documents) {
            names.push_back(document.GetName());
        }
        return names;
    }
    // The bytes of the one file of a content.
    std::string Retrieved(const ProfilePtr& profile, const UDMItemHandle& content) const {
        const std::string out = library.Folder().File("out");
        std::filesystem::remove_all(out);
        std::filesystem::create_directories(out);
        kxStlVector<kxString> paths;
        profile->RetrieveFilesToPath(content, out, paths, "");
        if (paths.size() != 1) {
            return "<" + std::to_string(paths.size()) + " files>";
        }
        std::ifstream file(paths.front(), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    [[nodiscard]] std::size_t VaultFiles() const {
        const std::filesystem::path vault = library.BaseDirectory() + "/vault";
        std::size_t count = 0;
        if (std::filesystem::exists(vault)) {
            for (const auto& each : std::filesystem::recursive_directory_iterator(vault)) {
                count += each.is_regular_file() ? 1 : 0;
            }
        }
        return count;
    }

    Library library;
    ProfilePtr ann = Open("ann");
    ImportListener listener;
};

}  // namespace kxudm::test
