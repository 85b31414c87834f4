// A library with documents: shorthands, and a file layer of the test's under the session's.
#pragma once

#include <algorithm>

#include "../vault/Support.h"
#include "Library.h"
#include "Revisions.h"
#include "providers/local/LibraryFile.h"
#include "providers/local/LocalProvider.h"

namespace kxudm::test {

using vault::Deck;
using vault::ErrorOf;
using vault::Exists;
using vault::ReadFile;

inline void AddFile(const ProfilePtr& profile,
                    const UDMItemHandle& handle,
                    const std::string& path,
                    bool external = false) {
    profile->BeginAddFile(handle).setFilePath(path).setIsExternal(external).go();
}

inline kxStlVector<UDMGenericDocument> Documents(const ProfilePtr& profile,
                                                 const UDMItemHandle& handle,
                                                 bool withExternal = true) {
    kxStlVector<UDMGenericDocument> documents;
    profile->GetDocuments(handle, documents, withExternal);
    return documents;
}

inline Names DocumentNames(const ProfilePtr& profile,
                           const UDMItemHandle& handle,
                           bool withExternal = true) {
    Names names;
    for (const UDMGenericDocument& document : Documents(profile, handle, withExternal)) {
        names.push_back(document.GetName());
    }
    return names;
}

// Names in a folder, sorted; those of temporary files, too. None where there is no folder.
inline Names FilesIn(const std::string& folder) {
    Names names;
    if (std::filesystem::exists(folder)) {
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            names.push_back(entry.path().filename());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

// Contents of the documents of a revision, "name=content", as they are retrieved.
inline Names RetrievedContents(const ProfilePtr& profile, const UDMItemHandle& handle) {
    const vault::Folder folder;
    kxStlVector<kxString> paths;
    profile->RetrieveFilesToFolder(handle, folder.File("out"), false, false, paths);
    Names contents;
    for (const kxString& path : paths) {
        contents.push_back(std::filesystem::path(path.c_str()).filename().string() + "=" +
                           ReadFile(path));
    }
    return contents;
}

class Files : public testing::Test {
  protected:
    // Writes a source of that name.
    std::string Write(const std::string& name, const std::string& content) {
        return sources.Write(name, content);
    }
    void Put(const UDMItemHandle& handle, const std::string& name, const std::string& content) {
        AddFile(ann, handle, Write(name, content));
    }
    void PutAgain(const UDMItemHandle& handle,
                  const std::string& name,
                  const std::string& content) {
        ann->ReAddFile(handle, Write(name, content), false, false);
    }
    UDMItemHandle Part(const std::string& name = "Wheel") {
        return ann->CreateEntity("Part", name);
    }
    Names Contents(const ProfilePtr& profile, const UDMItemHandle& handle) {
        return RetrievedContents(profile, handle);
    }
    Names Contents(const UDMItemHandle& handle) { return Contents(ann, handle); }
    kxStlVector<kxString> Retrieve(const UDMItemHandle& handle,
                                   const std::string& folder,
                                   bool overwrite = false,
                                   bool withChildren = false) {
        kxStlVector<kxString> paths;
        ann->RetrieveFilesToFolder(handle, folder, overwrite, withChildren, paths);
        return paths;
    }
    // A session of Ann's whose file calls go through `layer`.
    ProfilePtr OpenOver(vault::FileLayer& layer, int busyTimeoutMilliseconds = 10000) {
        providers::LocalOptions options;
        options.files = &layer;
        options.busyTimeoutMilliseconds = busyTimeoutMilliseconds;
        return providers::LocalProvider(options).OpenProfile(library.Params());
    }
    // Changes the library's tables behind everybody's back.
    void Tamper(const std::string& sql) {
        const auto store = providers::OpenLibraryFile(library.File(), 1000);
        store->Connection().Execute(sql);
    }
    // The only content in the common vault.
    std::string StoredPath() {
        for (const auto& entry :
             std::filesystem::recursive_directory_iterator(library.BaseDirectory() + "/vault")) {
            if (entry.is_regular_file()) {
                return entry.path();
            }
        }
        return {};
    }

    vault::Folder sources;
    Library library;
    ProfilePtr ann = library.Open("ann");
};

}  // namespace kxudm::test
