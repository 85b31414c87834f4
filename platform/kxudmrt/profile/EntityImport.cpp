#include "profile/EntityImport.h"

#include <algorithm>
#include <array>
#include <utility>

#include "catalogue/Conversion.h"
#include "core/UidGenerator.h"
#include "exchange/DocumentWriter.h"
#include "profile/Creation.h"
#include "profile/DefinitionChange.h"
#include "profile/Words.h"
#include "vault/Sha256.h"

namespace kxudm::profile {

namespace {

using catalogue::ContentDefinition;
using exchange::ArrivalMode;
using exchange::EntityRecord;
using exchange::FileRecord;
using exchange::KnownEntity;
using exchange::RevisionRecord;

// A line that differs from its branch, which is made of it, is one that somebody has made up.
constexpr int kMostBranches = 16;

bool IsSame(const store::AttributeList& a, const store::AttributeList& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const auto& x, const auto& y) {
        return x.first == y.first && x.second.GetKind() == y.second.GetKind() &&
               x.second == y.second;
    });
}

// Every change of a revision leaves its stamp, those of links and files, too; these need not be
// looked at, and may be missing on one side.
bool IsSame(const RevisionRecord& a, const RevisionRecord& b) {
    return a.displayName == b.displayName && a.created == b.created && a.creator == b.creator &&
           a.modified == b.modified && a.modifier == b.modifier && a.published == b.published &&
           a.publisher == b.publisher && a.comment == b.comment &&
           IsSame(a.attributes, b.attributes);
}

const RevisionRecord* Find(const EntityRecord& entity, int number) {
    const auto found = std::find_if(entity.revisions.begin(),
                                    entity.revisions.end(),
                                    [&](const auto& each) { return each.number == number; });
    return found == entity.revisions.end() ? nullptr : &*found;
}

[[noreturn]] void Misfit(const EntityRecord& entity, const std::string& why) {
    throw UDMException("The archive's entity " + entity.uid + " (\"" +
                       catalogue::Printable(entity.name) + "\") " + why);
}

void RequireFittingValue(const EntityRecord& entity,
                         const ContentDefinition& definition,
                         const kxString& name,
                         const kxVariant& value) {
    if (IsComputed(name)) {
        Misfit(entity, "has a value of \"" + name + "\", which the library computes; leave it out");
    }
    const catalogue::AttributeDefinition* const attribute = definition.FindAttribute(name);
    if (attribute == nullptr || value.IsEmpty()) {
        return;
    }
    using Outcome = catalogue::Conversion::Outcome;
    if (catalogue::Convert(value, attribute->dataType).outcome != Outcome::Unchanged) {
        Misfit(entity,
               "has the value \"" + catalogue::Printable(value.GetString()) + "\" of \"" + name +
                   "\", which is no " + attribute->dataType +
                   "; expected one as the library "
                   "stores it");
    }
}

}  // namespace

void RequireFitting(const catalogue::Catalogue& catalogue, const EntityRecord& entity) {
    const ContentDefinition* const definition = catalogue.Find(entity.definition);
    if (definition == nullptr || definition->IsAbstract()) {
        Misfit(entity,
               "is of the content definition \"" + catalogue::Printable(entity.definition) +
                   "\", which is " + (definition == nullptr ? "not in the archive" : "abstract") +
                   "; expected one that contents can be of");
    }
    if (definition->IsVersioned() != entity.versioned) {
        Misfit(entity,
               std::string("is ") + (entity.versioned ? "" : "not ") +
                   "versioned, other than its definition; expected what that says");
    }
    if (CheckedName(*definition, kxString(entity.name)) != entity.name) {
        Misfit(entity, "has a name that its definition would change; expected one that it takes");
    }
    for (const RevisionRecord& revision : entity.revisions) {
        for (const auto& [name, value] : revision.attributes) {
            RequireFittingValue(entity, *definition, name, value);
        }
    }
}

