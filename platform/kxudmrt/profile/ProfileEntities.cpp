#include <utility>
#include <vector>

#include "profile/Creation.h"
#include "profile/Folders.h"
#include "profile/Profile.h"
#include "profile/Words.h"

namespace kxudm::profile {

namespace {

using store::LinkKind;

void Rename(Session& session, Operation& operation, EntityState& state, const kxString& name) {
    if (state.Definition()->Type() == FOLDER_TYPE) {
        RequireFreeFolderName(session, FolderOf(session, state), name);
    }
    operation.Store().SetName(state.Id(), name, operation.Stamp());
}

void TakeName(Session& session, EntityState& state, const kxString& name, store::Stamp stamp) {
    // The name belongs to the entity: all revisions show it.
    session.States().ForRevisions(state.BaseUid(),
                                  [&](EntityState& revision) { revision.SetName(name); });
    state.SetModified(stamp);
}

// Of an attribute that every revision has, whether its definition names it or not.
kxString CheckedText(const kxString& key, const kxVariant& value) {
    catalogue::AttributeDefinition text;
    text.name = key;
    text.dataType = "String";
    return catalogue::CheckedValue(text, value).GetString();
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
    // Whichever revision was given: the entity goes, with what its newest one owns.
    const Session::State state = _session->Get(kxString(_session->Resolve(handle)->BaseUid()));
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
    for (const store::DeletedRow& row : gone) {
        const bool onlyHere = store.SeenRevision(row.id, store::THE_PUBLIC) == store::NO_REVISION &&
                              store.SeenRevision(row.id, _session->Viewer()) != store::NO_REVISION;
        operation.Record(Change::OfDeletion(row).Private(onlyHere));
    }
    operation.Commit();
    _session->NoteGone(gone);
    operation.Tell();
}

void Profile::SetAttributeValue(const UDMItemHandle& handle,
                                const kxString& key,
                                const kxVariant& value) {
    if (key == DISPLAY_NAME) {
        SetDisplayName(CheckedText(key, value), handle);
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
    kxString checked = CheckedText(kxString(DISPLAY_NAME), name);
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
