// A declaration with the place it was read from, on its way from the reader to the checks.
#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "catalogue/Definition.h"

namespace kxudm::catalogue {

struct LocatedDeclaration {
    DefinitionDeclaration declaration;
    // Empty for a declaration that comes from no file; the lines are then not used.
    kxString file;
    int line = 0;
    // One for each attribute and group of the declaration.
    std::vector<int> attributeLines;
    std::vector<int> groupLines;
    // Takes the place of an earlier definition of the same name, which must be there.
    bool replace = false;
};

// Throws UDMException "file:line: reason", or the reason alone without a file.
[[noreturn]] void RefuseAt(const kxString& file, int line, const kxString& reason);

// Appends the declarations of one XML document. Checks what is XML: its form, elements,
// attributes, flags and numbers. Defaults and valid values are still texts; what they and the
// names mean is checked by CheckDeclaration.
void ReadDeclarations(std::string_view text,
                      const kxString& file,
                      std::vector<LocatedDeclaration>& declarations);

// Refuses, with its line, a text that is not UTF-8, holds a control character, a document type or
// an entity other than the five of XML, or nests deeper than a catalogue can. Linear in the text.
void CheckXmlText(std::string_view text, const kxString& file);

// Checks a declaration and brings types, defaults and valid values to their common form. `base`
// is the resolved base, or null. Names of allowed children are checked by the catalogue.
void CheckDeclaration(LocatedDeclaration& located, const ContentDefinition* base);

// The document of the declarations of `definitions`, as Catalogue::ToXml tells.
kxString WriteDeclarations(
    const std::vector<std::unique_ptr<const ContentDefinition>>& definitions);

}  // namespace kxudm::catalogue
