#include "profile/Session.h"

#include <boost/smart_ptr/make_shared.hpp>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <utility>

#include "core/UidGenerator.h"
#include "profile/Bulk.h"
#include "profile/Peers.h"
#include "profile/Words.h"

namespace kxudm::profile {

namespace {

using store::LinkKind;

// Of a revision in decimal without sign or leading zeros, as handles write it.
std::optional<int> RevisionNumber(std::string_view text) {
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool whole = error == std::errc() && end == text.data() + text.size();
    const bool plain = !text.empty() && text.front() != '-' && (text.size() == 1 || text[0] != '0');
    return whole && plain ? std::optional(number) : std::nullopt;
}

// The base of a UID text, and its revision with the colon before it.
std::pair<std::string_view, std::string_view> SplitUid(std::string_view uid) {
    const std::size_t colon = std::min(uid.find(':'), uid.size());
    return {uid.substr(0, colon), uid.substr(colon)};
}

std::string BaseDirectoryOf(const SessionOptions& options) {
    return options.baseDirectory.empty()
               ? std::filesystem::path(options.libraryFile.c_str()).parent_path().string()
               : std::string(options.baseDirectory);
}

}  // namespace

kxString HolderText(const store::EntityRow& row) {
    return kxString(row.lockUser + " has it checked out in workspace \"" + row.lockWorkspace +
                    "\" since " + WholeSeconds(row.lockTime));
}

Session::Session(std::unique_ptr<store::LibraryStore> store, SessionOptions options)
    : _options(std::move(options)),
      _id(core::ProcessUidGenerator().Next()),
      _link(boost::make_shared<SessionLink>()),
      _store(std::move(store)),
      _vaults(BaseDirectoryOf(_options),
              _options.files == nullptr ? vault::MachineFiles() : *_options.files) {
    if (_options.clock == nullptr) {
        _options.clock = &core::SystemClock();
    }
    _link->session = this;
    // The first answer is always yes.
    static_cast<void>(_store->ChangedByOthers());
    _store->View([this] {
        _link->catalogue =
            catalogue::Catalogue::ReadText(_store->CatalogueXml(), _options.libraryFile);
        _seen = _store->LastSequence();
    });
}

Session::~Session() {
    Close();
}

store::Stamp Session::Now() const {
    return {Viewer(), _options.clock->NowMicroseconds()};
}

void Session::RequireOpen(const char* operation) const {
    if (!IsOpen()) {
        throw UDMException("Session " + _id + " on the library \"" + _options.libraryName +
                           "\" is closed; " + operation + " needs an open one");
    }
}

void Session::Close() noexcept {
    if (!IsOpen()) {
        return;
    }
    _link->session = nullptr;
    peers::Leave(*this);
    _bulk.reset();
    _vaults.Forget();
    _store.reset();
    try {
        _slots.Queue(UDMProfileUpdate::OfSession(_id));
        // A failing slot can't keep a session open.
        static_cast<void>(_slots.Tell());
    } catch (...) {
        std::fputs("kxudm: no memory to tell that a session was closed\n", stderr);
    }
    _slots.Clear(_id);
    for (const boost::shared_ptr<Session>& other : std::exchange(_attached, {})) {
        other->Close();
    }
}

boost::shared_ptr<Session> Session::AttachedOn(const kxString& libraryFile) const {
    for (const boost::shared_ptr<Session>& other : _attached) {
        if (other->IsOpen() && other->Options().libraryFile == libraryFile) {
            return other;
        }
    }
    return {};
}

void Session::Dump() const {
    std::printf("session %s\n", _id.c_str());
    std::printf(
        "  library    %s (%s)\n", _options.libraryName.c_str(), _options.libraryFile.c_str());
    std::printf("  user       %s\n", _options.user.c_str());
    std::printf(
        "  workspace  %s (%s)\n", _options.workspace.c_str(), _options.workspaceDirectory.c_str());
    std::printf("  state      %s\n", !IsOpen() ? "closed" : InBulk() ? "in a bulk edit" : "open");
    std::printf("  handles    of %zu revisions\n", _states.Count());
    std::printf("  slots      %zu\n", _slots.Count());
    std::printf("  journal    read up to %lld\n", static_cast<long long>(_seen));
    std::fflush(stdout);
}

Session::State Session::StateOf(store::EntityRow&& row, bool complete) {
    const bool ours = row.working != store::NO_REVISION && row.lockUser == _options.user &&
                      row.lockWorkspace == _options.workspace;
    const bool newest = row.revision == (ours ? row.working : row.published);
    State state = _states.Revision(row.uid, row.revision);
    if (!state) {
        state = boost::make_shared<EntityState>(_link, std::move(row), complete);
        if (_states.Insert(*state)) {
            state->SetNewest(newest);
            return state;
        }
    } else if (!state->IsCurrent() || (complete && !state->IsComplete())) {
        state->Take(std::move(row), complete);
    }
    if (newest && !state->IsNewest()) {
        _states.MarkNewest(*state);
    }
    return state;
}

Session::State Session::StateElsewhere(store::EntityRow&& row) const {
    return boost::make_shared<EntityState>(_link, std::move(row), false);
}

bool Session::ReadRow(std::string_view base, std::string_view revision, store::EntityRow& row) {
    if (revision.empty()) {
        return _store->FindByUid(base, Viewer(), row);
    }
    const std::optional<int> number = RevisionNumber(revision.substr(1));
    return number && _store->FindRevision(base, *number, Viewer(), row);
}

Session::State Session::Known(std::string_view base, std::string_view revision) const {
    if (revision.empty()) {
        return _states.Newest(base);
    }
    const std::optional<int> number = RevisionNumber(revision.substr(1));
    return number ? _states.Revision(base, *number) : State();
}

Session::State Session::Find(const kxString& uid) {
    const auto [base, revision] = SplitUid(uid);
    if (State state = Known(base, revision); state && state->IsCurrent()) {
        return state;
    }
    store::EntityRow row;
    return ReadRow(base, revision, row) ? StateOf(std::move(row)) : State();
}

Session::State Session::FindUnseen(const kxString& uid) {
    const auto [base, revision] = SplitUid(uid);
    if (InBulk() || Known(base, revision)) {
        return {};
    }
    Tell();
    store::EntityRow row;
    const bool unchanged = IsOpen() && ReadRow(base, revision, row) && _store->ReadNothingNew();
    return unchanged ? StateOf(std::move(row)) : State();
}

Session::State Session::Get(const kxString& uid) {
    State state = Find(uid);
    if (!state) {
        throw UDMNotFoundException("The entity \"" + catalogue::Printable(uid) +
                                   "\" is unknown, deleted or not visible in the library \"" +
                                   _options.libraryName + "\"; use the UID of one that is there");
    }
    return state;
}

Session::State Session::Resolve(const UDMItemHandle& handle) {
    auto state = boost::dynamic_pointer_cast<EntityState>(handle.State());
    if (state && state->Link() == _link) {
        state->Current();
        return state;
    }
    if (handle.IsEmpty()) {
        throw UDMException("An empty handle was given; it must stand for an entity");
    }
    return Get(handle.Uid());
}

void Session::RequireEditable(const EntityState& state) {
    if (state.IsEditable()) {
        return;
    }
    kxString why = "is published; check it out first";
    store::EntityRow row;
    if (_store->FindByUid(state.BaseUid(), Viewer(), row) && row.working != store::NO_REVISION) {
        const bool ours = row.lockUser == _options.user && row.lockWorkspace == _options.workspace;
        why =
            ours
                ? kxString("is published; edit the working revision " + std::to_string(row.working))
                : kxString("can't be edited: " + HolderText(row) +
                           "; it must be published or undone");
    }
    throw UDMException(state.Cdef() + " " + state.Uid() + " " + why);
}

void Session::Reload(EntityState& state) {
    store::EntityRow row;
    if (_store->FindRevision(state.BaseUid(), state.Revision(), Viewer(), row)) {
        state.Take(std::move(row));
    } else {
        state.SetGone();
    }
}

void Session::Outdate(std::string_view baseUid) {
    _states.ForRevisions(baseUid, [](EntityState& state) {
        state.SetStale();
        state.SetNewest(false);
    });
    TouchLinks();
}

void Session::NoteGone(const std::vector<store::DeletedRow>& gone) {
    for (const store::DeletedRow& row : gone) {
        _states.ForRevisions(row.uid, [](EntityState& state) { state.SetGone(); });
    }
    TouchLinks();
}

bool Session::HasOwner(const EntityState& state) {
    return _store->HasParent(state.Id(), state.Revision(), LinkKind::Owner, Viewer());
}

kxString Session::FolderPathOf(const EntityState& state) {
    kxString path;
    store::EntityId id = state.Id();
    int revision = state.Revision();
    for (std::vector<store::LinkedRow> above;; above.clear()) {
        _store->Parents(id, revision, LinkKind::Folder, {}, Viewer(), above);
        if (above.empty()) {
            return path;
        }
        path.insert(0, "/" + above.front().entity.name);
        id = above.front().entity.id;
        revision = above.front().entity.revision;
    }
}

store::EntityDetails Session::DetailsOf(const EntityState& state) {
    store::EntityDetails details;
    static_cast<void>(_store->Details(state.Id(), state.Revision(), details));
    return details;
}

}  // namespace kxudm::profile
