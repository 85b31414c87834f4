// Brings back what a deletion has hidden, and tells it.
#include <algorithm>
#include <unordered_set>
#include <utility>

#include "profile/Folders.h"
#include "profile/Maintenance.h"
#include "profile/Profile.h"
#include "profile/RevisionsTold.h"
#include "profile/Words.h"
#include "store/LibraryCheck.h"

namespace kxudm::profile {

namespace {

using store::DeletedEntity;
using store::LinkKind;

std::vector<DeletedEntity> DeletedTogether(store::LibraryStore& store, const kxString& uid) {
    std::vector<DeletedEntity> all = store::DeletedEntities(store);
    const auto asked = std::find_if(
        all.begin(), all.end(), [&](const DeletedEntity& each) { return each.uid == uid; });
    if (asked == all.end()) {
        return {};
    }
    const std::int64_t deletion = asked->deletion;
    std::erase_if(all, [&](const DeletedEntity& each) { return each.deletion != deletion; });
    return all;
}

void ReadAgain(Session& session, const std::vector<DeletedEntity>& all) {
    for (const DeletedEntity& each : all) {
        session.Outdate(each.uid);
    }
}

// The folder must not come beside one of its name.
void RequireFreePlace(Session& session, const DeletedEntity& restored) {
    const auto* definition = session.Catalogue()->Find(restored.definition);
    const Session::State state = session.Find(restored.uid);
    if (definition == nullptr || definition->Type() != FOLDER_TYPE || !state) {
        return;
    }
    const store::EntityId parent = FolderOf(session, *state);
    std::vector<store::EntityRow> rows;
    for (const auto& each : session.Catalogue()->Definitions()) {
        if (each->Type() == FOLDER_TYPE && !each->IsAbstract()) {
            session.Store().FindInFolder(
                parent, each->Name(), restored.name, session.Viewer(), false, rows);
        }
    }
    for (const store::EntityRow& row : rows) {
        if (row.id != restored.id) {
            throw UDMException("The folder \"" + catalogue::Printable(restored.name) + "\" (" +
                               restored.uid +
                               ") can't be brought back: in its place is another of its name (" +
                               row.uid + "); rename or move that one first");
        }
    }
}

void RequireOneOwner(Session& session, const DeletedEntity& restored) {
    const std::string child = store::OwnedTwiceNear(session.Store(), restored.id);
    if (!child.empty()) {
        throw UDMException(restored.uid + " can't be brought back: " + child +
                           " would be owned twice; remove it from its present owner first");
    }
}

class Restored {
  public:
    Restored(Session& session, Operation& operation, const std::vector<DeletedEntity>& all)
        : _session(session), _operation(operation), _all(all) {
        for (const DeletedEntity& each : all) {
            _ids.insert(each.id);
        }
    }

    void Record() {
        for (const DeletedEntity& each : _all) {
            RecordEntity(each);
        }
        for (const DeletedEntity& each : _all) {
            const store::Viewer viewer = _session.Viewer();
            RecordParents(
                each, _session.Store().SeenRevision(each.id, viewer), viewer, Audience::Here);
            RecordParents(each, each.published, store::THE_PUBLIC, Audience::Elsewhere);
        }
        for (const DeletedEntity& each : _all) {
            RecordPrivateParents(each);
        }
    }

  private:
    static constexpr KindTold PARENTS[] = {{LinkKind::Folder, SIGNAL_CONTAINER_ENTERED},
                                           {LinkKind::Category, SIGNAL_CONTAINER_ENTERED},
                                           {LinkKind::Reference, SIGNAL_REFERENCE_ADDED},
                                           {LinkKind::Relation, SIGNAL_REFERENCE_ADDED},
                                           {LinkKind::Owner, SIGNAL_CHILD_ADDED}};

    // As it is for those who see the published revision, and for him who has the working one. Who
    // sees neither is left out when he reads it.
    void RecordEntity(const DeletedEntity& each) {
        const store::Viewer holder{each.lockUser, each.lockWorkspace};
        const bool ours = each.working != store::NO_REVISION &&
                          holder.user == _session.Viewer().user &&
                          holder.workspace == _session.Viewer().workspace;
        if (each.published != store::NO_REVISION) {
            RecordRevision(
                each, store::THE_PUBLIC, ours ? Audience::Elsewhere : Audience::Everybody);
        }
        if (each.working != store::NO_REVISION) {
            RecordRevision(each, holder, ours ? Audience::Here : Audience::Elsewhere);
        }
    }

    // What only one holder elsewhere sees: his working revisions above it, or its own places in it.
    void RecordPrivateParents(const DeletedEntity& each) {
        for (const store::Holder& holder : HoldersElsewhere(_session, each.id)) {
            const int seen = _session.Store().SeenRevision(each.id, holder.AsViewer());
            if (seen == store::NO_REVISION) {
                continue;
            }
            ForParents(
                each, seen, holder.AsViewer(), [&](SignalOption code, store::EntityRow&& row) {
                    _operation.Record(
                        Change::Of(code, _session.StateElsewhere(std::move(row))).Only(holder));
                });
        }
    }

    void RecordRevision(const DeletedEntity& each, const store::Viewer& viewer, Audience audience) {
        store::EntityRow row;
        if (!_session.Store().FindById(each.id, viewer, row)) {
            return;
        }
        const Session::State state = audience == Audience::Elsewhere
                                         ? _session.StateElsewhere(std::move(row))
                                         : _session.StateOf(std::move(row));
        _operation.Record(Change::Of(SIGNAL_REVISION_ADVANCED, state).For(audience));
    }

    void RecordParents(const DeletedEntity& each,
                       int revision,
                       const store::Viewer& viewer,
                       Audience audience) {
        if (revision == store::NO_REVISION) {
            return;
        }
        ForParents(each, revision, viewer, [&](SignalOption code, store::EntityRow&& row) {
            const Session::State state = _session.StateOf(std::move(row), false);
            _operation.Record(Change::Of(code, state).For(audience));
        });
    }

    // Parents that have not come back themselves, as the viewer sees them.
    void ForParents(const DeletedEntity& each,
                    int revision,
                    const store::Viewer& viewer,
                    const ParentVisit& visit) {
        VisitParents(_session,
                     {each.id, revision},
                     PARENTS,
                     viewer,
                     [&](SignalOption code, store::EntityRow&& row) {
                         if (_ids.count(row.id) == 0) {
                             visit(code, std::move(row));
                         }
                     });
    }

    Session& _session;
    Operation& _operation;
    const std::vector<DeletedEntity>& _all;
    std::unordered_set<store::EntityId> _ids;
};

}  // namespace

bool Profile::UndeleteEntity(const kxString& uid) {
    BeginCare(*_session, "Undelete");
    Operation operation(*_session, "Undelete");
    const std::vector<DeletedEntity> all = DeletedTogether(operation.Store(), uid);
    if (all.empty()) {
        operation.Leave();
        return false;
    }
    static_cast<void>(operation.Store().Undelete(uid));
    ReadAgain(*_session, all);
    try {
        for (const DeletedEntity& each : all) {
            RequireFreePlace(*_session, each);
            RequireOneOwner(*_session, each);
        }
        Restored(*_session, operation, all).Record();
        operation.Commit();
    } catch (...) {
        // They have been seen as brought back.
        ReadAgain(*_session, all);
        throw;
    }
    operation.Tell();
    return true;
}

}  // namespace kxudm::profile
