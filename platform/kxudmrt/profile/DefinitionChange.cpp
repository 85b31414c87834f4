#include "profile/DefinitionChange.h"

#include <map>
#include <set>

#include "catalogue/Conversion.h"
#include "profile/Groups.h"
#include "profile/Words.h"

namespace kxudm::profile {

namespace {

using catalogue::AttributeDefinition;
using catalogue::Catalogue;
using catalogue::ContentDefinition;
using catalogue::Conversion;
using catalogue::GroupDefinition;

bool IsSame(const kxVariant& a, const kxVariant& b) {
    return a.GetKind() == b.GetKind() && a == b;
}

kxString Subject(const ContentDefinition& definition) {
    return "The content definition \"" + definition.Name() + "\" can't be changed: ";
}

// A classification says whether it is a master one, declared or not.
bool Shows(const ContentDefinition& definition, std::string_view attribute) {
    return definition.FindAttribute(attribute) != nullptr ||
           (attribute == CATEGORY_KIND && definition.Type() == CLASSIFICATION_TYPE);
}

// What an attribute was and is; null where the definition doesn't have it.
struct Changed {
    const AttributeDefinition* was = nullptr;
    const AttributeDefinition* is = nullptr;

    [[nodiscard]] const kxString& Name() const { return is != nullptr ? is->name : was->name; }
};

// Values that a change would lose, for one message.
class Losses {
  public:
    void Add(const store::StoredRevision& row,
             const Changed& attribute,
             const kxVariant& value,
             const Conversion& conversion) {
        if (++_count > SHOWN) {
            return;
        }
        _text += (_text.empty() ? "" : ", ") + ("\"" + catalogue::Printable(value.GetString())) +
                 "\" of \"" + attribute.Name() + "\" in " + row.uid + ":" +
                 std::to_string(row.revision);
        if (conversion.outcome == Conversion::Outcome::Refused) {
            _text += " is no " + attribute.is->dataType;
        } else {
            _text += " would become \"" + catalogue::Printable(conversion.value.GetString()) + "\"";
        }
    }

    void RequireNone(const ContentDefinition& definition) const {
        if (_count > 0) {
            const std::string more =
                _count > SHOWN ? " and " + std::to_string(_count - SHOWN) + " more" : "";
            throw UDMException(Subject(definition) + "values would be lost: " + _text + more +
                               "; keep the data type, or take another name for the new one");
        }
    }

  private:
    static constexpr std::size_t SHOWN = 5;

    std::size_t _count = 0;
    std::string _text;
};

// Brings the stored values of one definition's entities in line with it.
class Rewriting {
  public:
    Rewriting(store::LibraryStore& store, std::vector<Changed> attributes, bool rewrite)
        : _store(store), _attributes(std::move(attributes)), _rewrite(rewrite) {}

    void Run(const ContentDefinition& definition) {
        _store.VisitRevisions(definition.Name(),
                              [this](const store::StoredRevision& row) { Visit(row); });
        _losses.RequireNone(definition);
    }

  private:
    void Visit(const store::StoredRevision& row) {
        if (row.id != _entity) {
            _entity = row.id;
            _published.clear();
        }
        store::AttributeList converted;
        for (const Changed& attribute : _attributes) {
            VisitValue(row, attribute, converted);
        }
        if (!converted.empty()) {
            _store.RewriteAttributes(
                row.id, row.revision, store::MergePackedAttributes(row.packed, converted));
        }
    }

    void VisitValue(const store::StoredRevision& row,
                    const Changed& attribute,
                    store::AttributeList& converted) {
        kxVariant value;
        const bool there = store::FindPackedAttribute(row.packed, attribute.Name(), value);
        if (attribute.is == nullptr) {
            value.Clear();
        } else if (!there) {
            value = attribute.is->defaultValue;
        } else {
            Conversion conversion = catalogue::Convert(value, attribute.is->dataType);
            if (conversion.outcome == Conversion::Outcome::Refused ||
                (conversion.outcome == Conversion::Outcome::Rewritten && !_rewrite)) {
                _losses.Add(row, attribute, value, conversion);
                return;
            }
            if (conversion.outcome != Conversion::Outcome::Unchanged) {
                value = std::move(conversion.value);
                converted.emplace_back(attribute.Name(), value);
            }
        }
        SetHead(row, attribute, value);
    }

