#include "exchange/DocumentReader.h"

#include <expat.h>

#include <algorithm>
#include <array>
#include <exception>
#include <utility>

#include "catalogue/Value.h"
#include "exchange/DocumentWords.h"
#include "exchange/DocumentWriter.h"
#include "exchange/EntityCheck.h"
#include "exchange/Tag.h"
#include "exchange/Text.h"

namespace kxudm::exchange {

namespace {

constexpr std::size_t kMostLevels = 12;
// How far the parser may read on without an event: a tag that does not end.
constexpr std::size_t kMostBehind = 4 * kLongestTag;

enum class Element {
    Document,  // what is around the root
    Library,
    Definitions,
    Definition,  // and all below it
    Entities,
    Entity,
    Revision,
    SavePoint,
    Attribute,
    Item,
    File,
    Links,
    Of,
    Link,
    End
};

struct Place {
    Element parent;
    std::string_view name;
    Element element;
};

constexpr std::array<Place, 13> kPlaces{{{Element::Document, "library", Element::Library},
                                         {Element::Library, "definitions", Element::Definitions},
                                         {Element::Library, "entities", Element::Entities},
                                         {Element::Library, "links", Element::Links},
                                         {Element::Library, "end", Element::End},
                                         {Element::Entities, "entity", Element::Entity},
                                         {Element::Entity, "revision", Element::Revision},
                                         {Element::Entity, "file", Element::File},
                                         {Element::Revision, "savepoint", Element::SavePoint},
                                         {Element::Revision, "attribute", Element::Attribute},
                                         {Element::Attribute, "item", Element::Item},
                                         {Element::Links, "of", Element::Of},
                                         {Element::Of, "link", Element::Link}}};

// Parts of the document in their order.
constexpr std::array<Element, 4> kParts{
    Element::Definitions, Element::Entities, Element::Links, Element::End};

std::string ExpectedIn(Element parent) {
    std::string names;
    for (const Place& place : kPlaces) {
        if (place.parent == parent) {
            names += (names.empty() ? "<" : " or <") + std::string(place.name) + ">";
        }
    }
    return names.empty() ? "no element" : names;
}

}  // namespace

class DocumentReader::Parser {
  public:
    Parser(DocumentHandler& handler, std::string name)
        : handler_(handler), name_(std::move(name)), parser_(XML_ParserCreate("UTF-8")) {
        if (parser_ == nullptr) {
            throw std::bad_alloc();
        }
        XML_SetUserData(parser_, this);
        XML_SetElementHandler(parser_, &Parser::OnStart, &Parser::OnEnd);
        XML_SetCharacterDataHandler(parser_, &Parser::OnText);
        XML_SetStartDoctypeDeclHandler(parser_, &Parser::OnDoctype);
    }
    ~Parser() { XML_ParserFree(parser_); }
    Parser(const Parser&) = delete;
    Parser& operator=(const Parser&) = delete;

    void Feed(std::string_view bytes, bool last) {
        constexpr std::size_t piece = std::size_t{64} << 10;
        do {
            const std::string_view part = bytes.substr(0, piece);
            bytes.remove_prefix(part.size());
            Parse(part, last && bytes.empty());
        } while (!bytes.empty());
    }

  private:
    void Parse(std::string_view part, bool last) {
        fed_ += part.size();
        const XML_Status status =
            XML_Parse(parser_, part.data(), static_cast<int>(part.size()), last ? 1 : 0);
        if (failure_) {
            std::rethrow_exception(std::exchange(failure_, {}));
        }
        if (status != XML_STATUS_OK) {
            RefuseXml();
        }
        const XML_Index at = XML_GetCurrentByteIndex(parser_);
        if (fed_ - static_cast<std::size_t>(std::max<XML_Index>(at, 0)) > kMostBehind && !last) {
            Refuse("a tag or comment does not end; expected at most " +
                   std::to_string(kLongestTag) + " bytes");
        }
    }

    [[noreturn]] void Refuse(const std::string& text) const {
        throw DocumentException(name_ + ":" + std::to_string(XML_GetCurrentLineNumber(parser_)) +
                                ":" + std::to_string(XML_GetCurrentColumnNumber(parser_) + 1) +
                                ": " + text);
    }

    [[noreturn]] void RefuseXml() const {
        const XML_Error code = XML_GetErrorCode(parser_);
        if (code == XML_ERROR_NO_MEMORY) {
            throw std::bad_alloc();
        }
        const bool cut = code == XML_ERROR_NO_ELEMENTS || code == XML_ERROR_UNCLOSED_TOKEN ||
                         code == XML_ERROR_PARTIAL_CHAR || code == XML_ERROR_UNCLOSED_CDATA_SECTION;
        Refuse(std::string(XML_ErrorString(code)) +
               (cut ? "; expected the document to go on, up to </library>"
                    : "; expected well-formed XML in UTF-8"));
    }

