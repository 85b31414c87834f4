#include "profile/Neighbours.h"

#include <algorithm>
#include <filesystem>

#include "store/LibraryCheck.h"

namespace kxudm::profile {

namespace fs = std::filesystem;

Neighbours::Neighbours(const std::string& libraryFile) {
    std::vector<std::string> files;
    for (const auto& entry : fs::directory_iterator(fs::path(libraryFile).parent_path())) {
        std::error_code error;
        if (entry.path().extension() == ".ldb" &&
            !fs::equivalent(entry.path(), libraryFile, error)) {
            files.push_back(entry.path().string());
        }
    }
    std::sort(files.begin(), files.end());
    for (const std::string& file : files) {
        try {
            _stores.push_back(store::LibraryStore::Open(file));
        } catch (const UDMException& failure) {
            _unreadable.emplace_back(file, failure.what());
        }
    }
}

bool Neighbours::Uses(const std::string& vault, const std::string& hash) {
    return std::any_of(_stores.begin(), _stores.end(), [&](const auto& each) {
        return store::IsContentUsed(*each, vault, hash);
    });
}

void Neighbours::AddVaults(std::vector<std::string>& vaults) {
    for (const auto& each : _stores) {
        const std::vector<std::string> named = each->Vaults();
        vaults.insert(vaults.end(), named.begin(), named.end());
    }
}

void Neighbours::Lock() {
    for (const auto& each : _stores) {
        _locks.push_back(std::make_unique<sql::Transaction>(each->Connection()));
    }
}

}  // namespace kxudm::profile
