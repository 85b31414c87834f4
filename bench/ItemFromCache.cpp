// Item from the cache: DefaultItemManager::CreateItem with the handle of an entity whose item is
// cached, among `size` cached items, in mixed order.
//
// Floor: one look-up of the UID text in a std::map with as many entries, in the same order.
#include <benchmark/benchmark.h>

#include <map>

#include "SampleLibrary.h"

namespace {

using bench::SampleLibrary;

void Floor(benchmark::State& state) {
    const SampleLibrary& library = SampleLibrary::OfSize(state.range(0));
    const std::vector<kxString>& uids = library.Uids();
    std::map<kxString, const kxString*> items;
    for (const kxString& uid : uids) {
        items.emplace(uid, &uid);
    }
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(items.find(uids[next])->second);
        next = next + 1 == uids.size() ? 0 : next + 1;
    }
}
BENCHMARK(Floor)->Name("item from the cache/floor")->Arg(10000)->Arg(100000);

void Ours(benchmark::State& state) {
    SampleLibrary& library = SampleLibrary::OfSize(state.range(0));
    const std::vector<kxudm::UDMItemHandle>& handles = library.Handles();
    kxct::ItemManager& manager = library.FullManager();
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(manager.CreateItem(handles[next]));
        next = next + 1 == handles.size() ? 0 : next + 1;
    }
}
BENCHMARK(Ours)->Name("item from the cache/ours")->Arg(10000)->Arg(100000);

}  // namespace
