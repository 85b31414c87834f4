// Import, export and merge.
#include <kxct/UDMDBCtrl.h>
#include <kxudm/UDMKXMergeToCatalog.h>

#include "db/_private/UDMDBCtrlGuard.h"

namespace kxct {

using kxudm::IUDMProfile;
using kxudm::UDMItemHandle;
using kxudm::UDMKXMergeToCatalog;
using kxudm::UDMUID;

namespace {

// All published revisions, with files.
constexpr int EXPORT_SCOPE = 2;

// An engine for one merge. What the runtime throws passes as it is; no engine is a null guard's
// failure, whatever result code came with it.
boost::shared_ptr<UDMKXMergeToCatalog> NewMerge(const char* function,
                                                const boost::shared_ptr<IUDMProfile>& profile,
                                                const kxString& first,
                                                const kxString& second,
                                                const kxString& third) {
    RequireProfile(profile, function);
    boost::shared_ptr<UDMKXMergeToCatalog> mergeToCatalogPtr;
    UDMKXMergeToCatalog::CreateInstance(mergeToCatalogPtr, first, second, profile, third);
    if (!mergeToCatalogPtr) {
        ThrowMissingInSession(function, "mergeToCatalogPtr");
    }
    return mergeToCatalogPtr;
}

}  // namespace

void UDMDBCtrl::Import(const kxString& path) {
    WithProfile(
        _udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) { profile.Import(path); });
}

void UDMDBCtrl::Export(const kxString& path, const kxStlVector<kxString>& texts) {
    WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        profile.Export(path, texts, EXPORT_SCOPE);
    });
}

void UDMDBCtrl::Merge(const kxString& first,
                      const kxString& second,
                      const kxString& third,
                      const kxStlMap<UDMUID, kxStlVector<kxString>>& entities,
                      kxStlVector<UDMItemHandle>& out,
                      bool flag) {
    const auto engine = NewMerge(__PRETTY_FUNCTION__, _udmProfilePtr, first, second, third);
    KXCT_TRANSLATED([&] { out = engine->merge(entities, flag); });
}

void UDMDBCtrl::Merge(const kxString& first,
                      const kxString& second,
                      const kxString& third,
                      const kxStlVector<UDMUID>& entities,
                      kxStlVector<UDMItemHandle>& out) {
    const auto engine = NewMerge(__PRETTY_FUNCTION__, _udmProfilePtr, first, second, third);
    KXCT_TRANSLATED([&] { out = engine->merge(entities, false); });
}

}  // namespace kxct
