// Entities, folders and classifications.
#include <kxct/UDMDBCtrl.h>
#include <kxudm/ClassificationReader.h>

#include "db/_private/UDMDBCtrlGuard.h"

namespace kxct {

using kxudm::IUDMProfile;
using kxudm::UDMItemHandle;

namespace {

// Appends the classifications that are masters, or the others.
void AppendClassifications(IUDMProfile& profile,
                           kxStlVector<UDMItemHandle>& out,
                           const kxString& name,
                           bool masters) {
    kxStlVector<UDMItemHandle> list;
    profile.GetClassifications(list, name);
    for (const UDMItemHandle& handle : list) {
        const auto reader = handle.GetReader<kxudm::ClassificationReader, UDMItemHandle>();
        if (reader.IsMaster() == masters) {
            out.push_back(handle);
        }
    }
}

}  // namespace

UDMItemHandle UDMDBCtrl::CreateEntity(const kxString& definition, const kxString& name) {
    return WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        return profile.CreateEntity(definition, name);
    });
}

UDMItemHandle UDMDBCtrl::CreateAndAdd(const kxString& definition,
                                      const kxString& name,
                                      const UDMItemHandle& parent,
                                      const kxString& group) {
    return WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        return profile.CreateAndAddChild(definition, name, parent, group);
    });
}

void UDMDBCtrl::AddChild(const UDMItemHandle& parent,
                         const UDMItemHandle& child,
                         const kxString& group) {
    WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        profile.AddChild(parent, child, group);
    });
}

void UDMDBCtrl::RemoveChildFromParent(UDMItemHandle& parent, UDMItemHandle& child) {
    WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        profile.RemoveChild(parent, child);
    });
}

void UDMDBCtrl::DeleteRootEntity(UDMItemHandle& handle) {
    WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        profile.DeleteEntity(handle, true, false);
    });
}

void UDMDBCtrl::MoveContent(const UDMItemHandle& content, const UDMItemHandle& target) {
    WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        profile.MoveContent(content, target);
    });
}

void UDMDBCtrl::GetChildren(kxStlVector<UDMItemHandle>& out,
                            const UDMItemHandle& parent,
                            const kxString& group,
                            const kxString& queryExpression) {
    WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        profile.GetChildren(out, parent, group, queryExpression);
    });
}

std::size_t UDMDBCtrl::GetNChildren(const UDMItemHandle& parent,
                                    const kxString& group,
                                    const kxString& queryExpression) const {
    return WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        return profile.GetChildCount(parent, group, queryExpression);
    });
}

void UDMDBCtrl::GetParents(kxStlVector<UDMItemHandle>& out,
                           const UDMItemHandle& handle,
                           const kxString& relation,
                           const bool flag) {
    // Spelled out, as below: the text keeps the const of the flag, which the compiler's own drops.
    constexpr auto function =
        "void kxct::UDMDBCtrl::GetParents(kxStlVector<kxudm::UDMItemHandle>&, const "
        "kxudm::UDMItemHandle&, const kxString&, const bool)";
    WithProfile(_udmProfilePtr, function, [&](IUDMProfile& profile) {
        profile.GetParents(out, handle, relation, flag);
    });
}

void UDMDBCtrl::GetParents(kxStlVector<UDMItemHandle>& out,
                           const UDMItemHandle& handle,
                           const bool flag) {
    constexpr auto function =
        "void kxct::UDMDBCtrl::GetParents(kxStlVector<kxudm::UDMItemHandle>&, const "
        "kxudm::UDMItemHandle&, const bool)";
    WithProfile(_udmProfilePtr, function, [&](IUDMProfile& profile) {
        profile.GetParents(out, handle, "owner", flag);
    });
}

UDMItemHandle UDMDBCtrl::GetUDMItemHandle(const kxString& uid) {
    return WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        return profile.GetEntity(uid);
    });
}

bool UDMDBCtrl::GetUDMItemHandleList(kxStlVector<UDMItemHandle>& out,
                                     const kxStlVector<kxString>& uids) {
    RequireProfile(_udmProfilePtr, __PRETTY_FUNCTION__);
    try {
        for (const kxString& uid : uids) {
            out.push_back(GetUDMItemHandle(uid));
        }
    } catch (const std::exception&) {
        return false;
    }
    return true;
}

// Must not get a null guard or a translation: callers use it to ask whether an entity exists, and
// a failure of any kind means that it doesn't.
bool UDMDBCtrl::FindEntityById(UDMItemHandle& out, const kxString& id, bool latest) const {
    if (!_udmProfilePtr) {
        return false;
    }
    try {
        const kxString base = latest ? kxudm::UDMUID(id).GetDmUid() : kxString();
        const kxString& text = latest ? base : id;
        if (text.empty()) {
            return false;
        }
        out = _udmProfilePtr->GetEntity(text);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

void UDMDBCtrl::SetDisplayName(const kxString& name, const UDMItemHandle& handle) const {
    WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        profile.SetDisplayName(name, handle);
    });
}

void UDMDBCtrl::SetMetaData(const UDMItemHandle& handle,
                            const kxString& key,
                            const kxVariant& value) {
    WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        profile.SetAttributeValue(handle, key, value);
    });
}

void UDMDBCtrl::CreateFolder(UDMItemHandle& out, const kxString& path) {
    WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        profile.CreateFolder(out, path);
    });
}

void UDMDBCtrl::GetFolder(UDMItemHandle& out, const kxString& path, bool flag) {
    WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        profile.GetFolder(out, path, flag);
    });
}

void UDMDBCtrl::GetOrCreateFolder(UDMItemHandle& out, const kxString& path, bool flag) {
    WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        profile.GetOrCreateFolder(out, path, flag);
    });
}

void UDMDBCtrl::FindFolderFullPath(kxString& out, const UDMItemHandle& folder) {
    WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        profile.GetFolderFullPath(out, folder);
    });
}

// These two must stay empty: the interface promises that they answer nothing and never fail.
long UDMDBCtrl::GetFolders(const kxString& /*path*/, std::vector<void*>& /*out*/) {
    return 0;
}
bool UDMDBCtrl::GetParentFolder(const kxString& /*path*/, void* /*folder*/, void*& /*out*/) {
    return false;
}

void UDMDBCtrl::AddClassification(UDMItemHandle& first, UDMItemHandle& second) {
    WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        profile.AddClassification(first, second);
    });
}

void UDMDBCtrl::RemoveClassification(UDMItemHandle& first, UDMItemHandle& second) {
    WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        profile.RemoveClassification(first, second);
    });
}

void UDMDBCtrl::SetIsMaster(const UDMItemHandle& handle, bool flag) {
    WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        profile.SetMaster(handle, flag);
    });
}

void UDMDBCtrl::GetRootClassifications(kxStlVector<UDMItemHandle>& out, const kxString& name) {
    WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        AppendClassifications(profile, out, name, true);
    });
}

void UDMDBCtrl::GetOtherClassifications(kxStlVector<UDMItemHandle>& out, const kxString& name) {
    WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        AppendClassifications(profile, out, name, false);
    });
}

}  // namespace kxct
