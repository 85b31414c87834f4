#include "exchange/ArchiveReader.h"

#include <archive.h>
#include <archive_entry.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <exception>
#include <string_view>
#include <utility>

#include "exchange/ArchiveDirectory.h"
#include "exchange/ArchiveFormat.h"
#include "exchange/ArchiveSeal.h"
#include "exchange/ArchiveWriter.h"
#include "vault/DocumentName.h"

namespace kxudm::exchange {
namespace {

// What the ZIP library needs to see behind the last entry: a record of the directory, and room to
// look ahead for the end of that entry.
constexpr std::string_view kDirectoryStart("PK\1\2\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0",
                                           28);
// Below this an entry may shrink as much as it likes.
constexpr std::uint64_t kRatioFrom = std::uint64_t{1} << 20;

bool Same(const vault::FileStatus& one, const vault::FileStatus& other) {
    return one.size == other.size && one.modified == other.modified && one.changed == other.changed;
}

// The bytes of an archive from its front to its back, after its seal was checked.
class Input {
  public:
    Input(vault::FileLayer& files, const std::string& path)
        : files_(files), handle_(files), buffer_(std::make_unique_for_overwrite<char[]>(kPiece)) {
        vault::FileHandle first(files_);
        Open(path, first);
        before_ = files_.Status(first.File());
        if (before_.kind != vault::FileKind::Regular) {
            RefuseArchive(path, "it is no file; name one that was exported");
        }
        end_ = CheckSeal(files_, first.File(), before_.size);
        first.Close();
        Open(path, handle_);
        CheckUnchanged();
    }

    [[nodiscard]] const ArchiveEnd& End() const { return end_; }

    // The next bytes before the directory, valid until the next call; none at the directory.
    std::string_view BeforeDirectory() {
        if (position_ >= end_.directoryAt) {
            return {};
        }
        return Next(end_.directoryAt - position_);
    }

    void AppendTo(std::string& bytes, std::size_t count) {
        while (count > 0) {
            const std::string_view next = Next(count);
            bytes += next;
            count -= next.size();
        }
    }

    void CheckUnchanged() {
        if (!Same(files_.Status(handle_.File()), before_)) {
            RefuseChanged();
        }
    }

  private:
    void Open(const std::string& path, vault::FileHandle& handle) {
        if (!files_.OpenToRead(path, handle.File())) {
            throw vault::FileError(ENOENT, "read", path);
        }
    }

    [[noreturn]] void RefuseChanged() {
        RefuseArchive(handle_.File().path,
                      "it was changed while it was read; try again once nobody writes it");
    }

    // At least one byte and at most `most`.
    std::string_view Next(std::uint64_t most) {
        if (available_.empty()) {
            const std::size_t count = files_.Read(handle_.File(), buffer_.get(), kPiece);
            if (count == 0) {
                RefuseChanged();
            }
            available_ = {buffer_.get(), count};
        }
        const std::string_view next = available_.substr(
            0, static_cast<std::size_t>(std::min<std::uint64_t>(most, available_.size())));
        available_.remove_prefix(next.size());
        position_ += next.size();
        return next;
    }

    vault::FileLayer& files_;
    vault::FileHandle handle_;
    vault::FileStatus before_;
    ArchiveEnd end_;
    std::unique_ptr<char[]> buffer_;
    std::string_view available_;
    std::uint64_t position_ = 0;
};

}  // namespace

class ArchiveReader::Stream {
  public:
    Stream(vault::FileLayer& files, const std::string& path, ArchiveLimits limits)
        : path_(path),
          limits_(limits),
          input_(files, path),
          directory_(path, input_.End()),
          archive_(archive_read_new()) {
        if (archive_ == nullptr) {
            throw std::bad_alloc();
        }
        try {
            Check(archive_read_support_format_zip_streamable(archive_));
            Check(archive_read_open(archive_, this, nullptr, &Stream::Supply, nullptr));
        } catch (...) {
            archive_read_free(archive_);
            throw;
        }
    }

