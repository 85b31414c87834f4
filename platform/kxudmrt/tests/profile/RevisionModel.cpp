#include "RevisionModel.h"

#include <algorithm>

namespace kxudm::test {

bool RevisionModel::Revision::Has(const Link& link) const {
    return std::find(links.begin(), links.end(), link) != links.end();
}

std::vector<int> RevisionModel::Numbers(int user, int entity) const {
    const Entity& e = At(entity);
    std::vector<int> numbers;
    if (!e.deleted) {
        for (const auto& [number, revision] : e.published) {
            numbers.push_back(number);
        }
        if (e.holder == user) {
            numbers.push_back(e.number);
        }
    }
    return numbers;
}

const RevisionModel::Revision* RevisionModel::Find(int user, int entity, int number) const {
    const Entity& e = At(entity);
    if (e.deleted) {
        return nullptr;
    }
    if (e.holder == user && e.number == number) {
        return &*e.working;
    }
    const auto found = e.published.find(number);
    return found == e.published.end() ? nullptr : &found->second;
}

const RevisionModel::Revision* RevisionModel::Newest(int user, int entity) const {
    const std::vector<int> numbers = Numbers(user, entity);
    return numbers.empty() ? nullptr : Find(user, entity, numbers.back());
}

bool RevisionModel::Edits(int user, int entity) const {
    return !At(entity).deleted && At(entity).holder == user;
}

std::vector<int> RevisionModel::Children(int user, const Revision& parent, Group group) const {
    std::vector<int> children;
    for (const Link& link : parent.links) {
        if (link.group == group && Newest(user, link.child) != nullptr) {
            children.push_back(link.child);
        }
    }
    return children;
}

std::set<int> RevisionModel::Parents(int user, int child, bool owners) const {
    std::set<int> parents;
    for (int parent = 0; parent < Count(); ++parent) {
        const Revision* revision = Newest(user, parent);
        for (const Link& link : revision != nullptr ? revision->links : std::vector<Link>()) {
            if (link.child == child && link.Owns() == owners) {
                parents.insert(parent);
            }
        }
    }
    return parents;
}

std::vector<int> RevisionModel::InFolder(int user, int folder) const {
    std::vector<int> contents;
    for (int entity = 0; entity < Count(); ++entity) {
        const Revision* revision = Newest(user, entity);
        if (revision != nullptr && revision->folder == folder) {
            contents.push_back(entity);
        }
    }
    return contents;
}

std::vector<int> RevisionModel::Branches(int user, int entity) const {
    std::vector<int> branches;
    for (int other = 0; other < Count(); ++other) {
        if (At(other).origin == entity && Newest(user, other) != nullptr) {
            branches.push_back(other);
        }
    }
    return branches;
}

std::set<int> RevisionModel::Roots(int user) const {
    std::set<int> roots;
    for (int entity = 0; entity < Count(); ++entity) {
        if (Newest(user, entity) != nullptr && Parents(user, entity, true).empty()) {
            roots.insert(entity);
        }
    }
    return roots;
}

std::string RevisionModel::View(int user) const {
    std::string text;
    for (int entity = 0; entity < Count(); ++entity) {
        for (const int number : Numbers(user, entity)) {
            const Revision& revision = *Find(user, entity, number);
            text += std::to_string(entity) + ":" + std::to_string(number) + " " +
                    std::to_string(revision.load) + " " + revision.comment + " in " +
                    std::to_string(revision.folder);
            for (int group = KITS; group <= USES; ++group) {
                text += " |";
                for (const int child : Children(user, revision, static_cast<Group>(group))) {
                    text += " " + std::to_string(child);
                }
            }
            text += "\n";
        }
    }
    return text;
}

std::string RevisionModel::Locks() const {
    std::string text;
    for (const Entity& entity : _entities) {
        text += entity.deleted ? " -" : " " + std::to_string(entity.holder);
    }
    return text;
}

std::vector<RevisionModel::Link> RevisionModel::OpenLinks(int entity) const {
    const Entity& e = At(entity);
    std::vector<Link> links;
    if (!e.published.empty()) {
        links = e.published.rbegin()->second.links;
    }
    if (e.working) {
        for (const Link& link : e.working->links) {
            if (std::find(links.begin(), links.end(), link) == links.end()) {
                links.push_back(link);
            }
        }
    }
    return links;
}

bool RevisionModel::GivesUp(int entity, const Link& link) const {
    const Entity& e = At(entity);
    return e.working && !e.published.empty() && e.published.rbegin()->second.Has(link) &&
           !e.working->Has(link);
}

bool RevisionModel::OwnedAlready(int user, int child, bool alsoSharing) const {
    for (int owner = 0; owner < Count(); ++owner) {
        if (At(owner).deleted) {
            continue;
        }
        for (const Link& link : OpenLinks(owner)) {
            const bool counts = link.child == child && link.Owns() &&
                                (alsoSharing || link.group == KITS) &&
                                !(GivesUp(owner, link) && At(owner).holder == user);
            if (counts) {
                return true;
            }
        }
    }
    return false;
}

bool RevisionModel::IsAbove(int entity, int other) const {
    std::set<int> above{other};
    for (std::size_t known = 0; known != above.size();) {
        known = above.size();
        for (int parent = 0; parent < Count(); ++parent) {
            for (const Link& link : OpenLinks(parent)) {
                if (link.Owns() && above.count(link.child) != 0) {
                    above.insert(parent);
                }
            }
        }
    }
    return above.count(entity) != 0;
}

int RevisionModel::Create(int user) {
    Entity& e = _entities.emplace_back();
    e.working = Revision();
    e.holder = user;
    return Count() - 1;
}

bool RevisionModel::SetLoad(int user, int entity, int load) {
    if (!Edits(user, entity)) {
        return false;
    }
    _entities[entity].working->load = load;
    return true;
}

bool RevisionModel::AddLink(int user, int parent, const Link& link) {
    if (!Edits(user, parent) || Newest(user, link.child) == nullptr) {
        return false;
    }
    Revision& revision = *_entities[parent].working;
    const auto mates =
        std::count_if(revision.links.begin(), revision.links.end(), [&](const Link& other) {
            return other.group == MATES && !At(other.child).deleted;
        });
    const bool full = link.group == MATES && mates >= static_cast<std::ptrdiff_t>(MOST_MATES);
    const bool forbidden = link.Owns() && (OwnedAlready(user, link.child, link.group == KITS) ||
                                           IsAbove(link.child, parent));
    if (full || forbidden || revision.Has(link)) {
        return false;
    }
    revision.links.push_back(link);
    return true;
}

bool RevisionModel::RemoveLinks(int user, int parent, int child) {
    if (!Edits(user, parent) || Newest(user, child) == nullptr) {
        return false;
    }
    return std::erase_if(_entities[parent].working->links,
                         [&](const Link& link) { return link.child == child; }) > 0;
}

bool RevisionModel::Move(int user, int entity, int folder) {
    if (!Edits(user, entity)) {
        return false;
    }
    _entities[entity].working->folder = folder;
    return true;
}

bool RevisionModel::CheckOut(
    int user, int entity, int number, const std::string& comment, int& branch) {
    branch = -1;
    if (Find(user, entity, number) == nullptr) {
        return false;
    }
    Entity& e = _entities[entity];
    if (!e.published.empty() && number < e.published.rbegin()->first) {
        branch = Branch(user, entity, number, comment);
        return true;
    }
    if (e.working) {
        return false;
    }
    e.working = e.published.rbegin()->second;
    e.working->comment = comment;
    std::erase_if(e.working->relations, [](const Relation& each) { return each.exact != NEWEST; });
    e.number = e.published.rbegin()->first + 1;
    e.holder = user;
    return true;
}

int RevisionModel::Branch(int user, int entity, int number, const std::string& comment) {
    Revision revision = At(entity).published.at(number);
    revision.comment = comment;
    revision.relations.clear();
    std::erase_if(revision.links, [&](const Link& link) {
        bool owned = link.group == KITS;
        for (int owner = 0; owner < Count() && link.group == MATES; ++owner) {
            for (const Link& other : OpenLinks(owner)) {
                owned = owned || (!At(owner).deleted && other == Link{KITS, link.child});
            }
        }
        return owned || At(link.child).deleted;
    });
    Entity& e = _entities.emplace_back();
    e.working = std::move(revision);
    e.holder = user;
    e.origin = entity;
    e.originRevision = number;
    return Count() - 1;
}

bool RevisionModel::Save(int user, int entity, const std::string& comment) {
    if (!Edits(user, entity)) {
        return false;
    }
    if (!comment.empty()) {
        _entities[entity].working->comment = comment;
    }
    return true;
}

bool RevisionModel::WouldBeOwnedTwice(int user, int entity) const {
    for (int other = 0; other < Count(); ++other) {
        if (other == entity || At(other).holder != user || At(other).deleted) {
            continue;
        }
        for (const Link& old : OpenLinks(other)) {
            for (const Link& mine : At(entity).working->links) {
                if (GivesUp(other, old) && old.Owns() && mine.Owns() && old.child == mine.child &&
                    (old.group == KITS || mine.group == KITS) && !At(mine.child).deleted) {
                    return true;
                }
            }
        }
    }
    return false;
}

bool RevisionModel::Publish(int user, int entity, const std::string& comment, bool keep) {
    if (!Edits(user, entity) || WouldBeOwnedTwice(user, entity)) {
        return false;
    }
    Entity& e = _entities[entity];
    const int number = e.published.empty() ? 1 : e.number;
    MoveExact(entity, e.number, number);
    if (!comment.empty()) {
        e.working->comment = comment;
    }
    e.published[number] = *e.working;
    e.working.reset();
    e.holder = -1;
    if (keep) {
        int branch = -1;
        CheckOut(user, entity, number, "", branch);
    }
    return true;
}

bool RevisionModel::WasOwnedAnew(int entity) const {
    for (const Link& old : OpenLinks(entity)) {
        if (!GivesUp(entity, old) || !old.Owns() || At(old.child).deleted) {
            continue;
        }
        for (int other = 0; other < Count(); ++other) {
            for (const Link& link : OpenLinks(other)) {
                if (other != entity && !At(other).deleted && link.Owns() &&
                    link.child == old.child && (link.group == KITS || old.group == KITS)) {
                    return true;
                }
            }
        }
    }
    return false;
}

bool RevisionModel::Undo(int user, int entity) {
    Entity& e = _entities[entity];
    if (!Edits(user, entity) || e.published.empty() || WasOwnedAnew(entity)) {
        return false;
    }
    DropExact(entity, e.number);
    e.working.reset();
    e.holder = -1;
    return true;
}

void RevisionModel::CollectOwned(int entity, std::set<int>& out) const {
    if (!out.insert(entity).second) {
        return;
    }
    for (const Link& link : OpenLinks(entity)) {
        if (link.group == KITS && !GivesUp(entity, link)) {
            CollectOwned(link.child, out);
        }
    }
}

bool RevisionModel::Delete(int user, int entity, bool force) {
    if (Newest(user, entity) == nullptr) {
        return false;
    }
    std::set<int> owned;
    CollectOwned(entity, owned);
    for (const int each : owned) {
        if (!At(each).deleted && At(each).working && At(each).holder != user && !force) {
            return false;
        }
    }
    ++_deletions;
    for (const int each : owned) {
        if (!At(each).deleted) {
            _entities[each].deleted = true;
            _entities[each].deletion = _deletions;
        }
    }
    return true;
}

bool RevisionModel::IsOwnedTwice(int entity) const {
    std::set<int> owners;
    bool alone = false;
    for (int owner = 0; owner < Count(); ++owner) {
        for (const Link& link : OpenLinks(owner)) {
            if (!At(owner).deleted && link.child == entity && link.Owns() &&
                !GivesUp(owner, link)) {
                owners.insert(owner);
                alone = alone || link.group == KITS;
            }
        }
    }
    return alone && owners.size() > 1 && !At(entity).deleted;
}

bool RevisionModel::Undelete(int entity) {
    if (!At(entity).deleted) {
        return false;
    }
    const std::vector<Entity> before = _entities;
    const int deletion = At(entity).deletion;
    for (Entity& each : _entities) {
        each.deleted = each.deleted && each.deletion != deletion;
    }
    for (int each = 0; each < Count(); ++each) {
        if (IsOwnedTwice(each)) {
            _entities = before;
            return false;
        }
    }
    return true;
}

}  // namespace kxudm::test
