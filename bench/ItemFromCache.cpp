// Item from the cache: DefaultItemManager::CreateItem with the handle of an entity whose item is
// cached, among `size` cached items, in mixed order.
//
// Floor: one look-up of the UID text in a std::map with as many entries, in the same order.
#include <benchmark/benchmark.h>
#include <kxct/DefaultItemManager.h>

#include <map>

#include "SampleLibrary.h"

namespace {

using bench::SampleLibrary;

std::vector<kxudm::UDMItemHandle> HandlesOf(SampleLibrary& library) {
    std::vector<kxudm::UDMItemHandle> handles;
    handles.reserve(library.Uids().size());
    for (const kxString& uid : library.Uids()) {
        handles.push_back(library.Session().GetUDMItemHandle(uid));
    }
    return handles;
}

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
    kxct::DefaultItemManager manager(&library.Session(), nullptr);
    const std::vector<kxudm::UDMItemHandle> handles = HandlesOf(library);
    for (const kxudm::UDMItemHandle& handle : handles) {
        manager.CreateItem(handle);
    }
    std::size_t next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(manager.CreateItem(handles[next]));
        next = next + 1 == handles.size() ? 0 : next + 1;
    }
    manager.ClearCache();
}
BENCHMARK(Ours)->Name("item from the cache/ours")->Arg(10000)->Arg(100000);

}  // namespace
