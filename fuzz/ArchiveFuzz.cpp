// Portable archives: any bytes under a right seal are refused with an error of one line, or give
// entries that are the same after they were written and read again.
#include <kxudm/UDMException.h>

#include <algorithm>
#include <cerrno>
#include <map>
#include <utility>
#include <vector>

#include "Fuzz.h"
#include "exchange/ArchiveFormat.h"
#include "exchange/ArchiveReader.h"
#include "exchange/ArchiveWriter.h"
#include "vault/Sha256.h"

namespace {

using namespace kxudm::exchange;
using kxudm::vault::FileError;
using kxudm::vault::FileKind;
using kxudm::vault::FileStatus;
using kxudm::vault::OpenFile;

// Files in memory, for one that is read and one that is written.
class MemoryFiles final : public kxudm::vault::FileLayer {
  public:
    std::map<std::string, std::string> files;

    bool Status(const std::string& path, FileStatus& status) override {
        status = StatusOf(path);
        return files.count(path) != 0;
    }
    bool List(const std::string&, std::vector<std::string>&) override { return false; }
    void MakeFolder(const std::string& path) override { throw FileError(ENOTSUP, "made", path); }
    void FlushFolder(const std::string&) override {}
    void Rename(const std::string& from, const std::string& to) override {
        files[to] = std::exchange(files[from], {});
        files.erase(from);
    }
    bool RenameToNew(const std::string& from, const std::string& to) override {
        Rename(from, to);
        return true;
    }
    bool Remove(const std::string& path) override { return files.erase(path) != 0; }
    bool Touch(const std::string&) override { return true; }
    bool OpenToRead(const std::string& path, OpenFile& file) override {
        file = {1, path};
        position_ = 0;
        return files.count(path) != 0;
    }
    void Create(const std::string& path, unsigned, OpenFile& file) override {
        files[path].clear();
        file = {2, path};
    }
    void OpenFolder(const std::string& path, OpenFile& file) override { file = {3, path}; }
    FileStatus Status(const OpenFile& file) override { return StatusOf(file.path); }
    std::size_t Read(const OpenFile& file, char* bytes, std::size_t size) override {
        const std::size_t count = files[file.path].copy(bytes, size, position_);
        position_ += count;
        return count;
    }
    std::size_t Write(const OpenFile& file, const char* bytes, std::size_t size) override {
        files[file.path].append(bytes, size);
        return size;
    }
    void SetModified(const OpenFile&, std::int64_t) override {}
    void Flush(const OpenFile&) override {}
    void FlushFileSystem(const OpenFile&) override {}
    void Close(OpenFile& file) override { file.descriptor = -1; }

  private:
    FileStatus StatusOf(const std::string& path) {
        FileStatus status;
        status.kind = FileKind::Regular;
        status.size = files.count(path) != 0 ? files[path].size() : 0;
        return status;
    }

    std::size_t position_ = 0;
};

using Entries = std::vector<std::pair<std::string, std::string>>;

Entries Read(MemoryFiles& files, const std::string& path) {
    ArchiveLimits limits;
    limits.total = std::uint64_t{4} << 20;
    ArchiveReader archive(files, path, limits);
    Entries entries;
    std::vector<char> buffer(5000);
    while (archive.Next()) {
        std::string content;
        while (const std::size_t count = archive.Read(buffer.data(), buffer.size())) {
            content.append(buffer.data(), count);
        }
        fuzz::Demand(!archive.Size() || *archive.Size() == content.size(), "another size");
        entries.emplace_back(archive.Name(), content);
    }
    fuzz::Demand(!entries.empty(), "an archive without a document");
    return entries;
}

void Write(MemoryFiles& files, const std::string& path, const Entries& entries) {
    ArchiveWriter archive(files, path);
    for (const auto& [name, content] : entries) {
        archive.Begin(name, content.size());
        archive.Write(content);
        archive.End();
    }
    archive.Finish();
}

void Check(const std::string& bytes) {
    MemoryFiles files;
    files.files["/in"] = bytes;
    Entries entries;
    try {
        entries = Read(files, "/in");
    } catch (const ArchiveException& error) {
        const std::string text = error.what();
        fuzz::Demand(
            !text.empty() &&
                std::all_of(text.begin(), text.end(), [](unsigned char c) { return c >= ' '; }),
            "an error that is no line: " + text);
        return;
    }
    Write(files, "/out", entries);
    fuzz::Demand(Read(files, "/out") == entries, "writing changed the entries");
}

std::string Sealed(std::string zip) {
    if (zip.size() >= kEndSize) {
        zip[zip.size() - kEndSize + kCommentLengthAt] = static_cast<char>(kSealSize);
        zip[zip.size() - kEndSize + kCommentLengthAt + 1] = 0;
    }
    zip += kSealStart;
    kxudm::vault::Sha256 hash;
    hash.Update(zip.data(), zip.size());
    return zip + hash.Finish();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(fuzz::TextOf(data, size));
    Check(bytes);
    Check(Sealed(bytes));
    return 0;
}
