#include "Search.h"

#include <chrono>
#include <cstdio>
#include <string>

namespace demo {

namespace {

void PrintSearch(Library& library, const kxString& query, kxct::QueryMode mode) {
    const auto start = std::chrono::steady_clock::now();
    kxStlVector<kxString> uids;
    library.Controller().Query(query, uids, -1, mode, 0, 0, false, true);
    const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - start;
    std::printf("%s %s: %zu hits, %.2f ms\n",
                mode == kxct::QUERY_ATTRIBUTES ? "query" : "full text",
                query.c_str(),
                uids.size(),
                time.count());
}

}  // namespace

void PrintSearches(Library& library) {
    PrintSearch(
        library, "class == FileContent && attrib.filesize >= 10000", kxct::QUERY_ATTRIBUTES);
    PrintSearch(library, "attrib.name like \"*beam*\"", kxct::QUERY_ATTRIBUTES);
    PrintSearch(library,
                "attrib.smd_comment == described || attrib.smd_comment == classified",
                kxct::QUERY_ATTRIBUTES);
    PrintSearch(library, "elastic mater*", kxct::QUERY_FULLTEXT_ALL);
    std::fflush(stdout);
}

}  // namespace demo
