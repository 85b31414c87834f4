// The parts of a content definition: what is declared about it, and what it is once the
// definitions that it builds on are known.
//
// A DefinitionDeclaration is one <definition> of a catalogue as it was written: only its own
// attributes and groups, and no answer where the base decides. A ContentDefinition is the same
// after inheritance: complete, checked and immutable. It belongs to the Catalogue that made it
// and lives as long as that; keep the catalogue's shared_ptr beside a pointer to one (an aliasing
// shared_ptr does that). All of it can be read by any number of threads.
#pragma once

#include <kxutl/kxStlVector.h>
#include <kxutl/kxString.h>
#include <kxutl/kxVariant.h>

#include <limits>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace kxudm::catalogue {

// Data types by their names in the catalogue. Value.h tells which values each of them takes.
enum class DataType { Boolean, Color, Double, Integer, String, StringList, Time };

// The type of that name, or nothing. Names are compared byte by byte.
std::optional<DataType> DataTypeOf(std::string_view name);

// Categories of groups. No other is allowed.
inline constexpr std::string_view kOwner = "owner";
inline constexpr std::string_view kReference = "reference";
inline constexpr std::string_view kFolder = "folder";
inline constexpr std::string_view kCategory = "category";

struct AttributeDefinition {
    kxString name;
    // As shown to users; a resolved definition has the name here if none was declared.
    kxString displayName;
    kxString description;
    // Heading under which a user interface lists the attribute; may be empty.
    kxString category;
    // "Boolean", "Color", "Double", "Integer", "String", "StringList" or "Time".
    kxString dataType;
    // The value of a new entity; EMPTY if it starts without one. A resolved definition has it in
    // the kind that CheckedValue gives.
    kxVariant defaultValue;
    // The only values allowed, in the order of the declaration, as the texts that CheckedValue's
    // result has; empty if there is no such limit. For a list each entry must be among them.
    kxStlVector<kxString> validValues;
    // Kept by the runtime itself.
    bool system = false;
    bool displayable = true;
    // Must not be without a value once it is set.
    bool mandatory = false;
    // A user may change it. CheckedValue does not look at this.
    bool editable = true;

    bool operator==(const AttributeDefinition&) const = default;
};

struct GroupDefinition {
    static constexpr unsigned kUnlimited = std::numeric_limits<unsigned>::max();

    kxString name;
    // "owner", "reference", "folder" or "category".
    kxString category = kxString(kOwner);
    // Names of definitions; whatever is derived from one of them is allowed too. Never empty.
    kxStlVector<kxString> allowedChildren;
    // Children belong to one parent and are deleted with it; only for the category "owner".
    bool composition = false;
    unsigned minimum = 0;
    unsigned maximum = kUnlimited;

    bool operator==(const GroupDefinition&) const = default;
};

// One definition as written. Empty texts and empty optionals mean "as the base has it".
struct DefinitionDeclaration {
    kxString name;
    // Name of the definition that this one builds on; empty for a root.
    kxString base;
    // Empty: the base's type; without a base, the name.
    kxString type;
    // Empty: the name.
    kxString displayName;
    // Empty: the base's class; without a base, the name.
    kxString className;
    bool isAbstract = false;
    // Without a base: versioned, branchable if versioned, found by searches.
    std::optional<bool> versioned;
    std::optional<bool> branchable;
    std::optional<bool> excludedFromSearch;
    // Claimed by this definition alone, not by derived ones: lower case, without a leading dot.
    // "*" claims every extension that no definition names.
    kxStlVector<kxString> fileExtensions;
    // Own ones only. One of an inherited name replaces the inherited one in its place; its data
    // type, or its category, must be the same.
    std::vector<AttributeDefinition> attributes;
    std::vector<GroupDefinition> groups;

    bool operator==(const DefinitionDeclaration&) const = default;
};

class ContentDefinition {
  public:
    // Made by Catalogue only. `base` may be null; it must outlive this object.
    ContentDefinition(DefinitionDeclaration declaration, const ContentDefinition* base);
    ContentDefinition(const ContentDefinition&) = delete;
    ContentDefinition& operator=(const ContentDefinition&) = delete;
    ~ContentDefinition() = default;

    const kxString& Name() const { return _declaration.name; }
    // What icon rules see, such as "Foldertype" or "Categories".
    const kxString& Type() const { return _type; }
    const kxString& DisplayName() const { return _displayName; }
    const kxString& ClassName() const { return _className; }
    // Null for a root.
    const ContentDefinition* Base() const { return _base; }
    // Number of definitions above this one.
    unsigned Depth() const { return _depth; }
    // No entity can be of an abstract definition.
    bool IsAbstract() const { return _declaration.isAbstract; }
    bool IsVersioned() const { return _versioned; }
    // Never true for an unversioned definition.
    bool IsBranchable() const { return _branchable; }
    bool IsExcludedFromSearch() const { return _excludedFromSearch; }
    const kxStlVector<kxString>& FileExtensions() const { return _declaration.fileExtensions; }

    // Inherited ones first, then own ones, each in order of declaration. No null pointers.
    const std::vector<const AttributeDefinition*>& Attributes() const { return _attributes; }
    const std::vector<const GroupDefinition*>& Groups() const { return _groups; }

    // Null if there is none of that name. Names are compared byte by byte.
    const AttributeDefinition* FindAttribute(std::string_view name) const;
    const GroupDefinition* FindGroup(std::string_view name) const;

    // Declared alike, and so is each definition above it: the two answer every question alike.
    bool IsSameAs(const ContentDefinition& other) const;

    // True for the definition's own name and the name of each definition above it.
    bool IsDerivedFrom(std::string_view definition) const;
    // This definition, or one above it, is among the group's allowed children.
    bool IsAllowedIn(const GroupDefinition& group) const;
    // The first group, in order, that takes `child`; `category` limits the search unless empty.
    // Null if none does. For operations whose caller names no group.
    const GroupDefinition* FirstGroupFor(const ContentDefinition& child,
                                         std::string_view category) const;

    // `value` as this definition's attribute takes it, see Value.h. Throws
    // UDMNotFoundException if there is no such attribute, UDMException if the value does not fit.
    kxVariant CheckedValue(std::string_view attribute, const kxVariant& value) const;

    // What was written, with types, defaults and valid values brought to their common form.
    const DefinitionDeclaration& Declaration() const { return _declaration; }

  private:
    DefinitionDeclaration _declaration;
    const ContentDefinition* _base;
    unsigned _depth = 0;
    kxString _type;
    kxString _displayName;
    kxString _className;
    bool _versioned = true;
    bool _branchable = true;
    bool _excludedFromSearch = false;
    std::vector<const AttributeDefinition*> _attributes;
    std::vector<const GroupDefinition*> _groups;
    // Own ones only: a lookup goes on in the base. Keys point into _declaration.
    std::unordered_map<std::string_view, const AttributeDefinition*> _ownAttributes;
    std::unordered_map<std::string_view, const GroupDefinition*> _ownGroups;
};

}  // namespace kxudm::catalogue
