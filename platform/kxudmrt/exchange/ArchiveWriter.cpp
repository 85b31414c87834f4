#include "exchange/ArchiveWriter.h"

#include <archive.h>
#include <archive_entry.h>
#include <kxudm/UDMException.h>

#include <algorithm>
#include <exception>
#include <optional>
#include <utility>

#include "exchange/ArchiveFormat.h"
#include "vault/Compression.h"
#include "vault/DocumentName.h"
#include "vault/Sha256.h"
#include "vault/TemporaryFile.h"

namespace kxudm::exchange {
namespace {

// Level 1 takes a quarter of the time of level 6 for a tenth more bytes.
constexpr const char* kOptions = "zip:compression-level=1";

constexpr std::size_t kOutput = std::size_t{256} << 10;

std::string FolderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) {
        return ".";
    }
    return slash == 0 ? "/" : path.substr(0, slash);
}

// The end of the file on its way to the disk. It keeps back what may be the end record, to which
// the seal has yet to be added.
class SealedFile {
  public:
    SealedFile(vault::FileLayer& files, const std::string& target)
        : files_(files), target_(target), file_(files, FolderOf(target), 0666) {
        pending_.reserve(kOutput + kEndSize);
    }

    void Add(std::string_view bytes) {
        while (!bytes.empty()) {
            const std::size_t room = kOutput + kEndSize - pending_.size();
            const std::size_t count = std::min(room, bytes.size());
            pending_.append(bytes.substr(0, count));
            bytes.remove_prefix(count);
            if (count == room) {
                Put(pending_.size() - kEndSize);
            }
        }
    }

    void Seal() {
        const std::size_t end = pending_.size() - std::min(pending_.size(), kEndSize);
        if (!std::string_view(pending_).substr(end).starts_with(kEndSignature)) {
            throw UDMStoreException("'" + vault::Printable(target_) +
                                    "' can't be written: the ZIP library ended it in a way that "
                                    "takes no seal; use another version of libarchive");
        }
        pending_[end + kCommentLengthAt] = static_cast<char>(kSealSize);
        pending_ += kSealStart;
        Put(pending_.size());
        const std::string digits = hash_.Finish();
        file_.Write(digits.data(), digits.size());
    }

    void GiveName() {
        file_.Flush();
        file_.Close();
        file_.MoveTo(target_);
        files_.FlushFolder(FolderOf(target_));
    }

  private:
    void Put(std::size_t count) {
        hash_.Update(pending_.data(), count);
        file_.Write(pending_.data(), count);
        pending_.erase(0, count);
    }

    vault::FileLayer& files_;
    std::string target_;
    vault::TemporaryFile file_;
    vault::Sha256 hash_;
    std::string pending_;
};

}  // namespace

class ArchiveWriter::Stream {
  public:
    Stream(vault::FileLayer& files, const std::string& target)
        : target_(target),
          file_(files, target),
          archive_(archive_write_new()),
          entry_(archive_entry_new()) {
        if (archive_ == nullptr || entry_ == nullptr) {
            Free();
            throw std::bad_alloc();
        }
        try {
            Check(archive_write_set_format_zip(archive_));
            Check(archive_write_set_options(archive_, kOptions));
            Check(archive_write_set_bytes_per_block(archive_, 0));
            Check(archive_write_set_bytes_in_last_block(archive_, 1));
            Check(archive_write_open(archive_, this, nullptr, &Stream::Accept, nullptr));
        } catch (...) {
            Free();
            throw;
        }
    }

    ~Stream() { Free(); }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    void Begin(std::string_view name, std::optional<std::uint64_t> size) {
        if (!name_.empty()) {
            Refuse(name, "the entry before has no end; end it first");
        }
        CheckName(name);
        if (!size && name != kDocumentEntry) {
            Refuse(name, "the size of a file's content must be known at its beginning");
        }
        name_ = name;
        last_ = name;
        size_ = size;
        came_ = 0;
        begun_ = false;
        beginning_.clear();
    }

    void Write(std::string_view bytes) {
        if (name_.empty()) {
            Refuse(last_, "bytes came outside of an entry; begin one first");
        }
        came_ += bytes.size();
        if (size_ && came_ > *size_) {
            RefuseSize();
        }
        if (begun_) {
            Put(bytes);
            return;
        }
        const std::size_t count = std::min(vault::kBlock - beginning_.size(), bytes.size());
        beginning_.append(bytes.substr(0, count));
        if (beginning_.size() == vault::kBlock) {
            PutBeginning();
            Put(bytes.substr(count));
        }
    }

    void End() {
        if (name_.empty()) {
            Refuse(last_, "an entry ended that was not begun; begin one first");
        }
        if (size_ && came_ != *size_) {
            RefuseSize();
        }
        if (!begun_) {
            PutBeginning();
        }
        Check(archive_write_finish_entry(archive_));
        name_.clear();
    }

