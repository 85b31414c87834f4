#include <array>
#include <utility>
#include <vector>

#include "profile/Creation.h"
#include "profile/Folders.h"
#include "profile/Profile.h"
#include "profile/Words.h"

namespace kxudm::profile {

namespace {

using store::LinkKind;

// Changes that tell the parents which stay that a child of theirs is gone. Others may see other
// parents than this session does: working revisions differ from published ones.
class Orphaned {
  public:
    Orphaned(Session& session, Operation& operation) : _session(session), _operation(operation) {}

    // In the order in which a listener that drops what is deleted can still follow.
    void Record(const std::vector<store::DeletedRow>& gone) {
        for (const auto& [kind, code] : KINDS) {
            for (const store::DeletedRow& row : gone) {
                RecordParents(row, kind, code);
            }
        }
    }

  private:
    static constexpr std::array<std::pair<LinkKind, SignalOption>, 4> KINDS{
        {{LinkKind::Folder, SIGNAL_CONTAINER_LEFT},
         {LinkKind::Category, SIGNAL_CONTAINER_LEFT},
         {LinkKind::Reference, SIGNAL_REFERENCE_REMOVED},
         {LinkKind::Owner, SIGNAL_OWNED_CHILD_DELETED}}};

    void RecordParents(const store::DeletedRow& row, LinkKind kind, SignalOption code) {
        std::vector<store::LinkedRow> own =
            Parents(row.id, row.newestRevision, kind, _session.Viewer());
        const int published = _operation.Store().SeenRevision(row.id, store::THE_PUBLIC);
        std::vector<store::LinkedRow> others;
        if (published != store::NO_REVISION) {
            others = Parents(row.id, published, kind, store::THE_PUBLIC);
        }
        for (store::LinkedRow& parent : own) {
            const bool shared = std::erase_if(others, [&](const store::LinkedRow& other) {
                                    return other.entity.id == parent.entity.id &&
                                           other.entity.revision == parent.entity.revision;
                                }) > 0;
            RecordParent(row, code, parent, shared ? Audience::Everybody : Audience::Here);
        }
        for (store::LinkedRow& parent : others) {
            RecordParent(row, code, parent, Audience::Elsewhere);
        }
    }

    std::vector<store::LinkedRow> Parents(store::EntityId child,
                                          int revision,
                                          LinkKind kind,
                                          const store::Viewer& viewer) {
        std::vector<store::LinkedRow> parents;
        _operation.Store().Parents(child, revision, kind, {}, viewer, parents);
        return parents;
    }

    void RecordParent(const store::DeletedRow& row,
                      SignalOption code,
                      store::LinkedRow& parent,
                      Audience audience) {
        Session::State holder = _session.StateOf(std::move(parent.entity), false);
        _operation.Record(Change::OfChild(code, std::move(holder), Child(row)).For(audience));
    }

    Session::State Child(const store::DeletedRow& row) {
        if (Session::State known = _session.States().Revision(row.uid, row.newestRevision)) {
            return known;
        }
        store::EntityRow entity;
        entity.id = row.id;
        entity.uid = row.uid;
        entity.definition = row.definition;
        entity.revision = row.newestRevision;
        auto child = boost::make_shared<EntityState>(_session.Link(), std::move(entity), false);
        child->SetGone();
        return child;
    }

