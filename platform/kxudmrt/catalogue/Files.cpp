// Reading of catalogue files and of the folder of custom ones.
#include <kxudm/UDMException.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "catalogue/Catalogue.h"
#include "catalogue/Located.h"

namespace kxudm::catalogue {

namespace {

// All files of a catalogue together. Written as one document it grows, at worst each '"' to six
// bytes and some white space, and stays below what ReadText accepts.
constexpr std::size_t kLargestFiles = 16U << 20U;

[[noreturn]] void RefuseFile(const kxString& path, const kxString& reason) {
    throw UDMException("catalogue file '" + Printable(path) + "': " + reason);
}

// The bytes of a regular file of at most `room` bytes.
kxString Slurp(const kxString& path, std::size_t room) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path.c_str(), error);
    if (!std::filesystem::exists(status)) {
        RefuseFile(path, "is not there; expected is a readable XML file");
    }
    if (!std::filesystem::is_regular_file(status)) {
        RefuseFile(path, "is not a regular file");
    }
    errno = 0;
    std::ifstream file(path.c_str(), std::ios::binary);
    if (!file) {
        RefuseFile(path, "can't be opened: " + kxString(std::strerror(errno)));
    }
    const std::uintmax_t size = std::filesystem::file_size(path.c_str(), error);
    if (error) {
        RefuseFile(path, "can't be read: " + error.message());
    }
    if (size > room) {
        RefuseFile(path, "the files of a catalogue have more than 16 MiB together");
    }
    kxString text(static_cast<std::size_t>(size), '\0');
    file.read(text.data(), static_cast<std::streamsize>(size));
    if (file.gcount() != static_cast<std::streamsize>(size)) {
        RefuseFile(path, "can't be read to its end");
    }
    return text;
}

// The *.xml files directly in `folder`, in the byte order of their names.
std::vector<kxString> CustomFiles(const kxString& folder) {
    std::vector<kxString> files;
    std::error_code error;
    if (folder.empty() || !std::filesystem::exists(folder.c_str(), error)) {
        return files;
    }
    std::filesystem::directory_iterator entry(folder.c_str(), error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        std::error_code ignored;
        if (entry->path().extension() == ".xml" && entry->is_regular_file(ignored)) {
            files.emplace_back(entry->path().native());
        }
    }
    if (error) {
        throw UDMException("folder of custom definitions '" + Printable(folder) +
                           "' can't be read: " + error.message());
    }
    std::sort(files.begin(), files.end());
    return files;
}

}  // namespace

std::shared_ptr<const Catalogue> Catalogue::ReadFile(const kxString& path) {
    return ReadFiles(path, {});
}

std::shared_ptr<const Catalogue> Catalogue::ReadFiles(const kxString& mainFile,
                                                      const kxString& customFolder) {
    std::vector<kxString> files = CustomFiles(customFolder);
    files.insert(files.begin(), mainFile);
    std::vector<LocatedDeclaration> declarations;
    std::size_t room = kLargestFiles;
    for (const kxString& file : files) {
        const kxString text = Slurp(file, room);
        room -= text.size();
        ReadDeclarations(text, file, declarations);
    }
    return Make(std::move(declarations));
}

}  // namespace kxudm::catalogue
