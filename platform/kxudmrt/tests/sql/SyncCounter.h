// Counts how often SQLite asks the system to flush a file, to see what survives a loss of power.
#ifndef KXUDMRT_TESTS_SQL_SYNCCOUNTER_H
#define KXUDMRT_TESTS_SQL_SYNCCOUNTER_H

#include <string>

// Registers an operating system layer that counts; its name goes into OpenOptions::vfs.
std::string RegisterSyncCounter();
int SyncCount();

#endif