    Session& _session;
    Operation& _operation;
};

void Rename(Session& session, Operation& operation, EntityState& state, const kxString& name) {
    if (state.Definition()->Type() == FOLDER_TYPE) {
        RequireFreeFolderName(session, FolderOf(session, state), name);
    }
    operation.Store().SetName(state.Id(), name, operation.Stamp());
}

void TakeName(Session& session, EntityState& state, const kxString& name, store::Stamp stamp) {
    // The name belongs to the entity: all revisions show it.
    for (EntityState* each = session.States().Chain(state.BaseUid()); each != nullptr;
         each = each->next) {
        each->SetName(name);
    }
    state.SetModified(stamp);
}

kxVariant CheckedForChange(const EntityState& state, const kxString& key, const kxVariant& value) {
    const catalogue::AttributeDefinition* attribute = state.Definition()->FindAttribute(key);
    if (attribute != nullptr && attribute->system) {
        throw UDMException("The attribute \"" + key + "\" of " + state.Uid() +
                           " is kept by the library itself; only others can be set");
    }
    return state.Definition()->CheckedValue(key, value);
}

}  // namespace

UDMItemHandle Profile::GetEntity(const kxString& uid) {
    _session->RequireOpen("GetEntity");
    if (Session::State unseen = _session->FindUnseen(uid)) {
        return UDMItemHandle(std::move(unseen));
    }
    _session->Poll("GetEntity");
    return UDMItemHandle(_session->Get(uid));
}

UDMItemHandle Profile::CreateEntity(const kxString& definition, const kxString& name) {
    Operation operation(*_session, "CreateEntity");
    const catalogue::ContentDefinition& kind = CreatableDefinition(*_session, definition);
    const kxString checked = CheckedName(kind, name);
    if (kind.Type() == FOLDER_TYPE) {
        RequireFreeFolderName(*_session, 0, checked);
    }
    UDMItemHandle handle(CreateState(*_session, operation, kind, checked));
    operation.Commit();
    operation.Tell();
    return handle;
}

void Profile::DeleteEntity(const UDMItemHandle& handle, bool withChildren, bool force) {
    Operation operation(*_session, "DeleteEntity");
    const Session::State state = _session->Resolve(handle);
    store::LibraryStore& store = operation.Store();
    if (!withChildren) {
        const std::int64_t children = store.CountChildren(
            state->Id(), state->Revision(), LinkKind::Owner, {}, _session->Viewer());
        if (children > 0) {
            throw UDMException(state->Cdef() + " " + state->Uid() + " owns " +
                               std::to_string(children) +
                               " children; delete them first or together with it");
        }
    }
    RequireFreeNamesAtTop(*_session, *state);
    const std::vector<store::DeletedRow> gone = store.Delete(state->Id(), operation.Stamp(), force);
    Orphaned(*_session, operation).Record(gone);
    for (const store::DeletedRow& row : gone) {
        const bool onlyHere = store.SeenRevision(row.id, store::THE_PUBLIC) == store::NO_REVISION &&
                              store.SeenRevision(row.id, _session->Viewer()) != store::NO_REVISION;
        operation.Record(Change::OfDeletion(row).Private(onlyHere));
    }
    operation.Commit();
    for (const store::DeletedRow& row : gone) {
        for (EntityState* each = _session->States().Chain(row.uid); each != nullptr;
             each = each->next) {
            each->SetGone();
        }
    }
    _session->TouchLinks();
    operation.Tell();
}

void Profile::SetAttributeValue(const UDMItemHandle& handle,
                                const kxString& key,
                                const kxVariant& value) {
    if (key == DISPLAY_NAME) {
        SetDisplayName(value.GetString(), handle);
        return;
    }
    Operation operation(*_session, "SetAttributeValue");
    const Session::State state = _session->Resolve(handle);
    const kxVariant checked = CheckedForChange(*state, key, value);
    _session->RequireEditable(*state);
    const kxVariant before = state->AttributeValue(key);
    if (before.GetKind() == checked.GetKind() && before == checked) {
        operation.Leave();
        return;
    }
    std::string packed;
    const bool isName = key == NAME;
    if (isName) {
        const kxString name = CheckedName(*state->Definition(), checked.GetString());
        Rename(*_session, operation, *state, name);
    } else {
        packed = operation.Store().UpdateAttributes(
            state->Id(), state->Revision(), {{key, checked}}, operation.Stamp());
    }
    operation.Record(Change::Of(SIGNAL_CONTENT_CHANGED, state).Private(state->IsPrivate()));
    if (isName && state->IsPrivate() && !state->IsNeverPublished()) {
        // The published revision shows the name, too.
        operation.Record(Change::Of(SIGNAL_CONTENT_CHANGED, state)
                             .At(state->Revision() - 1)
                             .For(Audience::Elsewhere));
    }
    operation.Commit();
    if (isName) {
        TakeName(*_session, *state, checked.GetString(), operation.Stamp());
    } else {
        state->TakePacked(packed, operation.Stamp());
    }
    operation.Tell();
}

void Profile::SetDisplayName(const kxString& name, const UDMItemHandle& handle) {
    Operation operation(*_session, "SetDisplayName");
    const Session::State state = _session->Resolve(handle);
    kxString checked = name;
    if (state->Definition()->FindAttribute(DISPLAY_NAME) != nullptr) {
        checked = CheckedForChange(*state, kxString(DISPLAY_NAME), name).GetString();
    }
    _session->RequireEditable(*state);
    if (state->DisplayName() == checked) {
        operation.Leave();
        return;
    }
    operation.Store().SetDisplayName(state->Id(), state->Revision(), checked, operation.Stamp());
    operation.Record(Change::Of(SIGNAL_CONTENT_CHANGED, state).Private(state->IsPrivate()));
    operation.Commit();
    state->SetDisplayName(checked, operation.Stamp());
    operation.Tell();
}

}  // namespace kxudm::profile
