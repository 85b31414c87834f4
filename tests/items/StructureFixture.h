// Trees made by a test, and what a view must add and remove to show them, as text.
#pragma once

#include <map>

#include "tests/items/Fixture.h"

namespace kxct::test {

// A node with children and attributes of the test's own.
class Node : public ItemImpl {
  public:
    Node(const kxString& uid, Items below = {})
        : ItemImpl(nullptr, nullptr, uid), children(below) {}

    const kxString& IsA() override { return m_uid; }
    kxString GetDisplayName() const override { return m_uid; }
    size_t GetChildren(Items& out) override {
        out.insert(out.end(), children.begin(), children.end());
        return out.size();
    }
    using ItemImpl::GetChildren;
    using ItemImpl::GetNumChildren;
    size_t GetNumChildren() override { return children.size(); }
    kxVariant GetAttributeValue(const kxString& name) const override {
        const auto found = attributes.find(name);
        return found == attributes.end() ? kxVariant() : found->second;
    }

    Items children;
    kxStlMap<kxString, kxVariant> attributes;
};

class Structure : public SessionTest {
  protected:
    using Relations = ItemManager::RelationList;

    Structure() { manager = std::make_unique<DefaultItemManager>(session.get(), &signals); }

    static std::string Name(Item* item) {
        return item->IsA() == "ViewItem" ? "[" + item->GetDisplayName() + "]" : item->GetUID();
    }
    static std::vector<std::string> Text(const Items& items) {
        std::vector<std::string> text;
        for (Item* item : items) {
            text.push_back(Name(item));
        }
        return text;
    }
    static std::vector<std::string> Text(const Relations& relations) {
        std::vector<std::string> text;
        for (const auto& [parent, child] : relations) {
            text.push_back(Name(parent) + ">" + Name(child));
        }
        return text;
    }

    size_t Ask(const Items& items, bool group, bool onDemand, const Names* attributes = nullptr) {
        newItems.clear();
        deletedItems.clear();
        newRelations.clear();
        deletedRelations.clear();
        more = false;
        return attributes ? manager->GetStructure(items,
                                                  *attributes,
                                                  ItemFilterList(),
                                                  newItems,
                                                  deletedItems,
                                                  newRelations,
                                                  deletedRelations,
                                                  {},
                                                  {},
                                                  more,
                                                  group,
                                                  onDemand)
                          : manager->GetStructure(items,
                                                  ItemFilterList(),
                                                  newItems,
                                                  deletedItems,
                                                  newRelations,
                                                  deletedRelations,
                                                  {},
                                                  {},
                                                  more,
                                                  group,
                                                  onDemand);
    }

    Items newItems;
    Items deletedItems;
    Relations newRelations;
    Relations deletedRelations;
    bool more = false;
    Node leaf{"leaf"};
    Node inner{"inner", {&leaf}};
    Node root{"root", {&inner}};
    Node other{"other", {&leaf}};
};

}  // namespace kxct::test
