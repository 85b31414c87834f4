#include "profile/ImportWalk.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "profile/Folders.h"
#include "vault/DocumentName.h"

namespace kxudm::profile {

namespace {

namespace fs = std::filesystem;

std::string MachineReason(int code) {
    return std::error_code(code, std::generic_category()).message();
}

bool Names(const std::string& folder, std::vector<std::string>& names, std::error_code& error) {
    for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error)) {
        names.push_back(it->path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return !error;
}

// Beyond what a folder's name must be: nobody could read or type one with control characters.
void CheckImportedFolderName(const kxString& name) {
    RequireFolderName(name);
    const bool control = std::any_of(name.begin(), name.end(), [](char c) {
        return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
    });
    if (control) {
        throw UDMException("The folder name \"" + vault::Printable(name) +
                           "\" holds a control character; rename it first");
    }
}

// "" where the check passes, else why it doesn't.
template <typename Check>
std::string Complaint(Check&& check) {
    try {
        check();
        return {};
    } catch (const UDMException& refusal) {
        return refusal.what();
    }
}

// The name that "/data/crash/", "." or "sub/.." stand for.
std::string OwnName(const std::string& folder) {
    std::error_code error;
    const fs::path whole = fs::absolute(folder, error).lexically_normal();
    const fs::path named = whole.has_filename() ? whole : whole.parent_path();
    return named.filename().string();
}

}  // namespace

ImportWalk::ImportWalk(const ImportOptions& options, ImportReport& report, const std::string& vault)
    : _options(options), _report(report) {
    struct stat status {};
    if (stat(vault.c_str(), &status) == 0) {
        _vault.emplace(status.st_dev, status.st_ino);
    }
}

void ImportWalk::AddTarget(const kxString& target) {
    if (!target.empty()) {
        _plan.folders.push_back({target, target, true});
    }
}

void ImportWalk::AddFile(const std::string& path, const kxString& target) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        _report.Fail(path, "it can't be read: " + MachineReason(errno) + "; name a file");
        return;
    }
    if (!S_ISREG(status.st_mode)) {
        _report.Fail(path,
                     S_ISDIR(status.st_mode) ? "it is a folder; name it among the folders"
                                             : "it is a device, pipe or socket; name a file");
        return;
    }
    const std::size_t slash = path.rfind('/');
    const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    if (_options.exclude.Matches(name) ||
        (!_options.include.Empty() && !_options.include.Matches(name))) {
        return;
    }
    const std::string source = slash == std::string::npos ? "." : path.substr(0, slash + 1);
    if (_plan.folders.empty() || _plan.folders.back().source != source ||
        _plan.folders.back().target != target) {
        _plan.folders.push_back({source, target});
    }
    TakeFile(_plan.folders.size() - 1, name, static_cast<std::uint64_t>(status.st_size));
}

void ImportWalk::AddFolder(const std::string& path, const kxString& target) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        _report.Fail(path, "it can't be read: " + MachineReason(errno) + "; name a folder");
        return;
    }
    if (!S_ISDIR(status.st_mode)) {
        _report.Fail(path, "it is no folder; name it among the files");
        return;
    }
    const kxString name = OwnName(path);
    const std::string complaint = FolderComplaint(name, -1, status.st_dev, status.st_ino);
    if (!complaint.empty()) {
        _report.Fail(path, complaint);
        return;
    }
    Walk({.source = path,
          .target = target + "/" + name,
          .device = status.st_dev,
          .inode = status.st_ino});
}

// With a list of what waits: folders may lie deeper than a stack goes.
void ImportWalk::Walk(Visit first) {
    _visits.clear();
    std::vector<Visit> waiting;
    waiting.push_back(std::move(first));
    while (!waiting.empty() && !_report.IsCancelled()) {
        _visits.push_back(std::move(waiting.back()));
        waiting.pop_back();
        std::vector<Visit> below;
        VisitFolder(static_cast<std::ptrdiff_t>(_visits.size()) - 1, below);
        // The last one waiting comes next.
        std::move(below.rbegin(), below.rend(), std::back_inserter(waiting));
    }
}

void ImportWalk::VisitFolder(std::ptrdiff_t index, std::vector<Visit>& below) {
    const std::string source = _visits[static_cast<std::size_t>(index)].source;
    if (!_report.Begin(source)) {
        return;
    }
    std::vector<std::string> names;
    std::error_code error;
    if (!Names(source, names, error)) {
        _report.Fail(source, "it can't be listed: " + error.message() + "; all in it is left out");
        return;
    }
    _current = _plan.folders.size();
    _plan.folders.push_back(
        {source, _visits[static_cast<std::size_t>(index)].target, _options.include.Empty()});
    for (const std::string& name : names) {
        MeetEntry(index, name, below);
    }
}

void ImportWalk::MeetEntry(std::ptrdiff_t index,
                           const std::string& name,
                           std::vector<Visit>& below) {
    const Visit& in = _visits[static_cast<std::size_t>(index)];
    const std::string path = in.source + (in.source.ends_with('/') ? "" : "/") + name;
    const std::string relative = in.relative.empty() ? name : in.relative + "/" + name;
    if (_options.exclude.Matches(relative)) {
        return;
    }
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        _report.Fail(path, "it can't be read: " + MachineReason(errno));
        return;
    }
    if (S_ISDIR(status.st_mode)) {
        if (!_options.recursive) {
            return;
        }
        const std::string complaint = FolderComplaint(name, index, status.st_dev, status.st_ino);
        if (!complaint.empty()) {
            _report.Fail(path, complaint);
            return;
        }
        below.push_back(
            {path, in.target + "/" + name, relative, index, status.st_dev, status.st_ino});
        return;
    }
    if (!_options.include.Empty() && !_options.include.Matches(relative)) {
        return;
    }
    if (!S_ISREG(status.st_mode)) {
        _report.Fail(path, "it is a device, pipe or socket; only files are taken");
        return;
    }
    TakeFile(_current, name, static_cast<std::uint64_t>(status.st_size));
}

std::string ImportWalk::FolderComplaint(const std::string& name,
                                        std::ptrdiff_t above,
                                        dev_t device,
                                        ino_t inode) const {
    if (_vault == std::pair(device, inode)) {
        return "it is the vault of this library; name folders outside of it";
    }
    std::string complaint = Complaint([&] { CheckImportedFolderName(name); });
    if (complaint.empty() && LeadsBack(above, device, inode)) {
        complaint = "it is a symbolic link to a folder that it lies in, which would never end";
    }
    return complaint;
}

bool ImportWalk::LeadsBack(std::ptrdiff_t above, dev_t device, ino_t inode) const {
    for (; above >= 0; above = _visits[static_cast<std::size_t>(above)].above) {
        const Visit& visit = _visits[static_cast<std::size_t>(above)];
        if (visit.device == device && visit.inode == inode) {
            return true;
        }
    }
    return false;
}

void ImportWalk::TakeFile(std::size_t folder, const std::string& name, std::uint64_t size) {
    ImportFile file{folder, name, size};
    const std::string complaint = Complaint([&] { vault::CheckDocumentName(name); });
    if (!complaint.empty()) {
        _report.Fail(_plan.SourceOf(file), complaint);
        return;
    }
    _plan.bytes += size;
    _plan.files.push_back(std::move(file));
}

}  // namespace kxudm::profile
