// Generated sequences of steps on links by two users, in the runtime and in a naive model of it:
// children, references, relations, classifications, places in a tree of folders, through
// check-outs, publishes, undos, branches and deletions. After each step both users must find what
// the model says. The seed is printed; KXCT_TEST_SEED sets it, KXCT_TEST_SEQUENCES says how many
// sequences there are.
#include <random>

#include "RevisionModel.h"
#include "Revisions.h"
#include "tests/support/Seed.h"

namespace kxudm::test {
namespace {

using Group = RevisionModel::Group;
using Indices = std::vector<int>;

constexpr int SHARDS = 8;
constexpr int SEQUENCES = 64;  // of all shards
constexpr int STEPS = 40;
constexpr int USERS = 2;
constexpr int FOLDERS = 3;
constexpr int CLASSES = 2;
constexpr int MOST_CREATED = 7;
constexpr const char* TYPES[] = {"fits", "replaces"};

Indices Sorted(const std::set<int>& set) {
    return {set.begin(), set.end()};
}

// The runtime with numbers for UIDs, so that its answers look like those of the model.
class Numbered {
  public:
    Numbered(std::vector<ProfilePtr> users, kxString prefix)
        : _users(std::move(users)), _prefix(std::move(prefix)) {
        for (int i = 0; i < FOLDERS; ++i) {
            UDMItemHandle folder;
            _users[0]->CreateFolder(folder, "/" + FolderName(i));
            _folders.push_back(Base(folder));
        }
        for (int i = 0; i < CLASSES; ++i) {
            _classes.push_back(Base(Published(_users[0], _prefix + "class", "Categories")));
        }
    }

    const ProfilePtr& Session(int user) const { return _users[user]; }
    UDMItemHandle Entity(int user, int entity) const {
        return Session(user)->GetEntity(_uids[entity]);
    }
    UDMItemHandle Revision(int user, int entity, int number) const {
        return Session(user)->GetEntity(_uids[entity] + ":" + std::to_string(number));
    }
    UDMItemHandle Folder(int user, int folder) const {
        return Session(user)->GetEntity(_folders[folder]);
    }
    UDMItemHandle Class(int user, int classification) const {
        return Session(user)->GetEntity(_classes[classification]);
    }
    kxString FolderName(int folder) const { return _prefix + std::to_string(folder); }

    void Create(int user) {
        Learn(Session(user)->CreateEntity("Node", _prefix + std::to_string(_uids.size())));
    }
    void Learn(const UDMItemHandle& handle) {
        _indices[Base(handle)] = static_cast<int>(_uids.size());
        _uids.push_back(Base(handle));
    }

    Indices Children(int user, const UDMItemHandle& parent, const kxString& group) const {
        kxStlVector<UDMItemHandle> found;
        Session(user)->GetChildren(found, parent, group, "");
        EXPECT_EQ(Session(user)->GetChildCount(parent, group, ""), found.size());
        return ToIndices(found);
    }
    Indices Parents(int user,
                    const UDMItemHandle& handle,
                    const kxString& relation,
                    bool any) const {
        kxStlVector<UDMItemHandle> found;
        Session(user)->GetParents(found, handle, relation, any);
        Indices indices = ToIndices(found);
        std::sort(indices.begin(), indices.end());
        return indices;
    }
    Indices References(int user, const UDMItemHandle& handle) const {
        kxStlVector<UDMItemHandle> found;
        Session(user)->GetReferences(found, handle, "");
        return ToIndices(found);
    }
    Indices ReferredBy(int user, const UDMItemHandle& handle) const {
        kxStlVector<UDMItemHandle> found;
        kxStlVector<kxString> types;
        Session(user)->GetReferredBy(found, types, handle);
        EXPECT_EQ(types.size(), found.size());
        return ToIndices(found);
    }
    Indices Roots(int user) const {
        kxStlVector<UDMItemHandle> found;
        const kxString query = "type == \"Node\" && name like \"" + _prefix + "\"";
        Session(user)->RunQuery(found, query, -1, 0, 0, {}, true, false);
        return ToIndices(found);
    }
    Indices ToIndices(const kxStlVector<UDMItemHandle>& handles) const {
        Indices indices;
        for (const UDMItemHandle& handle : handles) {
            const auto found = _indices.find(Base(handle));
            if (found != _indices.end()) {
                indices.push_back(found->second);
            } else {
                indices.push_back(Place(Base(handle)));
            }
        }
        return indices;
    }