    // What queries see: the newest published revision, and the working one where it differs.
    void SetHead(const store::StoredRevision& row,
                 const Changed& attribute,
                 const kxVariant& value) {
        const bool working = row.revision == row.working;
        if (!working && row.revision != row.published) {
            return;
        }
        kxVariant& published = _published[attribute.Name()];
        if (!IsSame(value, working ? published : kxVariant())) {
            _store.SetHeadValue(row.id, working, attribute.Name(), value);
        } else if (attribute.was != nullptr) {
            _store.DropHeadValue(row.id, working, attribute.Name());
        }
        if (!working) {
            published = value;
        }
    }

    store::LibraryStore& _store;
    const std::vector<Changed> _attributes;
    const bool _rewrite;
    Losses _losses;
    store::EntityId _entity = 0;
    std::map<kxString, kxVariant> _published;  // values of the entity's published revision
};

// One definition before and after.
class Step {
  public:
    Step(store::LibraryStore& store, const ContentDefinition& was, const ContentDefinition& is)
        : _store(store), _was(was), _is(is) {}

    // Refuses what no conversion of values makes right.
    void Check() const {
        CheckNature();
        for (const GroupDefinition* group : _was.Groups()) {
            CheckGroup(*group, _is.FindGroup(group->name));
        }
        for (const AttributeDefinition* was : _was.Attributes()) {
            const AttributeDefinition* is = _is.FindAttribute(was->name);
            if (is != nullptr && is->dataType != was->dataType && IsComputed(was->name)) {
                throw UDMException(Subject(_is) + "the library itself keeps the attribute \"" +
                                   was->name + "\" as " + was->dataType + "; leave it its type");
            }
        }
    }

    void Rewrite(bool rewrite) const {
        std::vector<Changed> changed = ChangedAttributes();
        if (!changed.empty()) {
            Rewriting(_store, std::move(changed), rewrite).Run(_is);
        }
    }

  private:
    [[noreturn]] void Refuse(const std::string& uid, const std::string& why) const {
        throw UDMException(Subject(_is) + why + ", and there are entities of it, " + uid +
                           " for one; make a definition of another name");
    }

    void CheckNature() const {
        std::string why;
        if (_was.IsVersioned() != _is.IsVersioned()) {
            why = _is.IsVersioned() ? "it would get revisions" : "it would lose its revisions";
        } else if (_is.IsAbstract() && !_was.IsAbstract()) {
            why = "it would become abstract";
        } else if (_was.Type() != _is.Type()) {
            why = "its type would change from \"" + _was.Type() + "\" to \"" + _is.Type() + "\"";
        } else {
            return;
        }
        if (const std::string uid = _store.AnyOfDefinition(_is.Name()); !uid.empty()) {
            Refuse(uid, why);
        }
    }

    void CheckGroup(const GroupDefinition& was, const GroupDefinition* is) const {
        const store::LinkKind kind = *KindOfCategory(was.category);
        const bool same =
            is != nullptr && is->category == was.category && is->composition == was.composition;
        // What lies in folders and under classifications is in no group of its own.
        if (same || IsContainerKind(kind)) {
            return;
        }
        if (const std::string uid = _store.AnyWithLink(_is.Name(), kind, was.name); !uid.empty()) {
            throw UDMException(Subject(_is) + "its group \"" + was.name + "\" would " +
                               (is == nullptr ? "go" : "hold its children in another way") +
                               ", and there are links in it, of " + uid +
                               " for one; keep it as it is, or make a group of another name");
        }
    }