    ~Stream() { archive_read_free(archive_); }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    bool Next() {
        if (atEnd_) {
            return false;
        }
        SkipRest();
        archive_entry* entry = nullptr;
        const int result = archive_read_next_header(archive_, &entry);
        if (result == ARCHIVE_EOF && !failure_) {
            name_.clear();
            CheckEnd();
            atEnd_ = true;
            return false;
        }
        Check(result);
        Begin(entry);
        return true;
    }

    std::size_t Read(char* bytes, std::size_t size) {
        if (entryEnded_ || size == 0) {
            return 0;
        }
        const la_ssize_t count = archive_read_data(archive_, bytes, size);
        if (count < 0 || failure_) {
            Check(count < 0 ? static_cast<int>(count) : ARCHIVE_FATAL);
        }
        came_ += static_cast<std::uint64_t>(count);
        CheckAmount();
        if (count == 0) {
            EndEntry();
        }
        return static_cast<std::size_t>(count);
    }

    [[nodiscard]] const std::string& Name() const { return name_; }
    [[nodiscard]] std::optional<std::uint64_t> Size() const { return size_; }

  private:
    [[noreturn]] void Refuse(const std::string& what) const {
        RefuseArchive(path_,
                      "the entry '" + vault::Printable(name_) + "' " + what +
                          "; take an archive that was exported by this program");
    }

    void Begin(archive_entry* entry) {
        const char* name = archive_entry_pathname(entry);
        CheckName(name != nullptr ? name : "");
        if (++entries_ > limits_.entries) {
            Refuse("is one too many: the limit is " + std::to_string(limits_.entries));
        }
        if (archive_entry_is_encrypted(entry) != 0) {
            Refuse("is encrypted");
        }
        if (archive_entry_filetype(entry) != AE_IFREG || archive_entry_hardlink(entry) != nullptr ||
            archive_entry_symlink(entry) != nullptr) {
            Refuse("is a link, folder or device");
        }
        FindMethod();
        size_.reset();
        if (archive_entry_size_is_set(entry) != 0) {
            size_ = static_cast<std::uint64_t>(archive_entry_size(entry));
        }
        // The library takes a size of 0 for an unknown one.
        if (!size_ && name_ != kDocumentEntry) {
            size_ = 0;
        }
        if (size_ && *size_ > Limit()) {
            RefuseAmount();
        }
        at_ = archive_read_header_position(archive_);
        came_ = 0;
        entryEnded_ = false;
    }

    void CheckName(const std::string& name) {
        const std::string before = std::exchange(name_, name);
        if (before.empty()) {
            if (name_ != kDocumentEntry) {
                Refuse("comes first, where '" + std::string(kDocumentEntry) + "' should be");
            }
            return;
        }
        if (!IsFileEntry(name_)) {
            Refuse("has a name that is not 'files/' and 64 hexadecimal digits");
        }
        if (before != kDocumentEntry && name_ <= before) {
            Refuse("comes after '" + before + "', although names ascend and none comes twice");
        }
    }

    // The library tells the method only in words, as in "ZIP 2.0 (deflation)".
    void FindMethod() {
        const std::string_view format = archive_format_name(archive_);
        compressed_ = format.ends_with("(deflation)");
        if (!compressed_ && !format.ends_with("(uncompressed)")) {
            Refuse("is compressed in a foreign way, " + std::string(format));
        }
    }

    [[nodiscard]] std::uint64_t Limit() const {
        return name_ == kDocumentEntry ? limits_.document : limits_.file;
    }

    [[noreturn]] void RefuseAmount() const {
        Refuse("is larger than the limit of " + std::to_string(Limit()) + " bytes");
    }

    void CheckAmount() {
        if (size_ && came_ > *size_) {
            RefuseSize();
        }
        if (came_ > Limit()) {
            RefuseAmount();
        }
        if (total_ + came_ > limits_.total) {
            Refuse("exceeds the limit for all entries, " + std::to_string(limits_.total) +
                   " bytes");
        }
        if (came_ > kRatioFrom && came_ / limits_.ratio > Consumed()) {
            Refuse("expands to more than " + std::to_string(limits_.ratio) +
                   " times its compressed size, which no content does that was exported");
        }
    }