  private:
    // Folders and classifications have numbers of their own.
    int Place(const kxString& base) const {
        const auto& from =
            std::count(_folders.begin(), _folders.end(), base) != 0 ? _folders : _classes;
        return static_cast<int>(std::find(from.begin(), from.end(), base) - from.begin());
    }

    std::vector<ProfilePtr> _users;
    kxString _prefix;
    std::vector<kxString> _folders;
    std::vector<kxString> _classes;
    std::vector<kxString> _uids;  // by the entity's number in the model
    std::map<kxString, int> _indices;
};

class LinkSequence {
  public:
    LinkSequence(const std::vector<ProfilePtr>& users, unsigned seed)
        : _real(users, "s" + std::to_string(seed) + "-"), _random(seed), _above(FOLDERS, -1) {}

    void Step() {
        _user = Below(USERS);
        if (_model.Count() < 3 || (_model.Count() < MOST_CREATED && Chance(12))) {
            Note("create " + std::to_string(_model.Create(_user)));
            _real.Create(_user);
        } else {
            Act();
        }
        for (int user = 0; user < USERS; ++user) {
            SCOPED_TRACE("user " + std::to_string(user));
            ComparePlaces(user);
            for (int entity = 0; entity < _model.Count(); ++entity) {
                CompareNewest(user, entity);
            }
        }
    }

    // Every revision, too.
    void CompareAll(int user) {
        ComparePlaces(user);
        for (int entity = 0; entity < _model.Count(); ++entity) {
            CompareNewest(user, entity);
            for (const int number : _model.Numbers(user, entity)) {
                CompareRevision(user, entity, number);
            }
        }
    }

    [[nodiscard]] const std::string& Log() const { return _log; }

  private:
    int Below(int limit) { return static_cast<int>(_random() % static_cast<unsigned>(limit)); }
    bool Chance(int percent) { return Below(100) < percent; }
    void Note(const std::string& what) {
        _log += "user " + std::to_string(_user) + ": " + what + "\n";
    }
    // One that the user sees; four times of five one that is as wanted. -1: none.
    template <typename Wanted>
    int Pick(Wanted&& wanted) {
        Indices all;
        Indices some;
        for (int entity = 0; entity < _model.Count(); ++entity) {
            if (_model.Newest(_user, entity) != nullptr) {
                all.push_back(entity);
                if (wanted(entity)) {
                    some.push_back(entity);
                }
            }
        }
        const Indices& from = !some.empty() && Chance(80) ? some : all;
        return from.empty() ? -1 : from[Below(static_cast<int>(from.size()))];
    }
    int PickEditable() {
        return Pick([&](int entity) { return _model.Edits(_user, entity); });
    }

    // Runs a step in both worlds: it must be refused in both or in neither.
    template <typename Real>
    void Both(const std::string& what, bool expected, Real&& real) {
        Note(what + (expected ? "" : " (refused)"));
        std::string failure;
        try {
            real(_real.Session(_user));
        } catch (const UDMException& refused) {
            failure = refused.what();
        }
        EXPECT_EQ(failure.empty(), expected) << what << ": " << failure;
    }

    void Act() {
        const int what = Below(24);
        if (what == 0) {
            MoveFolder();
            return;
        }
        _entity = what < 16 ? PickEditable() : Pick([&](int entity) {
            return _model.Edits(_user, entity) != (what < 20);
        });
        if (_entity < 0) {
            return;
        }
        if (what < 10) {
            Link(what);
        } else if (what < 16) {
            Place(what);
        } else {
            Live(what);
        }
    }

