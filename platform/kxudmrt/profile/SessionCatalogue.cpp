// How a session takes over a changed catalogue, its own change or that of another session.
#include <algorithm>
#include <unordered_map>
#include <utility>

#include "profile/Session.h"

namespace kxudm::profile {

namespace {

using catalogue::ContentDefinition;

// Stands in the journal among the codes of slots, and is none: the library has a new catalogue.
constexpr int CATALOGUE_CHANGED = 1000;
// Another: links came that no parent is told of, so that what was listed may be less.
constexpr int LINKS_CHANGED = 1001;

struct Successor {
    const ContentDefinition* definition;
    bool changed;
};

std::unordered_map<const ContentDefinition*, Successor> Successors(
    const catalogue::Catalogue& before, const catalogue::Catalogue& after) {
    std::unordered_map<const ContentDefinition*, Successor> successors;
    for (const auto& was : before.Definitions()) {
        if (const ContentDefinition* is = after.Find(was->Name())) {
            successors.emplace(was.get(), Successor{is, !is->IsSameAs(*was)});
        }
    }
    return successors;
}

}  // namespace

void Session::RecordCatalogue(Operation& operation) {
    RecordUntold(operation, CATALOGUE_CHANGED);
}

void Session::RecordLinks(Operation& operation) {
    RecordUntold(operation, LINKS_CHANGED);
}

void Session::RecordUntold(Operation& operation, int op) const {
    store::JournalEntry entry;
    entry.time = operation.Stamp().time;
    entry.op = op;
    entry.session = _id;
    static_cast<void>(operation.Store().Append(entry));
}

// Before anything else of the journal, which may be about entities of new definitions.
void Session::CatchUpWithCatalogue(const std::vector<store::JournalEntry>& entries) {
    const bool changed = std::any_of(entries.begin(), entries.end(), [&](const auto& entry) {
        return entry.op == CATALOGUE_CHANGED && entry.session != _id;
    });
    if (changed) {
        TakeCatalogue(catalogue::Catalogue::ReadText(_store->CatalogueXml(), _options.libraryFile));
    }
}

void Session::TakeCatalogue(std::shared_ptr<const catalogue::Catalogue> catalogue) {
    if (*catalogue == *_link->catalogue) {
        return;
    }
    const auto successors = Successors(*_link->catalogue, *catalogue);
    _link->former.push_back(std::exchange(_link->catalogue, std::move(catalogue)));
    std::vector<State> told;
    _states.ForEach([&](EntityState& state) {
        const auto found = successors.find(state.Definition());
        if (found == successors.end()) {
            return;
        }
        state.Redefine(*found->second.definition, found->second.changed);
        if (found->second.changed && !state.IsGone() && !_slots.Empty()) {
            told.push_back(state.shared_from_this());
        }
    });
    TouchLinks();
    std::sort(told.begin(), told.end(), [](const State& a, const State& b) {
        return std::pair(a->Id(), a->Revision()) < std::pair(b->Id(), b->Revision());
    });
    for (const State& state : told) {
        _slots.Queue(UDMProfileUpdate::OfHandle(SIGNAL_CONTENT_CHANGED, UDMItemHandle(state)));
    }
}

}  // namespace kxudm::profile