std::string BranchUid(const std::string& origin, const RevisionRecord& first) {
    EntityRecord line;
    line.uid = origin;
    line.revisions = {first};
    line.revisions.front().savePoints.clear();
    vault::Sha256 hash;
    exchange::DocumentWriter writer(
        [&](std::string_view bytes) { hash.Update(bytes.data(), bytes.size()); });
    writer.Entity(line);
    writer.End();
    const std::string digest = hash.Finish();
    // 48 bits of time are the first ten characters of the origin's; 80 of the hash make the others.
    std::string uid = origin.substr(0, 10);
    unsigned bits = 0;
    unsigned count = 0;
    for (std::size_t i = 0; uid.size() < origin.size(); ++i) {
        const auto digit = static_cast<unsigned>(std::stoi(digest.substr(i, 1), nullptr, 16));
        bits = bits << 4U | digit;
        for (count += 4; count >= 5; count -= 5) {
            uid += core::UID_DIGITS[bits >> (count - 5) & 31U];
        }
    }
    return uid;
}

store::AttributeList EntityImport::Shown(const EntityRecord& entity) const {
    store::AttributeList shown = entity.revisions.back().attributes;
    ShowThrough(_catalogue.Get(entity.definition), shown);
    return shown;
}

void EntityImport::Take(EntityRecord&& entity) {
    Result result;
    const bool isFolder = _catalogue.Get(entity.definition).Type() == FOLDER_TYPE;
    if (const auto same = isFolder ? _folders.Find(entity.uid) : std::nullopt) {
        result.arrival.origin = result.arrival.id = same->id;
        result.told.outcome = UDMImportOutcome::SamePlace;
        result.told.target = kxString(same->uid);
        _links.Arrive(exchange::MakeRoom(_store, entity.uid), entity.uid, same->id);
    } else {
        result = Place(entity, 0);
    }
    exchange::NoteArrival(_store, entity.uid, result.arrival);
    result.told.uid = kxString(entity.uid);
    result.told.name = kxString(entity.name);
    _notes.Entity(std::move(result.told));
}

EntityImport::Result EntityImport::Place(const EntityRecord& entity, int depth) {
    if (depth > kMostBranches) {
        Misfit(entity, "differs from every branch that was made of it; export it again");
    }
    KnownEntity known;
    return exchange::FindKnown(_store, entity.uid, known) ? Meet(entity, known, depth)
                                                          : Insert(entity);
}

EntityImport::Result EntityImport::Insert(const EntityRecord& entity) {
    Result result;
    exchange::Arrival& arrival = result.arrival;
    const store::EntityId awaited = exchange::MakeRoom(_store, entity.uid);
    arrival.origin = arrival.id = exchange::ImportEntity(_store, entity, Shown(entity));
    arrival.mode = ArrivalMode::New;
    arrival.first = entity.revisions.front().number;
    arrival.newest = entity.revisions.back().number;
    result.told.outcome = UDMImportOutcome::New;
    result.told.revisions = entity.revisions.size();
    _links.Arrive(awaited, entity.uid, arrival.id);
    return result;
}

EntityImport::Result EntityImport::Refuse(const KnownEntity& known, const std::string& why) {
    Result result;
    result.arrival.origin = result.arrival.id = known.deleted ? 0 : known.id;
    result.told.outcome = UDMImportOutcome::Refused;
    result.told.text = kxString(why);
    return result;
}

EntityImport::Result EntityImport::Meet(const EntityRecord& entity,
                                        const KnownEntity& known,
                                        int depth) {
    if (known.deleted) {
        return Refuse(known, "it was deleted here; bring it back, or purge the library, first");
    }
    if (known.definition != entity.definition) {
        return Refuse(known,
                      "it is a \"" + known.definition + "\" here and a \"" + entity.definition +
                          "\" in the archive");
    }
    if (!entity.versioned) {
        return MeetUnversioned(entity, known);
    }
    store::EntityRow holder;
    holder.lockUser = known.lockUser;
    holder.lockWorkspace = known.lockWorkspace;
    holder.lockTime = known.lockTime;
    if (known.published == store::NO_REVISION) {
        return Refuse(
            known,
            "it was never published here: " + HolderText(holder) + "; publish or delete it first");
    }
    const EntityRecord ours = exchange::ReadKnown(_store, known.id);
    for (const RevisionRecord& revision : entity.revisions) {
        const RevisionRecord* const here = Find(ours, revision.number);
        if (here != nullptr && !IsSame(*here, revision)) {
            return MakeBranch(entity, known, ours, revision, depth);
        }
    }
    if (entity.revisions.back().number > known.published) {
        if (known.working != store::NO_REVISION) {
            return Refuse(
                known, HolderText(holder) + "; publish it or undo that first, then import again");
        }
        return Append(entity, known);
    }
    AddMissingFiles(entity, known);
    Result result;
    result.arrival = {known.id,
                      known.id,
                      ArrivalMode::Equal,
                      known.published,
                      store::NO_REVISION,
                      entity.revisions.back().number,
                      0};
    result.told.outcome = UDMImportOutcome::Equal;
    return result;
}

