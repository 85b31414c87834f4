#include "profile/Neighbours.h"

#include <algorithm>
#include <filesystem>

#include "sql/sqlite/Connection.h"
#include "store/LibraryCheck.h"
#include "store/schema/Schema.h"

namespace kxudm::profile {

namespace fs = std::filesystem;

namespace {

std::unique_ptr<sql::Connection> Open(const std::string& file) {
    auto library = sql::sqlite::Open(
        {.file = file, .what = "library", .applicationId = store::LIBRARY_APPLICATION_ID});
    if (library->SchemaVersion() > store::LibrarySchema().back().version) {
        throw UDMStoreException("library '" + file +
                                "' was made by a newer version of this program; use that");
    }
    // Whether its files can be asked for at all.
    static_cast<void>(store::VaultsOfFiles(*library));
    return library;
}

}  // namespace

Neighbours::Neighbours(const std::string& libraryFile) {
    std::vector<std::string> files;
    for (const auto& entry : fs::directory_iterator(fs::path(libraryFile).parent_path())) {
        std::error_code error;
        // One of 0 bytes is not made yet.
        if (entry.path().extension() == ".ldb" && entry.file_size(error) != 0 &&
            !fs::equivalent(entry.path(), libraryFile, error)) {
            files.push_back(entry.path().string());
        }
    }
    std::sort(files.begin(), files.end());
    for (const std::string& file : files) {
        try {
            _libraries.push_back(Open(file));
        } catch (const UDMException& failure) {
            _unreadable.emplace_back(file, failure.what());
        }
    }
}

bool Neighbours::Uses(const std::string& vault, const std::string& hash) {
    return std::any_of(_libraries.begin(), _libraries.end(), [&](const auto& each) {
        return store::IsContentUsed(*each, vault, hash);
    });
}

void Neighbours::AddVaults(std::vector<std::string>& vaults) {
    for (const auto& each : _libraries) {
        const std::vector<std::string> named = store::VaultsOfFiles(*each);
        vaults.insert(vaults.end(), named.begin(), named.end());
    }
}

void Neighbours::Lock() {
    for (const auto& each : _libraries) {
        _locks.push_back(std::make_unique<sql::Transaction>(*each));
    }
}

}  // namespace kxudm::profile
