#include <algorithm>
#include <charconv>
#include <initializer_list>
#include <limits>
#include <pugixml.hpp>
#include <utility>

#include "catalogue/Located.h"
#include "catalogue/Value.h"

namespace kxudm::catalogue {

namespace {

// A library's own catalogue is read back through here too, so this is well above what files can
// hold (see Catalogue.cpp).
constexpr std::size_t kLargestText = 128U << 20U;

class Reader {
  public:
    Reader(std::string_view text, const kxString& file) : _text(text), _file(file) {
        for (std::size_t at = text.find('\n'); at != std::string_view::npos;
             at = text.find('\n', at + 1)) {
            _lineEnds.push_back(at);
        }
    }

    void Read(std::vector<LocatedDeclaration>& declarations) {
        const pugi::xml_node root = Parse();
        CheckAttributes(root, {"version"});
        const kxString version = Required(root, "version");
        if (version != "1") {
            Refuse(root, "catalogue version '" + Printable(version) + "' is not known; known is 1");
        }
        for (const pugi::xml_node node : root.children()) {
            if (IsWhiteSpace(node)) {
                continue;
            }
            Expect(node, {"definition"}, root);
            declarations.push_back(Definition(node));
        }
    }

  private:
    int LineAt(std::ptrdiff_t offset) const {
        const auto at = static_cast<std::size_t>(std::max<std::ptrdiff_t>(offset, 0));
        const auto end = std::lower_bound(_lineEnds.begin(), _lineEnds.end(), at);
        return static_cast<int>(end - _lineEnds.begin()) + 1;
    }

    int LineOf(const pugi::xml_node& node) const { return LineAt(node.offset_debug()); }

    [[noreturn]] void Refuse(const pugi::xml_node& node, const kxString& reason) const {
        RefuseAt(_file, LineOf(node), reason);
    }

    pugi::xml_node Parse() {
        // Comments and processing instructions are dropped; white space stays where it is the only
        // content, since it may be meant in a value. Fragments are parsed so that text beside the
        // document element is seen and not silently left out.
        constexpr unsigned options = pugi::parse_cdata | pugi::parse_escapes |
                                     pugi::parse_wconv_attribute | pugi::parse_eol |
                                     pugi::parse_ws_pcdata_single | pugi::parse_declaration |
                                     pugi::parse_fragment;
        const pugi::xml_parse_result result =
            _document.load_buffer(_text.data(), _text.size(), options, pugi::encoding_utf8);
        if (!result) {
            RefuseAt(_file,
                     LineAt(result.offset),
                     "not well-formed XML: " + kxString(result.description()));
        }
        pugi::xml_node root;
        for (const pugi::xml_node node : _document.children()) {
            if (node.type() == pugi::node_declaration) {
                CheckEncoding(node);
            } else if (!IsWhiteSpace(node)) {
                Expect(node, {"catalogue"}, _document);
                if (root) {
                    Refuse(node, "there must be only one <catalogue>");
                }
                root = node;
            }
        }
        if (!root) {
            RefuseAt(_file, 1, "there is no <catalogue>");
        }
        return root;
    }

    void CheckEncoding(const pugi::xml_node& declaration) const {
        kxString encoding = declaration.attribute("encoding").as_string("utf-8");
        std::transform(encoding.begin(), encoding.end(), encoding.begin(), [](char c) {
            return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
        });
        if (encoding != "utf-8") {
            Refuse(declaration,
                   "the encoding '" + Printable(encoding) +
                       "' is not supported; a catalogue is written in UTF-8");
        }
    }

    static bool IsWhiteSpace(const pugi::xml_node& node) {
        return node.type() == pugi::node_pcdata &&
               std::string_view(node.value()).find_first_not_of(" \t\r\n") ==
                   std::string_view::npos;
    }

    static kxString Quoted(std::string_view name) { return "<" + Printable(name) + ">"; }

