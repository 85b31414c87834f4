#include "catalogue/Definition.h"

#include <kxudm/UDMException.h>

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "catalogue/Value.h"

namespace kxudm::catalogue {

namespace {

const kxString& FirstFilled(const kxString& own, const kxString& other) {
    return own.empty() ? other : own;
}

// Puts a definition's own parts behind the inherited ones, or in the place of the inherited one of
// the same name.
template <class Part>
void Merge(const std::vector<Part>& own,
           std::vector<const Part*>& all,
           std::unordered_map<std::string_view, const Part*>& byName) {
    std::unordered_set<std::string_view> replaced;
    for (const Part& part : own) {
        byName.emplace(part.name, &part);
    }
    for (const Part*& part : all) {
        const auto found = byName.find(part->name);
        if (found != byName.end()) {
            part = found->second;
            replaced.insert(part->name);
        }
    }
    for (const Part& part : own) {
        if (!replaced.contains(part.name)) {
            all.push_back(&part);
        }
    }
}

// The type that the nearest ancestor with one of its own declares; empty where none does.
const kxString& InheritedType(const ContentDefinition* base) {
    static const kxString none;
    for (const ContentDefinition* at = base; at != nullptr; at = at->Base()) {
        if (!at->Declaration().type.empty()) {
            return at->Declaration().type;
        }
    }
    return none;
}

}  // namespace

ContentDefinition::ContentDefinition(DefinitionDeclaration declaration,
                                     const ContentDefinition* base)
    : _declaration(std::move(declaration)),
      _base(base),
      _depth(base != nullptr ? base->_depth + 1 : 0),
      _type(FirstFilled(FirstFilled(_declaration.type, InheritedType(base)), _declaration.name)),
      _displayName(FirstFilled(_declaration.displayName, _declaration.name)),
      _className(FirstFilled(_declaration.className,
                             base != nullptr ? base->_className : _declaration.name)),
      _versioned(_declaration.versioned.value_or(base == nullptr || base->_versioned)),
      _branchable(_versioned &&
                  _declaration.branchable.value_or(base == nullptr || base->_branchable)),
      _excludedFromSearch(
          _declaration.excludedFromSearch.value_or(base != nullptr && base->_excludedFromSearch)) {
    if (base != nullptr) {
        _attributes = base->_attributes;
        _groups = base->_groups;
    }
    Merge(_declaration.attributes, _attributes, _ownAttributes);
    Merge(_declaration.groups, _groups, _ownGroups);
}

const AttributeDefinition* ContentDefinition::FindAttribute(std::string_view name) const {
    for (const ContentDefinition* at = this; at != nullptr; at = at->_base) {
        const auto found = at->_ownAttributes.find(name);
        if (found != at->_ownAttributes.end()) {
            return found->second;
        }
    }
    return nullptr;
}

const GroupDefinition* ContentDefinition::FindGroup(std::string_view name) const {
    for (const ContentDefinition* at = this; at != nullptr; at = at->_base) {
        const auto found = at->_ownGroups.find(name);
        if (found != at->_ownGroups.end()) {
            return found->second;
        }
    }
    return nullptr;
}

bool ContentDefinition::IsSameAs(const ContentDefinition& other) const {
    const ContentDefinition* a = this;
    const ContentDefinition* b = &other;
    while (a != nullptr && b != nullptr && a->Declaration() == b->Declaration()) {
        a = a->_base;
        b = b->_base;
    }
    return a == nullptr && b == nullptr;
}

bool ContentDefinition::IsDerivedFrom(std::string_view definition) const {
    const ContentDefinition* at = this;
    while (at != nullptr && at->Name() != definition) {
        at = at->_base;
    }
    return at != nullptr;
}

bool ContentDefinition::IsAllowedIn(const GroupDefinition& group) const {
    return std::any_of(group.allowedChildren.begin(),
                       group.allowedChildren.end(),
                       [this](const kxString& allowed) { return IsDerivedFrom(allowed); });
}

const GroupDefinition* ContentDefinition::FirstGroupFor(const ContentDefinition& child,
                                                        std::string_view category) const {
    const auto takes = [&](const GroupDefinition* group) {
        return (category.empty() || group->category == category) && child.IsAllowedIn(*group);
    };
    const auto found = std::find_if(_groups.begin(), _groups.end(), takes);
    return found == _groups.end() ? nullptr : *found;
}

kxVariant ContentDefinition::CheckedValue(std::string_view attribute,
                                          const kxVariant& value) const {
    const AttributeDefinition* definition = FindAttribute(attribute);
    if (definition == nullptr) {
        throw UDMNotFoundException("definition '" + Name() + "' has no attribute '" +
                                   Printable(attribute) + "'");
    }
    return catalogue::CheckedValue(*definition, value, Name());
}

}  // namespace kxudm::catalogue
