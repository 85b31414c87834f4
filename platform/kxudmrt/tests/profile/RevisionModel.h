// The life of revisions as simple as it can be told: each revision is a copy of everything, each
// rule a loop over all entities. What the runtime does is compared with it.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace kxudm::test {

class RevisionModel {
  public:
    enum Group { KITS, MATES, USES };
    static constexpr const char* GROUPS[] = {"kits", "mates", "uses"};
    static constexpr std::size_t MOST_MATES = 3;
    static constexpr int NOWHERE = -1;
    static constexpr int NEWEST = -1;

    struct Link {
        Group group;
        int child;
        bool operator==(const Link&) const = default;
        // Whether it makes the parent an owner.
        [[nodiscard]] bool Owns() const { return group != USES; }
    };
    struct Relation {
        std::string type;
        int second;
        int exact = NEWEST;  // revision of `second`; the relation is then of this revision alone
        bool operator==(const Relation&) const = default;
    };
    struct Revision {
        int load = 0;
        std::string comment = {};
        int folder = NOWHERE;
        std::vector<Link> links = {};
        std::set<int> classes = {};
        std::vector<Relation> relations = {};

        [[nodiscard]] bool Has(const Link& link) const;
    };
    struct Entity {
        std::map<int, Revision> published = {};
        std::optional<Revision> working = {};
        int number = 0;  // of the working revision
        int holder = -1;
        bool deleted = false;
        int deletion = 0;  // which one, if deleted: what went together comes back together
        int origin = -1;
        int originRevision = -1;
    };

    [[nodiscard]] int Count() const { return static_cast<int>(_entities.size()); }
    [[nodiscard]] const Entity& At(int entity) const { return _entities[entity]; }

    // --- What a user sees ---

    // Numbers of the revisions, ascending; empty for what is not there.
    [[nodiscard]] std::vector<int> Numbers(int user, int entity) const;
    [[nodiscard]] const Revision* Find(int user, int entity, int number) const;
    // Null where nothing is seen.
    [[nodiscard]] const Revision* Newest(int user, int entity) const;
    [[nodiscard]] bool Edits(int user, int entity) const;
    [[nodiscard]] std::vector<int> Children(int user, const Revision& parent, Group group) const;
    [[nodiscard]] std::set<int> Parents(int user, int child, bool owners) const;
    [[nodiscard]] std::vector<int> InFolder(int user, int folder) const;
    [[nodiscard]] std::vector<int> UnderClass(int user, int classification) const;
    // First ends of relations to a revision of the second.
    [[nodiscard]] std::set<int> RelatedTo(
        int user, int second, int number, const std::string& type, bool anyRevision) const;
    [[nodiscard]] std::vector<int> Branches(int user, int entity) const;
    [[nodiscard]] std::set<int> Roots(int user) const;
    // All of it as text: equal if the user sees no difference.
    [[nodiscard]] std::string View(int user) const;
    // Who holds what, as text.
    [[nodiscard]] std::string Locks() const;

    // --- Steps: false where the rules forbid it, and then nothing has changed ---

    int Create(int user);
    bool SetLoad(int user, int entity, int load);
    bool AddLink(int user, int parent, const Link& link);
    // Out of all groups.
    bool RemoveLinks(int user, int parent, int child);
    bool RemoveReferences(int user, int parent, int child);
    bool Move(int user, int entity, int folder);
    bool Classify(int user, int entity, int classification);
    bool Declassify(int user, int entity, int classification);
    bool Relate(int user, int first, const Relation& relation);
    bool Unrelate(int user, int first, int second);
    // Of the newest revision, or a branch of an older one, whose number is in `branch` then.
    bool CheckOut(int user, int entity, int number, const std::string& comment, int& branch);
    bool Save(int user, int entity, const std::string& comment);
    bool Publish(int user, int entity, const std::string& comment, bool keep);
    bool Undo(int user, int entity);
    bool Delete(int user, int entity, bool force);
    bool Undelete(int entity);

  private:
    // Links of anybody's newest and working revision.
    [[nodiscard]] std::vector<Link> OpenLinks(int entity) const;
    // A published link that the working revision has given up.
    [[nodiscard]] bool GivesUp(int entity, const Link& link) const;
    [[nodiscard]] bool OwnedAlready(int user, int child, bool alsoSharing) const;
    [[nodiscard]] bool IsAbove(int entity, int other) const;
    [[nodiscard]] bool WouldBeOwnedTwice(int user, int entity) const;
    [[nodiscard]] bool WasOwnedAnew(int entity) const;
    // By two, and one of them alone may.
    [[nodiscard]] bool IsOwnedTwice(int entity) const;
    void CollectOwned(int entity, std::set<int>& out) const;
    int Branch(int user, int entity, int number, const std::string& comment);
    // What stays on a revision that gets a new number, or goes.
    void MoveExact(int entity, int from, int to);
    void DropExact(int entity, int number);

    std::vector<Entity> _entities;
    int _deletions = 0;
};

}  // namespace kxudm::test
