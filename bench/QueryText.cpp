// From the text of a query of five terms to a condition in SQL: query::Parse and query::Compile
// with the definitions that the product brings along. Prints the median of a few thousand rounds in
// microseconds of processor time, as one line "terms,microseconds".
#include <algorithm>
#include <ctime>
#include <iostream>
#include <vector>

#include "catalogue/Catalogue.h"
#include "query/Parser.h"
#include "query/SqlCompiler.h"

namespace {

constexpr const char* QUERY =
    "class == UDMSimulation && (attrib.solver == explicit || attrib.solver like \"impl*\")"
    " && attrib.description like \"front axle*stiff\" && !attrib.status in (Draft, Rejected)";

double Microseconds() {
    timespec now = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) * 1e6 + static_cast<double>(now.tv_nsec) / 1e3;
}

}  // namespace

int main() {
    using namespace kxudm;
    const auto catalogue =
        catalogue::Catalogue::ReadFile(KXCT_DATA_DIR "/catalogue/engineering.xml");
    std::vector<double> rounds;
    std::size_t bytes = 0;
    for (int i = 0; i < 5000; ++i) {
        const double start = Microseconds();
        const store::Condition condition =
            query::Compile(query::Parse(QUERY), *catalogue, {.letters = query::Letters::Folded});
        rounds.push_back(Microseconds() - start);
        bytes += condition.sql.size();
    }
    std::nth_element(rounds.begin(), rounds.begin() + rounds.size() / 2, rounds.end());
    std::cout << "terms,microseconds\n5," << rounds[rounds.size() / 2] << '\n';
    return bytes == 0;
}
