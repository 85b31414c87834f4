// Generated sequences of steps by two users, in the runtime and in a naive model of it. After each
// step both users must see what the model says, and slots must have been told of it. The seed is
// printed; KXCT_TEST_SEED repeats a run.
#include <cstdlib>
#include <iostream>
#include <random>

#include "RevisionModel.h"
#include "Revisions.h"

namespace kxudm::test {
namespace {

using Group = RevisionModel::Group;

constexpr int SHARDS = 8;
constexpr int SEQUENCES = 25;  // of each shard
constexpr int STEPS = 60;
constexpr int USERS = 2;
constexpr int FOLDERS = 2;
constexpr int MOST_CREATED = 9;
// Kinds of step that are named because they pick their entities in a way of their own.
constexpr int REMOVE = 9;
constexpr int CHECK_OUT = 10;

unsigned Seed() {
    const char* set = std::getenv("KXCT_TEST_SEED");
    return set != nullptr ? static_cast<unsigned>(std::strtoul(set, nullptr, 10))
                          : std::random_device()();
}

// Follows the updates of one session like somebody who shows the newest revisions.
class Follower : public IUDMProfileSlot {
  public:
    void update(UDMProfileUpdate update) override {
        switch (update.GetOpCode()) {
            case SIGNAL_REVISION_ADVANCED:
                newest[Base(update.GetUDMHandle())] = update.GetUDMHandle().GetRevision();
                break;
            case SIGNAL_REVISION_UNDONE:
                EXPECT_EQ(kxString(update.GetUID()),
                          At(update.GetUDMHandle(), newest[Base(update.GetUDMHandle())]));
                newest[Base(update.GetUDMHandle())] = update.GetUDMHandle().GetRevision();
                break;
            case SIGNAL_ENTITY_DELETED:
                newest.erase(UDMUID(update.GetUID()).GetDmUid());
                break;
            default:
                break;
        }
    }
    std::map<kxString, int> newest;
};

class Sequence {
  public:
    Sequence(std::vector<ProfilePtr> users, unsigned seed)
        : _users(std::move(users)), _random(seed) {
        for (const ProfilePtr& user : _users) {
            _followers.push_back(boost::make_shared<Follower>());
            boost::shared_ptr<IUDMProfileSlot> slot = _followers.back();
            user->Connect(slot);
        }
        for (int i = 0; i < FOLDERS; ++i) {
            UDMItemHandle folder;
            _users[0]->CreateFolder(folder, "/" + std::to_string(seed) + "-" + std::to_string(i));
            _folders.push_back(Base(folder));
        }
    }
    ~Sequence() {
        for (int i = 0; i < USERS; ++i) {
            boost::shared_ptr<IUDMProfileSlot> slot = _followers[i];
            _users[i]->Disconnect(slot);
        }
    }

    void Step() {
        _user = Below(USERS);
        if (_model.Count() < 3 || (_model.Count() < MOST_CREATED && Chance(15))) {
            Create();
            return;
        }
        const int what = Below(13);
        // What may be edited, mostly; for a check-out, what may not.
        const bool editable = what != CHECK_OUT && what != CHECK_OUT + 1;
        _entity = Pick([&](int entity) { return _model.Edits(_user, entity) == editable; });
        if (_entity < 0) {
            return;
        }
        const int other = Pick([&](int entity) { return what != REMOVE || IsChild(entity); });
        Act(what, other);
        Compare(_entity);
        Compare(other);
    }

    // Everything, as both users and as one who opens a session now.
    void CompareAll(const ProfilePtr& newcomer) {
        for (int entity = 0; entity < _model.Count(); ++entity) {
            Compare(entity);
            CompareEntity(newcomer, USERS, entity);
        }
        for (int user = 0; user < USERS; ++user) {
            CompareFolders(_users[user], user);
            CompareRoots(_users[user], user);
        }
        CompareFolders(newcomer, USERS);
        CompareRoots(newcomer, USERS);
    }

    [[nodiscard]] const std::string& Log() const { return _log; }

