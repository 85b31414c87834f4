// What a provider implements behind the handles of content definitions and their attributes.
#pragma once

#include <kxudm/UDMDefinitionHandles.h>
#include <kxutl/kxStlSet.h>

namespace kxudm::spi {

class KXUDMRT_EXPORT AttributeDefinitionState {
  public:
    AttributeDefinitionState() = default;
    AttributeDefinitionState(const AttributeDefinitionState&) = delete;
    AttributeDefinitionState& operator=(const AttributeDefinitionState&) = delete;
    virtual ~AttributeDefinitionState();

    // MUST, each of them.
    virtual kxString Name() const = 0;
    virtual kxString DisplayName() const = 0;
    virtual kxString Description() const = 0;
    virtual kxString Category() const = 0;
    virtual kxString DataType() const = 0;
    virtual bool IsSystem() const = 0;
    virtual bool IsDisplayable() const = 0;
    virtual bool IsMandatory() const = 0;
    virtual bool IsEditable() const = 0;
    // MAY: false, any value is allowed, if not provided. Appends to `values`.
    virtual bool ValidValues(kxStlVector<kxString>& values) const;
};

class KXUDMRT_EXPORT ContentDefinitionState {
  public:
    ContentDefinitionState() = default;
    ContentDefinitionState(const ContentDefinitionState&) = delete;
    ContentDefinitionState& operator=(const ContentDefinitionState&) = delete;
    virtual ~ContentDefinitionState();

    // MUST, each of them. The reference stays valid as long as the state.
    virtual kxString Name() const = 0;
    virtual const kxString& Type() const = 0;
    virtual kxString DisplayName() const = 0;
    virtual void AttributeNames(kxStlVector<kxString>& names) const = 0;
    virtual void Attributes(kxStlVector<UDMAttributeDefinitionHandle>& definitions) const = 0;
};

// What a provider implements behind UDMProfileUtils. Unknown definitions, attributes and groups
// throw an exception that names them.
class KXUDMRT_EXPORT DefinitionSource {
  public:
    DefinitionSource() = default;
    DefinitionSource(const DefinitionSource&) = delete;
    DefinitionSource& operator=(const DefinitionSource&) = delete;
    virtual ~DefinitionSource();

    // MUST, each of them; UDMProfileUtils.h tells their contracts.
    virtual UDMContentDefinitionHandle ContentDefinition(const kxString& definition) = 0;
    virtual UDMAttributeDefinitionHandle AttributeDefinition(const kxString& definition,
                                                             const kxString& attribute) = 0;
    virtual kxStlVector<kxString> DefinitionNames() = 0;
    virtual kxStlVector<boost::shared_ptr<UDMContentDefinition>> Definitions() = 0;
    virtual kxStlSet<kxString> ClassNames() = 0;
    virtual void AllowedChildren(const kxString& definition,
                                 kxStlVector<kxString>& names,
                                 const kxString& group) = 0;
    virtual void GroupNames(const kxString& definition,
                            kxStlVector<kxString>& names,
                            const kxString& category) = 0;
    // MAY: an empty text, no definition claims it, if not provided.
    virtual kxString DefinitionForExtension(const kxString& extension);
};

}  // namespace kxudm::spi