    void Link(int what) {
        const bool adds = what <= 6;
        const int other = Pick([&](int entity) { return adds || Reaches(_entity, entity); });
        const std::string ends = std::to_string(_entity) + " " + std::to_string(other);
        const UDMItemHandle first = _real.Entity(_user, _entity);
        const UDMItemHandle second = _real.Entity(_user, other);
        if (what <= 3) {
            const auto group = static_cast<Group>(Below(3));
            const kxString name = RevisionModel::GROUPS[group];
            Both("add " + name + " " + ends,
                 _model.AddLink(_user, _entity, {group, other}),
                 [&](const ProfilePtr& profile) { profile->AddChild(first, second, name); });
        } else if (what == 4) {
            Both("refer " + ends,
                 _model.AddLink(_user, _entity, {Group::USES, other}),
                 [&](const ProfilePtr& profile) { profile->AddReference(first, second, "uses"); });
        } else if (what <= 6) {
            Relate(other);
        } else if (what == 7) {
            Both("remove " + ends,
                 _model.RemoveLinks(_user, _entity, other),
                 [&](const ProfilePtr& profile) { profile->RemoveChild(first, second); });
        } else if (what == 8) {
            Both("refer no more " + ends,
                 _model.RemoveReferences(_user, _entity, other),
                 [&](const ProfilePtr& profile) { profile->RemoveReference(first, second); });
        } else {
            Both("unrelate " + ends,
                 _model.Unrelate(_user, _entity, other),
                 [&](const ProfilePtr& profile) {
                     if (!profile->RemoveRelation(first, second)) {
                         throw UDMException("no relation");
                     }
                 });
        }
    }

    bool Reaches(int first, int second) {
        const RevisionModel::Revision& revision = *_model.Newest(_user, first);
        const auto leadsThere = [&](const auto& link) {
            if constexpr (requires { link.child; }) {
                return link.child == second;
            } else {
                return link.second == second;
            }
        };
        return std::any_of(revision.links.begin(), revision.links.end(), leadsThere) ||
               std::any_of(revision.relations.begin(), revision.relations.end(), leadsThere);
    }

    void Relate(int other) {
        const Indices numbers = _model.Numbers(_user, other);
        const int number = numbers[Below(static_cast<int>(numbers.size()))];
        const bool exact = Chance(50);
        const kxString type = TYPES[Below(2)];
        Both("relate " + type + " " + std::to_string(_entity) + " to " + std::to_string(other) +
                 ":" + std::to_string(number) + (exact ? " exactly" : ""),
             _model.Relate(_user, _entity, {type, other, exact ? number : RevisionModel::NEWEST}),
             [&](const ProfilePtr& profile) {
                 profile->CreateRelation(_real.Entity(_user, _entity),
                                         _real.Revision(_user, other, number),
                                         type,
                                         exact);
             });
    }

    void Place(int what) {
        const UDMItemHandle content = _real.Entity(_user, _entity);
        const std::string name = std::to_string(_entity);
        const int folder = Below(FOLDERS);
        const int classification = Below(CLASSES);
        const UDMItemHandle place =
            what <= 12 ? _real.Folder(_user, folder) : _real.Class(_user, classification);
        if (what <= 11) {
            Both("move " + name + " to folder " + std::to_string(folder),
                 _model.Move(_user, _entity, folder),
                 [&](const ProfilePtr& profile) { profile->MoveContent(content, place); });
        } else if (what == 12) {
            const bool inside = _model.Newest(_user, _entity)->folder == folder;
            Both("take " + name + " from folder " + std::to_string(folder),
                 inside && _model.Move(_user, _entity, RevisionModel::NOWHERE),
                 [&](const ProfilePtr& profile) { profile->RemoveChild(place, content); });
        } else if (what <= 14) {
            Both("classify " + name + " by " + std::to_string(classification),
                 _model.Classify(_user, _entity, classification),
                 [&](const ProfilePtr& profile) { profile->AddClassification(content, place); });
        } else {
            Both("declassify " + name + " by " + std::to_string(classification),
                 _model.Declassify(_user, _entity, classification),
                 [&](const ProfilePtr& profile) { profile->RemoveClassification(content, place); });
        }
    }

