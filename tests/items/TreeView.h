// A view that keeps what structure requests tell it, drawn as an indented tree.
//
//     view.Show(roots);
//     view.Apply(newItems, deletedItems, newRelations, deletedRelations);
//     EXPECT_EQ(view.Draw(), "\nroot\n  child\n");
#pragma once

#include <gtest/gtest.h>
#include <kxctinterfaces/Item.h>
#include <kxutl/kxStlVector.h>

#include <algorithm>
#include <string>
#include <utility>

namespace kxct::test {

// Fails where it is told the impossible.
class TreeView {
  public:
    using Items = kxStlVector<Item*>;
    using Relations = kxStlVector<std::pair<Item*, Item*>>;

    void Show(const Items& items) {
        for (Item* item : items) {
            if (!IsShown(item)) {
                _items.push_back(item);
            }
        }
    }

    void Apply(const Items& newItems,
               const Items& deletedItems,
               const Relations& newRelations,
               const Relations& deletedRelations) {
        for (const auto& relation : deletedRelations) {
            const auto found = std::find(_relations.begin(), _relations.end(), relation);
            ASSERT_NE(found, _relations.end()) << "no such relation to delete";
            _relations.erase(found);
        }
        Show(newItems);
        for (const auto& [parent, child] : newRelations) {
            ASSERT_TRUE(IsShown(parent)) << "the parent was never created";
            ASSERT_TRUE(IsShown(child)) << "the child was never created";
            _relations.push_back({parent, child});
        }
        for (Item* item : deletedItems) {
            ASSERT_TRUE(IsShown(item)) << "deleted without having been created";
            ASSERT_FALSE(HasParent(item)) << "deleted while it is shown";
            std::erase(_items, item);
        }
    }

    // From what nothing stands above, in the order of creation.
    std::string Draw() const {
        std::string text = "\n";
        for (Item* item : _items) {
            if (!HasParent(item)) {
                Draw(item, 0, text);
            }
        }
        return text;
    }

  private:
    bool IsShown(Item* item) const {
        return std::find(_items.begin(), _items.end(), item) != _items.end();
    }
    bool HasParent(Item* item) const {
        return std::any_of(_relations.begin(), _relations.end(), [item](const auto& relation) {
            return relation.second == item;
        });
    }
    static std::string Line(Item* item) {
        if (item->IsA() == "GhostItem") {
            return "...";
        }
        if (item->IsA() == "NoRevItem") {
            return "all of " + item->GetUID();
        }
        // These have a label and no display name.
        if (item->GetDisplayName().empty()) {
            return item->GetAttributeValue("label").GetString();
        }
        return item->IsA() == "ViewItem" ? "[" + item->GetDisplayName() + "]"
                                         : std::string(item->GetDisplayName());
    }
    void Draw(Item* item, std::size_t depth, std::string& text) const {
        text += std::string(depth * 2, ' ') + Line(item) + "\n";
        for (const auto& [parent, child] : _relations) {
            if (parent == item) {
                Draw(child, depth + 1, text);
            }
        }
    }

    Items _items;
    Relations _relations;
};

}  // namespace kxct::test
