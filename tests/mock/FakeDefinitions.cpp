#include "tests/mock/FakeDefinitions.h"

#include <boost/smart_ptr/make_shared.hpp>
#include <utility>

namespace kxct::mock {
namespace {

class AttributeState : public kxudm::spi::AttributeDefinitionState {
  public:
    explicit AttributeState(FakeAttribute attribute) : _attribute(std::move(attribute)) {}

    kxString Name() const override { return _attribute.name; }
    kxString DisplayName() const override { return _attribute.displayName; }
    kxString Description() const override { return _attribute.description; }
    kxString Category() const override { return _attribute.category; }
    kxString DataType() const override { return _attribute.dataType; }
    bool IsSystem() const override { return _attribute.isSystem; }
    bool IsDisplayable() const override { return _attribute.isDisplayable; }
    bool IsMandatory() const override { return _attribute.isMandatory; }
    bool IsEditable() const override { return _attribute.isEditable; }
    bool ValidValues(kxStlVector<kxString>& values) const override {
        values.insert(values.end(), _attribute.validValues.begin(), _attribute.validValues.end());
        return !_attribute.validValues.empty();
    }

  private:
    FakeAttribute _attribute;
};

class ContentState : public kxudm::spi::ContentDefinitionState {
  public:
    explicit ContentState(FakeDefinition definition) : _definition(std::move(definition)) {}

    kxString Name() const override { return _definition.name; }
    const kxString& Type() const override { return _definition.type; }
    kxString DisplayName() const override { return _definition.displayName; }
    void AttributeNames(kxStlVector<kxString>& names) const override {
        for (const auto& attribute : _definition.attributes) {
            names.push_back(attribute.name);
        }
    }
    void Attributes(kxStlVector<kxudm::UDMAttributeDefinitionHandle>& handles) const override {
        for (const auto& attribute : _definition.attributes) {
            handles.push_back(HandleOf(attribute));
        }
    }

  private:
    FakeDefinition _definition;
};

}  // namespace

kxudm::UDMAttributeDefinitionHandle HandleOf(const FakeAttribute& attribute) {
    return kxudm::UDMAttributeDefinitionHandle(boost::make_shared<AttributeState>(attribute));
}

kxudm::UDMContentDefinitionHandle HandleOf(const FakeDefinition& definition) {
    return kxudm::UDMContentDefinitionHandle(boost::make_shared<ContentState>(definition));
}

FakeDefinitions::FakeDefinitions() = default;
FakeDefinitions::~FakeDefinitions() = default;

FakeDefinition& FakeDefinitions::Add(const kxString& name) {
    auto& added = _definitions.emplace_back();
    added.name = name;
    added.displayName = name;
    return added;
}

const FakeDefinition& FakeDefinitions::Find(const kxString& definition) const {
    for (const auto& candidate : _definitions) {
        if (candidate.name == definition) {
            return candidate;
        }
    }
    throw kxudm::UDMNotFoundException("no definition " + definition);
}

kxudm::UDMContentDefinitionHandle FakeDefinitions::ContentDefinition(const kxString& definition) {
    return HandleOf(Find(definition));
}

kxudm::UDMAttributeDefinitionHandle FakeDefinitions::AttributeDefinition(
    const kxString& definition, const kxString& attribute) {
    for (const auto& candidate : Find(definition).attributes) {
        if (candidate.name == attribute) {
            return HandleOf(candidate);
        }
    }
    throw kxudm::UDMNotFoundException("no attribute " + attribute);
}

kxStlVector<kxString> FakeDefinitions::DefinitionNames() {
    kxStlVector<kxString> names;
    for (const auto& definition : _definitions) {
        names.push_back(definition.name);
    }
    return names;
}

kxStlVector<boost::shared_ptr<kxudm::UDMContentDefinition>> FakeDefinitions::Definitions() {
    kxStlVector<boost::shared_ptr<kxudm::UDMContentDefinition>> list;
    for (const auto& definition : _definitions) {
        list.push_back(
            boost::make_shared<kxudm::UDMContentDefinition>(definition.name, HandleOf(definition)));
    }
    return list;
}

kxStlSet<kxString> FakeDefinitions::ClassNames() {
    kxStlSet<kxString> names;
    for (const auto& definition : _definitions) {
        names.insert(definition.name);
    }
    return names;
}

void FakeDefinitions::AllowedChildren(const kxString& definition,
                                      kxStlVector<kxString>& names,
                                      const kxString& group) {
    for (const auto& candidate : Find(definition).groups) {
        if (candidate.name == group) {
            names.insert(names.end(), candidate.allowed.begin(), candidate.allowed.end());
            return;
        }
    }
    throw kxudm::UDMNotFoundException("no group " + group);
}

void FakeDefinitions::GroupNames(const kxString& definition,
                                 kxStlVector<kxString>& names,
                                 const kxString& category) {
    for (const auto& group : Find(definition).groups) {
        if (category.empty() || group.category == category) {
            names.push_back(group.name);
        }
    }
}

MockDefinitions::MockDefinitions() = default;
MockDefinitions::~MockDefinitions() = default;

}  // namespace kxct::mock