    void Expect(const pugi::xml_node& node,
                std::initializer_list<std::string_view> names,
                const pugi::xml_node& parent) const {
        if (node.type() == pugi::node_element &&
            std::find(names.begin(), names.end(), node.name()) != names.end()) {
            return;
        }
        const kxString found =
            node.type() == pugi::node_element ? Quoted(node.name()) : kxString("text");
        const kxString where = parent.type() == pugi::node_document
                                   ? kxString("at the top of the document")
                                   : kxString("inside " + Quoted(parent.name()));
        kxString expected;
        for (const std::string_view name : names) {
            expected += (expected.empty() ? "" : " or ") + Quoted(name);
        }
        Refuse(node,
               "unexpected " + found + " " + where + "; expected is " +
                   (expected.empty() ? "nothing" : expected));
    }

    void ExpectEmpty(const pugi::xml_node& node) const {
        for (const pugi::xml_node child : node.children()) {
            if (!IsWhiteSpace(child)) {
                Expect(child, {}, node);
            }
        }
    }

    void CheckAttributes(const pugi::xml_node& node,
                         std::initializer_list<std::string_view> known) const {
        std::vector<std::string_view> seen;
        for (const pugi::xml_attribute attribute : node.attributes()) {
            const std::string_view name = attribute.name();
            if (std::find(known.begin(), known.end(), name) == known.end()) {
                Refuse(node,
                       "unknown attribute '" + Printable(name) + "' of " + Quoted(node.name()));
            }
            if (std::find(seen.begin(), seen.end(), name) != seen.end()) {
                Refuse(node, "attribute '" + kxString(name) + "' is given twice");
            }
            seen.push_back(name);
        }
    }

    kxString Required(const pugi::xml_node& node, const char* name) const {
        kxString text = node.attribute(name).value();
        if (text.empty()) {
            Refuse(node, Quoted(node.name()) + " needs the attribute '" + name + "'");
        }
        return text;
    }

    static kxString Optional(const pugi::xml_node& node, const char* name) {
        return node.attribute(name).value();
    }

    std::optional<bool> Flag(const pugi::xml_node& node, const char* name) const {
        const pugi::xml_attribute attribute = node.attribute(name);
        if (!attribute) {
            return std::nullopt;
        }
        const std::string_view text = attribute.value();
        if (text != "true" && text != "false") {
            Refuse(node,
                   "attribute '" + kxString(name) + "' is '" + Printable(text) +
                       "'; expected is true or false");
        }
        return text == "true";
    }

    unsigned Number(const pugi::xml_node& node, const char* name, unsigned fallback) const {
        const pugi::xml_attribute attribute = node.attribute(name);
        const std::string_view text = attribute.value();
        if (!attribute || (text == "unlimited" && fallback == GroupDefinition::kUnlimited)) {
            return fallback;
        }
        unsigned number = 0;
        const char* end = text.data() + text.size();
        const auto result = std::from_chars(text.data(), end, number);
        if (result.ec != std::errc() || result.ptr != end ||
            number == GroupDefinition::kUnlimited) {
            Refuse(node,
                   "attribute '" + kxString(name) + "' is '" + Printable(text) +
                       "'; expected is a number");
        }
        return number;
    }

    // The text of an element that holds nothing but text.
    kxString TextOf(const pugi::xml_node& node) const {
        CheckAttributes(node, {});
        kxString text;
        for (const pugi::xml_node child : node.children()) {
            if (child.type() == pugi::node_element) {
                Expect(child, {}, node);
            }
            text += child.value();
        }
        return text;
    }

    LocatedDeclaration Definition(const pugi::xml_node& node) const {
        CheckAttributes(node,
                        {"name",
                         "base",
                         "type",
                         "displayname",
                         "class",
                         "abstract",
                         "versioned",
                         "branchable",
                         "excludedfromsearch",
                         "extensions",
                         "replace"});
        LocatedDeclaration located;
        located.file = _file;
        located.line = LineOf(node);
        located.replace = Flag(node, "replace").value_or(false);
        DefinitionDeclaration& declaration = located.declaration;
        declaration.name = Required(node, "name");
        declaration.base = Optional(node, "base");
        declaration.type = Optional(node, "type");
        declaration.displayName = Optional(node, "displayname");
        declaration.className = Optional(node, "class");
        declaration.isAbstract = Flag(node, "abstract").value_or(false);
        declaration.versioned = Flag(node, "versioned");
        declaration.branchable = Flag(node, "branchable");
        declaration.excludedFromSearch = Flag(node, "excludedfromsearch");
        declaration.fileExtensions = Words(Optional(node, "extensions"));
        for (const pugi::xml_node child : node.children()) {
            if (IsWhiteSpace(child)) {
                continue;
            }
            Expect(child, {"attribute", "group"}, node);
            if (std::string_view(child.name()) == "attribute") {
                declaration.attributes.push_back(Attribute(child));
                located.attributeLines.push_back(LineOf(child));
            } else {
                declaration.groups.push_back(Group(child));
                located.groupLines.push_back(LineOf(child));
            }
        }
        return located;
    }