    // Exceptions must not pass through the parser's own code.
    template <typename Deed>
    static void Guarded(void* self, Deed&& deed) noexcept {
        auto& parser = *static_cast<Parser*>(self);
        if (parser.failure_) {
            return;
        }
        try {
            try {
                deed(parser);
            } catch (const BadTag& bad) {
                parser.Refuse(bad.what());
            }
        } catch (...) {
            parser.failure_ = std::current_exception();
            XML_StopParser(parser.parser_, XML_FALSE);
        }
    }
    static void XMLCALL OnStart(void* self, const XML_Char* name, const XML_Char** attributes) {
        Guarded(self, [&](Parser& parser) { parser.Start(name, attributes); });
    }
    static void XMLCALL OnEnd(void* self, const XML_Char* name) {
        Guarded(self, [&](Parser& parser) { parser.Stop(name); });
    }
    static void XMLCALL OnText(void* self, const XML_Char* text, int size) {
        Guarded(self, [&](Parser& parser) { parser.Text({text, static_cast<std::size_t>(size)}); });
    }
    static void XMLCALL
    OnDoctype(void* self, const XML_Char*, const XML_Char*, const XML_Char*, int) {
        Guarded(self, [](Parser& parser) {
            parser.Refuse("a document type and entities are not allowed; expected <library>");
        });
    }

    // --- Elements ---

    [[nodiscard]] Element Parent() const {
        return levels_.empty() ? Element::Document : levels_.back();
    }

    [[nodiscard]] Element ElementOf(std::string_view name) const {
        const Element parent = Parent();
        if (parent == Element::Definitions || parent == Element::Definition) {
            return Element::Definition;
        }
        for (const Place& place : kPlaces) {
            if (place.parent == parent && place.name == name) {
                return place.element;
            }
        }
        Refuse("<" + catalogue::Printable(name) + "> stands where it can't; expected " +
               ExpectedIn(parent));
    }

    void Start(const char* name, const char** attributes) {
        const Element element = ElementOf(name);
        if (levels_.size() >= kMostLevels) {
            Refuse("elements are nested more than " + std::to_string(kMostLevels) + " deep");
        }
        if (Parent() == Element::Library) {
            RequirePart(element);
        }
        levels_.push_back(element);
        text_.clear();
        if (element == Element::Definition) {
            CopyStart(name, attributes);
            return;
        }
        Tag tag(name, attributes);
        Read(element, tag);
        tag.Finish();
    }

    void RequirePart(Element element) {
        if (part_ == kParts.size() || kParts[part_] != element) {
            const std::string_view next =
                part_ == kParts.size()
                    ? "</library"
                    : std::find_if(kPlaces.begin(), kPlaces.end(), [&](const Place& place) {
                          return place.element == kParts[part_];
                      })->name;
            Refuse("the parts of the document are not in their order; expected <" +
                   std::string(next) + ">");
        }
        ++part_;
    }

    void Read(Element element, Tag& tag) {
        switch (element) {
            case Element::Library:
                ReadLibrary(tag);
                break;
            case Element::Entity:
                ReadEntity(tag);
                break;
            case Element::Revision:
                ReadRevision(tag);
                break;
            case Element::SavePoint:
                ReadSavePoint(tag);
                break;
            case Element::Attribute:
                ReadAttribute(tag);
                break;
            case Element::Item:
                if (type_ != kxVariant::STRINGLIST) {
                    Refuse("<item> stands in a value that is no list; expected text");
                }
                break;
            case Element::File:
                ReadFile(tag);
                break;
            case Element::Of:
                ReadOf(tag);
                break;
            case Element::Link:
                ReadLink(tag);
                break;
            case Element::End:
                ReadEnd(tag);
                break;
            default:
                break;
        }
    }

    void Stop(const char* name) {
        const Element element = levels_.back();
        levels_.pop_back();
        switch (element) {
            case Element::Library:
                if (part_ != kParts.size()) {
                    Refuse("the document ends too early; expected <end>");
                }
                handler_.End(counts_);
                break;
            case Element::Definitions:
                definitions_ += "</catalogue>";
                handler_.Begin(scope_, std::exchange(definitions_, {}));
                break;
            case Element::Definition:
                AppendXmlEscaped(definitions_, text_);
                definitions_ += "</" + std::string(name) + ">";
                break;
            case Element::Entity:
                StopEntity();
                break;
            case Element::Attribute:
                StopAttribute();
                break;
            case Element::Item:
                list_.push_back(TakeText());
                break;
            default:
                break;
        }
        text_.clear();
    }

    void Text(std::string_view text) {
        const Element parent = Parent();
        const bool counts = parent == Element::Item || parent == Element::Definition ||
                            (parent == Element::Attribute && type_ != kxVariant::STRINGLIST);
        if (!counts) {
            if (text.find_first_not_of(" \t\r\n") != std::string_view::npos) {
                Refuse("there is text where none can be; expected " + ExpectedIn(parent));
            }
            return;
        }
        if (text_.size() + text.size() > kLongestText) {
            Refuse("a text is longer than " + std::to_string(kLongestText) +
                   " bytes; expected a shorter one");
        }
        text_ += text;
    }

