// Folders and classifications as places of contents.
#include "profile/Folders.h"
#include "profile/Groups.h"
#include "profile/Words.h"
#include "store/LibraryCheck.h"

namespace kxudm::profile {

namespace {

using store::LinkKind;

// What lies in a place is a matter of its newest revision, whichever was given.
Session::State NewestOf(Session& session, const Session::State& container) {
    return session.Get(kxString(container->BaseUid()));
}

void Enter(Session& session,
           Operation& operation,
           const Session::State& content,
           const Session::State& container,
           LinkKind kind) {
    operation.Store().AddLink({.parent = container->Id(),
                               .child = content->Id(),
                               .kind = kind,
                               .revision = content->Revision(),
                               .childIsNew = operation.HasJustMade(*content)},
                              operation.Stamp());
    operation.Record(Change::Of(SIGNAL_CONTAINER_ENTERED, NewestOf(session, container))
                         .Private(content->IsPrivate() || container->IsNeverPublished()));
    operation.Touch(content);
}

[[noreturn]] void ThrowNotTaken(const EntityState& content, const EntityState& container) {
    throw UDMException(container.Cdef() + " " + container.Uid() + " takes no \"" + content.Cdef() +
                       "\" such as " + content.Uid() + "; choose a place that does");
}

// Nothing lies below what was just made; to look would cost a step for each level above.
void RequireNotBelow(Session& session,
                     const Operation& operation,
                     const EntityState& content,
                     const EntityState& container,
                     LinkKind kind) {
    if (!operation.HasJustMade(content) &&
        session.Store().WouldCycle(container.Id(), content.Id(), kind)) {
        throw UDMException(content.Cdef() + " " + content.Uid() + " can't be put into " +
                           container.Uid() + ", which is or lies below it; choose another place");
    }
}

// Nobody sees it there, but a folder that is brought back would have it, too.
void LeaveDeletedFolder(Operation& operation, const Session::State& content) {
    if (operation.HasJustMade(*content)) {
        return;
    }
    store::LibraryStore& store = operation.Store();
    for (const store::EntityId folder :
         store::DeletedPlaces(store, content->Id(), LinkKind::Folder)) {
        static_cast<void>(store.RemoveLink(
            folder, content->Id(), LinkKind::Folder, {}, content->Revision(), operation.Stamp()));
    }
}

}  // namespace

void LeaveContainer(Session& session,
                    Operation& operation,
                    const Session::State& content,
                    const Session::State& container,
                    LinkKind kind) {
    session.RequireEditable(*content);
    const int removed = operation.Store().RemoveLink(
        container->Id(), content->Id(), kind, {}, content->Revision(), operation.Stamp());
    if (removed == 0) {
        throw UDMNotFoundException(content->Cdef() + " " + content->Uid() + " is not under " +
                                   container->Cdef() + " " + container->Uid() +
                                   "; name one that it is under");
    }
    operation.Record(Change::OfChild(SIGNAL_CONTAINER_LEFT, NewestOf(session, container), content)
                         .Private(content->IsPrivate() || container->IsNeverPublished()));
    operation.Touch(content);
}

void PutIntoFolder(Session& session,
                   Operation& operation,
                   const Session::State& content,
                   const Session::State& folder) {
    if (!TakesInto(
            *folder->Definition(), catalogue::kFolder, FOLDER_TYPE, *content->Definition())) {
        ThrowNotTaken(*content, *folder);
    }
    session.RequireEditable(*content);
    std::vector<store::LinkedRow> before;
    if (!operation.HasJustMade(*content)) {
        session.Store().Parents(
            content->Id(), content->Revision(), LinkKind::Folder, {}, session.Viewer(), before);
    }
    if (!before.empty() && before.front().entity.id == folder->Id()) {
        return;
    }
    if (content->Definition()->Type() == FOLDER_TYPE) {
        RequireNotBelow(session, operation, *content, *folder, LinkKind::Folder);
        RequireFreeFolderName(session, folder->Id(), content->Name());
    }
    for (store::LinkedRow& place : before) {
        const Session::State left = session.StateOf(std::move(place.entity), false);
        LeaveContainer(session, operation, content, left, LinkKind::Folder);
    }
    LeaveDeletedFolder(operation, content);
    Enter(session, operation, content, folder, LinkKind::Folder);
}

void Classify(Session& session,
              Operation& operation,
              const Session::State& content,
              const Session::State& classification) {
    if (!TakesInto(*classification->Definition(),
                   catalogue::kCategory,
                   CLASSIFICATION_TYPE,
                   *content->Definition())) {
        ThrowNotTaken(*content, *classification);
    }
    session.RequireEditable(*content);
    if (Holds(session, *classification, *content, LinkKind::Category)) {
        throw UDMException(content->Cdef() + " " + content->Uid() + " is under " +
                           classification->Cdef() + " " + classification->Uid() +
                           " already; it can be there once");
    }
    RequireNotBelow(session, operation, *content, *classification, LinkKind::Category);
    Enter(session, operation, content, classification, LinkKind::Category);
}

}  // namespace kxudm::profile