    // Folders have no revisions, and everybody moves them.
    void MoveFolder() {
        const int folder = Below(FOLDERS);
        const int target = Below(FOLDERS);
        bool below = false;
        for (int each = target; each >= 0; each = _above[each]) {
            below = below || each == folder;
        }
        Both("move folder " + std::to_string(folder) + " into " + std::to_string(target),
             !below,
             [&](const ProfilePtr& profile) {
                 profile->MoveContent(_real.Folder(_user, folder), _real.Folder(_user, target));
             });
        if (!below) {
            _above[folder] = target;
        }
    }

    void Live(int what) {
        const std::string name = std::to_string(_entity);
        const UDMItemHandle handle = _real.Entity(_user, _entity);
        if (what <= 19) {
            CheckOut();
        } else if (what <= 21) {
            const bool keep = Chance(30);
            Both("publish " + name + (keep ? " and keep" : ""),
                 _model.Publish(_user, _entity, "", keep),
                 [&](const ProfilePtr& profile) {
                     profile->PersistEntity(handle, "", keep, true, true);
                 });
        } else if (what == 22) {
            Both("undo " + name, _model.Undo(_user, _entity), [&](const ProfilePtr& profile) {
                profile->UndoCheckout(handle);
            });
        } else if (Chance(40)) {
            Both("delete " + name,
                 _model.Delete(_user, _entity, false),
                 [&](const ProfilePtr& profile) { profile->DeleteEntity(handle, true, false); });
        }
    }

    void CheckOut() {
        const Indices numbers = _model.Numbers(_user, _entity);
        const int number =
            Chance(70) ? numbers.back() : numbers[Below(static_cast<int>(numbers.size()))];
        int branch = -1;
        const bool expected = _model.CheckOut(_user, _entity, number, "", branch);
        Both("check out " + std::to_string(_entity) + ":" + std::to_string(number),
             expected,
             [&](const ProfilePtr& profile) {
                 profile->Checkout(_real.Revision(_user, _entity, number), "");
             });
        if (branch >= 0) {
            const ProfilePtr& session = _real.Session(_user);
            const auto history = session->GetHistory(_real.Entity(_user, _entity));
            ASSERT_FALSE(history->GetBranchList().empty());
            _real.Learn(session->GetEntity(history->GetBranchList().back()->GetBaseUID()));
        }
    }

    void ComparePlaces(int user) {
        EXPECT_EQ(_real.Roots(user), Sorted(_model.Roots(user)));
        for (int folder = 0; folder < FOLDERS; ++folder) {
            const UDMItemHandle handle = _real.Folder(user, folder);
            EXPECT_EQ(_real.Children(user, handle, "contents"), _model.InFolder(user, folder))
                << "in folder " << folder;
            Indices inside;
            for (int each = 0; each < FOLDERS; ++each) {
                if (_above[each] == folder) {
                    inside.push_back(each);
                }
            }
            EXPECT_EQ(_real.Children(user, handle, "folders"), inside) << "folder " << folder;
            kxString path;
            _real.Session(user)->GetFolderFullPath(path, handle);
            EXPECT_EQ(path, PathOf(folder));
        }
        for (int i = 0; i < CLASSES; ++i) {
            EXPECT_EQ(_real.Children(user, _real.Class(user, i), "category"),
                      _model.UnderClass(user, i))
                << "under classification " << i;
        }
    }

    kxString PathOf(int folder) {
        const kxString above = _above[folder] < 0 ? kxString() : PathOf(_above[folder]);
        return above + "/" + _real.FolderName(folder);
    }

