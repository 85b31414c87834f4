// Files of entities.
#include <kxct/UDMDBCtrl.h>

#include <fstream>
#include <iostream>

#include "db/_private/ImportLog.h"
#include "db/_private/UDMDBCtrlGuard.h"

namespace kxct {

using kxudm::IUDMProfile;
using kxudm::UDMItemHandle;

bool UDMDBCtrl::AddFile(UDMItemHandle& handle, const kxString& path, bool external) {
    return WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        profile.BeginAddFile(handle).setFilePath(path).setIsExternal(external).go();
        return true;
    });
}

bool UDMDBCtrl::ReAddFile(UDMItemHandle& handle, const kxString& path, bool a, bool b) {
    return WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        profile.ReAddFile(handle, path, a, b);
        return true;
    });
}

bool UDMDBCtrl::RemoveFile(UDMItemHandle& handle, const kxString& name) {
    return WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        profile.RemoveFile(handle, name);
        return true;
    });
}

bool UDMDBCtrl::GetDocuments(UDMItemHandle& handle, kxStlVector<kxudm::UDMGenericDocument>& out) {
    return WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        profile.GetDocuments(handle, out, true);
        return true;
    });
}

int UDMDBCtrl::AddFoldersAndFiles(const kxStlVector<kxString>& folders,
                                  const kxStlVector<kxString>& files,
                                  const kxString& text,
                                  const kxStlMap<kxString, kxString>& map) {
    return WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        const ImportLog log(_udmProfilePtr);
        return profile.AddFoldersAndFiles(folders, files, text, map);
    });
}

void UDMDBCtrl::RetrieveFilesIntoFolder(const UDMItemHandle& handle,
                                        const kxString& folder,
                                        const kxString& text,
                                        kxStlVector<kxString>& files) {
    WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        // The runtime takes the result before the last text.
        profile.RetrieveFilesToPath(handle, folder, files, text);
    });
}

void UDMDBCtrl::RetrieveFilesIntoFolder(const UDMItemHandle& handle,
                                        const kxString& folder,
                                        const kxString& text) {
    kxStlVector<kxString> files;
    RetrieveFilesIntoFolder(handle, folder, text, files);
}

void UDMDBCtrl::RetrieveFilesIntoFolder(const UDMItemHandle& handle,
                                        const kxString& folder,
                                        const bool& a,
                                        const bool& b,
                                        kxStlVector<kxString>& files) {
    WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        profile.RetrieveFilesToFolder(handle, folder, a, b, files);
    });
}

void UDMDBCtrl::RetrieveFilesIntoFolder(const UDMItemHandle& handle,
                                        const kxString& folder,
                                        const bool& a,
                                        const bool& b) {
    kxStlVector<kxString> files;
    RetrieveFilesIntoFolder(handle, folder, a, b, files);
}

void UDMDBCtrl::RetrieveFilesIntoWorkspace(const UDMItemHandle& handle,
                                           const bool& a,
                                           const bool& b,
                                           kxStlVector<kxString>& files) {
    WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        profile.RetrieveFilesIntoWorkspace(handle, a, b, files);
    });
}

void UDMDBCtrl::RetrieveFilesIntoWorkspace(const UDMItemHandle& handle,
                                           const bool& a,
                                           const bool& b) {
    kxStlVector<kxString> files;
    RetrieveFilesIntoWorkspace(handle, a, b, files);
}

void UDMDBCtrl::SetVault(UDMItemHandle& handle, const kxString& vault) {
    RequireProfile(_udmProfilePtr, __PRETTY_FUNCTION__);
    const kxString directory = _parameters.at("RepositoryBaseDir").GetString() + "/" + vault;
    KXCT_TRANSLATED([&] { _udmProfilePtr->SetVault(handle, directory); });
}

kxString UDMDBCtrl::_CreateFileInTmpDirectory(const kxString& directory,
                                              const kxString& name,
                                              const kxString& content) {
    kxString path = directory + "/" + name;
    std::ofstream file(path);
    if (!file.is_open()) {
        std::cout << "Unable to open file";
        return {};
    }
    file << content << std::endl;
    file.close();
    return path;
}

}  // namespace kxct