    [[nodiscard]] std::vector<Changed> ChangedAttributes() const {
        std::vector<Changed> changed;
        for (const AttributeDefinition* is : _is.Attributes()) {
            const AttributeDefinition* was = _was.FindAttribute(is->name);
            const bool same = was != nullptr && was->dataType == is->dataType &&
                              IsSame(was->defaultValue, is->defaultValue);
            if (!same && !IsComputed(is->name)) {
                changed.push_back({was, is});
            }
        }
        for (const AttributeDefinition* was : _was.Attributes()) {
            if (!Shows(_is, was->name) && !IsComputed(was->name)) {
                changed.push_back({was, nullptr});
            }
        }
        return changed;
    }

    store::LibraryStore& _store;
    const ContentDefinition& _was;
    const ContentDefinition& _is;
};

}  // namespace

void BringInLine(store::LibraryStore& store,
                 const Catalogue& before,
                 const Catalogue& after,
                 bool rewrite) {
    std::vector<Step> steps;
    for (const auto& is : after.Definitions()) {
        const ContentDefinition* was = before.Find(is->Name());
        if (was != nullptr && !was->IsSameAs(*is)) {
            steps.emplace_back(store, *was, *is).Check();
        }
    }
    for (const Step& step : steps) {
        step.Rewrite(rewrite);
    }
}

bool ChangeCatalogue(Session& session,
                     const char* name,
                     bool rewrite,
                     const std::function<CataloguePtr(const Catalogue&)>& make) {
    session.RequireOpen(name);
    if (session.InBulk()) {
        throw UDMException(std::string(name) +
                           " can't be part of a bulk edit; end that one before");
    }
    Operation operation(session, name, sql::Transaction::Durability::Full);
    const CataloguePtr before = session.Catalogue();
    const CataloguePtr made = make(*before);
    if (*made == *before) {
        operation.Leave();
        return false;
    }
    // What could not be read again would close the library to everybody.
    const kxString text = made->ToXml();
    const CataloguePtr after = Catalogue::ReadText(text, session.Options().libraryFile);
    BringInLine(operation.Store(), *before, *after, rewrite);
    operation.Store().SetCatalogueXml(text);
    session.RecordCatalogue(operation);
    operation.Commit();
    session.TakeCatalogue(after);
    operation.Tell();
    return true;
}

void ShowThrough(const ContentDefinition& definition, store::AttributeList& attributes) {
    std::erase_if(attributes, [&](const auto& each) { return !Shows(definition, each.first); });
    std::set<std::string_view> there;
    for (const auto& [name, value] : attributes) {
        there.insert(name);
    }
    store::AttributeList defaults;
    for (const AttributeDefinition* attribute : definition.Attributes()) {
        if (!attribute->defaultValue.IsEmpty() && !there.contains(attribute->name) &&
            !IsComputed(attribute->name)) {
            defaults.emplace_back(attribute->name, attribute->defaultValue);
        }
    }
    attributes.insert(attributes.end(), defaults.begin(), defaults.end());
}

void AlignBranch(Session& session, store::LibraryStore& store, const kxString& uid) {
    store::EntityRow row;
    if (!store.FindByUid(uid, session.Viewer(), row)) {
        return;
    }
    const ContentDefinition& definition = session.Catalogue()->Get(row.definition);
    const store::AttributeList stored = store::UnpackAttributes(row.packed);
    store::AttributeList shown = stored;
    ShowThrough(definition, shown);
    for (const auto& [name, value] : stored) {
        if (!Shows(definition, name)) {
            store.DropHeadValue(row.id, true, name);
        }
    }
    for (const auto& [name, value] : shown) {
        kxVariant there;
        if (!store::FindPackedAttribute(row.packed, name, there)) {
            store.SetHeadValue(row.id, true, name, value);
        }
    }
}

}  // namespace kxudm::profile
