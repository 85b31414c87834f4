#include "vault/ContentReader.h"

#include <cerrno>
#include <utility>

namespace kxudm::vault {

ReaderMemory::ReaderMemory() : input_(std::make_unique_for_overwrite<char[]>(kBlock)) {}

ContentReader::ContentReader(FileLayer& files,
                             const std::string& path,
                             std::string hash,
                             bool compressed,
                             std::shared_ptr<ReaderMemory> memory)
    : files_(files),
      path_(path),
      hash_(std::move(hash)),
      compressed_(compressed),
      memory_(std::move(memory)),
      handle_(files) {
    if (!files_.OpenToRead(path_, handle_.File())) {
        throw FileError(ENOENT, "read", path_);
    }
    memory_->hash_.Begin();
    memory_->decompressor_.Begin();
}

ContentReader::~ContentReader() {
    if (beside_) {
        memory_->hash_.Stop();
    }
}

void ContentReader::HashBeside() {
    beside_ = true;
    memory_->hash_.GoBeside();
}

std::size_t ContentReader::Read(char* bytes, std::size_t size) {
    if (proven_ || size == 0) {
        return 0;
    }
    const std::size_t count = compressed_ ? ReadCompressed(bytes, size) : ReadPlain(bytes, size);
    if (count > 0) {
        memory_->hash_.Update(bytes, count);
    } else {
        CheckHashAtEnd();
    }
    return count;
}

std::size_t ContentReader::ReadPlain(char* bytes, std::size_t size) {
    return files_.Read(handle_.File(), bytes, size);
}

std::size_t ContentReader::ReadCompressed(char* bytes, std::size_t size) {
    while (true) {
        if (input_.empty() && !inputEnded_) {
            char* const buffer = memory_->input_.get();
            input_ = {buffer, files_.Read(handle_.File(), buffer, kBlock)};
            inputEnded_ = input_.empty();
        }
        const Decompressor::Step step = memory_->decompressor_.Run(input_, bytes, size);
        if (step.problem != nullptr) {
            Refuse(step.problem);
        }
        input_.remove_prefix(step.taken);
        if (step.made > 0) {
            return step.made;
        }
        if (inputEnded_) {
            if (const char* const problem = memory_->decompressor_.Finish()) {
                Refuse(problem);
            }
            return 0;
        }
    }
}

void ContentReader::CheckHashAtEnd() {
    const std::string found = memory_->hash_.Finish();
    if (found != hash_) {
        Refuse("its content has the SHA-256 " + found);
    }
    proven_ = true;
}

void ContentReader::Refuse(const std::string& reason) const {
    throw DamagedException("The stored file '" + path_ + "' is damaged and doesn't hold content " +
                           hash_ + ": " + reason +
                           "; restore it from a backup, or remove it and add the file again");
}

}  // namespace kxudm::vault
