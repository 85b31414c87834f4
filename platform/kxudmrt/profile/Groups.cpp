#include "profile/Groups.h"

#include <algorithm>

#include "profile/Words.h"

namespace kxudm::profile {

namespace {

using catalogue::ContentDefinition;
using catalogue::GroupDefinition;
using store::LinkKind;

std::size_t CountOfCategory(const ContentDefinition& definition, std::string_view category) {
    const auto& groups = definition.Groups();
    return static_cast<std::size_t>(
        std::count_if(groups.begin(), groups.end(), [&](const GroupDefinition* group) {
            return group->category == category;
        }));
}

[[noreturn]] void ThrowNoGroup(const ContentDefinition& definition, const kxString& group) {
    std::string known;
    for (const GroupDefinition* each : definition.Groups()) {
        known += (known.empty() ? "\"" : ", \"") + each->name + "\"";
    }
    throw UDMNotFoundException("The content definition \"" + definition.Name() +
                               "\" has no group \"" + catalogue::Printable(group) + "\"; it has " +
                               (known.empty() ? "none" : known));
}

void RequireOneOwner(Session& session, const EntityState& child, const GroupDefinition& group) {
    store::OwnerInfo owner;
    if (session.Store().AnyOwner(child.Id(), group.composition, session.Viewer(), owner)) {
        throw UDMException(child.Cdef() + " " + child.Uid() + " is owned by " + owner.uid +
                           " already and can have one owner only; " +
                           (owner.elsewhere.empty()
                                ? "remove it there first"
                                : owner.elsewhere + "; it must be removed there and published"));
    }
}

void RequireRoom(Session& session, const EntityState& parent, const GroupDefinition& group) {
    if (group.maximum == GroupDefinition::kUnlimited) {
        return;
    }
    const LinkKind kind = *KindOfCategory(group.category);
    const auto count =
        session.Store().CountChildrenUpTo(group.maximum, parent.Id(), kind, group.name);
    if (count >= static_cast<std::int64_t>(group.maximum)) {
        throw UDMException("The group \"" + group.name + "\" of " + parent.Cdef() + " " +
                           parent.Uid() + " is full: it takes " + std::to_string(group.maximum) +
                           "; remove one first");
    }
}

void RequireNoCycle(Session& session,
                    const EntityState& parent,
                    const EntityState& child,
                    LinkKind kind) {
    if (session.Store().WouldCycle(parent.Id(), child.Id(), kind)) {
        throw UDMException(child.Cdef() + " " + child.Uid() + " can't come below " + parent.Uid() +
                           ", which is or lies below it; choose another place");
    }
}

// Whether links that are there forbid this one.
void RequireLinkable(Session& session,
                     const EntityState& parent,
                     const EntityState& child,
                     const GroupDefinition& group) {
    const LinkKind kind = *KindOfCategory(group.category);
    if (session.Store().HasLink(parent.Id(), child.Id(), kind, group.name, parent.Revision())) {
        throw UDMException(child.Cdef() + " " + child.Uid() + " is in the group \"" + group.name +
                           "\" of " + parent.Uid() + " already; it can be there once");
    }
    if (kind == LinkKind::Owner) {
        RequireOneOwner(session, child, group);
        RequireNoCycle(session, parent, child, kind);
    }
}

}  // namespace

std::optional<LinkKind> KindOfCategory(std::string_view category) {
    if (category == catalogue::kOwner) {
        return LinkKind::Owner;
    }
    if (category == catalogue::kReference) {
        return LinkKind::Reference;
    }
    if (category == catalogue::kFolder) {
        return LinkKind::Folder;
    }
    if (category == catalogue::kCategory) {
        return LinkKind::Category;
    }
    return std::nullopt;
}

bool IsContainerKind(LinkKind kind) {
    return kind == LinkKind::Folder || kind == LinkKind::Category;
}

Selection SelectionOf(const ContentDefinition& parent, const kxString& group) {
    if (group.empty()) {
        return {};
    }
    if (const GroupDefinition* found = parent.FindGroup(group)) {
        const LinkKind kind = *KindOfCategory(found->category);
        if (!IsContainerKind(kind)) {
            return {kind, found->name};
        }
        const bool alone = CountOfCategory(parent, found->category) == 1;
        return {kind, {}, alone ? nullptr : found};
    }
    if (const std::optional<LinkKind> kind = KindOfCategory(group)) {
        return {*kind};
    }
    ThrowNoGroup(parent, group);
}

const GroupDefinition& GroupFor(const EntityState& parent,
                                const ContentDefinition& child,
                                const kxString& group) {
    const ContentDefinition& definition = *parent.Definition();
    const GroupDefinition* found = nullptr;
    if (group.empty()) {
        found = definition.FirstGroupFor(child, catalogue::kOwner);
        found = found != nullptr ? found : definition.FirstGroupFor(child, {});
    } else {
        found = definition.FindGroup(group);
        if (found == nullptr) {
            ThrowNoGroup(definition, group);
        }
    }
    if (found == nullptr || !child.IsAllowedIn(*found)) {
        const std::string where = group.empty() ? "" : "the group \"" + group + "\" of ";
        throw UDMException(where + parent.Cdef() + " " + parent.Uid() + " takes no \"" +
                           child.Name() + "\"; choose a group that allows it");
    }
    return *found;
}

bool TakesInto(const ContentDefinition& container,
               std::string_view category,
               std::string_view type,
               const ContentDefinition& content) {
    return container.FirstGroupFor(content, category) != nullptr ||
           (container.Type() == type && CountOfCategory(container, category) == 0);
}

bool Holds(Session& session, const EntityState& parent, const EntityState& child, LinkKind kind) {
    std::vector<store::LinkedRow> parents;
    session.Store().Parents(child.Id(), child.Revision(), kind, {}, session.Viewer(), parents);
    return std::any_of(parents.begin(), parents.end(), [&](const store::LinkedRow& row) {
        return row.entity.id == parent.Id();
    });
}

void LinkChild(Session& session,
               Operation& operation,
               const Session::State& parent,
               const Session::State& child,
               const GroupDefinition& group) {
    const LinkKind kind = *KindOfCategory(group.category);
    if (kind == LinkKind::Folder) {
        PutIntoFolder(session, operation, child, parent);
        return;
    }
    if (kind == LinkKind::Category) {
        Classify(session, operation, child, parent);
        return;
    }
    session.RequireEditable(*parent);
    const bool isNew = operation.HasJustMade(*child);
    if (!isNew) {
        RequireLinkable(session, *parent, *child, group);
    }
    RequireRoom(session, *parent, group);
    operation.Store().AddLink({.parent = parent->Id(),
                               .child = child->Id(),
                               .kind = kind,
                               .name = group.name,
                               .revision = parent->Revision(),
                               .composition = group.composition,
                               .childIsNew = isNew},
                              operation.Stamp());
    const SignalOption code = kind == LinkKind::Owner ? SIGNAL_CHILD_ADDED : SIGNAL_REFERENCE_ADDED;
    operation.Record(
        Change::Of(code, parent).Private(parent->IsPrivate() || child->IsNeverPublished()));
    operation.Touch(parent);
}

void UnlinkChild(Session& session,
                 Operation& operation,
                 const Session::State& parent,
                 const Session::State& child,
                 LinkKind kind) {
    session.RequireEditable(*parent);
    operation.Store().RemoveLink(
        parent->Id(), child->Id(), kind, {}, parent->Revision(), operation.Stamp());
    const SignalOption code =
        kind == LinkKind::Owner ? SIGNAL_CHILD_REMOVED : SIGNAL_REFERENCE_REMOVED;
    operation.Record(Change::OfChild(code, parent, child)
                         .Private(parent->IsPrivate() || child->IsNeverPublished()));
    operation.Touch(parent);
}

}  // namespace kxudm::profile