  private:
    int Below(int limit) { return static_cast<int>(_random() % static_cast<unsigned>(limit)); }
    // One that the user sees; of five times four one that is as wanted, if there is any. -1: none.
    template <typename Wanted>
    int Pick(Wanted&& wanted) {
        std::vector<int> all;
        std::vector<int> some;
        for (int entity = 0; entity < _model.Count(); ++entity) {
            if (_model.Newest(_user, entity) != nullptr) {
                all.push_back(entity);
                if (wanted(entity)) {
                    some.push_back(entity);
                }
            }
        }
        const std::vector<int>& from = !some.empty() && Chance(80) ? some : all;
        return from.empty() ? -1 : from[Below(static_cast<int>(from.size()))];
    }
    bool IsChild(int entity) {
        const auto& links = _model.Newest(_user, _entity)->links;
        return std::any_of(
            links.begin(), links.end(), [&](const auto& link) { return link.child == entity; });
    }
    bool Chance(int percent) { return Below(100) < percent; }
    const ProfilePtr& Session() { return _users[_user]; }
    UDMItemHandle Handle(int entity) { return Keep(Session()->GetEntity(_uids[entity])); }
    // Handles are kept to see that they go on telling the truth.
    UDMItemHandle Keep(const UDMItemHandle& handle) {
        _handles[_user].emplace(handle.GetUID(), handle);
        return handle;
    }

    void Note(const std::string& what) {
        _log += "user " + std::to_string(_user) + ": " + what + "\n";
    }

    // Runs a step in both worlds: it must be refused in both or in neither.
    template <typename Real>
    void Both(const std::string& what, bool expected, Real&& real) {
        Note(what + (expected ? "" : " (refused)"));
        std::string failure;
        try {
            real();
        } catch (const UDMException& refused) {
            failure = refused.what();
        }
        EXPECT_EQ(failure.empty(), expected) << what << ": " << failure;
    }

    void Create() {
        const int entity = _model.Create(_user);
        Note("create " + std::to_string(entity));
        const UDMItemHandle handle =
            Keep(Session()->CreateEntity("Node", "node " + std::to_string(entity)));
        Learn(handle);
        Session()->SetAttributeValue(handle, "load", 0);
        Compare(entity);
    }

    void Learn(const UDMItemHandle& handle) {
        _indices[Base(handle)] = static_cast<int>(_uids.size());
        _uids.push_back(Base(handle));
        _followers[_user]->newest[Base(handle)] = handle.GetRevision();
    }

    void Act(int what, int other) {
        const std::string name = std::to_string(_entity);
        const std::string comment = Chance(50) ? "c" + std::to_string(Below(1000)) : "";
        switch (what) {
            case 0:
            case 1: {
                const int load = Below(1000);
                Both("load of " + name, _model.SetLoad(_user, _entity, load), [&] {
                    Session()->SetAttributeValue(Handle(_entity), "load", load);
                });
                break;
            }
            case 2:
            case 3:
            case 4: {
                const auto group = static_cast<Group>(Below(3));
                Both("add " + std::to_string(other) + " to " + name + " " +
                         RevisionModel::GROUPS[group],
                     _model.AddLink(_user, _entity, {group, other}),
                     [&] {
                         Session()->AddChild(
                             Handle(_entity), Handle(other), RevisionModel::GROUPS[group]);
                     });
                break;
            }
            case REMOVE:
                Both("remove " + std::to_string(other) + " from " + name,
                     _model.RemoveLinks(_user, _entity, other),
                     [&] { Session()->RemoveChild(Handle(_entity), Handle(other)); });
                break;
            case 5: {
                const int folder = Below(FOLDERS);
                Both("move " + name, _model.Move(_user, _entity, folder), [&] {
                    Session()->MoveContent(Handle(_entity), Session()->GetEntity(_folders[folder]));
                });
                break;
            }
            case CHECK_OUT:
            case CHECK_OUT + 1:
                CheckOut(comment);
                break;
            case 6:
                Both("save " + name, _model.Save(_user, _entity, comment), [&] {
                    Session()->SaveEntity(Handle(_entity), comment, true);
                });
                break;
            case 7:
            case 8: {
                const bool keep = Chance(30);
                Both("publish " + name, _model.Publish(_user, _entity, comment, keep), [&] {
                    Session()->PersistEntity(Handle(_entity), comment, keep, true, true);
                });
                break;
            }
            default:
                if (Chance(30)) {
                    Both("delete " + name, _model.Delete(_user, _entity), [&] {
                        Session()->DeleteEntity(Handle(_entity), true, false);
                    });
                } else {
                    Both("undo " + name, _model.Undo(_user, _entity), [&] {
                        Session()->UndoCheckout(Handle(_entity));
                    });
                }
        }
    }

