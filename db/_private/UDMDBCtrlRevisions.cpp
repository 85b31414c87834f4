// The life of revisions, and history.
#include <kxct/UDMDBCtrl.h>
#include <kxctinterfaces/Item.h>

#include <string>

#include "db/_private/UDMDBCtrlGuard.h"

namespace kxct {

using kxudm::IUDMProfile;
using kxudm::UDMHistoryNode;
using kxudm::UDMItemHandle;

namespace {

const UDMHistoryNode& Existing(const boost::shared_ptr<UDMHistoryNode>& node) {
    if (!node) {
        throw kxudm::UDMException("The history lacks a node; a revision was expected there");
    }
    return *node;
}

// Appends the entity whose UID `uid` makes; one that can't be had is left out.
template <class Uid>
void AppendIfFound(UDMDBCtrl& session, kxStlVector<UDMItemHandle>& out, Uid&& uid) {
    try {
        out.push_back(session.GetUDMItemHandle(uid()));
    } catch (const std::exception&) {
    }
}

void AppendBranches(UDMDBCtrl& session,
                    const UDMHistoryNode& root,
                    kxStlVector<UDMItemHandle>& out) {
    for (const auto& node : root.GetBranchList()) {
        AppendIfFound(session, out, [&] { return Existing(node).GetBaseUID(); });
    }
}

// Versions that are strictly older than the root.
void AppendOlderVersions(UDMDBCtrl& session,
                         const UDMHistoryNode& root,
                         kxStlVector<UDMItemHandle>& out) {
    for (const auto& node : root.GetVersionList()) {
        if (Existing(node).GetVersion() >= root.GetVersion()) {
            continue;
        }
        AppendIfFound(session, out, [&] {
            return kxString(node->GetBaseUID() + ":" + std::to_string(node->GetVersion()));
        });
    }
}

}  // namespace

void UDMDBCtrl::Checkout(const UDMItemHandle& handle, const kxString& comment) {
    WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        profile.Checkout(handle, comment);
    });
}

void UDMDBCtrl::UndoCheckout(const UDMItemHandle& handle) {
    WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        profile.UndoCheckout(handle);
    });
}

void UDMDBCtrl::Save(UDMItemHandle& handle, const kxString& comment) {
    WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        profile.SaveEntity(profile.GetWorkingHandle(handle), comment, true);
    });
}

void UDMDBCtrl::Persist(UDMItemHandle& handle, const kxString& comment, const bool flag) {
    // Spelled out: the text keeps the const of the flag, which the compiler's own drops.
    constexpr auto function =
        "void kxct::UDMDBCtrl::Persist(kxudm::UDMItemHandle&, const kxString&, const bool)";
    WithProfile(_udmProfilePtr, function, [&](IUDMProfile& profile) {
        profile.PersistEntity(profile.GetWorkingHandle(handle), comment, flag, true, true);
    });
}

void UDMDBCtrl::Synchronize(UDMItemHandle& handle) {
    WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        profile.Synchronize(handle);
    });
}

bool UDMDBCtrl::GetSyncStatus(UDMItemHandle& handle) {
    return WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        return profile.GetSyncStatus(handle);
    });
}

boost::shared_ptr<UDMHistoryNode> UDMDBCtrl::GetHistory(const UDMItemHandle& handle) const {
    return WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        return profile.GetHistory(handle);
    });
}

// Must stay without an effect: the interface promises a placeholder.
void UDMDBCtrl::BranchEntity(UDMItemHandle& /*source*/,
                             UDMItemHandle& /*target*/,
                             const kxString& /*name*/,
                             const kxString& /*comment*/,
                             const kxStlVector<UDMItemHandle>& /*children*/) {
    RequireProfile(_udmProfilePtr, __PRETTY_FUNCTION__);
}

std::size_t UDMDBCtrl::GetLineage(const UDMItemHandle& handle,
                                  HistoryCategory category,
                                  kxStlVector<UDMItemHandle>& out) {
    return WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        const boost::shared_ptr<UDMHistoryNode> root = profile.GetHistory(handle);
        if (category == HISTORY_BRANCHES) {
            AppendBranches(*this, Existing(root), out);
        } else if (category == HISTORY_VERSIONS) {
            AppendOlderVersions(*this, Existing(root), out);
        }
        return out.size();
    });
}

}  // namespace kxct
