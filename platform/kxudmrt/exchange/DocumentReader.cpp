#include "exchange/DocumentReader.h"

#include <expat.h>

#include <algorithm>
#include <array>
#include <exception>
#include <utility>

#include "catalogue/Value.h"
#include "exchange/DocumentGrammar.h"
#include "exchange/DocumentWriter.h"
#include "exchange/RecordBuilder.h"
#include "exchange/Tag.h"
#include "exchange/Text.h"

namespace kxudm::exchange {

namespace {

constexpr std::size_t kMostLevels = 12;
// How far the parser may read on without an event: a tag that does not end.
constexpr std::size_t kMostBehind = 4 * kLongestTag;

}  // namespace

class DocumentReader::Parser {
  public:
    Parser(DocumentHandler& handler, std::string name)
        : handler_(handler),
          name_(std::move(name)),
          parser_(XML_ParserCreate("UTF-8")),
          records_(handler) {
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
        if (const std::optional<Element> element = ElementIn(parent, name)) {
            return *element;
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
                part_ == kParts.size() ? "</library" : NameOfPart(kParts[part_]);
            Refuse("the parts of the document are not in their order; expected <" +
                   std::string(next) + ">");
        }
        ++part_;
    }

    void Read(Element element, Tag& tag) {
        if (element == Element::Library) {
            ReadLibrary(tag);
        } else {
            records_.Read(element, tag);
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
                handler_.End(records_.Counts());
                break;
            case Element::Definitions:
                definitions_ += "</catalogue>";
                handler_.Begin(records_.GetScope(), std::exchange(definitions_, {}));
                break;
            case Element::Definition:
                AppendXmlEscaped(definitions_, text_);
                definitions_ += "</" + std::string(name) + ">";
                break;
            case Element::Entity:
                records_.EndEntity();
                break;
            case Element::Attribute:
                records_.EndAttribute(text_);
                break;
            case Element::Item:
                records_.AddItem(text_);
                break;
            default:
                break;
        }
        text_.clear();
    }

    void Text(std::string_view text) {
        const Element parent = Parent();
        const bool counts = parent == Element::Item || parent == Element::Definition ||
                            (parent == Element::Attribute && !records_.InList());
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

    // --- Head ---

    void ReadLibrary(Tag& tag) {
        const std::int64_t version =
            tag.Number("version", 1, std::numeric_limits<std::int64_t>::max());
        if (version > kDocumentVersion) {
            Refuse("the document is of version " + std::to_string(version) + "; expected at most " +
                   std::to_string(kDocumentVersion) +
                   ", so read it with a newer version of this program");
        }
        records_.SetScope(static_cast<Scope>(tag.Number("scope", 0, 2)));
        definitions_ = "<catalogue version=\"1\">";
    }

    DocumentHandler& handler_;
    const std::string name_;
    const XML_Parser parser_;
    std::exception_ptr failure_;
    std::size_t fed_ = 0;

    std::vector<Element> levels_;
    std::size_t part_ = 0;
    std::string definitions_;
    XML_Size definitionLine_ = 1;

    std::string text_;  // of the innermost element
    RecordBuilder records_;
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
