// Relations, references and queries.
#include <kxct/UDMDBCtrl.h>

#include <algorithm>

#include "db/_private/UDMDBCtrlGuard.h"

namespace kxct {

using kxudm::IUDMProfile;
using kxudm::UDMItemHandle;
using kxudm::UDMQuerySettingHandle;
using kxudm::UDMRelationHandle;

namespace {

// The runtime's mode of a query that is not a full-text one.
constexpr int ATTRIBUTE_QUERY = -1;

bool IsReferenceGroup(IUDMProfile& profile, const UDMItemHandle& handle, const kxString& type) {
    const kxString definition = handle.GetCdef();
    kxStlVector<kxString> names;
    profile.GetProfileUtils().GetGroupNames(definition, names, "reference");
    return std::find(names.begin(), names.end(), type) != names.end();
}

}  // namespace

UDMRelationHandle UDMDBCtrl::CreateRelation(const kxString& type,
                                            UDMItemHandle& first,
                                            UDMItemHandle& second,
                                            bool flag) {
    return WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        return profile.CreateRelation(first, second, type, flag);
    });
}

bool UDMDBCtrl::RemoveRelation(UDMItemHandle& first, UDMItemHandle& second) {
    return WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        return profile.RemoveRelation(first, second);
    });
}

void UDMDBCtrl::AddReference(UDMItemHandle& handle,
                             const UDMItemHandle& target,
                             const kxString& type) {
    WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        profile.AddReference(handle, target, type);
    });
}

void UDMDBCtrl::RemoveReference(UDMItemHandle& target, UDMItemHandle& handle) {
    WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        // The exchange must stay: callers give the referred entity first.
        profile.RemoveReference(handle, target);
    });
}

void UDMDBCtrl::GetReferences(kxStlVector<UDMItemHandle>& out,
                              const kxString& type,
                              const UDMItemHandle& handle) {
    RequireProfile(_udmProfilePtr, __PRETTY_FUNCTION__);
    // Must stay outside the translation: callers see this failure as the runtime gives it.
    if (!type.empty() && !IsReferenceGroup(*_udmProfilePtr, handle, type)) {
        return;
    }
    KXCT_TRANSLATED([&] { _udmProfilePtr->GetReferences(out, handle, type); });
}

void UDMDBCtrl::GetReferredBy(kxStlVector<UDMItemHandle>& out,
                              kxStlVector<kxString>& types,
                              const UDMItemHandle& handle) {
    WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        profile.GetReferredBy(out, types, handle);
    });
}

std::size_t UDMDBCtrl::ExecQuery(const kxString& query,
                                 UDMQuerySettingHandle& settings,
                                 kxStlVector<UDMItemHandle>& out,
                                 long a,
                                 long b,
                                 bool c) {
    return WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        return profile.RunQuery(out, query, ATTRIBUTE_QUERY, a, b, settings, c, false);
    });
}

std::size_t UDMDBCtrl::ExecQueryFullText(const kxString& query,
                                         int mode,
                                         UDMQuerySettingHandle& settings,
                                         kxStlVector<UDMItemHandle>& out,
                                         long a,
                                         long b,
                                         bool c) {
    return WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        return profile.RunQuery(out, query, mode, a, b, settings, c, true);
    });
}

}  // namespace kxct
