#include "profile/ExternalFile.h"

#include <cerrno>
#include <filesystem>

#include "core/Clock.h"
#include "vault/DocumentName.h"
#include "vault/SourceFile.h"
#include "vault/Stored.h"

namespace kxudm::profile {

namespace {

constexpr std::size_t BLOCK = std::size_t{256} << 10;
constexpr unsigned USER_FILE = 0666;

std::string Status(std::int64_t size, std::int64_t modified) {
    return std::to_string(size) + " bytes of " + core::FormatTime(modified);
}

}  // namespace

void RequireUnchanged(vault::FileLayer& files,
                      const store::FileRow& file,
                      const std::string& document) {
    const std::string what = document + " at '" + vault::Printable(file.externalPath) + "', which ";
    try {
        const vault::SourceFile source(files, file.externalPath);
        if (static_cast<std::int64_t>(source.Size()) == file.size &&
            source.Modified() == file.modified) {
            return;
        }
        throw UDMStoreException(
            what + "was changed since it was added: it was " + Status(file.size, file.modified) +
            " and is " + Status(static_cast<std::int64_t>(source.Size()), source.Modified()) +
            "; put it back, or add it afresh by ReAddFile");
    } catch (const vault::FileError& error) {
        if (error.Code() == ENOENT || error.Code() == ENOTDIR) {
            throw UDMStoreException(what + "is missing; put it back");
        }
        throw vault::FileError(what + "can't be read", error);
    }
}

bool IsEqualFile(vault::FileLayer& files, const std::string& path, const std::string& other) {
    std::error_code error;
    if (std::filesystem::equivalent(path, other, error)) {
        return true;
    }
    vault::SourceFile first(files, path);
    vault::SourceFile second(files, other);
    if (first.Size() != second.Size()) {
        return false;
    }
    const auto a = std::make_unique_for_overwrite<char[]>(BLOCK);
    const auto b = std::make_unique_for_overwrite<char[]>(BLOCK);
    while (true) {
        const std::string_view mine(a.get(), first.Fill(a.get(), BLOCK));
        const std::string_view its(b.get(), second.Fill(b.get(), BLOCK));
        if (mine != its) {
            return false;
        }
        if (mine.size() < BLOCK) {
            return true;
        }
    }
}

std::unique_ptr<vault::TemporaryFile> CopyExternal(
    vault::FileLayer& files,
    const store::FileRow& file,
    const std::string& target,
    const std::function<bool(std::uint64_t)>& advance) {
    vault::SourceFile source(files, file.externalPath);
    auto copy = std::make_unique<vault::TemporaryFile>(
        files, std::filesystem::path(target).parent_path().string(), USER_FILE);
    const auto block = std::make_unique_for_overwrite<char[]>(BLOCK);
    while (const std::size_t count = source.Fill(block.get(), BLOCK)) {
        copy->Write(block.get(), count);
        if (!advance(count)) {
            throw vault::StoppedException("Retrieving '" + vault::Printable(target) +
                                          "' was stopped; it is as it was");
        }
    }
    source.CheckUnchanged();
    copy->SetModified(file.modified);
    copy->Close();
    return copy;
}

}  // namespace kxudm::profile
