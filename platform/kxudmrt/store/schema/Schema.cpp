#include "store/schema/Schema.h"

namespace kxudm::store {

void BringForward(sql::Connection& connection,
                  std::span<const SchemaStep> steps,
                  const std::string& what) {
    const std::int64_t newest = steps.back().version;
    const std::int64_t found = connection.SchemaVersion();
    if (found > newest) {
        throw sql::Error(sql::ErrorKind::Version,
                         what + " '" + connection.File() + "' has schema version " +
                             std::to_string(found) + ", this program knows versions up to " +
                             std::to_string(newest) + "; use a newer program");
    }
    if (found == newest) {
        return;
    }
    sql::Transaction transaction(
        connection, sql::Transaction::Mode::Write, sql::Transaction::Durability::Full);
    // Asked again under the lock: another process may have been quicker.
    const std::int64_t version = connection.SchemaVersion();
    for (const SchemaStep& step : steps) {
        if (step.version > version) {
            connection.Execute(step.script);
        }
    }
    if (version < newest) {
        connection.SetSchemaVersion(newest);
    }
    transaction.Commit();
}

}  // namespace kxudm::store
