#include "profile/ImportDefinitions.h"

#include <kxudm/UDMException.h>

#include <algorithm>
#include <map>

namespace kxudm::profile {

namespace {

using catalogue::AttributeDefinition;
using catalogue::Catalogue;
using catalogue::ContentDefinition;
using catalogue::DefinitionDeclaration;
using catalogue::GroupDefinition;

[[noreturn]] void Refuse(const ContentDefinition& theirs, const std::string& why) {
    throw UDMException("The content definition \"" + theirs.Name() +
                       "\" of the archive doesn't fit that of the library: " + why +
                       "; bring one of them in line with the other");
}

std::string Flag(const char* what, bool is) {
    return is ? what : std::string("not ") + what;
}

void RequireSameNature(const ContentDefinition& ours, const ContentDefinition& theirs) {
    const std::string ourBase = ours.Base() == nullptr ? kxString() : ours.Base()->Name();
    const std::string theirBase = theirs.Base() == nullptr ? kxString() : theirs.Base()->Name();
    if (ours.Type() != theirs.Type()) {
        Refuse(theirs,
               "its type is \"" + theirs.Type() + "\" there and \"" + ours.Type() + "\" here");
    }
    if (ourBase != theirBase) {
        Refuse(theirs, "its base is \"" + theirBase + "\" there and \"" + ourBase + "\" here");
    }
    if (ours.IsVersioned() != theirs.IsVersioned()) {
        Refuse(theirs,
               "it is " + Flag("versioned", theirs.IsVersioned()) + " there and " +
                   Flag("versioned", ours.IsVersioned()) + " here");
    }
    if (ours.IsAbstract() != theirs.IsAbstract()) {
        Refuse(theirs,
               "it is " + Flag("abstract", theirs.IsAbstract()) + " there and " +
                   Flag("abstract", ours.IsAbstract()) + " here");
    }
}

void AddAttributes(const ContentDefinition& ours,
                   const ContentDefinition& theirs,
                   DefinitionDeclaration& declaration) {
    for (const AttributeDefinition* their : theirs.Attributes()) {
        const AttributeDefinition* our = ours.FindAttribute(their->name);
        if (our != nullptr && our->dataType != their->dataType) {
            Refuse(theirs,
                   "its attribute \"" + their->name + "\" is a " + their->dataType +
                       " there and a " + our->dataType + " here");
        }
    }
    for (const AttributeDefinition& their : theirs.Declaration().attributes) {
        if (ours.FindAttribute(their.name) == nullptr) {
            declaration.attributes.push_back(their);
        }
    }
}

// Allowed children that are missing can be added to a group of the definition's own only; one that
// it inherits is dealt with where it is declared.
void AddToGroup(const GroupDefinition& their, DefinitionDeclaration& declaration) {
    for (GroupDefinition& our : declaration.groups) {
        if (our.name != their.name) {
            continue;
        }
        for (const kxString& child : their.allowedChildren) {
            if (std::find(our.allowedChildren.begin(), our.allowedChildren.end(), child) ==
                our.allowedChildren.end()) {
                our.allowedChildren.push_back(child);
            }
        }
    }
}

void AddGroups(const ContentDefinition& ours,
               const ContentDefinition& theirs,
               DefinitionDeclaration& declaration) {
    for (const GroupDefinition* their : theirs.Groups()) {
        const GroupDefinition* our = ours.FindGroup(their->name);
        if (our == nullptr) {
            continue;
        }
        if (our->category != their->category) {
            Refuse(theirs,
                   "its group \"" + their->name + "\" is of the category \"" + their->category +
                       "\" there and \"" + our->category + "\" here");
        }
        if (our->composition != their->composition) {
            Refuse(theirs,
                   "its group \"" + their->name + "\" holds its children " +
                       Flag("by composition", their->composition) + " there and " +
                       Flag("by composition", our->composition) + " here");
        }
    }
    for (const GroupDefinition& their : theirs.Declaration().groups) {
        if (ours.FindGroup(their.name) == nullptr) {
            declaration.groups.push_back(their);
        } else {
            AddToGroup(their, declaration);
        }
    }
}

DefinitionDeclaration Added(const Catalogue& library, const ContentDefinition& theirs) {
    DefinitionDeclaration declaration = theirs.Declaration();
    std::erase_if(declaration.fileExtensions, [&](const kxString& extension) {
        const ContentDefinition* taken = library.ForExtension(extension);
        return taken != nullptr && std::find(taken->FileExtensions().begin(),
                                             taken->FileExtensions().end(),
                                             extension) != taken->FileExtensions().end();
    });
    return declaration;
}

DefinitionDeclaration Merged(const ContentDefinition& ours, const ContentDefinition& theirs) {
    RequireSameNature(ours, theirs);
    DefinitionDeclaration declaration = ours.Declaration();
    AddAttributes(ours, theirs, declaration);
    AddGroups(ours, theirs, declaration);
    return declaration;
}

// Extensions that the archive's definitions claim go to them.
void TakeExtensions(const Catalogue& library,
                    const Catalogue& archive,
                    std::map<kxString, DefinitionDeclaration>& changed) {
    for (const auto& ours : library.Definitions()) {
        if (archive.Find(ours->Name()) != nullptr) {
            continue;
        }
        DefinitionDeclaration declaration = ours->Declaration();
        const auto taken = std::erase_if(declaration.fileExtensions, [&](const kxString& each) {
            const ContentDefinition* claim = archive.ForExtension(each);
            return claim != nullptr && std::find(claim->FileExtensions().begin(),
                                                 claim->FileExtensions().end(),
                                                 each) != claim->FileExtensions().end();
        });
        if (taken > 0) {
            changed[ours->Name()] = declaration;
        }
    }
}

}  // namespace

std::shared_ptr<const Catalogue> MergedCatalogue(const std::shared_ptr<const Catalogue>& library,
                                                 const Catalogue& archive,
                                                 bool isEmpty) {
    std::vector<DefinitionDeclaration> declarations;
    for (const auto& theirs : archive.Definitions()) {
        const ContentDefinition* const ours = library->Find(theirs->Name());
        if (isEmpty) {
            declarations.push_back(theirs->Declaration());
        } else if (ours == nullptr) {
            declarations.push_back(Added(*library, *theirs));
        } else {
            declarations.push_back(Merged(*ours, *theirs));
        }
    }
    if (isEmpty) {
        std::map<kxString, DefinitionDeclaration> changed;
        TakeExtensions(*library, archive, changed);
        for (auto& [name, declaration] : changed) {
            declarations.push_back(std::move(declaration));
        }
    }
    const std::shared_ptr<const Catalogue> merged = library->WithDefinitions(declarations);
    return *merged == *library ? library : merged;
}

}  // namespace kxudm::profile
