// IUDMProfile: export and import of archives.
#include "profile/ArchiveExport.h"
#include "profile/ArchiveImport.h"
#include "profile/FileIntake.h"
#include "profile/Maintenance.h"
#include "profile/Profile.h"

namespace kxudm::profile {

namespace {

exchange::Scope ScopeOf(int scope) {
    if (scope < 0 || scope > 2) {
        throw UDMException("An export can't be of scope " + std::to_string(scope) +
                           "; choose 0 (newest revisions without files), 1 (with files) or 2 (all "
                           "published revisions with files)");
    }
    return static_cast<exchange::Scope>(scope);
}

}  // namespace

void Profile::Export(const kxString& path, const kxStlVector<kxString>& uids, int scope) {
    BeginCare(*_session, "Export");
    static_cast<void>(DocumentNameOf(path));
    ArchiveExport(*_session, path, ScopeOf(scope)).Run(uids);
}

void Profile::Import(const kxString& path) {
    BeginCare(*_session, "Import");
    ArchiveImport(*_session, path, nullptr).Run();
}

UDMImportReport Profile::ImportArchive(const kxString& path) {
    BeginCare(*_session, "Import");
    UDMImportReport report;
    ArchiveImport(*_session, path, &report).Run();
    return report;
}

}  // namespace kxudm::profile
