#include "catalogue/Catalogue.h"

#include <kxudm/UDMException.h>

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "catalogue/Located.h"

namespace kxudm::catalogue {

namespace {

constexpr std::size_t kMostDefinitions = 10000;

kxString Quoted(std::string_view text) {
    return "'" + Printable(text) + "'";
}

// Turns declarations into definitions: bases before what builds on them, results in the order of
// the declarations.
class Resolver {
  public:
    explicit Resolver(std::vector<LocatedDeclaration> declarations)
        : _declarations(std::move(declarations)) {}

    std::vector<std::unique_ptr<const ContentDefinition>> Run() {
        Index();
        _definitions.resize(_declarations.size());
        for (std::size_t i = 0; i < _declarations.size(); ++i) {
            Resolve(i);
        }
        for (std::size_t i = 0; i < _declarations.size(); ++i) {
            CheckChildren(i);
            ClaimExtensions(i);
        }
        return std::move(_definitions);
    }

  private:
    [[noreturn]] void Refuse(const LocatedDeclaration& located, const kxString& reason) const {
        RefuseAt(located.file, located.line, reason);
    }

    static kxString Where(const LocatedDeclaration& located) {
        return located.file.empty() ? kxString()
                                    : kxString(" (" + Printable(located.file) + ":" +
                                               std::to_string(located.line) + ")");
    }

    // Gives each name its place; a replacing declaration takes the place of the earlier one.
    void Index() {
        std::vector<LocatedDeclaration> kept;
        for (LocatedDeclaration& located : _declarations) {
            const kxString& name = located.declaration.name;
            const auto found = _places.find(name);
            if (found == _places.end()) {
                if (located.replace) {
                    Refuse(located,
                           "definition " + Quoted(name) +
                               " is marked to replace one, but there is none of that name before");
                }
                _places.emplace(name, kept.size());
                kept.push_back(std::move(located));
            } else if (located.replace) {
                kept[found->second] = std::move(located);
            } else {
                Refuse(located,
                       "definition " + Quoted(name) + " is there already" +
                           Where(kept[found->second]) + "; replace=\"true\" replaces it");
            }
        }
        if (kept.size() > kMostDefinitions) {
            Refuse(kept[kMostDefinitions], "a catalogue has at most 10000 definitions");
        }
        _declarations = std::move(kept);
    }

    std::size_t BaseOf(std::size_t index) const {
        const LocatedDeclaration& located = _declarations[index];
        const auto found = _places.find(located.declaration.base);
        if (found == _places.end()) {
            Refuse(located,
                   "definition " + Quoted(located.declaration.name) + " has the unknown base " +
                       Quoted(located.declaration.base));
        }
        return found->second;
    }

    // Collects what is not resolved yet from here up to the root, then resolves downwards.
    void Resolve(std::size_t index) {
        std::vector<std::size_t> chain;
        const ContentDefinition* base = nullptr;
        for (std::size_t at = index; base == nullptr; at = BaseOf(at)) {
            if (_definitions[at] != nullptr) {
                base = _definitions[at].get();
                break;
            }
            if (chain.size() >= _declarations.size()) {
                RefuseCycle(index);
            }
            chain.push_back(at);
            if (_declarations[at].declaration.base.empty()) {
                break;
            }
        }
        for (auto at = chain.rbegin(); at != chain.rend(); ++at) {
            CheckDeclaration(_declarations[*at], base);
            _definitions[*at] =
                std::make_unique<const ContentDefinition>(_declarations[*at].declaration, base);
            base = _definitions[*at].get();
        }
    }

    [[noreturn]] void RefuseCycle(std::size_t index) const {
        constexpr std::size_t mostShown = 10;
        const kxString& name = _declarations[index].declaration.name;
        kxString path = Quoted(name);
        std::size_t at = index;
        for (std::size_t i = 0; i < mostShown; ++i) {
            at = BaseOf(at);
            path += " -> " + Quoted(_declarations[at].declaration.name);
            if (at == index) {
                break;
            }
        }
        Refuse(_declarations[index],
               "definition " + Quoted(name) + " is in, or builds on, a cycle of bases: " + path);
    }

