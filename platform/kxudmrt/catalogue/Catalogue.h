// The content definitions of a library: read from XML, checked, resolved, and immutable.
//
// A library copies the text of ToXml() at its creation and reads it back from then on, so that it
// opens wherever it goes. A catalogue is held by shared_ptr<const Catalogue>; pointers to its
// definitions live as long as it does. A change makes a new catalogue and leaves the old one to
// whoever still reads it. Every thread may read; nothing here writes.
//
//     auto catalogue = Catalogue::ReadFiles("engineering.xml", customFolder);
//     const ContentDefinition& part = catalogue->Get("UDMPart");
//     kxVariant mass = part.CheckedValue("mass", kxVariant("2.5"));   // DOUBLE 2.5
//     const ContentDefinition* deck = catalogue->ForExtension("INP");
//     store.Put(catalogue->ToXml());
//
// The format is described for administrators in docs/catalogue-format.md. A catalogue with an
// error is refused whole by a UDMException "file:line: reason". Limits: 16 MiB a file, 10,000
// definitions, 1,000 attributes and 1,000 groups a definition, 64 levels of inheritance.
#pragma once

#include <kxutl/kxStlSet.h>

#include <memory>

#include "catalogue/Definition.h"
#include "catalogue/Value.h"

namespace kxudm::catalogue {

struct LocatedDeclaration;

class Catalogue {
  public:
    // Reads one file. Throws UDMException if it can't be read or has an error.
    static std::shared_ptr<const Catalogue> ReadFile(const kxString& path);

    // Reads `mainFile`, then every *.xml directly in `customFolder` in the byte order of names. A
    // custom file may replace an earlier definition by marking its own with replace="true". An
    // empty `customFolder`, or one that is not there, adds nothing.
    static std::shared_ptr<const Catalogue> ReadFiles(const kxString& mainFile,
                                                      const kxString& customFolder);

    // Reads the text of one document; `nameForErrors` stands for the file in error texts.
    static std::shared_ptr<const Catalogue> ReadText(std::string_view text,
                                                     const kxString& nameForErrors);

    Catalogue(const Catalogue&) = delete;
    Catalogue& operator=(const Catalogue&) = delete;
    ~Catalogue();

    // The whole catalogue as one document in UTF-8: equal catalogues give equal bytes, and
    // ReadText of it gives an equal catalogue.
    kxString ToXml() const;

    // Null if there is no definition of that name. Names are compared byte by byte.
    const ContentDefinition* Find(std::string_view name) const;
    // The same, but throws UDMNotFoundException, which names the definition.
    const ContentDefinition& Get(std::string_view name) const;

    // All definitions, abstract ones too, in order of definition.
    const std::vector<std::unique_ptr<const ContentDefinition>>& Definitions() const {
        return _definitions;
    }
    kxStlVector<kxString> Names() const;
    // Class names of all definitions, each once.
    kxStlSet<kxString> ClassNames() const;

    // The definition for files with this extension, with or without a leading dot, ASCII letters
    // in any case: the one that claims it, else the one that claims "*", else null. A file
    // without an extension has the empty one.
    const ContentDefinition* ForExtension(std::string_view extension) const;

    // Names of the concrete definitions that the group takes, derived ones too, each once, in
    // order of definition. The empty group stands for all groups of the category "owner".
    // Throws UDMNotFoundException for an unknown definition or group.
    kxStlVector<kxString> AllowedChildren(const kxString& definition, const kxString& group) const;

    // Names of the groups of that category in the definition's order; "" stands for all. A
    // category without groups gives none. Throws UDMNotFoundException for an unknown definition.
    kxStlVector<kxString> GroupNames(const kxString& definition, const kxString& category) const;

    // A new catalogue with `declaration` in place of the definition of its name, or behind the
    // others if there is none. Throws UDMException if the whole would have an error.
    std::shared_ptr<const Catalogue> WithDefinition(const DefinitionDeclaration& declaration) const;

    // The same for several, which may need each other.
    std::shared_ptr<const Catalogue> WithDefinitions(
        const std::vector<DefinitionDeclaration>& declarations) const;

    // Only these definitions, and those that they need: bases, and what groups allow. In an order
    // that doesn't depend on this catalogue's: by their number of bases, then by name. Throws
    // UDMNotFoundException for an unknown name.
    std::shared_ptr<const Catalogue> Needed(const std::vector<std::string>& names) const;

    // Equal definitions in equal order.
    bool operator==(const Catalogue& other) const;

  private:
    explicit Catalogue(std::vector<std::unique_ptr<const ContentDefinition>> definitions);
    static std::shared_ptr<const Catalogue> Make(std::vector<LocatedDeclaration> declarations);

    std::vector<std::unique_ptr<const ContentDefinition>> _definitions;
    // Keys point into the definitions.
    std::unordered_map<std::string_view, const ContentDefinition*> _byName;
    std::unordered_map<std::string_view, const ContentDefinition*> _byExtension;
};

}  // namespace kxudm::catalogue