// Its links were for everybody to change at any time, so that they say nothing.
EntityImport::Result EntityImport::MeetUnversioned(const EntityRecord& entity,
                                                   const KnownEntity& known) {
    Result result;
    result.arrival.origin = result.arrival.id = known.id;
    const EntityRecord ours = exchange::ReadKnown(_store, known.id);
    const bool same = entity.name == known.name && ours.revisions.size() == 1 &&
                      IsSame(ours.revisions.front(), entity.revisions.front());
    result.told.outcome = same ? UDMImportOutcome::Equal : UDMImportOutcome::Kept;
    if (same) {
        AddMissingFiles(entity, known);
    } else {
        result.told.text = "it has no revisions and stays as it is here";
    }
    return result;
}

// A content that came without its files before.
void EntityImport::AddMissingFiles(const EntityRecord& entity, const KnownEntity& known) {
    if (!entity.files.empty() && !exchange::HasFiles(_store, known.id)) {
        exchange::ImportFiles(_store, known.id, entity, known.published);
    }
}

EntityImport::Result EntityImport::Append(const EntityRecord& entity, const KnownEntity& known) {
    AddMissingFiles(entity, known);
    const auto first =
        std::find_if(entity.revisions.begin(), entity.revisions.end(), [&](const auto& each) {
            return each.number > known.published;
        });
    exchange::AppendRevisions(_store, known.id, entity, first->number, Shown(entity));
    _notes.Revisions(
        {known.id, kxString(entity.uid), first->number, entity.revisions.back().number});
    Result result;
    result.arrival = {
        known.id,
        known.id,
        ArrivalMode::Appended,
        Find(entity, known.published) == nullptr ? store::NO_REVISION : known.published,
        first->number,
        entity.revisions.back().number,
        0};
    result.told.outcome = UDMImportOutcome::Appended;
    result.told.revisions = static_cast<std::size_t>(entity.revisions.end() - first);
    return result;
}

EntityImport::Result EntityImport::MakeBranch(const EntityRecord& entity,
                                              const KnownEntity& known,
                                              const EntityRecord& ours,
                                              const RevisionRecord& differing,
                                              int depth) {
    const std::string what = "revision " + std::to_string(differing.number) + " is another here";
    if (!_catalogue.Get(entity.definition).IsBranchable()) {
        return Refuse(known, what + ", and its content definition allows no branch");
    }
    exchange::Arrival shift;
    shift.diverged = differing.number;
    EntityRecord branch;
    branch.uid = BranchUid(entity.uid, differing);
    branch.definition = entity.definition;
    branch.name = entity.name;
    branch.created = differing.created;
    branch.creator = differing.creator;
    branch.workspace = differing.workspace;
    branch.branchUid = entity.uid;
    branch.branchRevision = differing.number;
    for (const RevisionRecord& each : ours.revisions) {
        if (each.number < differing.number) {
            branch.branchRevision = each.number;
        }
    }
    for (const RevisionRecord& each : entity.revisions) {
        if (each.number >= differing.number) {
            branch.revisions.push_back(each);
            branch.revisions.back().number = shift.Local(each.number);
        }
    }
    for (const FileRecord& each : entity.files) {
        if (each.to > differing.number) {
            branch.files.push_back(each);
            branch.files.back().from = shift.Local(std::max(each.from, differing.number));
            branch.files.back().to = shift.Local(each.to);
        }
    }
    Result result = Place(branch, depth + 1);
    result.arrival.origin = known.id;
    result.arrival.diverged += differing.number - (result.arrival.diverged > 0 ? 1 : 0);
    if (result.told.outcome == UDMImportOutcome::New) {
        result.told.outcome = UDMImportOutcome::Branched;
    }
    if (result.told.target.empty()) {
        result.told.target = kxString(branch.uid);
    }
    if (result.told.text.empty()) {
        result.told.text = kxString(what);
    }
    return result;
}

}  // namespace kxudm::profile
