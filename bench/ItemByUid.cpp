// Item by UID, first time: Controller::GetItem for an entity that the session has not seen yet, in
// a library of `size` contents, then the values of its eight attributes by name. A round is 1,000
// items in mixed order; figures are per item. Forgetting them between rounds is not counted.
//
// Floor: the same entities by a prepared join of entity and newest revision, stepped and copied
// into a row of their own each, the packed attributes as they are.
#include <benchmark/benchmark.h>

#include "Floor.h"
#include "SampleLibrary.h"

namespace {

using bench::SampleLibrary;

constexpr std::size_t ROUND = 1000;

// The next thousand UIDs of a library, from the begin again after the end.
class Rounds {
  public:
    explicit Rounds(const std::vector<kxString>& uids) : _uids(uids) {}
    const kxString* Next() {
        _next = _next + ROUND > _uids.size() ? 0 : _next;
        const kxString* round = &_uids[_next];
        _next += ROUND;
        return round;
    }

  private:
    const std::vector<kxString>& _uids;
    std::size_t _next = 0;
};

void Floor(benchmark::State& state) {
    const SampleLibrary& library = SampleLibrary::OfSize(state.range(0));
    const bench::Database database = bench::OpenByHand(library.File());
    const bench::Statement find =
        bench::Prepare(database,
                       "SELECT " BENCH_ROW_COLUMNS
                       " FROM entity e JOIN revision r"
                       " ON r.id = (e.id << 24) + coalesce(e.working, e.published)"
                       " WHERE e.uid = ?1 AND e.deleted = 0");
    Rounds rounds(library.Uids());
    for (auto _ : state) {
        state.PauseTiming();
        std::vector<bench::Row> rows;
        const kxString* uids = rounds.Next();
        state.ResumeTiming();
        rows.reserve(ROUND);
        for (std::size_t i = 0; i < ROUND; ++i) {
            const std::string_view uid = uids[i];
            bench::BindText(find, 1, uid.substr(0, uid.find(':')));
            if (sqlite3_step(find.get()) != SQLITE_ROW) {
                bench::Fail(database.get());
            }
            bench::CopyRow(find, rows.emplace_back());
            sqlite3_reset(find.get());
        }
        state.PauseTiming();
        rows = {};
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(ROUND));
}
BENCHMARK(Floor)->Name("item by UID/floor")->Arg(10000)->Arg(100000)->Unit(benchmark::kMicrosecond);

void ReadAttributes(const kxct::Item& item) {
    static const kxString NAME("name");
    static const kxString DISPLAY_NAME("displayname");
    static const std::vector<kxString> REST(bench::ATTRIBUTES.begin(), bench::ATTRIBUTES.end());
    benchmark::DoNotOptimize(item.GetAttributeValue(NAME));
    benchmark::DoNotOptimize(item.GetAttributeValue(DISPLAY_NAME));
    for (const kxString& attribute : REST) {
        benchmark::DoNotOptimize(item.GetAttributeValue(attribute));
    }
}

void Ours(benchmark::State& state) {
    SampleLibrary& library = SampleLibrary::OfSize(state.range(0));
    kxct::Controller& controller = library.Controller();
    Rounds rounds(library.Uids());
    for (auto _ : state) {
        state.PauseTiming();
        controller.ClearCache(kxct::MANAGER_DEFAULT);
        const kxString* uids = rounds.Next();
        state.ResumeTiming();
        for (std::size_t i = 0; i < ROUND; ++i) {
            const kxct::Item* item = controller.GetItem(uids[i], false);
            if (item == nullptr) {
                state.SkipWithError("no item");
                return;
            }
            ReadAttributes(*item);
        }
    }
    controller.ClearCache(kxct::MANAGER_DEFAULT);
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(ROUND));
}
BENCHMARK(Ours)->Name("item by UID/ours")->Arg(10000)->Arg(100000)->Unit(benchmark::kMicrosecond);

}  // namespace
