#include "profile/Merge.h"

#include <algorithm>
#include <set>

#include "profile/ArchiveExport.h"
#include "profile/ArchiveImport.h"
#include "profile/Folders.h"
#include "profile/Groups.h"
#include "profile/Profile.h"
#include "profile/Words.h"
#include "vault/DocumentName.h"

namespace kxudm::profile {

namespace {

// The listener of the one session hears of what the other one does.
class SharedProgress {
  public:
    SharedProgress(Session& from, Session& to) : _to(to), _before(to.ProgressListener()) {
        _to.SetProgressListener(from.ProgressListener());
    }
    ~SharedProgress() { _to.SetProgressListener(_before); }
    SharedProgress(const SharedProgress&) = delete;
    SharedProgress& operator=(const SharedProgress&) = delete;

  private:
    Session& _to;
    IUDMProgressListener* const _before;
};

std::string NameOf(const EntityState& state) {
    return state.Cdef() + " " + state.Uid();
}

// In work here: what others see of it is older, or nothing.
bool IsInWork(const EntityState& state) {
    return state.IsPrivate();
}

void AddPublished(exchange::ExportSelection& selection, const EntityState& state) {
    if (!selection.Add(state.Id())) {
        throw UDMException(NameOf(state) +
                           " was never published, so that it can't be merged; publish it first, "
                           "or merge with publishing");
    }
}

std::vector<Session::State> ChildrenOf(Session& session,
                                       const EntityState& parent,
                                       const kxString& group) {
    kxStlVector<UDMItemHandle> handles;
    ListSelected(session, parent, SelectionOf(*parent.Definition(), group), handles);
    std::vector<Session::State> children;
    children.reserve(handles.size());
    for (const UDMItemHandle& handle : handles) {
        children.push_back(session.Resolve(handle));
    }
    return children;
}

// The entities in work among these and what they own, each once, owned ones first.
class InWork {
  public:
    explicit InWork(Session& session) : _session(session) {}

    // `below`: what the entity owns, too.
    void Add(const Session::State& first, bool below) {
        // A level of its own for each entity of the way down.
        std::vector<Level> way;
        Enter(way, first, below);
        while (!way.empty()) {
            Level& level = way.back();
            if (level.next < level.children.size()) {
                const Session::State child = level.children[level.next++];
                Enter(way, child, true);
                continue;
            }
            if (IsInWork(*level.entity)) {
                _found.push_back(level.entity);
            }
            way.pop_back();
        }
    }

    [[nodiscard]] const std::vector<Session::State>& Found() const { return _found; }

  private:
    struct Level {
        Session::State entity;
        std::vector<Session::State> children;
        std::size_t next = 0;
    };

    void Enter(std::vector<Level>& way, const Session::State& entity, bool below) {
        if (_seen.insert(entity->Id()).second) {
            way.push_back(
                {entity,
                 below ? ChildrenOf(_session, *entity, {}) : std::vector<Session::State>()});
        }
    }

