#include "vault/Layout.h"

#include <cerrno>
#include <utility>
#include <vector>

#include "vault/Sha256.h"
#include "vault/TemporaryName.h"

namespace kxudm::vault {
namespace {

constexpr std::string_view kCompressedSuffix = ".zst";
constexpr std::int64_t kDay = std::int64_t{24} * 60 * 60 * 1'000'000;
constexpr unsigned kReadOnly = 0444;

std::string WithoutSlashes(std::string path) {
    while (path.size() > 1 && path.back() == '/') {
        path.pop_back();
    }
    return path;
}

std::string ParentOf(const std::string& path) {
    const std::size_t slash = path.find_last_not_of('/', path.rfind('/'));
    if (path.find('/') == std::string::npos) {
        return ".";
    }
    return slash == std::string::npos ? "/" : path.substr(0, slash + 1);
}

std::size_t NumberOf(const std::string& hash) {
    return static_cast<std::size_t>(std::stoul(hash.substr(0, 2), nullptr, 16));
}

}  // namespace

Layout::Layout(std::string directory, FileLayer& files)
    : directory_(WithoutSlashes(std::move(directory))), files_(files) {}

std::string Layout::FolderOf(const std::string& hash) const {
    return directory_ + "/" + hash.substr(0, 2);
}

std::string Layout::TemporaryFolder() const {
    return directory_ + "/tmp";
}

std::string Layout::PathOf(const std::string& hash) const {
    Entry entry;
    return Find(hash, entry) ? entry.path : NameOf(hash, false);
}

std::string Layout::NameOf(const std::string& hash, bool compressed) const {
    std::string path = FolderOf(hash) + "/" + hash;
    return compressed ? path += kCompressedSuffix : path;
}

bool Layout::Find(const std::string& hash, Entry& entry) const {
    for (const bool compressed : {true, false}) {
        std::string path = NameOf(hash, compressed);
        FileStatus status;
        if (files_.Status(path, status)) {
            entry = {hash, std::move(path), status.size, compressed, status.modified / 1000};
            return true;
        }
    }
    return false;
}

bool Layout::Freshen(const Entry& entry) const {
    try {
        return files_.Touch(entry.path);
    } catch (const FileError& error) {
        // A file that another user has added can be used, though not touched.
        if (error.Code() == EACCES || error.Code() == EPERM || error.Code() == EROFS) {
            return true;
        }
        throw;
    }
}

void Layout::ForEach(const std::function<void(const Entry&)>& visit) const {
    constexpr char kDigits[] = "0123456789abcdef";
    for (std::size_t i = 0; i < 256; ++i) {
        VisitFolder({kDigits[i / 16], kDigits[i % 16]}, visit);
    }
}

void Layout::VisitFolder(const std::string& name,
                         const std::function<void(const Entry&)>& visit) const {
    const std::string folder = directory_ + "/" + name;
    std::vector<std::string> files;
    if (!files_.List(folder, files)) {
        return;
    }
    for (const std::string& file : files) {
        Entry entry;
        entry.path = folder;
        entry.path += '/';
        entry.path += file;
        FileStatus status;
        if (!files_.Status(entry.path, status)) {
            continue;
        }
        entry.storedSize = status.size;
        entry.modified = status.modified / 1000;
        entry.compressed = file.ends_with(kCompressedSuffix);
        const std::string hash =
            entry.compressed ? file.substr(0, file.size() - kCompressedSuffix.size()) : file;
        if (IsHash(hash) && hash.starts_with(name) && status.kind == FileKind::Regular) {
            entry.hash = hash;
        }
        visit(entry);
    }
}

bool Layout::Remove(const std::string& hash) const {
    const bool wasPlain = files_.Remove(NameOf(hash, false));
    return files_.Remove(NameOf(hash, true)) || wasPlain;
}

std::optional<std::uint64_t> Layout::RemoveOlder(const Entry& entry, std::int64_t before) const {
    FileStatus status;
    if (!files_.Status(entry.path, status) || status.modified / 1000 >= before) {
        return std::nullopt;
    }
    // Under another name nobody can freshen it any more: whoever comes now stores it anew, and who
    // came just before is seen in its time.
    const std::string aside = TemporaryFolder() + "/" + NewTemporaryName();
    files_.MakeFolder(TemporaryFolder());
    try {
        files_.Rename(entry.path, aside);
    } catch (const FileError& error) {
        if (error.Code() == ENOENT) {
            return std::nullopt;
        }
        throw;
    }
    if (files_.Status(aside, status) && status.modified / 1000 >= before) {
        if (!files_.RenameToNew(aside, entry.path)) {
            files_.Remove(aside);
        }
        return std::nullopt;
    }
    files_.Remove(aside);
    return status.size;
}

std::unique_ptr<TemporaryFile> Layout::NewTemporary() {
    try {
        return std::make_unique<TemporaryFile>(files_, TemporaryFolder(), kReadOnly);
    } catch (const FileError& error) {
        if (error.Code() != ENOENT) {
            throw;
        }
    }
    MakeDirectory();
    files_.MakeFolder(TemporaryFolder());
    return std::make_unique<TemporaryFile>(files_, TemporaryFolder(), kReadOnly);
}

void Layout::OpenDirectory(OpenFile& file) {
    try {
        files_.OpenFolder(directory_, file);
        return;
    } catch (const FileError& error) {
        if (error.Code() != ENOENT) {
            throw;
        }
    }
    MakeDirectory();
    files_.OpenFolder(directory_, file);
}

void Layout::MakeDirectory() {
    std::vector<std::string> missing;
    FileStatus status;
    for (std::string path = directory_; !files_.Status(path, status); path = ParentOf(path)) {
        missing.push_back(path);
    }
    for (; !missing.empty(); missing.pop_back()) {
        files_.MakeFolder(missing.back());
        files_.FlushFolder(ParentOf(missing.back()));
    }
}

void Layout::MoveIn(TemporaryFile& file,
                    const std::string& hash,
                    bool compressed,
                    const std::string& impostor) {
    const std::string path = NameOf(hash, compressed);
    try {
        file.MoveTo(path);
    } catch (const FileError& error) {
        if (error.Code() != ENOENT) {
            throw;
        }
        files_.MakeFolder(FolderOf(hash));
        file.MoveTo(path);
    }
    if (!impostor.empty() && impostor != path) {
        files_.Remove(impostor);
    }
}

void Layout::FlushName(const std::string& hash) {
    files_.FlushFolder(FolderOf(hash));
    const std::size_t number = NumberOf(hash);
    if (!flushedFolders_.test(number)) {
        files_.FlushFolder(directory_);
        flushedFolders_.set(number);
    }
}

std::size_t Layout::RemoveStaleTemporaries(std::int64_t now) const {
    std::vector<std::string> names;
    if (!files_.List(TemporaryFolder(), names)) {
        return 0;
    }
    std::size_t removed = 0;
    for (const std::string& name : names) {
        const std::string path = TemporaryFolder() + "/" + name;
        const WriterState writer = WriterOf(name);
        FileStatus status;
        const bool stale = writer == WriterState::Gone ||
                           (writer == WriterState::Elsewhere && files_.Status(path, status) &&
                            status.modified / 1000 < now - kDay);
        if (stale && files_.Remove(path)) {
            ++removed;
        }
    }
    return removed;
}

}  // namespace kxudm::vault