    void Finish() {
        if (last_.empty() || !name_.empty()) {
            Refuse(kDocumentEntry, "an archive needs it whole; write the document first");
        }
        Check(archive_write_close(archive_));
        file_.Seal();
        file_.GiveName();
    }

  private:
    [[noreturn]] void Refuse(std::string_view name, const std::string& why) const {
        throw UDMException("The entry '" + vault::Printable(name) + "' of '" +
                           vault::Printable(target_) + "' can't be written: " + why);
    }

    [[noreturn]] void RefuseSize() const {
        Refuse(name_,
               std::to_string(*size_) + " bytes were announced and " + std::to_string(came_) +
                   " came; announce what comes");
    }

    void CheckName(std::string_view name) const {
        if (last_.empty()) {
            if (name != kDocumentEntry) {
                Refuse(name, "the first entry is '" + std::string(kDocumentEntry) + "'");
            }
            return;
        }
        if (!IsFileEntry(name)) {
            Refuse(name, "behind the document come files, named 'files/' and a SHA-256");
        }
        if (last_ != kDocumentEntry && name <= std::string_view(last_)) {
            Refuse(name, "it comes after '" + last_ + "'; names ascend");
        }
    }

    // Readers find the end of an entry that is stored plain by the record behind it. A content that
    // holds the like might end early, so that one is compressed, and so is one too large to look.
    bool MayStore() const {
        return size_ && *size_ == beginning_.size() &&
               beginning_.find(kDescriptorSignature) == std::string::npos;
    }

    void PutBeginning() {
        begun_ = true;
        const bool store = MayStore() && !samples_.LooksWorthwhile(beginning_);
        Check(store ? archive_write_zip_set_compression_store(archive_)
                    : archive_write_zip_set_compression_deflate(archive_));
        // No time, owner or machine: the same content gives the same bytes.
        archive_entry_clear(entry_);
        archive_entry_set_pathname(entry_, name_.c_str());
        archive_entry_set_filetype(entry_, AE_IFREG);
        archive_entry_set_perm(entry_, 0644);
        if (size_) {
            archive_entry_set_size(entry_, static_cast<la_int64_t>(*size_));
        }
        Check(archive_write_header(archive_, entry_));
        Put(beginning_);
    }

    void Put(std::string_view bytes) {
        while (!bytes.empty()) {
            const la_ssize_t count = archive_write_data(archive_, bytes.data(), bytes.size());
            Check(count > 0 ? ARCHIVE_OK : ARCHIVE_FATAL);
            bytes.remove_prefix(static_cast<std::size_t>(count));
        }
    }

    void Check(int result) {
        if (failure_) {
            std::rethrow_exception(std::exchange(failure_, nullptr));
        }
        if (result != ARCHIVE_OK) {
            const char* text = archive_error_string(archive_);
            throw UDMStoreException("'" + vault::Printable(target_) + "' can't be written: " +
                                    (text != nullptr ? text : "the ZIP library failed") +
                                    "; correct this, then try again");
        }
    }

    // What the ZIP library calls. An exception waits until the library has returned, which is not
    // told of it: one that knows of a failure doesn't give back all of its memory.
    static la_ssize_t Accept(archive*, void* self, const void* bytes, std::size_t size) {
        auto& stream = *static_cast<Stream*>(self);
        if (!stream.drops_) {
            try {
                stream.file_.Add({static_cast<const char*>(bytes), size});
            } catch (...) {
                stream.failure_ = std::current_exception();
                stream.drops_ = true;
            }
        }
        return static_cast<la_ssize_t>(size);
    }

    void Free() {
        // The directory of an archive that nobody wants.
        drops_ = true;
        if (archive_ != nullptr) {
            archive_write_free(archive_);
        }
        archive_entry_free(entry_);
    }

    std::string target_;
    SealedFile file_;
    archive* archive_;
    archive_entry* entry_;
    std::exception_ptr failure_;
    bool drops_ = false;  // what the ZIP library still writes
    vault::Compressor samples_;

    std::string name_;  // empty between entries
    std::string last_;
    std::optional<std::uint64_t> size_;
    std::uint64_t came_ = 0;
    bool begun_ = false;     // the entry's header is written
    std::string beginning_;  // of the entry, until then
};

ArchiveWriter::ArchiveWriter(vault::FileLayer& files, const std::string& target)
    : stream_(std::make_unique<Stream>(files, target)) {}

ArchiveWriter::~ArchiveWriter() = default;

void ArchiveWriter::Begin(std::string_view name) {
    stream_->Begin(name, std::nullopt);
}

void ArchiveWriter::Begin(std::string_view name, std::uint64_t size) {
    stream_->Begin(name, size);
}

void ArchiveWriter::Write(std::string_view bytes) {
    stream_->Write(bytes);
}

void ArchiveWriter::End() {
    stream_->End();
}

void ArchiveWriter::Finish() {
    stream_->Finish();
}

}  // namespace kxudm::exchange
