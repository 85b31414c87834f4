// Children of one content as items: Item::GetChildren of a group with `size` children, for the
// first time in a session, and again with all of them cached since a listing before.
//
// Floor for the first time: the same children by a prepared listing of the group's links joined
// with entity and newest revision, stepped and copied into a row of their own each.
// Floor for again: one look-up per child in a std::map of UID to item, in the group's order, put
// into a list.
#include <benchmark/benchmark.h>

#include <map>

#include "Floor.h"
#include "SampleLibrary.h"

namespace {

using bench::SampleLibrary;

// Beside the project with its children stand 10,000 other contents.
SampleLibrary& Library() {
    return SampleLibrary::OfSize(10000);
}

const kxString GROUP("simulations");

std::int64_t IdOf(const bench::Database& database, std::string_view uid) {
    const bench::Statement find = bench::Prepare(database, "SELECT id FROM entity WHERE uid = ?1");
    bench::BindText(find, 1, uid.substr(0, uid.find(':')));
    if (sqlite3_step(find.get()) != SQLITE_ROW) {
        bench::Fail(database.get());
    }
    return sqlite3_column_int64(find.get(), 0);
}

void FloorFirst(benchmark::State& state) {
    SampleLibrary& library = Library();
    const kxString& project = library.ProjectWith(state.range(0));
    const bench::Database database = bench::OpenByHand(library.File());
    const std::int64_t parent = IdOf(database, project);
    const bench::Statement list =
        bench::Prepare(database,
                       "SELECT " BENCH_ROW_COLUMNS
                       " FROM link l CROSS JOIN entity e ON e.id = l.second AND e.deleted = 0"
                       " CROSS JOIN revision r"
                       " ON r.id = (e.id << 24) + coalesce(l.exact, e.working, e.published)"
                       " WHERE l.first = ?1 AND l.kind = 1 AND l.to_rev = 2147483647"
                       " AND l.ending IS NULL AND l.name = ?2 ORDER BY l.position");
    for (auto _ : state) {
        std::vector<bench::Row> rows;
        sqlite3_bind_int64(list.get(), 1, parent);
        bench::BindText(list, 2, GROUP);
        while (sqlite3_step(list.get()) == SQLITE_ROW) {
            bench::CopyRow(list, rows.emplace_back());
        }
        sqlite3_reset(list.get());
        state.PauseTiming();
        if (rows.size() != static_cast<std::size_t>(state.range(0))) {
            state.SkipWithError("wrong number of children");
        }
        rows = {};
        state.ResumeTiming();
    }
}
BENCHMARK(FloorFirst)
    ->Name("children, first time/floor")
    ->Arg(1000)
    ->Arg(10000)
    ->Unit(benchmark::kMicrosecond);

void OursFirst(benchmark::State& state) {
    SampleLibrary& library = Library();
    kxct::Controller& controller = library.Controller();
    const kxString& project = library.ProjectWith(state.range(0));
    for (auto _ : state) {
        state.PauseTiming();
        controller.ClearCache(kxct::MANAGER_DEFAULT);
        kxct::Item* parent = controller.GetItem(project, false);
        state.ResumeTiming();
        kxStlVector<kxct::Item*> children;
        parent->GetChildren(children, GROUP);
        if (children.size() != static_cast<std::size_t>(state.range(0))) {
            state.SkipWithError("wrong number of children");
        }
    }
    controller.ClearCache(kxct::MANAGER_DEFAULT);
}
BENCHMARK(OursFirst)
    ->Name("children, first time/ours")
    ->Arg(1000)
    ->Arg(10000)
    ->Unit(benchmark::kMicrosecond);

void FloorAgain(benchmark::State& state) {
    SampleLibrary& library = Library();
    kxct::Item* parent = library.Controller().GetItem(library.ProjectWith(state.range(0)), false);
    kxStlVector<kxct::Item*> children;
    parent->GetChildren(children, GROUP);
    std::map<kxString, kxct::Item*> items;
    std::vector<kxString> uids;
    for (kxct::Item* child : children) {
        uids.push_back(child->GetUID());
        items.emplace(uids.back(), child);
    }
    for (auto _ : state) {
        kxStlVector<kxct::Item*> found;
        for (const kxString& uid : uids) {
            found.push_back(items.find(uid)->second);
        }
        benchmark::DoNotOptimize(found.data());
    }
}
BENCHMARK(FloorAgain)
    ->Name("children, again/floor")
    ->Arg(1000)
    ->Arg(10000)
    ->Unit(benchmark::kMicrosecond);

void OursAgain(benchmark::State& state) {
    SampleLibrary& library = Library();
    kxct::Item* parent = library.Controller().GetItem(library.ProjectWith(state.range(0)), false);
    kxStlVector<kxct::Item*> first;
    parent->GetChildren(first, GROUP);
    for (auto _ : state) {
        kxStlVector<kxct::Item*> children;
        parent->GetChildren(children, GROUP);
        if (children.size() != static_cast<std::size_t>(state.range(0))) {
            state.SkipWithError("wrong number of children");
        }
    }
}
BENCHMARK(OursAgain)
    ->Name("children, again/ours")
    ->Arg(1000)
    ->Arg(10000)
    ->Unit(benchmark::kMicrosecond);

}  // namespace
