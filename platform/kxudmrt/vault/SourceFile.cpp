#include "vault/SourceFile.h"

#include <cerrno>

#include "vault/DocumentName.h"

namespace kxudm::vault {

SourceFile::SourceFile(FileLayer& files, const std::string& path)
    : files_(files), path_(path), handle_(files) {
    if (!files_.OpenToRead(path_, handle_.File())) {
        throw FileError(ENOENT, "read", path_);
    }
    before_ = files_.Status(handle_.File());
    if (before_.kind == FileKind::Folder) {
        throw FileError(EISDIR, "read", path_);
    }
    if (before_.kind != FileKind::Regular) {
        throw UDMStoreException("'" + Printable(path_) +
                                "' can't be stored: it is a device, pipe or socket; name a file");
    }
}

std::size_t SourceFile::Fill(char* bytes, std::size_t size) {
    std::size_t filled = 0;
    while (filled < size) {
        const std::size_t count = files_.Read(handle_.File(), bytes + filled, size - filled);
        if (count == 0) {
            break;
        }
        filled += count;
        read_ += count;
        // Else a file that grows as fast as it is read would never end.
        if (read_ > before_.size) {
            RefuseChanged();
        }
    }
    return filled;
}

void SourceFile::CheckUnchanged() {
    const FileStatus after = files_.Status(handle_.File());
    if (after.links == 0 && before_.links != 0) {
        throw UDMStoreException("'" + Printable(path_) +
                                "' was removed or replaced while it was read; try again once "
                                "nobody changes it");
    }
    if (after.size != before_.size || after.modified != before_.modified ||
        after.changed != before_.changed || read_ != before_.size) {
        RefuseChanged();
    }
}

void SourceFile::RefuseChanged() const {
    throw UDMStoreException("'" + Printable(path_) +
                            "' was changed while it was read; try again once nobody writes to it");
}

std::int64_t SourceFile::Modified() const {
    const std::int64_t microseconds = before_.modified / 1000;
    // Towards the past also before 1970.
    return before_.modified % 1000 < 0 ? microseconds - 1 : microseconds;
}

}  // namespace kxudm::vault