    void CompareNewest(int user, int entity) {
        const RevisionModel::Revision* expected = _model.Newest(user, entity);
        if (expected == nullptr) {
            EXPECT_THROW(_real.Entity(user, entity), UDMNotFoundException) << entity;
            return;
        }
        SCOPED_TRACE("entity " + std::to_string(entity));
        const UDMItemHandle handle = _real.Entity(user, entity);
        const int number = _model.Numbers(user, entity).back();
        ASSERT_EQ(handle.GetRevision(), number);
        CompareRevision(user, entity, number);
        EXPECT_EQ(_real.Parents(user, handle, "owner", false),
                  Sorted(_model.Parents(user, entity, true)));
        const Indices referring = Sorted(_model.Parents(user, entity, false));
        EXPECT_EQ(_real.Parents(user, handle, "reference", false), referring);
        EXPECT_EQ(_real.ReferredBy(user, handle), referring);
        const Indices folder =
            expected->folder == RevisionModel::NOWHERE ? Indices() : Indices{expected->folder};
        EXPECT_EQ(_real.Parents(user, handle, "folder", false), folder);
        EXPECT_EQ(_real.Parents(user, handle, "category", false), Sorted(expected->classes));
    }

    // What is asked of exact revisions.
    void CompareRevision(int user, int entity, int number) {
        SCOPED_TRACE("revision " + std::to_string(number));
        const RevisionModel::Revision& expected = *_model.Find(user, entity, number);
        const UDMItemHandle handle = _real.Revision(user, entity, number);
        Indices owned;
        for (const Group group : {Group::KITS, Group::MATES, Group::USES}) {
            const Indices children = _model.Children(user, expected, group);
            EXPECT_EQ(_real.Children(user, handle, RevisionModel::GROUPS[group]), children)
                << RevisionModel::GROUPS[group];
            if (group != Group::USES) {
                owned.insert(owned.end(), children.begin(), children.end());
            }
        }
        EXPECT_EQ(_real.Children(user, handle, ""), owned);
        EXPECT_EQ(_real.References(user, handle), _model.Children(user, expected, Group::USES));
        for (const char* type : TYPES) {
            for (const bool any : {false, true}) {
                EXPECT_EQ(_real.Parents(user, handle, type, any),
                          Sorted(_model.RelatedTo(user, entity, number, type, any)))
                    << type << (any ? " in any revision" : "");
            }
        }
    }

    Numbered _real;
    RevisionModel _model;
    std::mt19937 _random;
    Indices _above;  // the folder that a folder lies in; -1: none
    std::string _log;
    int _user = 0;
    int _entity = 0;
};

class LinksRandom : public testing::TestWithParam<int> {};

TEST_P(LinksRandom, TheRuntimeFindsWhatTheModelSays) {
    const unsigned seed = kxct_test::Seed();
    const auto sequences = static_cast<int>(kxct_test::Setting("KXCT_TEST_SEQUENCES", SEQUENCES));
    Library library;
    for (int i = GetParam(); i < sequences && !HasFailure(); i += SHARDS) {
        const unsigned own = seed + static_cast<unsigned>(i);
        std::vector<ProfilePtr> users{UDMProfileMgr::GetProfile(library.Params("ann")),
                                      UDMProfileMgr::GetProfile(library.Params("bob"))};
        LinkSequence sequence(users, own);
        for (int step = 0; step < STEPS && !HasFailure(); ++step) {
            sequence.Step();
        }
        for (int user = 0; user < USERS; ++user) {
            sequence.CompareAll(user);
        }
        for (ProfilePtr& user : users) {
            UDMProfileMgr::DiscardProfile(user);
        }
        EXPECT_FALSE(HasFailure()) << "sequence " << own << ":\n" << sequence.Log();
    }
}

INSTANTIATE_TEST_SUITE_P(Shards, LinksRandom, testing::Range(0, SHARDS));

}  // namespace
}  // namespace kxudm::test