    void CheckChildren(std::size_t index) const {
        const LocatedDeclaration& located = _declarations[index];
        const std::vector<GroupDefinition>& groups = located.declaration.groups;
        for (std::size_t i = 0; i < groups.size(); ++i) {
            for (const kxString& child : groups[i].allowedChildren) {
                if (!_places.contains(child)) {
                    RefuseAt(located.file,
                             i < located.groupLines.size() ? located.groupLines[i] : located.line,
                             "group " + Quoted(groups[i].name) + " of definition " +
                                 Quoted(located.declaration.name) +
                                 " allows the unknown definition " + Quoted(child));
                }
            }
        }
    }

    void ClaimExtensions(std::size_t index) {
        const LocatedDeclaration& located = _declarations[index];
        for (const kxString& extension : located.declaration.fileExtensions) {
            const auto [claim, added] = _claims.emplace(extension, index);
            if (!added) {
                const LocatedDeclaration& other = _declarations[claim->second];
                Refuse(located,
                       "definition " + Quoted(located.declaration.name) +
                           " claims the file extension " + Quoted(extension) +
                           ", which definition " + Quoted(other.declaration.name) + Where(other) +
                           " claims already");
            }
        }
    }

    std::vector<LocatedDeclaration> _declarations;
    std::vector<std::unique_ptr<const ContentDefinition>> _definitions;
    std::unordered_map<kxString, std::size_t> _places;
    std::unordered_map<kxString, std::size_t> _claims;
};

}  // namespace

Catalogue::Catalogue(std::vector<std::unique_ptr<const ContentDefinition>> definitions)
    : _definitions(std::move(definitions)) {
    for (const auto& definition : _definitions) {
        _byName.emplace(definition->Name(), definition.get());
        for (const kxString& extension : definition->FileExtensions()) {
            _byExtension.emplace(extension, definition.get());
        }
    }
}

Catalogue::~Catalogue() = default;

std::shared_ptr<const Catalogue> Catalogue::Make(std::vector<LocatedDeclaration> declarations) {
    return std::shared_ptr<const Catalogue>(new Catalogue(Resolver(std::move(declarations)).Run()));
}

std::shared_ptr<const Catalogue> Catalogue::ReadText(std::string_view text,
                                                     const kxString& nameForErrors) {
    std::vector<LocatedDeclaration> declarations;
    ReadDeclarations(text, nameForErrors, declarations);
    return Make(std::move(declarations));
}

kxString Catalogue::ToXml() const {
    return WriteDeclarations(_definitions);
}

const ContentDefinition* Catalogue::Find(std::string_view name) const {
    const auto found = _byName.find(name);
    return found == _byName.end() ? nullptr : found->second;
}

const ContentDefinition& Catalogue::Get(std::string_view name) const {
    const ContentDefinition* definition = Find(name);
    if (definition == nullptr) {
        throw UDMNotFoundException("there is no content definition " + Quoted(name));
    }
    return *definition;
}

kxStlVector<kxString> Catalogue::Names() const {
    kxStlVector<kxString> names;
    names.reserve(_definitions.size());
    for (const auto& definition : _definitions) {
        names.push_back(definition->Name());
    }
    return names;
}

kxStlSet<kxString> Catalogue::ClassNames() const {
    kxStlSet<kxString> names;
    for (const auto& definition : _definitions) {
        names.insert(definition->ClassName());
    }
    return names;
}

const ContentDefinition* Catalogue::ForExtension(std::string_view extension) const {
    if (extension.starts_with('.')) {
        extension.remove_prefix(1);
    }
    kxString lowered(extension);
    std::transform(lowered.begin(), lowered.end(), lowered.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    auto found = _byExtension.find(lowered);
    if (found == _byExtension.end()) {
        found = _byExtension.find("*");
    }
    return found == _byExtension.end() ? nullptr : found->second;
}

kxStlVector<kxString> Catalogue::AllowedChildren(const kxString& definition,
                                                 const kxString& group) const {
    const ContentDefinition& parent = Get(definition);
    std::vector<const GroupDefinition*> groups;
    if (!group.empty()) {
        groups.push_back(parent.FindGroup(group));
        if (groups.front() == nullptr) {
            throw UDMNotFoundException("definition " + Quoted(definition) + " has no group " +
                                       Quoted(group));
        }
    } else {
        std::copy_if(
            parent.Groups().begin(),
            parent.Groups().end(),
            std::back_inserter(groups),
            [](const GroupDefinition* candidate) { return candidate->category == kOwner; });
    }
    kxStlVector<kxString> names;
    for (const auto& child : _definitions) {
        const auto takes = [&](const GroupDefinition* candidate) {
            return child->IsAllowedIn(*candidate);
        };
        if (!child->IsAbstract() && std::any_of(groups.begin(), groups.end(), takes)) {
            names.push_back(child->Name());
        }
    }
    return names;
}

kxStlVector<kxString> Catalogue::GroupNames(const kxString& definition,
                                            const kxString& category) const {
    kxStlVector<kxString> names;
    for (const GroupDefinition* group : Get(definition).Groups()) {
        if (category.empty() || group->category == category) {
            names.push_back(group->name);
        }
    }
    return names;
}

std::shared_ptr<const Catalogue> Catalogue::WithDefinition(
    const DefinitionDeclaration& declaration) const {
    return WithDefinitions({declaration});
}

std::shared_ptr<const Catalogue> Catalogue::WithDefinitions(
    const std::vector<DefinitionDeclaration>& declarations) const {
    std::vector<LocatedDeclaration> all;
    std::unordered_map<std::string_view, std::size_t> places;
    for (const auto& definition : _definitions) {
        places.emplace(definition->Name(), all.size());
        all.emplace_back().declaration = definition->Declaration();
    }
    for (const DefinitionDeclaration& declaration : declarations) {
        const auto [place, added] = places.emplace(declaration.name, all.size());
        (added ? all.emplace_back() : all[place->second]).declaration = declaration;
    }
    return Make(std::move(all));
}

std::shared_ptr<const Catalogue> Catalogue::Needed(const std::vector<std::string>& names) const {
    std::vector<const ContentDefinition*> needed;
    std::unordered_set<const ContentDefinition*> known;
    const auto need = [&](const ContentDefinition* definition) {
        if (known.insert(definition).second) {
            needed.push_back(definition);
        }
    };
    for (const std::string& name : names) {
        need(&Get(name));
    }
    for (std::size_t i = 0; i < needed.size(); ++i) {
        const ContentDefinition* const definition = needed[i];
        if (definition->Base() != nullptr) {
            need(definition->Base());
        }
        for (const GroupDefinition& group : definition->Declaration().groups) {
            for (const kxString& child : group.allowedChildren) {
                need(&Get(child));
            }
        }
    }
    std::sort(needed.begin(), needed.end(), [](const auto* a, const auto* b) {
        return std::pair(a->Depth(), std::string_view(a->Name())) <
               std::pair(b->Depth(), std::string_view(b->Name()));
    });
    std::vector<LocatedDeclaration> declarations;
    for (const ContentDefinition* definition : needed) {
        declarations.emplace_back().declaration = definition->Declaration();
    }
    return Make(std::move(declarations));
}

bool Catalogue::operator==(const Catalogue& other) const {
    return std::equal(
        _definitions.begin(),
        _definitions.end(),
        other._definitions.begin(),
        other._definitions.end(),
        [](const auto& a, const auto& b) { return a->Declaration() == b->Declaration(); });
}

}  // namespace kxudm::catalogue