    Session& _session;
    std::set<store::EntityId> _seen;
    std::vector<Session::State> _found;
};

// Throws UDMException if the folder can't take the content.
void RequireFit(Session& target,
                const catalogue::Catalogue& catalogue,
                const store::EntityRow& content,
                const EntityState& folder) {
    const catalogue::ContentDefinition& definition = catalogue.Get(content.definition);
    if (!TakesInto(catalogue.Get(folder.Cdef()), catalogue::kFolder, FOLDER_TYPE, definition)) {
        throw UDMException(NameOf(folder) + " takes no \"" + content.definition + "\" such as " +
                           content.uid + "; choose a place that does");
    }
    if (definition.Type() != FOLDER_TYPE) {
        return;
    }
    if (target.Store().WouldCycle(folder.Id(), content.id, store::LinkKind::Folder)) {
        throw UDMException(content.definition + " " + content.uid + " can't be put into " +
                           folder.Uid() + ", which is or lies below it; choose another place");
    }
    RequireFreeFolderName(target, folder.Id(), content.name);
}

// Puts what has come into the folder, unless it lies in one: a link as an import makes it, without
// a new revision, for this revision is that of the source.
void PutWhereNoPlaceIs(Session& target,
                       Operation& operation,
                       const catalogue::Catalogue& catalogue,
                       const store::EntityRow& content,
                       const Session::State& folder) {
    std::vector<store::LinkedRow> places;
    target.Store().Parents(
        content.id, content.revision, store::LinkKind::Folder, {}, target.Viewer(), places);
    const exchange::ImportedLink link{.first = content.id,
                                      .second = folder->Id(),
                                      .kind = store::LinkKind::Folder,
                                      .from = content.revision};
    // One in a deleted folder would lie in two if that is brought back.
    if (!places.empty() || exchange::HasOtherPlace(target.Store(), link)) {
        return;
    }
    RequireFit(target, catalogue, content, *folder);
    const std::int64_t last =
        exchange::LastPosition(target.Store(), link.first, link.kind, link.name);
    exchange::ImportLink(target.Store(), link, last + 1, store::NO_REVISION);
    operation.Record(Change::Of(SIGNAL_CONTAINER_ENTERED, folder));
}

}  // namespace

Merge::Merge(boost::shared_ptr<Profile> source,
             boost::shared_ptr<Session> target,
             const kxString& folder,
             kxString comment)
    : _source(std::move(source)), _target(std::move(target)), _comment(std::move(comment)) {
    if (!folder.empty()) {
        _folder = FolderPathParts(folder);
    }
}

kxStlVector<UDMItemHandle> Merge::merge(kxStlVector<UDMUID> entities, bool publish) {
    Wants wants;
    for (const UDMUID& uid : entities) {
        wants.push_back(Want(uid, {}));
    }
    return Run(std::move(wants), publish);
}

kxStlVector<UDMItemHandle> Merge::merge(const kxStlMap<UDMUID, kxStlVector<kxString>>& entities,
                                        bool publish) {
    Wants wants;
    for (const auto& [uid, groups] : entities) {
        wants.push_back(Want(uid, groups));
    }
    return Run(std::move(wants), publish);
}

// The newest revision, whichever the UID names: all published ones come along.
Merge::Wanted Merge::Want(const UDMUID& uid, const kxStlVector<kxString>& groups) {
    Session& session = *_source->TheSession();
    session.RequireOpen("merge");
    _target->RequireOpen("merge");
    const kxString text = uid;
    const Session::State entity = session.Get(text.substr(0, text.find(':')));
    for (const kxString& group : groups) {
        static_cast<void>(SelectionOf(*entity->Definition(), group));
    }
    return {entity, groups};
}

kxStlVector<UDMItemHandle> Merge::Run(Wants wants, bool publish) {
    if (wants.empty()) {
        return {};
    }
    Session& source = *_source->TheSession();
    if (source.Options().libraryFile == _target->Options().libraryFile) {
        throw UDMException("The library \"" + _target->Options().libraryName +
                           "\" can't be merged into itself; name another one");
    }
    if (publish) {
        Publish(wants);
    }
    const SharedProgress progress(source, *_target);
    // Written over, and removed in the end, by its name.
    const auto archive = _target->Vaults().In("").NewTemporary();
    archive->Close();
    ArchiveExport(source, archive->Path(), exchange::Scope::AllWithFiles)
        .Run([&](exchange::ExportSelection& selection) { Select(wants, selection); },
             ArchiveExport::Places::Left);
    ArchiveImport(*_target, archive->Path(), nullptr)
        .Run([&](Operation& operation, const catalogue::Catalogue& catalogue) {
            Place(operation, catalogue, wants);
        });
    kxStlVector<UDMItemHandle> handles;
    for (const Wanted& wanted : wants) {
        handles.push_back(UDMItemHandle(_target->StateOf(RowOf(wanted))));
    }
    return handles;
}

void Merge::Publish(Wants& wants) {
    Session& session = *_source->TheSession();
    InWork work(session);
    for (const Wanted& wanted : wants) {
        for (const Session::State& member : MembersOf(wanted)) {
            work.Add(member, true);
        }
    }
    for (const Wanted& wanted : wants) {
        work.Add(wanted.entity, false);
    }
    if (work.Found().empty()) {
        return;
    }
    _source->BeginBulk();
    try {
        for (const Session::State& state : work.Found()) {
            _source->PersistEntity(UDMItemHandle(state), _comment, false, true, true);
        }
    } catch (...) {
        _source->RollbackBulk();
        throw;
    }
    _source->CommitBulk();
    for (Wanted& wanted : wants) {
        wanted.entity = session.Get(kxString(wanted.entity->BaseUid()));
    }
}

std::vector<Session::State> Merge::MembersOf(const Wanted& wanted) {
    Session& session = *_source->TheSession();
    if (wanted.groups.empty()) {
        return ChildrenOf(session, *wanted.entity, {});
    }
    std::vector<Session::State> members;
    for (const kxString& group : wanted.groups) {
        for (Session::State& child : ChildrenOf(session, *wanted.entity, group)) {
            members.push_back(std::move(child));
        }
    }
    return members;
}

// The entities with a choice of groups come last: what they own otherwise stays.
void Merge::Select(const Wants& wants, exchange::ExportSelection& selection) {
    for (const Wanted& wanted : wants) {
        if (wanted.groups.empty()) {
            AddPublished(selection, *wanted.entity);
            continue;
        }
        for (const Session::State& member : MembersOf(wanted)) {
            if (!member->IsNeverPublished()) {
                AddPublished(selection, *member);
            }
        }
    }
    selection.AddOwned();
    for (const Wanted& wanted : wants) {
        AddPublished(selection, *wanted.entity);
    }
}

void Merge::Place(Operation& operation, const catalogue::Catalogue& catalogue, const Wants& wants) {
    Session::State folder;
    for (const Wanted& wanted : wants) {
        const store::EntityRow row = RowOf(wanted);
        if (_folder.empty()) {
            continue;
        }
        if (!folder) {
            folder = FolderOfPath(*_target, operation, _folder);
        }
        PutWhereNoPlaceIs(*_target, operation, catalogue, row, folder);
    }
}

// What stands for the entity in the target after the import.
store::EntityRow Merge::RowOf(const Wanted& wanted) {
    exchange::Arrival arrival;
    store::EntityRow row;
    const std::string uid(wanted.entity->BaseUid());
    if (!exchange::FindArrival(_target->Store(), uid, arrival) ||
        !_target->Store().FindById(arrival.id, _target->Viewer(), row)) {
        throw UDMException(NameOf(*wanted.entity) + " is deleted in the library \"" +
                           _target->Options().libraryName +
                           "\"; bring it back there before merging it again");
    }
    return row;
}

}  // namespace kxudm::profile