    std::string TakeText() {
        std::optional<std::string> text = Unescaped(text_);
        if (!text) {
            Refuse(
                "a text has a backslash that begins no escape, or one that was not needed; "
                "expected \"\\\\\" for a backslash");
        }
        Spend(text_.size());
        text_.clear();
        return std::move(*text);
    }

    // Of the entity's share of memory.
    void Spend(std::size_t bytes) {
        constexpr std::size_t eachRecord = 256;
        spent_ += bytes + eachRecord;
        if (spent_ > kLargestEntity) {
            Refuse("an entity says more than " + std::to_string(kLargestEntity) +
                   " bytes; expected less");
        }
    }

    // --- Definitions, which the catalogue's own reader checks ---

    void CopyStart(const char* name, const char** attributes) {
        for (const XML_Size line = XML_GetCurrentLineNumber(parser_); definitionLine_ < line;
             ++definitionLine_) {
            definitions_ += '\n';
        }
        definitions_ += "<" + std::string(name);
        for (const char** each = attributes; *each != nullptr; each += 2) {
            definitions_ += " " + std::string(each[0]) + "=\"";
            AppendXmlEscaped(definitions_, each[1]);
            definitions_ += '"';
        }
        definitions_ += '>';
        if (definitions_.size() > kLargestDefinitions) {
            Refuse("the definitions are larger than " + std::to_string(kLargestDefinitions) +
                   " bytes; expected less");
        }
    }

    // --- Records ---

    void ReadLibrary(Tag& tag) {
        const std::int64_t version =
            tag.Number("version", 1, std::numeric_limits<std::int64_t>::max());
        if (version > kDocumentVersion) {
            Refuse("the document is of version " + std::to_string(version) + "; expected at most " +
                   std::to_string(kDocumentVersion) +
                   ", so read it with a newer version of this program");
        }
        scope_ = static_cast<Scope>(tag.Number("scope", 0, 2));
        definitions_ = "<catalogue version=\"1\">";
    }

    void ReadEntity(Tag& tag) {
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

    void ReadRevision(Tag& tag) {
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

    void ReadSavePoint(Tag& tag) {
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

    void ReadAttribute(Tag& tag) {
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

    void StopAttribute() {
        entity_.revisions.back().attributes.emplace_back(attribute_, ValueOf());
    }

    kxVariant ValueOf() {
        if (type_ == kxVariant::STRINGLIST) {
            return kxVariant(std::exchange(list_, {}));
        }
        const std::string text = TakeText();
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

    void ReadFile(Tag& tag) {
        FileRecord& file = entity_.files.emplace_back();
        file.name = tag.Name("name");
        if (tag.Has("path")) {
            file.externalPath = tag.Name("path");
        } else {
            file.hash = tag.Name("sha256");
        }
        file.size = static_cast<std::uint64_t>(
            tag.Number("size", 0, std::numeric_limits<std::int64_t>::max()));
        file.modified = tag.Time("modified");
        file.added = tag.Time("added");
        file.isText = tag.Flag("text", false);
        file.from = tag.RevisionNumber("from");
        file.to = tag.RevisionNumber("to", kOpen);
        Spend(file.name.size() + file.externalPath.size());
        ++counts_.files;
    }

    void StopEntity() {
        if (const std::string problem = ProblemOf(entity_, scope_); !problem.empty()) {
            Refuse(problem);
        }
        ++counts_.entities;
        handler_.Entity(std::exchange(entity_, {}));
    }

    void ReadOf(Tag& tag) { first_ = tag.Uid("uid"); }

    void ReadLink(Tag& tag) {
        LinkRecord link;
        const std::string kind = tag.Text("kind");
        const auto found = std::find_if(kLinkKinds.begin(),
                                        kLinkKinds.end(),
                                        [&](const auto& word) { return word.second == kind; });
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

    void ReadEnd(Tag& tag) {
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
                   std::to_string(counts_.revisions) + " revisions, " +
                   std::to_string(counts_.files) + " files and " + std::to_string(counts_.links) +
                   " links");
        }
    }

    DocumentHandler& handler_;
    const std::string name_;
    const XML_Parser parser_;
    std::exception_ptr failure_;
    std::size_t fed_ = 0;

    std::vector<Element> levels_;
    std::size_t part_ = 0;
    Scope scope_ = Scope::AllWithFiles;
    DocumentCounts counts_;
    std::string definitions_;
    XML_Size definitionLine_ = 1;

    std::string text_;  // of the innermost element
    EntityRecord entity_;
    std::size_t spent_ = 0;
    kxString attribute_;
    kxVariant::Kind type_ = kxVariant::EMPTY;
    kxStlVector<kxString> list_;
    std::string first_;
};

DocumentReader::DocumentReader(DocumentHandler& handler, std::string name)
    : parser_(std::make_unique<Parser>(handler, std::move(name))) {}

DocumentReader::~DocumentReader() = default;

void DocumentReader::Feed(std::string_view bytes) {
    if (!bytes.empty()) {
        parser_->Feed(bytes, false);
    }
}

void DocumentReader::Finish() {
    parser_->Feed({}, true);
}

}  // namespace kxudm::exchange