    void CheckOut(const std::string& comment) {
        const std::vector<int> numbers = _model.Numbers(_user, _entity);
        const int number =
            Chance(70) ? numbers.back() : numbers[Below(static_cast<int>(numbers.size()))];
        int branch = -1;
        const bool expected = _model.CheckOut(_user, _entity, number, comment, branch);
        Both("check out " + std::to_string(_entity) + ":" + std::to_string(number), expected, [&] {
            const kxString uid = _uids[_entity] + ":" + std::to_string(number);
            Session()->Checkout(Keep(Session()->GetEntity(uid)), comment);
        });
        if (branch >= 0) {
            const auto history = Session()->GetHistory(Handle(_entity));
            ASSERT_FALSE(history->GetBranchList().empty());
            Learn(Keep(Session()->GetEntity(history->GetBranchList().back()->GetBaseUID())));
            Compare(branch);
        }
    }

    void Compare(int entity) {
        for (int user = 0; user < USERS; ++user) {
            CompareEntity(_users[user], user, entity);
            CompareHandles(user, entity);
            const auto& followed = _followers[user]->newest;
            const auto told = followed.find(_uids[entity]);
            const std::vector<int> numbers = _model.Numbers(user, entity);
            EXPECT_EQ(told == followed.end() ? -1 : told->second,
                      numbers.empty() ? -1 : numbers.back())
                << "what user " << user << " was told of " << entity;
        }
    }

    void CompareEntity(const ProfilePtr& session, int user, int entity) {
        SCOPED_TRACE("entity " + std::to_string(entity) + " of user " + std::to_string(user));
        const std::vector<int> numbers = _model.Numbers(user, entity);
        ASSERT_EQ(Sees(session, _uids[entity]), !numbers.empty());
        if (numbers.empty()) {
            return;
        }
        const UDMItemHandle newest = session->GetEntity(_uids[entity]);
        EXPECT_EQ(newest.GetRevision(), numbers.back());
        EXPECT_EQ(newest.IsEditable(), _model.Edits(user, entity));
        EXPECT_EQ(Versions(session, newest), numbers);
        EXPECT_EQ(Branches(session, newest), _model.Branches(user, entity));
        EXPECT_EQ(IndexSet(Parents(session, newest, "owner")), _model.Parents(user, entity, true));
        EXPECT_EQ(IndexSet(Parents(session, newest, "reference")),
                  _model.Parents(user, entity, false));
        for (int number = 0; number <= numbers.back() + 1; ++number) {
            CompareRevision(session, user, entity, number);
        }
    }

    void CompareRevision(const ProfilePtr& session, int user, int entity, int number) {
        const kxString uid = _uids[entity] + ":" + std::to_string(number);
        const RevisionModel::Revision* expected = _model.Find(user, entity, number);
        ASSERT_EQ(Sees(session, uid), expected != nullptr) << number;
        if (expected == nullptr) {
            return;
        }
        const UDMItemHandle handle = session->GetEntity(uid);
        EXPECT_EQ(handle.GetAttributeValue("load"), kxVariant(expected->load)) << number;
        const kxVariant comment = handle.GetAttributeValue("smd_comment");
        EXPECT_EQ(comment.IsEmpty() ? "" : comment.GetString(), kxString(expected->comment));
        for (const Group group : {Group::KITS, Group::MATES, Group::USES}) {
            kxStlVector<UDMItemHandle> children;
            session->GetChildren(children, handle, RevisionModel::GROUPS[group], "");
            EXPECT_EQ(Indices(children), _model.Children(user, *expected, group)) << number;
        }
    }

    // A handle that was given out long ago answers as a new one would.
    void CompareHandles(int user, int entity) {
        for (const auto& [uid, handle] : _handles[user]) {
            if (Base(handle) != _uids[entity]) {
                continue;
            }
            const RevisionModel::Revision* expected =
                _model.Find(user, entity, handle.GetRevision());
            if (expected == nullptr) {
                EXPECT_FALSE(handle.IsEditable()) << uid;
                EXPECT_THROW(handle.GetAttributeValue("load"), UDMNotFoundException) << uid;
            } else {
                EXPECT_EQ(handle.GetAttributeValue("load"), kxVariant(expected->load)) << uid;
                EXPECT_EQ(handle.IsEditable(), expected == Working(user, entity)) << uid;
            }
        }
    }

