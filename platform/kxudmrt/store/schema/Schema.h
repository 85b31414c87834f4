// The schemas of library and master database, and how an older file is brought forward.
//
// Layer: store. A schema is a list of steps; step n takes a file from version n-1 to n, step 1
// makes the first tables. A step that was released is never edited: a change is a further step. The
// DDL that all steps together give is kept as golden files beside the tests and reviewed like code.
#ifndef KXUDMRT_STORE_SCHEMA_SCHEMA_H
#define KXUDMRT_STORE_SCHEMA_SCHEMA_H

#include <cstdint>
#include <span>
#include <string>

#include "sql/Connection.h"

namespace kxudm::store {

// The number in the file's header by which a file is known as ours.
constexpr std::int64_t LIBRARY_APPLICATION_ID = 0x6B784C42;
constexpr std::int64_t MASTER_APPLICATION_ID = 0x6B784D44;

struct SchemaStep {
    std::int64_t version;
    const char* script;
};

[[nodiscard]] std::span<const SchemaStep> LibrarySchema();
[[nodiscard]] std::span<const SchemaStep> MasterSchema();

// Runs the steps that the file lacks, in one transaction. Safe when several processes do it at
// once. A file with a version newer than the last step is refused with sql::Error of kind Version,
// whose text names file, its version and ours. `what` is "library" or "master database".
void BringForward(sql::Connection& connection,
                  std::span<const SchemaStep> steps,
                  const std::string& what);

}  // namespace kxudm::store

#endif
