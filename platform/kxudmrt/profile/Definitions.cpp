#include "profile/Definitions.h"

#include <boost/smart_ptr/make_shared.hpp>
#include <iterator>
#include <utility>

namespace kxudm::profile {

namespace {

using CataloguePtr = std::shared_ptr<const catalogue::Catalogue>;

class AttributeState final : public spi::AttributeDefinitionState {
  public:
    AttributeState(CataloguePtr catalogue, const catalogue::AttributeDefinition& attribute)
        : _catalogue(std::move(catalogue)), _attribute(attribute) {}

    kxString Name() const override { return _attribute.name; }
    kxString DisplayName() const override { return _attribute.displayName; }
    kxString Description() const override { return _attribute.description; }
    kxString Category() const override { return _attribute.category; }
    kxString DataType() const override { return _attribute.dataType; }
    bool IsSystem() const override { return _attribute.system; }
    bool IsDisplayable() const override { return _attribute.displayable; }
    bool IsMandatory() const override { return _attribute.mandatory; }
    bool IsEditable() const override { return _attribute.editable; }
    bool ValidValues(kxStlVector<kxString>& values) const override {
        values.insert(values.end(), _attribute.validValues.begin(), _attribute.validValues.end());
        return !_attribute.validValues.empty();
    }

  private:
    CataloguePtr _catalogue;
    const catalogue::AttributeDefinition& _attribute;
};

UDMAttributeDefinitionHandle HandleOf(const CataloguePtr& catalogue,
                                      const catalogue::AttributeDefinition& attribute) {
    return UDMAttributeDefinitionHandle(boost::make_shared<AttributeState>(catalogue, attribute));
}

class ContentState final : public spi::ContentDefinitionState {
  public:
    ContentState(CataloguePtr catalogue, const catalogue::ContentDefinition& definition)
        : _catalogue(std::move(catalogue)), _definition(definition) {}

    kxString Name() const override { return _definition.Name(); }
    const kxString& Type() const override { return _definition.Type(); }
    kxString DisplayName() const override { return _definition.DisplayName(); }
    void AttributeNames(kxStlVector<kxString>& names) const override {
        for (const catalogue::AttributeDefinition* attribute : _definition.Attributes()) {
            names.push_back(attribute->name);
        }
    }
    void Attributes(kxStlVector<UDMAttributeDefinitionHandle>& definitions) const override {
        for (const catalogue::AttributeDefinition* attribute : _definition.Attributes()) {
            definitions.push_back(HandleOf(_catalogue, *attribute));
        }
    }

  private:
    CataloguePtr _catalogue;
    const catalogue::ContentDefinition& _definition;
};

UDMContentDefinitionHandle HandleOf(const CataloguePtr& catalogue,
                                    const catalogue::ContentDefinition& definition) {
    return UDMContentDefinitionHandle(boost::make_shared<ContentState>(catalogue, definition));
}

}  // namespace

CataloguePtr DefinitionSource::Catalogue() const {
    const boost::shared_ptr<Session> session = _session.lock();
    if (!session) {
        throw UDMException(
            "The session of the content definitions is closed; ask an open one for them");
    }
    // Another process may have changed one.
    session->Poll("a question about content definitions");
    return session->Catalogue();
}

UDMContentDefinitionHandle DefinitionSource::ContentDefinition(const kxString& definition) {
    const CataloguePtr catalogue = Catalogue();
    return HandleOf(catalogue, catalogue->Get(definition));
}

UDMAttributeDefinitionHandle DefinitionSource::AttributeDefinition(const kxString& definition,
                                                                   const kxString& attribute) {
    const CataloguePtr catalogue = Catalogue();
    const auto* found = catalogue->Get(definition).FindAttribute(attribute);
    if (found == nullptr) {
        throw UDMNotFoundException("The content definition \"" + definition +
                                   "\" has no attribute \"" + catalogue::Printable(attribute) +
                                   "\"; use one of its own");
    }
    return HandleOf(catalogue, *found);
}

kxStlVector<kxString> DefinitionSource::DefinitionNames() {
    return Catalogue()->Names();
}

kxStlVector<boost::shared_ptr<UDMContentDefinition>> DefinitionSource::Definitions() {
    const CataloguePtr catalogue = Catalogue();
    kxStlVector<boost::shared_ptr<UDMContentDefinition>> definitions;
    for (const auto& definition : catalogue->Definitions()) {
        definitions.push_back(boost::make_shared<UDMContentDefinition>(
            definition->Name(), HandleOf(catalogue, *definition)));
    }
    return definitions;
}

kxStlSet<kxString> DefinitionSource::ClassNames() {
    return Catalogue()->ClassNames();
}

void DefinitionSource::AllowedChildren(const kxString& definition,
                                       kxStlVector<kxString>& names,
                                       const kxString& group) {
    const auto allowed = Catalogue()->AllowedChildren(definition, group);
    names.insert(names.end(), allowed.begin(), allowed.end());
}

void DefinitionSource::GroupNames(const kxString& definition,
                                  kxStlVector<kxString>& names,
                                  const kxString& category) {
    const auto groups = Catalogue()->GroupNames(definition, category);
    names.insert(names.end(), groups.begin(), groups.end());
}

kxString DefinitionSource::DefinitionForExtension(const kxString& extension) {
    const catalogue::ContentDefinition* definition = Catalogue()->ForExtension(extension);
    return definition != nullptr ? definition->Name() : kxString();
}

}  // namespace kxudm::profile
