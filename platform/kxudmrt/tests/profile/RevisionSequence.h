// Generated steps of several users, in the runtime and in the model of it, and what all of them
// must see after each.
#pragma once

#include <kxudm/UDMBulkEdit.h>
#include <kxudm/UDMMaintenance.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "RevisionFollower.h"

namespace kxudm::test {

class RevisionSequence {
  public:
    static constexpr int USERS = 3;

    // A session of each user.
    RevisionSequence(std::vector<ProfilePtr> users, unsigned seed)
        : _users(std::move(users)), _random(seed) {
        for (const ProfilePtr& user : _users) {
            _followers.push_back(boost::make_shared<RevisionFollower>(user));
            boost::shared_ptr<IUDMProfileSlot> slot = _followers.back();
            user->Connect(slot);
        }
        for (int i = 0; i < FOLDERS; ++i) {
            UDMItemHandle folder;
            _users[0]->CreateFolder(folder, "/" + std::to_string(seed) + "-" + std::to_string(i));
            _folders.push_back(Base(folder));
            for (const auto& follower : _followers) {
                follower->Read(Base(folder));
            }
        }
    }
    ~RevisionSequence() {
        for (int i = 0; i < USERS; ++i) {
            boost::shared_ptr<IUDMProfileSlot> slot = _followers[i];
            _users[i]->Disconnect(slot);
        }
    }

    void Step() {
        _user = Below(USERS);
        BeforeStep();
        _touched.clear();
        if (_model.Count() >= 3 && Chance(BULK_EDITS)) {
            BulkEdit();
        } else if (const std::vector<int> deleted = Deleted();
                   !deleted.empty() && Chance(UNDELETIONS)) {
            Undelete(deleted[Below(static_cast<int>(deleted.size()))]);
        } else {
            One();
        }
        AfterStep();
        for (const int entity : _touched) {
            Compare(entity);
        }
    }

    // Everything, as all users and as one who opens a session now.
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
    using Group = RevisionModel::Group;

    static constexpr int FOLDERS = 2;
    static constexpr int MOST_CREATED = 9;
    static constexpr int BULK_EDITS = 10;  // percent of the steps
    static constexpr int MOST_IN_BULK = 6;
    static constexpr int UNDELETIONS = 10;  // percent of the steps while something is deleted
    // Kinds of step that are named because they pick their entities in a way of their own.
    static constexpr int REMOVE = 9;
    static constexpr int CHECK_OUT = 10;

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
        _refused = !expected;
        std::string failure;
        try {
            real();
        } catch (const UDMException& refused) {
            failure = refused.what();
        }
        EXPECT_EQ(failure.empty(), expected) << what << ": " << failure;
    }

    void One() {
        _refused = true;
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
        _touched.insert({_entity, other});
    }

    // Steps of one user that others see all at once or, if they are taken back, not at all.
    void BulkEdit() {
        const RevisionModel before = _model;
        bool isRefused = true;
        Note("begin");
        {
            UDMBulkEdit edit(Session());
            for (int left = 1 + Below(MOST_IN_BULK); left > 0; --left) {
                One();
                isRefused = isRefused && _refused;
                for (const int entity : _touched) {
                    CompareEntity(Session(), _user, entity);
                    CompareHandles(_user, entity);
                }
            }
            if (Chance(70)) {
                Note("commit");
                for (const auto& follower : _followers) {
                    follower->afterBulkEdit = true;
                }
                edit.Commit();
            } else {
                Note("take back");
                isRefused = true;
                _model = before;
            }
        }
        _refused = isRefused;
        ForgetCreated();
    }

    // What was created in a bulk edit that was taken back.
    void ForgetCreated() {
        while (static_cast<int>(_uids.size()) > _model.Count()) {
            const kxString uid = _uids.back();
            EXPECT_FALSE(Sees(Session(), uid));
            _touched.erase(static_cast<int>(_uids.size()) - 1);
            _uids.pop_back();
            _indices.erase(uid);
            _followers[_user]->newest.erase(uid);
            _followers[_user]->shown.erase(uid);
            std::erase_if(_handles[_user], [&](const auto& each) {
                if (Base(each.second) != uid) {
                    return false;
                }
                EXPECT_FALSE(each.second.IsEditable()) << each.first;
                EXPECT_THROW(each.second.GetAttributeValue("load"), UDMNotFoundException);
                return true;
            });
        }
    }

