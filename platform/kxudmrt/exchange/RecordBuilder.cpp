#include "exchange/RecordBuilder.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "catalogue/Value.h"
#include "exchange/DocumentReader.h"
#include "exchange/DocumentWords.h"
#include "exchange/EntityCheck.h"
#include "exchange/Text.h"

namespace kxudm::exchange {
namespace {

[[noreturn]] void Refuse(const std::string& text) {
    throw BadTag(text);
}

}  // namespace

void RecordBuilder::Read(Element element, Tag& tag) {
    switch (element) {
        case Element::Entity:
            return ReadEntity(tag);
        case Element::Revision:
            return ReadRevision(tag);
        case Element::SavePoint:
            return ReadSavePoint(tag);
        case Element::Attribute:
            return ReadAttribute(tag);
        case Element::Item:
            if (!InList()) {
                Refuse("<item> stands in a value that is no list; expected text");
            }
            return;
        case Element::File:
            return ReadFile(tag);
        case Element::Of:
            first_ = tag.Uid("uid");
            return;
        case Element::Link:
            return ReadLink(tag);
        case Element::End:
            return ReadEnd(tag);
        default:
            return;
    }
}

void RecordBuilder::AddItem(std::string_view text) {
    list_.push_back(TextOf(text));
}

std::string RecordBuilder::TextOf(std::string_view given) {
    std::optional<std::string> text = Unescaped(given);
    if (!text) {
        Refuse(
            "a text has a backslash that begins no escape, or one that was not needed; "
            "expected \"\\\\\" for a backslash");
    }
    Spend(given.size());
    return std::move(*text);
}

// Of the entity's share of memory.
void RecordBuilder::Spend(std::size_t bytes) {
    constexpr std::size_t eachRecord = 256;
    spent_ += bytes + eachRecord;
    if (spent_ > kLargestEntity) {
        Refuse("an entity says more than " + std::to_string(kLargestEntity) +
               " bytes; expected less");
    }
}

void RecordBuilder::ReadEntity(Tag& tag) {
    entity_ = {};
    spent_ = 0;
    entity_.uid = tag.Uid("uid");
    entity_.definition = tag.Name("definition");
    entity_.name = tag.Text("name");
    entity_.versioned = tag.Flag("versioned", true);
    entity_.created = tag.Time("created");
    entity_.creator = tag.Text("creator");
    entity_.workspace = tag.Text("workspace");
    if (tag.Has("origin")) {
        entity_.branchUid = tag.Uid("origin");
        entity_.branchRevision = tag.RevisionNumber("originrevision");
    }
    Spend(entity_.name.size());
}

void RecordBuilder::ReadRevision(Tag& tag) {
    if (!entity_.files.empty()) {
        Refuse("a revision stands behind files; expected revisions first");
    }
    RevisionRecord& revision = entity_.revisions.emplace_back();
    revision.number = tag.RevisionNumber("number");
    revision.displayName = tag.Text("displayname");
    revision.created = tag.Time("created");
    revision.creator = tag.Text("creator");
    revision.modified = tag.Time("modified");
    revision.modifier = tag.Text("modifier");
    if (entity_.versioned) {
        revision.published = tag.Time("published");
        revision.publisher = tag.Text("publisher");
    }
    revision.workspace = tag.Text("workspace");
    revision.comment = tag.Text("comment");
    Spend(revision.displayName.size() + revision.comment.size());
    ++counts_.revisions;
}

void RecordBuilder::ReadSavePoint(Tag& tag) {
    RevisionRecord& revision = entity_.revisions.back();
    if (!revision.attributes.empty()) {
        Refuse("a save point stands behind attributes; expected save points first");
    }
    SavePointRecord& point = revision.savePoints.emplace_back();
    point.time = tag.Time("time");
    point.user = tag.Text("user");
    point.comment = tag.Text("comment");
    Spend(point.comment.size());
}

void RecordBuilder::ReadAttribute(Tag& tag) {
    attribute_ = tag.Name("name");
    type_ = kxVariant::EMPTY;
    list_ = {};
    if (const auto type = tag.OptionalText("type")) {
        const auto found = std::find_if(kValueTypes.begin(),
                                        kValueTypes.end(),
                                        [&](const auto& word) { return word.second == *type; });
        if (found == kValueTypes.end()) {
            Refuse("the type \"" + catalogue::Printable(*type) +
                   "\" is unknown; expected Boolean, Double, Float, Integer, String or "
                   "StringList");
        }
        type_ = found->first;
    }
    store::AttributeList& attributes = entity_.revisions.back().attributes;
    if (!attributes.empty() && !(attributes.back().first < attribute_)) {
        Refuse("the attribute \"" + catalogue::Printable(attribute_) +
               "\" is not behind the one before it; expected each once, in byte order");
    }
    Spend(attribute_.size());
}

void RecordBuilder::EndAttribute(std::string_view text) {
    entity_.revisions.back().attributes.emplace_back(attribute_, ValueOf(text));
}

kxVariant RecordBuilder::ValueOf(std::string_view given) {
    if (type_ == kxVariant::STRINGLIST) {
        return kxVariant(std::exchange(list_, {}));
    }
    const std::string text = TextOf(given);
    switch (type_) {
        case kxVariant::STRING:
            return kxVariant(text);
        case kxVariant::BOOLEAN:
            if (text == "true" || text == "false") {
                return kxVariant(text == "true");
            }
            break;
        case kxVariant::INTEGER:
            if (const auto number = IntegerOf(text)) {
                return kxVariant(static_cast<long long>(*number));
            }
            break;
        case kxVariant::DOUBLE:
        case kxVariant::FLOAT:
            if (const auto number = DoubleOf(text)) {
                return type_ == kxVariant::DOUBLE ? kxVariant(*number)
                                                  : kxVariant(static_cast<float>(*number));
            }
            break;
        default:
            if (text.empty()) {
                return {};
            }
    }
    Refuse("\"" + catalogue::Printable(text) + "\" is no value of the attribute \"" +
           catalogue::Printable(attribute_) + "\"; expected one of its type, in its one form");
}

void RecordBuilder::ReadFile(Tag& tag) {
    FileRecord& file = entity_.files.emplace_back();
    file.name = tag.Name("name");
    if (tag.Has("path")) {
        file.externalPath = tag.Name("path");
    } else {
        file.hash = tag.Name("sha256");
    }
    file.size =
        static_cast<std::uint64_t>(tag.Number("size", 0, std::numeric_limits<std::int64_t>::max()));
    file.modified = tag.Time("modified");
    file.added = tag.Time("added");
    file.isText = tag.Flag("text", false);
    file.from = tag.RevisionNumber("from");
    file.to = tag.RevisionNumber("to", kOpen);
    Spend(file.name.size() + file.externalPath.size());
    ++counts_.files;
}

void RecordBuilder::EndEntity() {
    if (const std::string problem = ProblemOf(entity_, scope_); !problem.empty()) {
        Refuse(problem);
    }
    ++counts_.entities;
    handler_.Entity(std::exchange(entity_, {}));
}

void RecordBuilder::ReadLink(Tag& tag) {
    LinkRecord link;
    const std::string kind = tag.Text("kind");
    const auto found = std::find_if(kLinkKinds.begin(), kLinkKinds.end(), [&](const auto& word) {
        return word.second == kind;
    });
    if (found == kLinkKinds.end()) {
        Refuse("the kind of link \"" + catalogue::Printable(kind) +
               "\" is unknown; expected owner, reference, folder, category or relation");
    }
    link.kind = found->first;
    link.name = tag.OptionalText("name").value_or("");
    link.other = tag.Uid("uid");
    link.from = tag.RevisionNumber("from");
    link.to = tag.RevisionNumber("to", kOpen);
    link.exact = tag.RevisionNumber("exact", store::NO_REVISION);
    link.composition = tag.Flag("composition", false);
    if (const std::string problem = ProblemOf(link); !problem.empty()) {
        Refuse(problem);
    }
    ++counts_.links;
    handler_.Link(first_, std::move(link));
}

void RecordBuilder::ReadEnd(Tag& tag) {
    const auto count = [&](std::string_view name) {
        return static_cast<std::uint64_t>(
            tag.Number(name, 0, std::numeric_limits<std::int64_t>::max()));
    };
    DocumentCounts counts;
    counts.entities = count("entities");
    counts.revisions = count("revisions");
    counts.files = count("files");
    counts.links = count("links");
    if (counts != counts_) {
        Refuse("the counts at the end are not those of the document; expected " +
               std::to_string(counts_.entities) + " entities, " +
               std::to_string(counts_.revisions) + " revisions, " + std::to_string(counts_.files) +
               " files and " + std::to_string(counts_.links) + " links");
    }
}

}  // namespace kxudm::exchange
