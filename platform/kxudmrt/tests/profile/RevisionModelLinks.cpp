// RevisionModel: places, references and relations.
#include <algorithm>

#include "RevisionModel.h"

namespace kxudm::test {

std::vector<int> RevisionModel::UnderClass(int user, int classification) const {
    std::vector<int> contents;
    for (int entity = 0; entity < Count(); ++entity) {
        const Revision* revision = Newest(user, entity);
        if (revision != nullptr && revision->classes.count(classification) != 0) {
            contents.push_back(entity);
        }
    }
    return contents;
}

std::set<int> RevisionModel::RelatedTo(
    int user, int second, int number, const std::string& type, bool anyRevision) const {
    std::set<int> related;
    for (int first = 0; first < Count(); ++first) {
        std::vector<int> numbers = Numbers(user, first);
        if (!anyRevision && numbers.size() > 1) {
            numbers = {numbers.back()};
        }
        for (const int each : numbers) {
            for (const Relation& relation : Find(user, first, each)->relations) {
                const bool reaches = relation.exact == NEWEST || relation.exact == number;
                if (relation.type == type && relation.second == second && reaches) {
                    related.insert(first);
                }
            }
        }
    }
    return related;
}

bool RevisionModel::RemoveReferences(int user, int parent, int child) {
    if (!Edits(user, parent) || Newest(user, child) == nullptr) {
        return false;
    }
    return std::erase(_entities[parent].working->links, Link{USES, child}) > 0;
}

bool RevisionModel::Classify(int user, int entity, int classification) {
    return Edits(user, entity) && _entities[entity].working->classes.insert(classification).second;
}

bool RevisionModel::Declassify(int user, int entity, int classification) {
    return Edits(user, entity) && _entities[entity].working->classes.erase(classification) > 0;
}

bool RevisionModel::Relate(int user, int first, const Relation& relation) {
    if (!Edits(user, first)) {
        return false;
    }
    std::vector<Relation>& relations = _entities[first].working->relations;
    if (std::find(relations.begin(), relations.end(), relation) != relations.end()) {
        return false;
    }
    relations.push_back(relation);
    return true;
}

bool RevisionModel::Unrelate(int user, int first, int second) {
    return Edits(user, first) &&
           std::erase_if(_entities[first].working->relations,
                         [&](const Relation& each) { return each.second == second; }) > 0;
}

void RevisionModel::MoveExact(int entity, int from, int to) {
    for (Entity& first : _entities) {
        const auto move = [&](Revision& revision) {
            for (Relation& relation : revision.relations) {
                if (relation.second == entity && relation.exact == from) {
                    relation.exact = to;
                }
            }
        };
        for (auto& [number, revision] : first.published) {
            move(revision);
        }
        if (first.working) {
            move(*first.working);
        }
    }
}

void RevisionModel::DropExact(int entity, int number) {
    for (Entity& first : _entities) {
        const auto drop = [&](Revision& revision) {
            std::erase_if(revision.relations, [&](const Relation& relation) {
                return relation.second == entity && relation.exact == number;
            });
        };
        for (auto& [each, revision] : first.published) {
            drop(revision);
        }
        if (first.working) {
            drop(*first.working);
        }
    }
}

}  // namespace kxudm::test
