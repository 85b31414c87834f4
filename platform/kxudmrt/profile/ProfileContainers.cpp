#include <utility>

#include "profile/Creation.h"
#include "profile/Folders.h"
#include "profile/Profile.h"
#include "profile/Queries.h"
#include "profile/Words.h"

namespace kxudm::profile {

namespace {

using store::LinkKind;

void RequireClassification(const EntityState& state) {
    if (!state.IsMasterClassification().has_value()) {
        throw UDMException(state.Cdef() + " " + state.Uid() +
                           " is no classification; use one of a definition of the type \"" +
                           std::string(CLASSIFICATION_TYPE) + "\"");
    }
}

// What a way down a path has reached.
struct Descent {
    store::EntityRow folder;  // id 0: nothing yet, that is the top
    std::size_t depth = 0;    // parts of the path that are there
};

Descent Descend(Session& session, const std::vector<kxString>& parts, bool ignoreCase) {
    Descent descent;
    store::EntityRow next;
    while (descent.depth < parts.size() &&
           FindFolder(session, descent.folder.id, parts[descent.depth], ignoreCase, next)) {
        descent.folder = std::exchange(next, {});
        ++descent.depth;
    }
    return descent;
}

[[noreturn]] void ThrowNoFolder(const kxString& path, const kxString& part) {
    throw UDMNotFoundException("The folder \"" + catalogue::Printable(path) +
                               "\" is not there: \"" + catalogue::Printable(part) +
                               "\" is missing; create it first");
}

// Makes the parts of the path that are missing below what the descent has reached.
Session::State MakeFolders(Session& session,
                           Operation& operation,
                           const std::vector<kxString>& parts,
                           Descent&& from) {
    const catalogue::ContentDefinition& definition = FolderDefinition(session);
    Session::State folder;
    if (from.folder.id != 0) {
        folder = session.StateOf(std::move(from.folder), false);
    }
    for (std::size_t i = from.depth; i < parts.size(); ++i) {
        Session::State made =
            CreateState(session, operation, definition, CheckedName(definition, parts[i]));
        if (folder) {
            PutIntoFolder(session, operation, made, folder);
        }
        folder = std::move(made);
    }
    return folder;
}

}  // namespace

Session::State FolderOfPath(Session& session,
                            Operation& operation,
                            const std::vector<kxString>& parts) {
    Descent descent = Descend(session, parts, false);
    if (descent.depth == parts.size()) {
        return session.StateOf(std::move(descent.folder), false);
    }
    return MakeFolders(session, operation, parts, std::move(descent));
}

void Profile::GetClassifications(kxStlVector<UDMItemHandle>& classifications,
                                 const kxString& expression) {
    _session->Poll("GetClassifications");
    const store::Condition condition = ListingCondition(*_session, expression);
    std::vector<store::EntityRow> rows;
    for (const auto& definition : _session->Catalogue()->Definitions()) {
        if (definition->Type() == CLASSIFICATION_TYPE && !definition->IsAbstract()) {
            _session->Store().RootsOfDefinition(
                definition->Name(), LinkKind::Category, _session->Viewer(), rows, condition);
        }
    }
    classifications.reserve(classifications.size() + rows.size());
    for (store::EntityRow& row : rows) {
        classifications.emplace_back(_session->StateOf(std::move(row), false));
    }
}

void Profile::AddClassification(const UDMItemHandle& content, const UDMItemHandle& classification) {
    Operation operation(*_session, "AddClassification");
    const Session::State held = _session->Resolve(content);
    const Session::State holder = _session->Resolve(classification);
    Classify(*_session, operation, held, holder);
    operation.Commit();
    operation.Tell();
}

void Profile::RemoveClassification(const UDMItemHandle& content,
                                   const UDMItemHandle& classification) {
    Operation operation(*_session, "RemoveClassification");
    const Session::State held = _session->Resolve(content);
    const Session::State holder = _session->Resolve(classification);
    LeaveContainer(*_session, operation, held, holder, LinkKind::Category);
    operation.Commit();
    operation.Tell();
}

void Profile::SetMaster(const UDMItemHandle& classification, bool master) {
    Operation operation(*_session, "SetMaster");
    const Session::State state = _session->Resolve(classification);
    RequireClassification(*state);
    _session->RequireEditable(*state);
    if (state->IsMasterClassification() == master) {
        operation.Leave();
        return;
    }
    const kxVariant value = master ? kxVariant(MASTER_CATEGORY) : kxVariant();
    std::string packed = operation.Store().UpdateAttributes(
        state->Id(), state->Revision(), {{kxString(CATEGORY_KIND), value}}, operation.Stamp());
    operation.Record(Change::Of(SIGNAL_CONTENT_CHANGED, state).Private(state->IsPrivate()));
    operation.Commit();
    state->TakePacked(packed, operation.Stamp());
    operation.Tell();
}

void Profile::MoveContent(const UDMItemHandle& content, const UDMItemHandle& folder) {
    Operation operation(*_session, "MoveContent");
    const Session::State moved = _session->Resolve(content);
    const Session::State target = _session->Resolve(folder);
    PutIntoFolder(*_session, operation, moved, target);
    operation.Commit();
    operation.Tell();
}

void Profile::GetFolder(UDMItemHandle& folder, const kxString& path, bool ignoreCase) {
    _session->Poll("GetFolder");
    const std::vector<kxString> parts = FolderPathParts(path);
    Descent descent = _session->Store().View([&] { return Descend(*_session, parts, ignoreCase); });
    if (descent.depth < parts.size()) {
        ThrowNoFolder(path, parts[descent.depth]);
    }
    folder = UDMItemHandle(_session->StateOf(std::move(descent.folder), false));
}

void Profile::CreateFolder(UDMItemHandle& folder, const kxString& path) {
    const std::vector<kxString> parts = FolderPathParts(path);
    Operation operation(*_session, "CreateFolder");
    Descent descent = Descend(*_session, parts, false);
    if (descent.depth == parts.size()) {
        throw UDMException("The folder \"" + path + "\" is there already (" + descent.folder.uid +
                           "); get it, or choose another name");
    }
    if (descent.depth + 1 < parts.size()) {
        ThrowNoFolder(path, parts[descent.depth]);
    }
    const Session::State made = MakeFolders(*_session, operation, parts, std::move(descent));
    operation.Commit();
    folder = UDMItemHandle(made);
    operation.Tell();
}

void Profile::GetOrCreateFolder(UDMItemHandle& folder, const kxString& path, bool withParents) {
    const std::vector<kxString> parts = FolderPathParts(path);
    _session->Poll("GetOrCreateFolder");
    Descent descent = _session->Store().View([&] { return Descend(*_session, parts, false); });
    if (descent.depth == parts.size()) {
        folder = UDMItemHandle(_session->StateOf(std::move(descent.folder), false));
        return;
    }
    Operation operation(*_session, "GetOrCreateFolder");
    // Somebody else may have made it before this one got the lock.
    descent = Descend(*_session, parts, false);
    if (!withParents && descent.depth + 1 < parts.size()) {
        ThrowNoFolder(path, parts[descent.depth]);
    }
    const Session::State made = MakeFolders(*_session, operation, parts, std::move(descent));
    operation.Commit();
    folder = UDMItemHandle(made);
    operation.Tell();
}

void Profile::GetFolderFullPath(kxString& path, const UDMItemHandle& folder) {
    _session->Poll("GetFolderFullPath");
    const Session::State state = _session->Resolve(folder);
    if (state->Definition()->Type() != FOLDER_TYPE) {
        throw UDMException(state->Cdef() + " " + state->Uid() +
                           " is no folder; only folders have a path");
    }
    path = _session->FolderPathOf(*state) + "/" + state->Name();
}

}  // namespace kxudm::profile