    AttributeDefinition Attribute(const pugi::xml_node& node) const {
        CheckAttributes(node,
                        {"name",
                         "displayname",
                         "description",
                         "category",
                         "type",
                         "default",
                         "system",
                         "displayable",
                         "mandatory",
                         "editable"});
        AttributeDefinition attribute;
        attribute.name = Required(node, "name");
        attribute.displayName = Optional(node, "displayname");
        attribute.description = Optional(node, "description");
        attribute.category = Optional(node, "category");
        attribute.dataType = Required(node, "type");
        attribute.system = Flag(node, "system").value_or(false);
        attribute.displayable = Flag(node, "displayable").value_or(true);
        attribute.mandatory = Flag(node, "mandatory").value_or(false);
        attribute.editable = Flag(node, "editable").value_or(true);
        if (node.attribute("default")) {
            attribute.defaultValue = Optional(node, "default");
        }
        ReadTexts(node, attribute);
        return attribute;
    }

    void ReadTexts(const pugi::xml_node& node, AttributeDefinition& attribute) const {
        kxStlVector<kxString> defaults;
        for (const pugi::xml_node child : node.children()) {
            if (IsWhiteSpace(child)) {
                continue;
            }
            Expect(child, {"value", "default"}, node);
            const bool valid = std::string_view(child.name()) == "value";
            (valid ? attribute.validValues : defaults).push_back(TextOf(child));
        }
        if (defaults.empty()) {
            return;
        }
        if (attribute.dataType != "StringList" || !attribute.defaultValue.IsEmpty()) {
            Refuse(node,
                   "<default> is for the entries of a StringList alone, and not beside the "
                   "attribute 'default'");
        }
        attribute.defaultValue = defaults;
    }

    GroupDefinition Group(const pugi::xml_node& node) const {
        CheckAttributes(node, {"name", "category", "composition", "minimum", "maximum"});
        GroupDefinition group;
        group.name = Required(node, "name");
        if (node.attribute("category")) {
            group.category = Required(node, "category");
        }
        group.composition = Flag(node, "composition").value_or(false);
        group.minimum = Number(node, "minimum", 0);
        group.maximum = Number(node, "maximum", GroupDefinition::kUnlimited);
        for (const pugi::xml_node child : node.children()) {
            if (IsWhiteSpace(child)) {
                continue;
            }
            Expect(child, {"child"}, node);
            CheckAttributes(child, {"definition"});
            ExpectEmpty(child);
            group.allowedChildren.push_back(Required(child, "definition"));
        }
        return group;
    }

    static kxStlVector<kxString> Words(std::string_view text) {
        constexpr std::string_view blanks = " \t\r\n";
        kxStlVector<kxString> words;
        while (true) {
            const std::size_t start = text.find_first_not_of(blanks);
            if (start == std::string_view::npos) {
                return words;
            }
            text.remove_prefix(start);
            const std::size_t length = std::min(text.find_first_of(blanks), text.size());
            words.emplace_back(text.substr(0, length));
            text.remove_prefix(length);
        }
    }

    std::string_view _text;
    const kxString& _file;
    std::vector<std::size_t> _lineEnds;
    pugi::xml_document _document;
};

}  // namespace

void ReadDeclarations(std::string_view text,
                      const kxString& file,
                      std::vector<LocatedDeclaration>& declarations) {
    if (text.size() > kLargestText) {
        RefuseAt(file, 1, "the catalogue has more than 128 MiB");
    }
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (text.starts_with(byteOrderMark)) {
        text.remove_prefix(byteOrderMark.size());
    }
    CheckXmlText(text, file);
    Reader(text, file).Read(declarations);
}

}  // namespace kxudm::catalogue
