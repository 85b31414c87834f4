// What GetChildren listed, for as long as it must come out the same again.
//
// Layer: profile. A listing holds while no link of the library has changed (the session's link
// epoch) and each listed state lives as what it was: one that dies, goes, or is the newest revision
// no more clears all listings. So the pointers in them never dangle. Nothing is kept alive here.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "catalogue/Catalogue.h"
#include "store/Rows.h"

namespace kxudm::profile {

class EntityState;

class Listings {
  public:
    // Parent, its revision, kind and name of the links, group that picks among them.
    using Place = std::tuple<store::EntityId,
                             int,
                             store::LinkKind,
                             std::string,
                             const catalogue::GroupDefinition*>;
    using Children = std::vector<EntityState*>;

    // Null if it was not listed at this epoch.
    [[nodiscard]] const Children* Find(const Place& place, std::uint32_t epoch) const {
        if (epoch != _epoch) {
            return nullptr;
        }
        const auto found = _listings.find(place);
        return found == _listings.end() ? nullptr : &found->second;
    }
    void Keep(Place place, Children children, std::uint32_t epoch) {
        if (epoch != _epoch) {
            Clear();
            _epoch = epoch;
        }
        _listings.insert_or_assign(std::move(place), std::move(children));
    }
    void Clear() noexcept { _listings.clear(); }

  private:
    std::map<Place, Children> _listings;
    std::uint32_t _epoch = 0;
};

}  // namespace kxudm::profile
