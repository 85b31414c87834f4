#include "SyncCounter.h"

#include <sqlite3.h>

#include <map>

namespace {

int count = 0;
int (*realSync)(sqlite3_file*, int) = nullptr;
sqlite3_vfs* realVfs = nullptr;

int CountingSync(sqlite3_file* file, int flags) {
    ++count;
    return realSync(file, flags);
}

// Files keep their real object; only their table of operations is exchanged for a copy.
int CountingOpen(sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* outFlags) {
    static std::map<const sqlite3_io_methods*, sqlite3_io_methods> tables;
    const int code = realVfs->xOpen(realVfs, name, file, flags, outFlags);
    if (code == SQLITE_OK && file->pMethods != nullptr) {
        const auto [entry, added] = tables.try_emplace(file->pMethods, *file->pMethods);
        if (added) {
            realSync = file->pMethods->xSync;
            entry->second.xSync = CountingSync;
        }
        file->pMethods = &entry->second;
    }
    return code;
}

}  // namespace

std::string RegisterSyncCounter() {
    static sqlite3_vfs counting;
    if (realVfs == nullptr) {
        realVfs = sqlite3_vfs_find(nullptr);
        counting = *realVfs;
        counting.zName = "count-syncs";
        counting.xOpen = CountingOpen;
        sqlite3_vfs_register(&counting, 0);
    }
    return counting.zName;
}

int SyncCount() {
    return count;
}
