// Cycles among links that must not form any.
#include <algorithm>
#include <unordered_map>
#include <utility>

#include "store/LibraryCheck.h"
#include "store/MaintenanceStatements.h"

namespace kxudm::store {
namespace {

using Edge = std::pair<EntityId, EntityId>;

// Links of one kind, in the order of their first ends. What is on no cycle is taken away.
class Graph {
  public:
    explicit Graph(std::vector<Edge> edges) : edges_(std::move(edges)) {}

    // One cycle, from its smallest number on; empty if there is none. Its edges are gone then.
    std::vector<EntityId> TakeCycle() {
        Peel();
        if (edges_.empty()) {
            return {};
        }
        // Each end that is left has an edge onwards, so that the way must come to where it was.
        std::vector<EntityId> way{edges_.front().first};
        for (;;) {
            const EntityId next = Onward(way.back());
            const auto met = std::find(way.begin(), way.end(), next);
            if (met != way.end()) {
                way.erase(way.begin(), met);
                break;
            }
            way.push_back(next);
        }
        std::erase_if(edges_, [&](const Edge& edge) { return IsStep(way, edge); });
        std::rotate(way.begin(), std::min_element(way.begin(), way.end()), way.end());
        return way;
    }

  private:
    [[nodiscard]] EntityId Onward(EntityId from) const {
        return std::lower_bound(edges_.begin(), edges_.end(), Edge(from, 0))->second;
    }

    static bool IsStep(const std::vector<EntityId>& way, const Edge& edge) {
        const auto from = std::find(way.begin(), way.end(), edge.first);
        if (from == way.end()) {
            return false;
        }
        return edge.second == (std::next(from) == way.end() ? way.front() : *std::next(from));
    }

    // Takes away what leads to no cycle: edges into ends without an edge onwards, and so on.
    void Peel() {
        std::unordered_map<EntityId, std::size_t> onward;
        std::vector<Edge> backward;
        backward.reserve(edges_.size());
        for (const Edge& edge : edges_) {
            ++onward[edge.first];
            backward.emplace_back(edge.second, edge.first);
        }
        std::sort(backward.begin(), backward.end());
        std::vector<EntityId> done;
        for (const Edge& edge : edges_) {
            if (onward.emplace(edge.second, 0).second) {
                done.push_back(edge.second);
            }
        }
        while (!done.empty()) {
            const EntityId end = done.back();
            done.pop_back();
            for (auto into = std::lower_bound(backward.begin(), backward.end(), Edge(end, 0));
                 into != backward.end() && into->first == end;
                 ++into) {
                if (--onward[into->second] == 0) {
                    done.push_back(into->second);
                }
            }
        }
        std::erase_if(edges_, [&](const Edge& edge) { return onward[edge.second] == 0; });
    }

    std::vector<Edge> edges_;
};

std::string UidOf(LibraryStore& store, EntityId id) {
    sql::Statement find(store.Connection(), statements::UID_OF);
    find.BindAll(id);
    return find.Step() ? find.String(0) : "#" + std::to_string(id);
}

void CheckKind(LibraryStore& store, LinkKind kind, const char* what, const Report& report) {
    std::vector<Edge> edges;
    sql::Statement find(store.Connection(), statements::ALL_LINKS_OF_KIND);
    find.BindAll(kind);
    while (find.Step()) {
        edges.emplace_back(find.Int64(0), find.Int64(1));
    }
    std::sort(edges.begin(), edges.end());
    Graph graph(std::move(edges));
    for (std::vector<EntityId> cycle = graph.TakeCycle(); !cycle.empty();
         cycle = graph.TakeCycle()) {
        std::string way;
        for (const EntityId id : cycle) {
            way += UidOf(store, id) + " -> ";
        }
        report(UDMFindingKind::LinkCycle,
               UidOf(store, cycle.front()),
               std::string("its ") + what + " go in a circle, " + way +
                   UidOf(store, cycle.front()) + "; remove one of them");
    }
}

}  // namespace

void CheckCycles(LibraryStore& store, const Report& report) {
    CheckKind(store, LinkKind::Owner, "owned children", report);
    CheckKind(store, LinkKind::Folder, "folders", report);
    CheckKind(store, LinkKind::Category, "classifications", report);
}

}  // namespace kxudm::store
