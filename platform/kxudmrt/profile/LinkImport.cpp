#include "profile/LinkImport.h"

#include <algorithm>

#include "profile/Groups.h"
#include "store/LibraryCheck.h"
#include "store/RowReader.h"

namespace kxudm::profile {

namespace {

using exchange::Arrival;
using exchange::ArrivalMode;
using exchange::ImportedLink;
using exchange::LinkRecord;
using store::LinkKind;

std::string TextOf(const std::string& name, const std::string& other) {
    return (name.empty() ? std::string() : "\"" + catalogue::Printable(name) + "\" ") + "to " +
           other;
}

std::string NoRevision(int number) {
    return "there is no revision " + std::to_string(number) + " of it";
}

}  // namespace

void LinkImport::Arrive(store::EntityId awaited, const std::string& uid, store::EntityId id) {
    if (awaited == 0) {
        return;
    }
    exchange::LetLinksArrive(_store, awaited, id, [&](const exchange::AwaitingLink& link) {
        const ImportedLink made{
            link.first, id, link.kind, link.name, link.from, link.to, link.exact, link.composition};
        if (exchange::IsLinkThere(_store, made)) {
            return false;
        }
        const std::string why =
            exchange::MayStayOn(_store, id, link.exact) ? Obstacle(made) : NoRevision(link.exact);
        if (!why.empty()) {
            _notes.LeftOut(link.firstUid, TextOf(link.name, uid) + ": " + why);
            return false;
        }
        if (link.to == exchange::kOpen && !link.isFirstDeleted) {
            _notes.GotLink(link.first, link.kind);
        }
        return true;
    });
}

void LinkImport::Begin(const std::string& first) {
    _first = first;
    _positions.clear();
    _arrival = {};
    if (!exchange::FindArrival(_store, first, _arrival)) {
        throw UDMException("The archive has links of " + first +
                           ", which is not in it; expected links of its entities only");
    }
    _definition = nullptr;
}

const catalogue::ContentDefinition& LinkImport::Definition() {
    if (_definition == nullptr) {
        exchange::KnownEntity known;
        static_cast<void>(exchange::FindKnown(_store, _first, known));
        _definition = &_catalogue.Get(known.definition);
    }
    return *_definition;
}

void LinkImport::Take(const std::string& first, const LinkRecord& link) {
    if (first != _first) {
        Begin(first);
    }
    ImportedLink made;
    if (_arrival.mode == ArrivalMode::Left || !ToLocal(link, made)) {
        return;
    }
    RequireFitting(link);
    if (!FindOther(link, made)) {
        return;
    }
    // What begins with the first revision that came is new, unless nothing tells what was before.
    const bool mayGoOn = _arrival.mode == ArrivalMode::Appended && made.to > _arrival.first &&
                         (made.from < _arrival.first || _arrival.known == store::NO_REVISION);
    if (mayGoOn && made.exact == store::NO_REVISION &&
        exchange::LetLinkGoOn(_store, made, _arrival.first)) {
        if (made.kind == LinkKind::Owner) {
            _owned.push_back(made.second);
        }
        return;
    }
    if (!exchange::IsLinkThere(_store, made)) {
        Insert(link, made);
    }
}

void LinkImport::RequireFitting(const LinkRecord& link) {
    if (link.kind != LinkKind::Owner && link.kind != LinkKind::Reference) {
        return;
    }
    const catalogue::ContentDefinition& definition = Definition();
    const catalogue::GroupDefinition* const group = definition.FindGroup(link.name);
    const bool fits = group != nullptr && KindOfCategory(group->category) == link.kind &&
                      group->composition == link.composition;
    if (!fits) {
        throw UDMException("The archive's link " + TextOf(link.name, link.other) + " of " + _first +
                           " doesn't fit the content definition \"" + definition.Name() +
                           "\"; expected a group of it, of that category and composition");
    }
}

bool LinkImport::ToLocal(const LinkRecord& link, ImportedLink& made) const {
    made.first = _arrival.id;
    made.kind = link.kind;
    made.name = link.name;
    made.composition = link.composition;
    if (_arrival.diverged > 0 && link.to <= _arrival.diverged) {
        return false;
    }
    made.from = _arrival.Local(std::max(link.from, _arrival.diverged));
    made.to = _arrival.Local(link.to);
    if (made.from > _arrival.newest || (made.to != exchange::kOpen && made.to > _arrival.newest)) {
        throw UDMException("The archive's link " + TextOf(link.name, link.other) + " of " + _first +
                           " begins or ends at a revision that is not in it; expected one that is");
    }
    if (_arrival.mode == ArrivalMode::Equal && _arrival.newest < _arrival.known &&
        made.to == exchange::kOpen) {
        made.to = _arrival.newest + 1;
    }
    return true;
}

// Many contents lie in one folder: the last other end is mostly the next one, too.
LinkImport::Other& LinkImport::FindOther(const std::string& uid) {
    if (_other.uid != uid) {
        _other = {uid};
        exchange::KnownEntity known;
        if (exchange::FindArrival(_store, uid, _other.arrival)) {
            _other.hasArrived = true;
        } else if (exchange::FindKnown(_store, uid, known)) {
            _other.known = known.deleted ? 0 : known.id;
            _other.isDeleted = known.deleted;
        }
    }
    return _other;
}

bool LinkImport::FindOther(const LinkRecord& link, ImportedLink& made) {
    Other& other = FindOther(link.other);
    const Arrival& arrival = other.arrival;
    const bool inBranch = arrival.diverged > 0 && link.exact >= arrival.diverged;
    made.second = !other.hasArrived ? other.known : inBranch ? arrival.id : arrival.origin;
    made.exact = inBranch ? arrival.Local(link.exact) : link.exact;
    if (made.second != 0) {
        const bool may = exchange::MayStayOn(_store, made.second, made.exact);
        if (!may) {
            _notes.LeftOut(_first, TextOf(link.name, link.other) + ": " + NoRevision(link.exact));
        }
        return may;
    }
    // Places come along with what lies in them.
    if (other.hasArrived || other.isDeleted || !store::BorneByParent(link.kind)) {
        return false;
    }
    if (other.awaited == 0) {
        other.awaited = exchange::Await(_store, link.other);
    }
    made.second = other.awaited;
    return true;
}

std::string LinkImport::Obstacle(const ImportedLink& made) {
    return ClosesCircle(made) ? "it would close a circle with what is here" : Rival(made);
}

bool LinkImport::ClosesCircle(const ImportedLink& made) {
    const bool byParent = store::BorneByParent(made.kind);
    return made.to == exchange::kOpen && MayNotCycle(made.kind) &&
           _store.WouldCycle(
               byParent ? made.first : made.second, byParent ? made.second : made.first, made.kind);
}

std::string LinkImport::Rival(const ImportedLink& made) {
    if (made.to != exchange::kOpen) {
        return {};
    }
    if (made.kind == LinkKind::Folder && exchange::HasOtherPlace(_store, made)) {
        return "the content lies in another folder here";
    }
    if (made.kind == LinkKind::Owner) {
        if (const std::string owner = exchange::OtherOwner(_store, made); !owner.empty()) {
            return "the child is owned by " + owner + " here";
        }
    }
    return {};
}

void LinkImport::Insert(const LinkRecord& link, const ImportedLink& made) {
    if (ClosesCircle(made)) {
        _putOff.push_back({_first, link, made, _arrival.mode, NextPosition(made)});
        return;
    }
    if (const std::string why = Rival(made); !why.empty()) {
        _notes.LeftOut(_first, TextOf(link.name, link.other) + ": " + why);
        return;
    }
    // An exact relation ends behind the one revision that it was made for.
    const bool ends = made.exact != store::NO_REVISION && made.to == exchange::kOpen &&
                      Definition().IsVersioned();
    exchange::ImportLink(_store,
                         made,
                         NextPosition(made),
                         ends ? std::max(_arrival.newest, _arrival.known) + 1 : store::NO_REVISION);
    if (made.second != _other.awaited) {
        Note(made, _arrival.mode);
    }
}

std::int64_t LinkImport::NextPosition(const ImportedLink& made) {
    const auto [position, isNew] =
        _positions.emplace(std::pair(made.kind, std::string(made.name)), 0);
    if (isNew && _arrival.mode != ArrivalMode::New) {
        position->second = exchange::LastPosition(_store, made.first, made.kind, made.name);
    }
    return ++position->second;
}

void LinkImport::Note(const ImportedLink& made, ArrivalMode mode) {
    if (made.kind == LinkKind::Owner) {
        _owned.push_back(made.second);
    }
    if (made.to != exchange::kOpen) {
        return;
    }
    if (IsContainerKind(made.kind)) {
        _notes.Entered(made.second);
    } else if (mode == ArrivalMode::Equal) {
        _notes.GotLink(made.first, made.kind);
    }
}

void LinkImport::InsertPutOff() {
    for (PutOff& each : _putOff) {
        each.made.name = each.link.name;
        if (exchange::IsLinkThere(_store, each.made)) {
            continue;
        }
        if (const std::string why = Obstacle(each.made); !why.empty()) {
            _notes.LeftOut(each.first, TextOf(each.link.name, each.link.other) + ": " + why);
            continue;
        }
        exchange::ImportLink(_store, each.made, each.position, store::NO_REVISION);
        Note(each.made, each.mode);
    }
}

void LinkImport::Finish() {
    for (const ImportNotes::Appended& appended : _notes.AllAppended()) {
        exchange::FinishAppended(_store, appended.id, appended.newest);
    }
    InsertPutOff();
    if (_notes.AllAppended().empty()) {
        return;
    }
    // What was marked to end has gone on only by and by.
    for (const store::EntityId child : _owned) {
        if (const std::string uid = store::OwnedTwiceNear(_store, child); !uid.empty()) {
            throw UDMException("The archive can't be imported: " + uid +
                               " would have two owners; remove it from its owner here first");
        }
    }
}

}  // namespace kxudm::profile