    // Compressed bytes of this entry so far, with its header.
    [[nodiscard]] std::uint64_t Consumed() const {
        return static_cast<std::uint64_t>(archive_filter_bytes(archive_, -1) - at_);
    }

    [[noreturn]] void RefuseSize() const {
        Refuse("announces " + std::to_string(*size_) + " bytes and holds " +
               (came_ > *size_ ? "more" : std::to_string(came_)));
    }

    void EndEntry() {
        if (size_ && came_ != *size_) {
            RefuseSize();
        }
        entryEnded_ = true;
        total_ += came_;
        directory_.Add(name_, static_cast<std::uint64_t>(at_), came_, compressed_);
    }

    void SkipRest() {
        std::array<char, 16384> rest;
        while (Read(rest.data(), rest.size()) > 0) {
        }
    }

    void CheckEnd() {
        if (entries_ == 0) {
            RefuseArchive(path_,
                          "it holds no '" + std::string(kDocumentEntry) +
                              "'; take an archive that was exported by this program");
        }
        while (!input_.BeforeDirectory().empty()) {
        }
        directory_.Compare(
            [this](std::string& bytes, std::size_t count) { input_.AppendTo(bytes, count); });
        input_.CheckUnchanged();
    }

    void Check(int result) {
        if (failure_) {
            std::rethrow_exception(std::exchange(failure_, nullptr));
        }
        if (result != ARCHIVE_OK) {
            const char* text = archive_error_string(archive_);
            RefuseArchive(path_,
                          (name_.empty() ? std::string("its beginning is")
                                         : "the entry '" + vault::Printable(name_) +
                                               "' or what follows it is") +
                              " not as in a ZIP file (" +
                              vault::Printable(text != nullptr ? text : "no reason known") +
                              "); take an archive that was exported by this program");
        }
    }

    // What the ZIP library calls. It gets the entries and, so that it knows their end, the first
    // bytes of a directory. An exception waits until the library has returned.
    static la_ssize_t Supply(archive* archive, void* self, const void** bytes) {
        auto& stream = *static_cast<Stream*>(self);
        try {
            std::string_view next = stream.input_.BeforeDirectory();
            if (next.empty() && !std::exchange(stream.suppliedEnd_, true)) {
                next = kDirectoryStart;
            }
            *bytes = next.data();
            return static_cast<la_ssize_t>(next.size());
        } catch (...) {
            stream.failure_ = std::current_exception();
            archive_set_error(archive, EIO, "reading failed");
            return ARCHIVE_FATAL;
        }
    }

    std::string path_;
    ArchiveLimits limits_;
    Input input_;
    ArchiveDirectory directory_;
    archive* archive_;
    std::exception_ptr failure_;
    bool suppliedEnd_ = false;
    bool atEnd_ = false;
    std::uint64_t entries_ = 0;
    std::uint64_t total_ = 0;  // bytes of the entries before this one

    std::string name_;
    std::optional<std::uint64_t> size_;
    la_int64_t at_ = 0;
    std::uint64_t came_ = 0;
    bool compressed_ = false;
    bool entryEnded_ = true;
};

ArchiveReader::ArchiveReader(vault::FileLayer& files, const std::string& path, ArchiveLimits limits)
    : stream_(std::make_unique<Stream>(files, path, limits)) {}

ArchiveReader::~ArchiveReader() = default;

bool ArchiveReader::Next() {
    return stream_->Next();
}

const std::string& ArchiveReader::Name() const {
    return stream_->Name();
}

bool ArchiveReader::IsDocument() const {
    return Name() == kDocumentEntry;
}

std::string ArchiveReader::Hash() const {
    return IsFileEntry(Name()) ? Name().substr(kFileFolder.size()) : std::string();
}

std::optional<std::uint64_t> ArchiveReader::Size() const {
    return stream_->Size();
}

std::size_t ArchiveReader::Read(char* bytes, std::size_t size) {
    return stream_->Read(bytes, size);
}

}  // namespace kxudm::exchange
