#include "providers/local/LibraryFile.h"

#include <fcntl.h>
#include <kxudm/UDMException.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <vector>

#include "core/UidGenerator.h"
#include "profile/LibraryVaults.h"
#include "sql/sqlite/Connection.h"
#include "store/schema/Schema.h"

namespace kxudm::providers {

namespace {

namespace fs = std::filesystem;

constexpr const char* SUFFIXES[] = {"", "-wal", "-shm"};

[[noreturn]] void ThrowFile(const char* doing, const kxString& path, const std::string& cause) {
    throw UDMStoreException(std::string("Can't ") + doing + " \"" + path + "\": " + cause +
                            "; check place and permissions");
}

void RemoveOne(const fs::path& path) {
    std::error_code error;
    fs::remove_all(path, error);
    if (error) {
        ThrowFile("remove", path.string(), error.message());
    }
}

bool HasOtherLibrary(const fs::path& directory, const fs::path& except) {
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(directory, error)) {
        if (entry.path().extension() == ".ldb" && entry.path() != except) {
            return true;
        }
    }
    return false;
}

// The vaults beside the common one. None where the library can't tell any more.
std::vector<fs::path> OtherVaultsOf(const kxString& file) {
    std::vector<fs::path> paths;
    try {
        const fs::path base = fs::path(file.c_str()).parent_path();
        profile::LibraryVaults vaults(base.string(), vault::MachineFiles());
        for (const std::string& directory : OpenLibraryFile(file, 0)->Vaults()) {
            paths.emplace_back(vaults.In(directory).Directory());
        }
    } catch (const UDMException&) {
        // It is to be removed, whatever it is.
    }
    return paths;
}

// The directory was chosen by somebody, who may keep other things in it.
void RemoveOtherVault(const fs::path& directory) {
    std::vector<fs::path> folders;
    std::error_code error;
    for (const auto& entry : fs::directory_iterator(directory, error)) {
        const std::string name = entry.path().filename().string();
        const bool isOurs = name.size() == 2 &&
                            std::isxdigit(static_cast<unsigned char>(name[0])) &&
                            std::isxdigit(static_cast<unsigned char>(name[1]));
        if (entry.is_directory(error) && (isOurs || name == "tmp")) {
            folders.push_back(entry.path());
        }
    }
    std::for_each(folders.begin(), folders.end(), RemoveOne);
    fs::remove(directory, error);
}

// The topmost of the directories above and including `directory` that is not there.
fs::path TopmostMissing(const fs::path& directory) {
    fs::path missing;
    std::error_code error;
    for (fs::path each = directory; !each.empty() && !fs::exists(each, error);
         each = each.parent_path()) {
        missing = each;
    }
    return missing;
}

void FlushDirectory(const kxString& directory) {
    const int descriptor = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        ::fsync(descriptor);
        ::close(descriptor);
    }
}

// Gives `temporary` its final name; false if that is taken.
bool Publish(const kxString& temporary, const kxString& file) {
    if (::link(temporary.c_str(), file.c_str()) == 0) {
        return true;
    }
    if (errno == EEXIST) {
        return false;
    }
    // A file system without hard links: a gap of an instant is the best there is.
    if ((errno != EPERM && errno != ENOTSUP && errno != ENOSYS) || FileExists(file)) {
        ThrowFile("make", file, std::strerror(errno));
    }
    if (::rename(temporary.c_str(), file.c_str()) != 0) {
        ThrowFile("make", file, std::strerror(errno));
    }
    return true;
}

// Removes the temporary files of a creation, however it ends.
class Temporary {
  public:
    explicit Temporary(kxString file) : _file(std::move(file)) {}
    ~Temporary() {
        for (const char* suffix : SUFFIXES) {
            ::unlink((_file + suffix).c_str());
        }
    }
    Temporary(const Temporary&) = delete;
    Temporary& operator=(const Temporary&) = delete;
    [[nodiscard]] const kxString& File() const { return _file; }

  private:
    kxString _file;
};

}  // namespace

kxString LibraryFileName(const kxString& baseDirectory, const kxString& name) {
    return (fs::path(baseDirectory.c_str()) / (name + ".ldb")).string();
}

bool FileExists(const kxString& path) {
    std::error_code error;
    return fs::exists(path.c_str(), error);
}

void MakeDirectories(const kxString& directory, const char* what) {
    std::error_code error;
    fs::create_directories(directory.c_str(), error);
    if (error || !fs::is_directory(directory.c_str(), error)) {
        ThrowFile((std::string("make the ") + what).c_str(),
                  directory,
                  error ? error.message() : "it is no directory");
    }
}

std::unique_ptr<store::LibraryStore> OpenLibraryFile(const kxString& file,
                                                     int busyTimeoutMilliseconds) {
    return store::LibraryStore::Open(
        sql::sqlite::Open({.file = file,
                           .what = "library",
                           .applicationId = store::LIBRARY_APPLICATION_ID,
                           .busyTimeoutMilliseconds = busyTimeoutMilliseconds}));
}

void RemoveLibraryFiles(const kxString& file) {
    const fs::path path(file.c_str());
    const std::vector<fs::path> vaults = OtherVaultsOf(file);
    for (const char* suffix : SUFFIXES) {
        RemoveOne(path.string() + suffix);
    }
    if (!HasOtherLibrary(path.parent_path(), path)) {
        RemoveOne(path.parent_path() / "vault");
        for (const fs::path& each : vaults) {
            RemoveOtherVault(each);
        }
    }
}

NewLibraryFile::NewLibraryFile(const LibraryPlan& plan)
    : _file(plan.file),
      _firstMade(TopmostMissing(plan.baseDirectory.c_str()).string()),
      _baseDirectory(plan.baseDirectory) {
    try {
        Make(plan);
    } catch (...) {
        TakeBack();
        throw;
    }
}

NewLibraryFile::~NewLibraryFile() {
    if (!_kept) {
        TakeBack();
    }
}

void NewLibraryFile::Make(const LibraryPlan& plan) {
    MakeDirectories(_baseDirectory, "base directory of the library");
    const kxString unique = core::ProcessUidGenerator().Next();
    const Temporary temporary(kxString(_baseDirectory + "/." + plan.name + "." + unique + ".new"));
    try {
        // At its end the log is in the file.
        const auto closedAtOnce =
            store::LibraryStore::Create(temporary.File(),
                                        {.name = plan.name,
                                         .id = unique,
                                         .baseDirectory = _baseDirectory,
                                         .created = core::SystemClock().NowMicroseconds()},
                                        plan.catalogueXml);
    } catch (const std::exception& cause) {
        throw UDMStoreException("The library \"" + plan.name + "\" can't be made in \"" +
                                _baseDirectory + "\"; the directory must be writable (" +
                                cause.what() + ")");
    }
    _ours = Publish(temporary.File(), _file);
    FlushDirectory(_baseDirectory);
}

void NewLibraryFile::TakeBack() noexcept {
    if (_ours) {
        for (const char* suffix : SUFFIXES) {
            ::unlink((_file + suffix).c_str());
        }
    }
    // Only directories that were made here and are empty again.
    if (_firstMade.empty()) {
        return;
    }
    std::error_code error;
    for (fs::path each(_baseDirectory.c_str()); each.string().size() >= _firstMade.size();
         each = each.parent_path()) {
        if (::rmdir(each.c_str()) != 0 && errno != ENOENT) {
            return;
        }
    }
}

}  // namespace kxudm::providers
