// Finds out what a bulk import takes: which folders and files, in which order, before anything is
// changed.
//
// Layer: profile, over the file system; knows nothing of the library but how names must be. What
// can't be taken (unreadable folders, names that can't be kept, pipes and devices, folders that
// contain themselves by a symbolic link) goes to the report. Symbolic links are followed.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "profile/ImportOptions.h"
#include "profile/ImportReport.h"

namespace kxudm::profile {

// Where files come from, and the path of the library's folder that takes them; "" is the top.
struct ImportFolder {
    std::string source;
    kxString target;
    bool wanted = false;  // even if it stays empty
};

struct ImportFile {
    std::size_t folder = 0;  // in the plan
    std::string name;
    std::uint64_t size = 0;
};

struct ImportPlan {
    std::vector<ImportFolder> folders;  // each behind the one that it lies in
    std::vector<ImportFile> files;      // in the order of their folders, then by name
    std::uint64_t bytes = 0;

    [[nodiscard]] std::string SourceOf(const ImportFile& file) const {
        const std::string& folder = folders[file.folder].source;
        return folder + (folder.ends_with('/') ? "" : "/") + file.name;
    }
};

class ImportWalk {
  public:
    // Leaves out the folder of the library's vault, which may not be there.
    ImportWalk(const ImportOptions& options, ImportReport& report, const std::string& vault);

    // The folder that is imported to is made even if it stays empty.
    void AddTarget(const kxString& target);
    // `target` is the path of the library's folder that gets what is named here; "" is the top.
    void AddFile(const std::string& path, const kxString& target);
    // The folder itself becomes one below `target`.
    void AddFolder(const std::string& path, const kxString& target);

    [[nodiscard]] ImportPlan Take() { return std::move(_plan); }

  private:
    // A folder on the way, and how it was come to.
    struct Visit {
        std::string source;
        kxString target;
        std::string relative = {};  // to the imported folder; empty for that itself
        std::ptrdiff_t above = -1;  // in _visits
        dev_t device = 0;
        ino_t inode = 0;
    };

    // Why a folder can't be entered; empty if it can.
    [[nodiscard]] std::string FolderComplaint(const std::string& name,
                                              std::ptrdiff_t above,
                                              dev_t device,
                                              ino_t inode) const;
    void Walk(Visit first);
    void VisitFolder(std::ptrdiff_t index, std::vector<Visit>& below);
    void MeetEntry(std::ptrdiff_t index, const std::string& name, std::vector<Visit>& below);
    [[nodiscard]] bool LeadsBack(std::ptrdiff_t above, dev_t device, ino_t inode) const;
    void TakeFile(std::size_t folder, const std::string& name, std::uint64_t size);

    const ImportOptions& _options;
    ImportReport& _report;
    std::optional<std::pair<dev_t, ino_t>> _vault;
    ImportPlan _plan;
    std::vector<Visit> _visits;
    std::size_t _current = 0;  // the plan's folder of the visit
};

}  // namespace kxudm::profile
