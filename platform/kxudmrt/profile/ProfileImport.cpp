// Bulk import: plan first, then bring in.
#include <utility>

#include "profile/BulkImport.h"
#include "profile/Folders.h"
#include "profile/Profile.h"

namespace kxudm::profile {

namespace {

// "" for the top.
kxString TargetOf(const kxString& root) {
    if (!root.empty() && root != "/") {
        static_cast<void>(FolderPathParts(root));
        return root;
    }
    return {};
}

ImportPlan PlanOf(Session& session,
                  const kxStlVector<kxString>& folders,
                  const kxStlVector<kxString>& files,
                  const kxString& target,
                  const ImportOptions& options,
                  ImportReport& report) {
    ImportWalk walk(options, report, session.Vaults().In({}).Directory());
    walk.AddTarget(target);
    for (const kxString& file : files) {
        walk.AddFile(file, target);
    }
    for (const kxString& folder : folders) {
        walk.AddFolder(folder, target);
    }
    return walk.Take();
}

// What was committed before a failure stands, and is told.
int Run(BulkImport& import, const ImportPlan& plan) {
    try {
        return import.Run(plan);
    } catch (const UDMStoreException& failure) {
        import.Tell();
        if (import.Made() == 0) {
            throw;
        }
        throw UDMStoreException("The import ended after " + std::to_string(import.Made()) +
                                " contents, which are in the library: " + failure.what());
    } catch (...) {
        import.Tell();
        throw;
    }
}

}  // namespace

int Profile::AddFoldersAndFiles(const kxStlVector<kxString>& folders,
                                const kxStlVector<kxString>& files,
                                const kxString& root,
                                const kxStlMap<kxString, kxString>& options) {
    _session->Poll("AddFoldersAndFiles");
    _session->Store().Connection().RequireWritable();
    const auto session = _session;
    const ImportOptions read = ReadImportOptions(*session->Catalogue(), options);
    ImportReport report(session->ProgressListener(), read.strict);
    const ImportPlan plan = PlanOf(*session, folders, files, TargetOf(root), read, report);
    report.RequireGoingOn();
    if (report.IsCancelled()) {
        return 0;
    }
    BulkImport import(*session, read, report);
    const int made = Run(import, plan);
    import.Tell();
    report.RequireGoingOn();
    return made;
}

}  // namespace kxudm::profile