    const RevisionModel::Revision* Working(int user, int entity) {
        return _model.Edits(user, entity) ? &*_model.At(entity).working : nullptr;
    }

    void CompareFolders(const ProfilePtr& session, int user) {
        for (int folder = 0; folder < FOLDERS; ++folder) {
            kxStlVector<UDMItemHandle> contents;
            session->GetChildren(contents, session->GetEntity(_folders[folder]), "folder", "");
            EXPECT_EQ(Indices(contents), _model.InFolder(user, folder)) << "user " << user;
        }
    }

    void CompareRoots(const ProfilePtr& session, int user) {
        kxStlVector<UDMItemHandle> hits;
        session->RunQuery(hits, "type == \"Node\"", -1, 0, 0, {}, true, false);
        std::set<int> found;
        for (const UDMItemHandle& hit : hits) {
            // Other sequences have left theirs in the library.
            if (_indices.count(Base(hit)) != 0) {
                found.insert(_indices.at(Base(hit)));
            }
        }
        EXPECT_EQ(found, _model.Roots(user)) << "user " << user;
    }

    std::vector<int> Branches(const ProfilePtr& session, const UDMItemHandle& handle) {
        std::vector<int> branches;
        const auto root = session->GetHistory(handle);
        for (const auto& node : root->GetBranchList()) {
            branches.push_back(_indices.at(node->GetBaseUID()));
        }
        return branches;
    }

    static kxStlVector<UDMItemHandle> Parents(const ProfilePtr& session,
                                              const UDMItemHandle& handle,
                                              const kxString& relation) {
        kxStlVector<UDMItemHandle> parents;
        session->GetParents(parents, handle, relation, false);
        return parents;
    }

    std::vector<int> Indices(const kxStlVector<UDMItemHandle>& handles) {
        std::vector<int> indices;
        for (const UDMItemHandle& handle : handles) {
            indices.push_back(_indices.at(Base(handle)));
        }
        return indices;
    }
    std::set<int> IndexSet(const kxStlVector<UDMItemHandle>& handles) {
        const std::vector<int> indices = Indices(handles);
        return {indices.begin(), indices.end()};
    }

    std::vector<ProfilePtr> _users;
    std::vector<boost::shared_ptr<Follower>> _followers;
    std::mt19937 _random;
    RevisionModel _model;
    std::vector<kxString> _folders;
    std::vector<kxString> _uids;  // by the entity's number in the model
    std::map<kxString, int> _indices;
    std::map<kxString, UDMItemHandle> _handles[USERS];
    std::string _log;
    int _user = 0;
    int _entity = 0;
};

class RevisionRandom : public testing::TestWithParam<int> {};

TEST_P(RevisionRandom, TheRuntimeDoesWhatTheModelSays) {
    const unsigned seed = Seed();
    std::cout << "KXCT_TEST_SEED=" << seed << std::endl;
    Library library;
    for (int i = 0; i < SEQUENCES && !HasFailure(); ++i) {
        const unsigned own = seed + static_cast<unsigned>(GetParam() * SEQUENCES + i);
        std::vector<ProfilePtr> users{UDMProfileMgr::GetProfile(library.Params("ann")),
                                      UDMProfileMgr::GetProfile(library.Params("bob"))};
        ProfilePtr carl = UDMProfileMgr::GetProfile(library.Params("carl"));
        std::string log;
        {
            Sequence sequence(users, own);
            for (int step = 0; step < STEPS && !HasFailure(); ++step) {
                sequence.Step();
            }
            sequence.CompareAll(carl);
            log = sequence.Log();
        }
        users.push_back(carl);
        for (ProfilePtr& user : users) {
            UDMProfileMgr::DiscardProfile(user);
        }
        EXPECT_FALSE(HasFailure()) << "sequence " << own << ":\n" << log;
    }
}

INSTANTIATE_TEST_SUITE_P(Shards, RevisionRandom, testing::Range(0, SHARDS));

}  // namespace
}  // namespace kxudm::test
