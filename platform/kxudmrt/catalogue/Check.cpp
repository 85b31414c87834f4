#include <kxudm/UDMException.h>

#include <algorithm>
#include <set>

#include "catalogue/Located.h"
#include "catalogue/Value.h"

namespace kxudm::catalogue {

namespace {

constexpr std::size_t kLongestName = 128;
constexpr std::size_t kMostAttributes = 1000;
constexpr std::size_t kMostGroups = 1000;
constexpr unsigned kMostLevels = 64;

kxString Quoted(std::string_view text) {
    return "'" + Printable(text) + "'";
}

bool IsLetterOrDigit(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

// Names stand in queries, exported documents and messages, so they keep to few characters.
bool IsName(std::string_view name) {
    const auto allowed = [](char c) {
        return IsLetterOrDigit(c) || c == '_' || c == '-' || c == '.' || c == ' ';
    };
    return !name.empty() && name.size() <= kLongestName &&
           (IsLetterOrDigit(name.front()) || name.front() == '_') && name.back() != ' ' &&
           std::all_of(name.begin(), name.end(), allowed);
}

bool IsExtension(std::string_view extension) {
    return FirstInvalidUtf8(extension) == std::string_view::npos &&
           std::none_of(extension.begin(), extension.end(), [](char c) {
               return static_cast<unsigned char>(c) <= 0x20 || c == 0x7F ||
                      std::string_view("./\\\":*?").find(c) != std::string_view::npos;
           });
}

// Checks one declaration; each refusal names the line of the part that is wrong.
class DeclarationCheck {
  public:
    DeclarationCheck(LocatedDeclaration& located, const ContentDefinition* base)
        : _located(located), _declaration(located.declaration), _base(base) {}

    void Run() {
        CheckHead();
        CheckExtensions();
        for (std::size_t i = 0; i < _declaration.attributes.size(); ++i) {
            _line = LineOf(_located.attributeLines, i);
            CheckAttribute(_declaration.attributes[i]);
        }
        for (std::size_t i = 0; i < _declaration.groups.size(); ++i) {
            _line = LineOf(_located.groupLines, i);
            CheckGroup(_declaration.groups[i]);
        }
    }

  private:
    int LineOf(const std::vector<int>& lines, std::size_t index) const {
        return index < lines.size() ? lines[index] : _located.line;
    }

    [[noreturn]] void Refuse(const kxString& reason) const {
        RefuseAt(_located.file, _line, reason);
    }

    void CheckName(const kxString& what, const kxString& name) const {
        if (!IsName(name)) {
            Refuse(what + " " + Quoted(name) +
                   " is not a name: expected are 1 to 128 ASCII letters, digits, '_', '-', '.' and "
                   "blanks inside, with a letter, digit or '_' first");
        }
    }

    // Texts for users. Tab and line feed are what XML keeps in every place: it reads a carriage
    // return as a line feed, and knows no other control characters.
    void CheckText(const kxString& what, const kxString& text) const {
        const bool controls = std::any_of(text.begin(), text.end(), [](char c) {
            return static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n';
        });
        if (controls || FirstInvalidUtf8(text) != std::string_view::npos) {
            Refuse(what + " " + Quoted(text) + " is not UTF-8 text without control characters");
        }
    }

    void CheckHead() {
        CheckName("definition", _declaration.name);
        _self = "definition " + Quoted(_declaration.name);
        if (!_declaration.type.empty()) {
            CheckName("type of " + _self, _declaration.type);
        }
        if (!_declaration.className.empty()) {
            CheckName("class of " + _self, _declaration.className);
        }
        CheckText("display name of " + _self, _declaration.displayName);
        if (_base != nullptr && _base->Depth() + 1 >= kMostLevels) {
            Refuse(_self + " is more than 64 levels of inheritance deep");
        }
        if (_declaration.versioned == false && _declaration.branchable == true) {
            Refuse(_self + " is branchable but not versioned; only revisions can branch");
        }
        CheckCount(
            "attributes",
            (_base != nullptr ? _base->Attributes().size() : 0) + _declaration.attributes.size(),
            kMostAttributes);
        CheckCount("groups",
                   (_base != nullptr ? _base->Groups().size() : 0) + _declaration.groups.size(),
                   kMostGroups);
    }

    void CheckCount(const kxString& what, std::size_t count, std::size_t most) const {
        if (count > most) {
            Refuse(_self + " has " + std::to_string(count) + " " + what + "; at most " +
                   std::to_string(most) + " are allowed");
        }
    }

    void CheckExtensions() {
        if (_declaration.isAbstract && !_declaration.fileExtensions.empty()) {
            Refuse(_self + " is abstract and can't claim file extensions");
        }
        std::set<kxString> seen;
        for (kxString& extension : _declaration.fileExtensions) {
            std::transform(extension.begin(), extension.end(), extension.begin(), [](char c) {
                return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
            });
            if (extension.empty() || (extension != "*" && !IsExtension(extension))) {
                Refuse(_self + " claims " + Quoted(extension) +
                       ", which is no file extension: expected is one without dot, or '*'");
            }
            if (!seen.insert(extension).second) {
                Refuse(_self + " claims the file extension " + Quoted(extension) + " twice");
            }
        }
    }

    void CheckAttribute(AttributeDefinition& attribute) {
        CheckName("attribute of " + _self, attribute.name);
        const kxString what = "attribute " + Quoted(attribute.name) + " of " + _self;
        if (!_attributes.insert(attribute.name).second) {
            Refuse(what + " is declared twice");
        }
        if (!DataTypeOf(attribute.dataType)) {
            Refuse(what + " has the unknown data type " + Quoted(attribute.dataType) +
                   "; known are Boolean, Color, Double, Integer, String, StringList and Time");
        }
        const AttributeDefinition* inherited =
            _base != nullptr ? _base->FindAttribute(attribute.name) : nullptr;
        if (inherited != nullptr && inherited->dataType != attribute.dataType) {
            Refuse(what + " has the data type " + attribute.dataType +
                   ", but is inherited with the data type " + inherited->dataType);
        }
        if (attribute.displayName.empty()) {
            attribute.displayName = attribute.name;
        }
        CheckText("display name of " + what, attribute.displayName);
        CheckText("description of " + what, attribute.description);
        CheckText("category of " + what, attribute.category);
        CheckValidValues(what, attribute);
        CheckDefault(what, attribute);
    }

    void CheckValidValues(const kxString& what, AttributeDefinition& attribute) {
        if (attribute.validValues.empty()) {
            return;
        }
        if (DataTypeOf(attribute.dataType) == DataType::Boolean) {
            Refuse(what + " is Boolean and can't have valid values");
        }
        AttributeDefinition single = attribute;
        single.validValues.clear();
        // An empty text takes a value away, so it is never one of the valid ones.
        single.mandatory = true;
        if (attribute.dataType == "StringList") {
            single.dataType = "String";
        }
        std::set<kxString> seen;
        for (kxString& text : attribute.validValues) {
            text = Value(what + " has a valid value that does not fit", single, text).GetString();
            CheckText("valid value of " + what, text);
            if (!seen.insert(text).second) {
                Refuse(what + " has the valid value " + Quoted(text) + " twice");
            }
        }
    }

    void CheckDefault(const kxString& what, AttributeDefinition& attribute) {
        if (attribute.defaultValue.IsEmpty()) {
            return;
        }
        attribute.defaultValue =
            Value(what + " has a default that does not fit", attribute, attribute.defaultValue);
        for (const kxString& text : attribute.defaultValue.GetStringList()) {
            CheckText("default of " + what, text);
        }
    }

    kxVariant Value(const kxString& problem,
                    const AttributeDefinition& attribute,
                    const kxVariant& value) const {
        kxString cause;
        try {
            return CheckedValue(attribute, value);
        } catch (const UDMException& error) {
            cause = error.what();
        }
        Refuse(problem + ": " + cause);
    }

    void CheckGroup(const GroupDefinition& group) {
        CheckName("group of " + _self, group.name);
        const kxString what = "group " + Quoted(group.name) + " of " + _self;
        if (!_groups.insert(group.name).second) {
            Refuse(what + " is declared twice");
        }
        if (group.category != kOwner && group.category != kReference && group.category != kFolder &&
            group.category != kCategory) {
            Refuse(what + " has the unknown category " + Quoted(group.category) +
                   "; known are owner, reference, folder and category");
        }
        const GroupDefinition* inherited =
            _base != nullptr ? _base->FindGroup(group.name) : nullptr;
        if (inherited != nullptr && inherited->category != group.category) {
            Refuse(what + " has the category " + group.category +
                   ", but is inherited with the category " + inherited->category);
        }
        if (group.composition && group.category != kOwner) {
            Refuse(what + " is a composition; only a group of the category owner can be one");
        }
        if (group.maximum == 0 || group.minimum > group.maximum) {
            Refuse(what + " takes at least " + std::to_string(group.minimum) + " and at most " +
                   std::to_string(group.maximum) +
                   "; expected is a maximum of 1 or more, not below the minimum");
        }
        if (group.allowedChildren.empty()) {
            Refuse(what + " allows no child; expected is a <child definition=\"...\"/>");
        }
        std::set<kxString> seen;
        for (const kxString& child : group.allowedChildren) {
            if (!seen.insert(child).second) {
                Refuse(what + " allows " + Quoted(child) + " twice");
            }
        }
    }

    LocatedDeclaration& _located;
    DefinitionDeclaration& _declaration;
    const ContentDefinition* _base;
    int _line = _located.line;
    kxString _self;
    std::set<kxString> _attributes;
    std::set<kxString> _groups;
};

}  // namespace

void CheckDeclaration(LocatedDeclaration& located, const ContentDefinition* base) {
    DeclarationCheck(located, base).Run();
}

}  // namespace kxudm::catalogue
