// What a view must add to show a project with `size` simulations, all of them cached:
// Controller::GetStructure over the whole tree.
//
// Floor: the same tree walked by hand, as an application would do it itself: each item's
// GetChildren, level by level, with items and edges put into lists.
#include <benchmark/benchmark.h>
#include <kxctinterfaces/ItemFilterList.h>

#include <deque>

#include "Floor.h"
#include "SampleLibrary.h"

namespace {

using bench::SampleLibrary;
using Items = kxStlVector<kxct::Item*>;
using Relations = kxStlVector<std::pair<kxct::Item*, kxct::Item*>>;

SampleLibrary& Library() {
    return SampleLibrary::OfSize(1000);
}

// The simulations hang below the project itself and show no groups of their own.
const kxct::ChildFilterMap HIDE = [] {
    kxct::ChildFilterMap map;
    map["UDMProject"] = {"simulations"};
    return map;
}();
const kxct::ChildFilterMap FILTER = [] {
    kxct::ChildFilterMap map;
    map[bench::DEFINITION] = {};
    return map;
}();

kxct::Item* Project(std::int64_t size) {
    SampleLibrary& library = Library();
    kxct::Item* project = library.Controller().GetItem(library.ProjectWith(size), false);
    Items children;
    project->GetChildren(children, HIDE, FILTER, kxct::ItemFilterList());
    return project;
}

void FloorStructure(benchmark::State& state) {
    kxct::Item* project = Project(state.range(0));
    const kxct::ItemFilterList filters;
    for (auto _ : state) {
        Items newItems;
        Relations relations;
        std::deque<kxct::Item*> queue{project};
        while (!queue.empty()) {
            kxct::Item* parent = queue.front();
            queue.pop_front();
            Items children;
            parent->GetChildren(children, HIDE, FILTER, filters);
            for (kxct::Item* child : children) {
                relations.emplace_back(parent, child);
                newItems.push_back(child);
                queue.push_back(child);
            }
        }
        if (newItems.size() != static_cast<std::size_t>(state.range(0))) {
            state.SkipWithError("wrong number of items");
        }
    }
}
BENCHMARK(FloorStructure)
    ->Name("structure/floor")
    ->Arg(10000)
    ->Arg(100000)
    ->Unit(benchmark::kMicrosecond);

void OursStructure(benchmark::State& state) {
    kxct::Item* project = Project(state.range(0));
    kxct::Controller& controller = Library().Controller();
    controller.SetHideMap(HIDE);
    controller.SetFilterMap(FILTER);
    for (auto _ : state) {
        Items newItems;
        Items deletedItems;
        Relations newRelations;
        Relations deletedRelations;
        bool more = false;
        controller.GetStructure(kxct::MANAGER_DEFAULT,
                                {project},
                                newItems,
                                deletedItems,
                                newRelations,
                                deletedRelations,
                                more,
                                false);
        if (newItems.size() != static_cast<std::size_t>(state.range(0)) ||
            newRelations.size() != newItems.size()) {
            state.SkipWithError("wrong number of items");
        }
    }
}
BENCHMARK(OursStructure)
    ->Name("structure/ours")
    ->Arg(10000)
    ->Arg(100000)
    ->Unit(benchmark::kMicrosecond);

}  // namespace
