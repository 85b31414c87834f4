#include "query/SqlDialect.h"

#include <algorithm>
#include <array>

namespace kxudm::query::dialect {

namespace {

// Times are kept in microseconds and shown in whole seconds.
#define KXUDM_SECONDS(time) "strftime('%Y-%m-%dT%H:%M:%SZ', " time " / 1000000, 'unixepoch')"

// The path of the folder that the entity lies in: up the folder links that hold for the revision
// seen, as far as folders are there and visible.
constexpr const char* FOLDER_PATH =
    "(WITH RECURSIVE up(id, revision, depth, path) AS (SELECT e.id, r.id & 16777215, 0, NULL"
    " UNION ALL SELECT f.id, CASE WHEN f.lock_user IS ?1 AND f.lock_workspace IS ?2"
    " THEN f.working ELSE f.published END, up.depth + 1, '/' || f.name || coalesce(up.path, '')"
    " FROM up CROSS JOIN link l ON l.first = up.id AND l.kind = 3 AND l.to_rev = 2147483647"
    " AND l.from_rev <= up.revision AND (l.ending IS NULL OR l.ending > up.revision)"
    " CROSS JOIN entity f ON f.id = l.second AND f.deleted = 0"
    " AND CASE WHEN f.lock_user IS ?1 AND f.lock_workspace IS ?2"
    " THEN f.working ELSE f.published END IS NOT NULL)"
    " SELECT path FROM up ORDER BY depth DESC LIMIT 1)";

// The hash of the one file that the revision seen has in the library.
constexpr const char* FILE_HASH =
    "(SELECT CASE WHEN count(*) = 1 THEN max(f.hash) END FROM file f WHERE f.entity = e.id"
    " AND f.to_rev > (r.id & 16777215) AND f.from_rev <= (r.id & 16777215)"
    " AND (f.ending IS NULL OR f.ending > (r.id & 16777215)))";

constexpr std::array<Computed, 12> COMPUTED{{
    {"name", "e.name"},
    {"smd_contentrevision", REVISION, true},
    {"smd_createduser", "e.created_user"},
    {"smd_creatime", KXUDM_SECONDS("e.created_time")},
    {"smd_user", "r.modified_user"},
    {"smd_ctime", KXUDM_SECONDS("r.modified_time")},
    {"smd_comment", "nullif(r.comment, '')"},
    {"smd_folder", FOLDER_PATH, false, true},
    {"smd_filehash", FILE_HASH, false, true},
    {"smd_branchfrom", "e.branch_uid"},
    {"smd_branchfromver", "e.branch_revision", true},
    {"smd_branchedtime",
     "CASE WHEN e.branch_uid IS NOT NULL THEN " KXUDM_SECONDS("e.created_time") " END"},
}};

#undef KXUDM_SECONDS

}  // namespace

std::string GlobOf(std::string_view pattern) {
    std::string glob;
    glob.reserve(pattern.size());
    for (const char c : pattern) {
        glob += c == '[' ? "[[]" : std::string(1, c);
    }
    return glob;
}

const Computed* FindComputed(std::string_view attribute) {
    const auto* const found =
        std::find_if(COMPUTED.begin(), COMPUTED.end(), [&](const Computed& computed) {
            return computed.attribute == attribute;
        });
    return found != COMPUTED.end() ? found : nullptr;
}

}  // namespace kxudm::query::dialect
