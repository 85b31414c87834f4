#include "exchange/DocumentWriter.h"

#include <kxudm/UDMException.h>

#include <algorithm>
#include <utility>

#include "core/Clock.h"
#include "exchange/DocumentWords.h"
#include "exchange/Text.h"

namespace kxudm::exchange {

namespace {

// A piece is handed on when it has this size, or at the end of a record that is larger.
constexpr std::size_t kPiece = std::size_t{64} << 10;

template <typename Key, std::size_t N>
std::string_view WordOf(const std::array<std::pair<Key, std::string_view>, N>& words, Key key) {
    const auto found = std::find_if(
        words.begin(), words.end(), [&](const auto& word) { return word.first == key; });
    return found == words.end() ? std::string_view() : found->second;
}

std::string_view DefinitionsOf(std::string_view catalogueXml) {
    const std::size_t begin = catalogueXml.find("  <definition ");
    const std::size_t end = catalogueXml.rfind("</catalogue>");
    return begin == std::string_view::npos ? std::string_view()
                                           : catalogueXml.substr(begin, end - begin);
}

[[noreturn]] void RefuseLength(const std::string& uid, const std::string& what, std::size_t most) {
    throw UDMException(uid + " can't be exported: " + what + " is longer than " +
                       std::to_string(most) + " bytes; shorten it");
}

}  // namespace

void DocumentWriter::Flush() {
    if (text_.size() >= kPiece) {
        sink_(text_);
        text_.clear();
    }
}

void DocumentWriter::Open(std::string_view element) {
    text_ += '<';
    text_ += element;
}

void DocumentWriter::Put(std::string_view attribute, std::string_view text) {
    text_ += ' ';
    text_ += attribute;
    text_ += "=\"";
    AppendEscaped(text_, text);
    text_ += '"';
}

void DocumentWriter::PutTime(std::string_view attribute, store::Microseconds time) {
    Put(attribute, core::FormatTime(time));
}

void DocumentWriter::PutNumber(std::string_view attribute, std::int64_t number) {
    Put(attribute, NumberText(number));
}

void DocumentWriter::Begin(Scope scope, std::string_view catalogueXml) {
    text_ += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    Open("library");
    PutNumber("version", kDocumentVersion);
    PutNumber("scope", static_cast<int>(scope));
    text_ += ">\n<definitions>\n";
    text_ += DefinitionsOf(catalogueXml);
    text_ += "</definitions>\n<entities>\n";
}

void DocumentWriter::Entity(const EntityRecord& entity) {
    const std::size_t begin = text_.size();
    Open("entity");
    Put("uid", entity.uid);
    Put("definition", entity.definition);
    Put("name", entity.name);
    if (!entity.versioned) {
        Put("versioned", "false");
    }
    PutTime("created", entity.created);
    Put("creator", entity.creator);
    Put("workspace", entity.workspace);
    if (!entity.branchUid.empty()) {
        Put("origin", entity.branchUid);
        PutNumber("originrevision", entity.branchRevision);
    }
    if (text_.size() - begin > kLongestTag) {
        RefuseLength(entity.uid, "what is said of it", kLongestTag);
    }
    text_ += ">\n";
    for (const RevisionRecord& revision : entity.revisions) {
        Revision(entity, revision);
    }
    for (const FileRecord& file : entity.files) {
        File(file);
    }
    text_ += "</entity>\n";
    ++counts_.entities;
    Flush();
}

void DocumentWriter::Revision(const EntityRecord& entity, const RevisionRecord& revision) {
    const auto check = [&](std::size_t begin) {
        if (text_.size() - begin > kLongestTag) {
            RefuseLength(entity.uid + ":" + std::to_string(revision.number),
                         "its display name or a comment",
                         kLongestTag);
        }
    };
    std::size_t begin = text_.size();
    Open("revision");
    PutNumber("number", revision.number);
    Put("displayname", revision.displayName);
    PutTime("created", revision.created);
    Put("creator", revision.creator);
    PutTime("modified", revision.modified);
    Put("modifier", revision.modifier);
    if (entity.versioned) {
        PutTime("published", revision.published);
        Put("publisher", revision.publisher);
    }
    Put("workspace", revision.workspace);
    Put("comment", revision.comment);
    check(begin);
    text_ += ">\n";
    for (const SavePointRecord& point : revision.savePoints) {
        begin = text_.size();
        Open("savepoint");
        PutTime("time", point.time);
        Put("user", point.user);
        Put("comment", point.comment);
        check(begin);
        text_ += "/>\n";
    }
    for (const auto& [name, value] : revision.attributes) {
        Value(entity, name, value);
    }
    text_ += "</revision>\n";
    ++counts_.revisions;
    Flush();
}

void DocumentWriter::Value(const EntityRecord& entity,
                           const kxString& name,
                           const kxVariant& value) {
    const std::size_t begin = text_.size();
    Open("attribute");
    Put("name", name);
    if (value.IsEmpty()) {
        text_ += "/>\n";
        return;
    }
    Put("type", WordOf(kValueTypes, value.GetKind()));
    text_ += '>';
    if (const kxStlVector<kxString>* list = value.PeekStringList()) {
        for (const kxString& item : *list) {
            text_ += "<item>";
            AppendEscaped(text_, item);
            text_ += "</item>";
        }
    } else if (value.GetKind() == kxVariant::DOUBLE || value.GetKind() == kxVariant::FLOAT) {
        text_ += NumberText(value.GetDouble());
    } else {
        AppendEscaped(text_, value.GetString());
    }
    text_ += "</attribute>\n";
    if (text_.size() - begin > kLongestText) {
        RefuseLength(entity.uid, "its attribute \"" + name + "\"", kLongestText);
    }
}

void DocumentWriter::File(const FileRecord& file) {
    Open("file");
    Put("name", file.name);
    if (file.IsExternal()) {
        Put("path", file.externalPath);
    } else {
        Put("sha256", file.hash);
    }
    PutNumber("size", static_cast<std::int64_t>(file.size));
    PutTime("modified", file.modified);
    PutTime("added", file.added);
    if (file.isText) {
        Put("text", "true");
    }
    PutNumber("from", file.from);
    if (file.to != kOpen) {
        PutNumber("to", file.to);
    }
    text_ += "/>\n";
    ++counts_.files;
    Flush();
}

void DocumentWriter::BeginLinks() {
    if (!inLinks_) {
        text_ += "</entities>\n<links>\n";
        inLinks_ = true;
    }
}

void DocumentWriter::Link(const std::string& first, const LinkRecord& link) {
    BeginLinks();
    if (first != uid_) {
        text_ += uid_.empty() ? "" : "</of>\n";
        Open("of");
        Put("uid", first);
        text_ += ">\n";
        uid_ = first;
    }
    Open("link");
    Put("kind", WordOf(kLinkKinds, link.kind));
    if (!link.name.empty()) {
        Put("name", link.name);
    }
    Put("uid", link.other);
    PutNumber("from", link.from);
    if (link.to != kOpen) {
        PutNumber("to", link.to);
    }
    if (link.exact != store::NO_REVISION) {
        PutNumber("exact", link.exact);
    }
    if (link.composition) {
        Put("composition", "true");
    }
    text_ += "/>\n";
    ++counts_.links;
    Flush();
}

void DocumentWriter::End() {
    BeginLinks();
    text_ += uid_.empty() ? "</links>\n" : "</of>\n</links>\n";
    Open("end");
    PutNumber("entities", static_cast<std::int64_t>(counts_.entities));
    PutNumber("revisions", static_cast<std::int64_t>(counts_.revisions));
    PutNumber("files", static_cast<std::int64_t>(counts_.files));
    PutNumber("links", static_cast<std::int64_t>(counts_.links));
    text_ += "/>\n</library>\n";
    sink_(text_);
    text_.clear();
}

}  // namespace kxudm::exchange