    std::vector<int> Deleted() const {
        std::vector<int> deleted;
        for (int entity = 0; entity < _model.Count(); ++entity) {
            if (_model.At(entity).deleted) {
                deleted.push_back(entity);
            }
        }
        return deleted;
    }
    void Undelete(int entity) {
        Both("bring back " + std::to_string(entity), _model.Undelete(entity), [&] {
            EXPECT_TRUE(UDMMaintenance(Session()).Undelete(_uids[entity]));
        });
        for (int each = 0; each < _model.Count(); ++each) {
            _touched.insert(each);
        }
    }

    void Create() {
        _refused = false;
        const int entity = _model.Create(_user);
        Note("create " + std::to_string(entity));
        const UDMItemHandle handle =
            Keep(Session()->CreateEntity("Node", "node " + std::to_string(entity)));
        Learn(handle);
        Session()->SetAttributeValue(handle, "load", 0);
        _touched.insert(entity);
    }

    void Learn(const UDMItemHandle& handle) {
        _indices[Base(handle)] = static_cast<int>(_uids.size());
        _uids.push_back(Base(handle));
        _followers[_user]->newest[Base(handle)] = handle.GetRevision();
        _followers[_user]->Read(Base(handle));
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
                    const bool force = Chance(30);
                    Both((force ? "force deletion of " : "delete ") + name,
                         _model.Delete(_user, _entity, force),
                         [&] { Session()->DeleteEntity(Handle(_entity), true, force); });
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
            _touched.insert(branch);
        }
    }

    void BeforeStep() {
        for (int user = 0; user < USERS; ++user) {
            _views[user] = _model.View(user);
        }
        _locks = _model.Locks();
    }

    void AfterStep() {
        for (int user = 0; user < USERS; ++user) {
            CheckAudience(user);
            _followers[user]->Refresh();
            CheckShown(user);
            CompareRoots(_users[user], user);
        }
    }

    // Who sees no difference is told nothing, except that somebody got or gave back a lock.
    void CheckAudience(int user) {
        const RevisionFollower& follower = *_followers[user];
        if (_refused) {
            EXPECT_THAT(follower.told, testing::IsEmpty()) << "user " << user;
        } else if (user != _user && !follower.afterBulkEdit && _model.View(user) == _views[user]) {
            const bool lockOnly =
                _model.Locks() != _locks && follower.codes == std::set<int>{SIGNAL_STATE_CHANGED};
            EXPECT_TRUE(lockOnly || follower.codes.empty())
                << "user " << user << " is told " << testing::PrintToString(follower.told);
        }
    }

    void CheckShown(int user) {
        std::map<kxString, RevisionFollower::Shown> expected;
        for (int folder = 0; folder < FOLDERS; ++folder) {
            expected[_folders[folder]]["folder"] = Uids(_model.InFolder(user, folder));
        }
        for (int entity = 0; entity < _model.Count(); ++entity) {
            const RevisionModel::Revision* newest = _model.Newest(user, entity);
            if (newest != nullptr) {
                expected[_uids[entity]]["attributes"] = {
                    std::to_string(newest->load),
                    newest->comment,
                    _model.Edits(user, entity) ? "editable" : "published"};
            }
            for (const Group group : {Group::KITS, Group::MATES, Group::USES}) {
                if (newest != nullptr) {
                    expected[_uids[entity]][RevisionModel::GROUPS[group]] =
                        Uids(_model.Children(user, *newest, group));
                }
            }
        }
        EXPECT_EQ(_followers[user]->shown, expected) << "what user " << user << " shows";
    }

    std::vector<kxString> Uids(const std::vector<int>& entities) {
        std::vector<kxString> uids;
        for (const int entity : entities) {
            uids.push_back(_uids[entity]);
        }
        return uids;
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
        EXPECT_EQ(newest.IsRootEntity(), _model.Parents(user, entity, true).empty());
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
    std::vector<boost::shared_ptr<RevisionFollower>> _followers;
    std::mt19937 _random;
    RevisionModel _model;
    std::vector<kxString> _folders;
    std::vector<kxString> _uids;  // by the entity's number in the model
    std::map<kxString, int> _indices;
    std::map<kxString, UDMItemHandle> _handles[USERS];
    std::string _log;
    std::string _views[USERS];  // before the step
    std::string _locks;
    bool _refused = false;
    std::set<int> _touched;  // by the step
    int _user = 0;
    int _entity = 0;
};

}  // namespace kxudm::test
