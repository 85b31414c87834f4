#include "vault/TemporaryFile.h"

#include <cerrno>
#include <utility>

#include "vault/TemporaryName.h"

namespace kxudm::vault {

std::string FolderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) {
        return ".";
    }
    return slash == 0 ? "/" : path.substr(0, slash);
}

TemporaryFile::TemporaryFile(FileLayer& files, const std::string& folder, unsigned mode)
    : files_(files), path_(folder + "/" + NewTemporaryName()), handle_(files) {
    files_.Create(path_, mode, handle_.File());
    exists_ = true;
}

TemporaryFile::TemporaryFile(FileLayer& files, std::string path)
    : files_(files), path_(std::move(path)), handle_(files), exists_(true) {}

TemporaryFile::~TemporaryFile() {
    if (!exists_) {
        return;
    }
    try {
        // Removed first: closing may fail.
        files_.Remove(path_);
    } catch (const std::exception&) {
        // What stays is removed with the stale temporaries.
    }
}

void TemporaryFile::Write(const char* bytes, std::size_t size) {
    while (size > 0) {
        const std::size_t written = files_.Write(handle_.File(), bytes, size);
        if (written == 0) {
            throw FileError(EIO, "written", path_);
        }
        bytes += written;
        size -= written;
    }
}

void TemporaryFile::SetModified(std::int64_t microseconds) {
    files_.SetModified(handle_.File(), microseconds);
}

void TemporaryFile::Flush() {
    files_.Flush(handle_.File());
}

void TemporaryFile::Close() {
    handle_.Close();
}

void TemporaryFile::MoveTo(const std::string& path) {
    files_.Rename(path_, path);
    exists_ = false;
}

bool TemporaryFile::MoveToNew(const std::string& path) {
    if (!files_.RenameToNew(path_, path)) {
        return false;
    }
    exists_ = false;
    return true;
}

void TemporaryFile::Discard() {
    handle_.Close();
    files_.Remove(path_);
    exists_ = false;
}

}  // namespace kxudm::vault
