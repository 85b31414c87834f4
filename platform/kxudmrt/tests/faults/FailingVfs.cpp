#include "FailingVfs.h"

#include <sqlite3.h>

#include <cstring>
#include <stdexcept>

namespace kxudm::test {

namespace {

FailingVfs* disk = nullptr;
sqlite3_vfs* machine = nullptr;

// An open file; the machine's own lies behind it in the same block.
struct File {
    sqlite3_file base;
    sqlite3_file* real;
};

sqlite3_file* Real(sqlite3_file* file) {
    return reinterpret_cast<File*>(file)->real;
}

int Close(sqlite3_file* file) {
    return Real(file)->pMethods->xClose(Real(file));
}

int Read(sqlite3_file* file, void* bytes, int size, sqlite3_int64 offset) {
    return disk->Fails("read") ? SQLITE_IOERR_READ
                               : Real(file)->pMethods->xRead(Real(file), bytes, size, offset);
}

// Half of it arrives, as on a disk that is full.
int Write(sqlite3_file* file, const void* bytes, int size, sqlite3_int64 offset) {
    if (disk->Fails("write")) {
        static_cast<void>(Real(file)->pMethods->xWrite(Real(file), bytes, size / 2, offset));
        return SQLITE_FULL;
    }
    return Real(file)->pMethods->xWrite(Real(file), bytes, size, offset);
}

int Truncate(sqlite3_file* file, sqlite3_int64 size) {
    return disk->Fails("truncate") ? SQLITE_IOERR_TRUNCATE
                                   : Real(file)->pMethods->xTruncate(Real(file), size);
}

int Sync(sqlite3_file* file, int flags) {
    static_cast<void>(flags);
    // What a flush does can't be seen without a loss of power, and it takes its time.
    static_cast<void>(file);
    return disk->Fails("sync") ? SQLITE_IOERR_FSYNC : SQLITE_OK;
}

int FileSize(sqlite3_file* file, sqlite3_int64* size) {
    return disk->Fails("size") ? SQLITE_IOERR_FSTAT
                               : Real(file)->pMethods->xFileSize(Real(file), size);
}

int Lock(sqlite3_file* file, int level) {
    return disk->Fails("lock") ? SQLITE_IOERR_LOCK : Real(file)->pMethods->xLock(Real(file), level);
}

int Unlock(sqlite3_file* file, int level) {
    return Real(file)->pMethods->xUnlock(Real(file), level);
}

int CheckReservedLock(sqlite3_file* file, int* reserved) {
    return Real(file)->pMethods->xCheckReservedLock(Real(file), reserved);
}

int FileControl(sqlite3_file* file, int operation, void* argument) {
    return Real(file)->pMethods->xFileControl(Real(file), operation, argument);
}

int SectorSize(sqlite3_file* file) {
    return Real(file)->pMethods->xSectorSize(Real(file));
}

int DeviceCharacteristics(sqlite3_file* file) {
    return Real(file)->pMethods->xDeviceCharacteristics(Real(file));
}

int ShmMap(sqlite3_file* file, int region, int size, int extend, void volatile** memory) {
    return disk->Fails("shared memory")
               ? SQLITE_IOERR_SHMMAP
               : Real(file)->pMethods->xShmMap(Real(file), region, size, extend, memory);
}

int ShmLock(sqlite3_file* file, int offset, int count, int flags) {
    return Real(file)->pMethods->xShmLock(Real(file), offset, count, flags);
}

void ShmBarrier(sqlite3_file* file) {
    Real(file)->pMethods->xShmBarrier(Real(file));
}

int ShmUnmap(sqlite3_file* file, int remove) {
    return Real(file)->pMethods->xShmUnmap(Real(file), remove);
}

const sqlite3_io_methods METHODS = {2,
                                    Close,
                                    Read,
                                    Write,
                                    Truncate,
                                    Sync,
                                    FileSize,
                                    Lock,
                                    Unlock,
                                    CheckReservedLock,
                                    FileControl,
                                    SectorSize,
                                    DeviceCharacteristics,
                                    ShmMap,
                                    ShmLock,
                                    ShmBarrier,
                                    ShmUnmap,
                                    nullptr,
                                    nullptr};

int Open(sqlite3_vfs* /*vfs*/, const char* name, sqlite3_file* file, int flags, int* answer) {
    auto* ours = reinterpret_cast<File*>(file);
    ours->base.pMethods = nullptr;
    ours->real = reinterpret_cast<sqlite3_file*>(ours + 1);
    if (disk->Fails("open")) {
        return SQLITE_CANTOPEN;
    }
    const int code = machine->xOpen(machine, name, ours->real, flags, answer);
    if (ours->real->pMethods != nullptr) {
        ours->base.pMethods = &METHODS;
    }
    return code;
}

int Delete(sqlite3_vfs* /*vfs*/, const char* name, int flush) {
    return disk->Fails("delete") ? SQLITE_IOERR_DELETE : machine->xDelete(machine, name, flush);
}

}  // namespace

FailingVfs& FailingVfs::Install() {
    static FailingVfs installed;
    static sqlite3_vfs vfs;
    if (disk == nullptr) {
        machine = sqlite3_vfs_find(nullptr);
        vfs = *machine;
        vfs.pNext = nullptr;
        vfs.zName = "failing";
        vfs.szOsFile = static_cast<int>(sizeof(File)) + machine->szOsFile;
        vfs.xOpen = Open;
        vfs.xDelete = Delete;
        disk = &installed;
        if (sqlite3_vfs_register(&vfs, 1) != SQLITE_OK) {
            throw std::runtime_error("the failing file layer was refused");
        }
    }
    return installed;
}

void FailingVfs::Arm(long number) {
    _number = number;
    _calls = 0;
    _failed.clear();
}

bool FailingVfs::Fails(const char* call) {
    if (_number == 0 || ++_calls != _number) {
        return false;
    }
    _failed = call;
    return true;
}

}  // namespace kxudm::test
