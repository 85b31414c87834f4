#include <kxudm/IUDMProfile.h>
#include <kxudm/UDMMaintenance.h>
#include <kxudm/spi/IMaintenance.h>

namespace kxudm {

spi::IMaintenance::~IMaintenance() = default;

UDMMaintenance::UDMMaintenance(const boost::shared_ptr<IUDMProfile>& profile)
    : _profile(profile), _maintenance(dynamic_cast<spi::IMaintenance*>(profile.get())) {
    if (!profile) {
        throw UDMException("The maintenance of a library needs a session; the profile is null");
    }
    if (_maintenance == nullptr) {
        throw UDMNotSupportedException("The data source of session " + profile->GetSessionId() +
                                       " doesn't offer maintenance; ask its administrator");
    }
}

kxStlVector<UDMFinding> UDMMaintenance::Verify(const UDMVerifyOptions& options) {
    return _maintenance->VerifyLibrary(options);
}

UDMPurged UDMMaintenance::Purge(const UDMPurgeOptions& options) {
    return _maintenance->PurgeLibrary(options);
}

kxStlVector<UDMDeletedEntity> UDMMaintenance::DeletedEntities() {
    return _maintenance->ListDeleted();
}

bool UDMMaintenance::Undelete(const kxString& uid) {
    return _maintenance->UndeleteEntity(uid);
}

void UDMMaintenance::RebuildFullText() {
    _maintenance->RebuildFullTextIndex();
}

const char* UDMMaintenance::Name(UDMFindingKind kind) {
    switch (kind) {
        case UDMFindingKind::Database:
            return "damaged database";
        case UDMFindingKind::DefinitionMissing:
            return "missing definition";
        case UDMFindingKind::RevisionMissing:
            return "missing revision";
        case UDMFindingKind::RevisionStray:
            return "stray revision";
        case UDMFindingKind::AttributesDamaged:
            return "damaged attributes";
        case UDMFindingKind::SearchAttributes:
            return "wrong search attributes";
        case UDMFindingKind::LinkInterval:
            return "broken link interval";
        case UDMFindingKind::LinkDangling:
            return "dangling link";
        case UDMFindingKind::LinkCycle:
            return "cycle of links";
        case UDMFindingKind::OwnedTwice:
            return "second owner";
        case UDMFindingKind::InTwoFolders:
            return "second folder";
        case UDMFindingKind::FolderEntry:
            return "wrong folder entry";
        case UDMFindingKind::FileInterval:
            return "broken file interval";
        case UDMFindingKind::FileDangling:
            return "dangling file";
        case UDMFindingKind::StrayRow:
            return "stray row";
        case UDMFindingKind::ContentMissing:
            return "missing content";
        case UDMFindingKind::ContentDamaged:
            return "damaged content";
        case UDMFindingKind::ContentUnreadable:
            return "unreadable content";
        case UDMFindingKind::ContentOrphan:
            return "orphaned content";
        case UDMFindingKind::VaultStranger:
            return "stranger in the vault";
        case UDMFindingKind::NeighbourUnreadable:
            return "unreadable neighbour";
        case UDMFindingKind::FullText:
            return "wrong full text";
    }
    return "unknown";
}

}  // namespace kxudm
