#include <algorithm>
#include <unordered_set>
#include <utility>

#include "profile/Creation.h"
#include "profile/Profile.h"
#include "profile/Queries.h"

namespace kxudm::profile {

namespace {

using catalogue::GroupDefinition;
using store::LinkedRow;
using store::LinkKind;

// Place of each group of a category in the definition's order; names that are not there come last.
class GroupOrder {
  public:
    GroupOrder(const catalogue::ContentDefinition& definition, LinkKind kind) {
        for (const GroupDefinition* group : definition.Groups()) {
            if (KindOfCategory(group->category) == kind) {
                _names.emplace_back(group->name);
            }
        }
    }

    void Sort(std::vector<LinkedRow>& rows) const {
        if (_names.size() < 2) {
            return;
        }
        std::stable_sort(rows.begin(), rows.end(), [this](const auto& a, const auto& b) {
            return Place(a.name) < Place(b.name);
        });
    }

  private:
    [[nodiscard]] std::ptrdiff_t Place(const std::string& name) const {
        return std::find(_names.begin(), _names.end(), name) - _names.begin();
    }

    std::vector<std::string_view> _names;
};

bool NeedsGroupOrder(const Selection& selection) {
    return selection.name.empty() && !IsContainerKind(selection.kind);
}

bool IsLeftOut(const Session& session, const Selection& selection, const LinkedRow& row) {
    if (selection.filter == nullptr) {
        return false;
    }
    const auto* definition = session.Catalogue()->Find(row.entity.definition);
    return definition == nullptr || !definition->IsAllowedIn(*selection.filter);
}

// Children in their order, each with its row, which is good while `take` runs.
void VisitSelected(Session& session,
                   const EntityState& parent,
                   const Selection& selection,
                   const store::Condition& condition,
                   const std::function<void(LinkedRow&)>& take) {
    std::vector<LinkedRow> rows;
    const bool sorts = NeedsGroupOrder(selection);
    session.Store().VisitChildren(
        parent.Id(),
        parent.Revision(),
        selection.kind,
        selection.name,
        session.Viewer(),
        [&](LinkedRow& row) {
            if (IsLeftOut(session, selection, row)) {
                return;
            }
            if (sorts) {
                rows.push_back(std::move(row));
            } else {
                take(row);
            }
        },
        condition);
    if (sorts) {
        GroupOrder(*parent.Definition(), selection.kind).Sort(rows);
        std::for_each(rows.begin(), rows.end(), take);
    }
}

// An owner is who owns in its newest revision: what an older one lists may have no owner any more.
Session::State ChildOf(Session& session,
                       const EntityState& parent,
                       const Selection& selection,
                       LinkedRow& row) {
    Session::State child = session.StateOf(std::move(row.entity));
    if (selection.kind == LinkKind::Owner && parent.IsNewest()) {
        child->NoteOwner(session.LinkEpoch());
    }
    return child;
}

// Out of the library, and noted for the next time.
void ListChildren(Session& session,
                  const EntityState& parent,
                  const Selection& selection,
                  Listings::Place&& place,
                  kxStlVector<UDMItemHandle>& children) {
    Listings::Children listed;
    VisitSelected(session, parent, selection, {}, [&](LinkedRow& row) {
        Session::State child = ChildOf(session, parent, selection, row);
        child->SetListed();
        listed.push_back(child.get());
        children.emplace_back(std::move(child));
    });
    session.Listed().Keep(std::move(place), std::move(listed), session.LinkEpoch());
}

// Those that meet a condition. Not noted: conditions are many, and attributes change more often
// than links.
void ListChildrenThat(Session& session,
                      const EntityState& parent,
                      const Selection& selection,
                      const store::Condition& condition,
                      kxStlVector<UDMItemHandle>& children) {
    VisitSelected(session, parent, selection, condition, [&](LinkedRow& row) {
        children.emplace_back(ChildOf(session, parent, selection, row));
    });
}

// The links by which `relation` asks, as kind and name.
std::vector<std::pair<LinkKind, kxString>> LinksOfRelation(const kxString& relation) {
    if (const std::optional<LinkKind> kind = KindOfCategory(relation)) {
        return {{*kind, {}}};
    }
    return {{LinkKind::Owner, relation},
            {LinkKind::Reference, relation},
            {LinkKind::Relation, relation},
            {LinkKind::Folder, {}},
            {LinkKind::Category, {}}};
}

// Links of folders and classifications have no name: the parent's definition must have the group.
bool HasGroupFor(const Session& session,
                 const LinkedRow& parent,
                 const EntityState& child,
                 const kxString& group) {
    const auto* definition = session.Catalogue()->Find(parent.entity.definition);
    const GroupDefinition* found = definition != nullptr ? definition->FindGroup(group) : nullptr;
    return found != nullptr && KindOfCategory(found->category) == parent.kind &&
           child.Definition()->IsAllowedIn(*found);
}

}  // namespace

void ListSelected(Session& session,
                  const EntityState& parent,
                  const Selection& selection,
                  kxStlVector<UDMItemHandle>& out) {
    Listings::Place place(
        parent.Id(), parent.Revision(), selection.kind, selection.name, selection.filter);
    const Listings::Children* known = session.Listed().Find(place, session.LinkEpoch());
    if (known == nullptr) {
        ListChildren(session, parent, selection, std::move(place), out);
        return;
    }
    out.reserve(out.size() + known->size());
    for (EntityState* child : *known) {
        out.emplace_back(child->shared_from_this());
    }
}

void Profile::RemoveChild(const UDMItemHandle& parent, const UDMItemHandle& child) {
    Operation operation(*_session, "RemoveChild");
    const Session::State holder = _session->Resolve(parent);
    const Session::State held = _session->Resolve(child);
    bool removed = false;
    for (const LinkKind kind :
         {LinkKind::Owner, LinkKind::Reference, LinkKind::Folder, LinkKind::Category}) {
        if (!Holds(*_session, *holder, *held, kind)) {
            continue;
        }
        if (IsContainerKind(kind)) {
            LeaveContainer(*_session, operation, held, holder, kind);
        } else {
            UnlinkChild(*_session, operation, holder, held, kind);
        }
        removed = true;
    }
    if (!removed) {
        throw UDMNotFoundException(held->Cdef() + " " + held->Uid() + " is no child of " +
                                   holder->Uid() + "; name a parent that it has");
    }
    operation.Commit();
    operation.Tell();
}

void Profile::AddChild(const UDMItemHandle& parent,
                       const UDMItemHandle& child,
                       const kxString& group) {
    Operation operation(*_session, "AddChild");
    const Session::State holder = _session->Resolve(parent);
    const Session::State held = _session->Resolve(child);
    const GroupDefinition& place = GroupFor(*holder, *held->Definition(), group);
    LinkChild(*_session, operation, holder, held, place);
    operation.Commit();
    operation.Tell();
}

UDMItemHandle Profile::CreateAndAddChild(const kxString& definition,
                                         const kxString& name,
                                         const UDMItemHandle& parent,
                                         const kxString& group) {
    Operation operation(*_session, "CreateAndAddChild");
    const Session::State holder = _session->Resolve(parent);
    const catalogue::ContentDefinition& kind = CreatableDefinition(*_session, definition);
    const kxString checked = CheckedName(kind, name);
    const GroupDefinition& place = GroupFor(*holder, kind, group);
    if (!IsContainerKind(*KindOfCategory(place.category))) {
        _session->RequireEditable(*holder);
    }
    const Session::State child = CreateState(*_session, operation, kind, checked);
    LinkChild(*_session, operation, holder, child, place);
    operation.Commit();
    operation.Tell();
    return UDMItemHandle(child);
}

std::size_t Profile::GetChildCount(const UDMItemHandle& parent,
                                   const kxString& group,
                                   const kxString& queryExpression) {
    _session->Poll("GetChildCount");
    const store::Condition condition = ListingCondition(*_session, queryExpression);
    const Session::State holder = _session->Resolve(parent);
    const Selection selection = SelectionOf(*holder->Definition(), group);
    if (selection.filter != nullptr) {
        std::size_t count = 0;
        VisitSelected(*_session, *holder, selection, condition, [&](const LinkedRow&) { ++count; });
        return count;
    }
    return static_cast<std::size_t>(_session->Store().CountChildren(holder->Id(),
                                                                    holder->Revision(),
                                                                    selection.kind,
                                                                    selection.name,
                                                                    _session->Viewer(),
                                                                    condition));
}

void Profile::GetChildren(kxStlVector<UDMItemHandle>& children,
                          const UDMItemHandle& parent,
                          const kxString& group,
                          const kxString& queryExpression) {
    _session->Poll("GetChildren");
    const store::Condition condition = ListingCondition(*_session, queryExpression);
    const Session::State holder = _session->Resolve(parent);
    const Selection selection = SelectionOf(*holder->Definition(), group);
    if (!condition.Empty()) {
        ListChildrenThat(*_session, *holder, selection, condition, children);
        return;
    }
    ListSelected(*_session, *holder, selection, children);
}

void Profile::GetParents(kxStlVector<UDMItemHandle>& parents,
                         const UDMItemHandle& handle,
                         const kxString& relation,
                         bool anyRevision) {
    _session->Poll("GetParents");
    const Session::State child = _session->Resolve(handle);
    const bool word = KindOfCategory(relation).has_value();
    std::unordered_set<store::EntityId> reported;
    std::vector<LinkedRow> rows;
    for (const auto& [kind, name] : LinksOfRelation(relation)) {
        rows.clear();
        _session->Store().Parents(
            child->Id(), child->Revision(), kind, name, _session->Viewer(), rows, anyRevision);
        for (LinkedRow& row : rows) {
            if (!word && IsContainerKind(kind) && !HasGroupFor(*_session, row, *child, relation)) {
                continue;
            }
            if (reported.insert(row.entity.id).second) {
                parents.emplace_back(_session->StateOf(std::move(row.entity), false));
            }
        }
    }
}

}  // namespace kxudm::profile
