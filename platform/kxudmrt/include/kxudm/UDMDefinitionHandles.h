// Content definitions and their attributes as a session sees them.
//
// The handles are values over a state that the provider implements (spi/DefinitionState.h). A
// handle keeps the definition as it was when it was fetched. Questions to an empty handle throw
// UDMException.
#pragma once

#include <kxudm/UDMHandle.h>
#include <kxutl/kxStlVector.h>

#include <boost/smart_ptr/shared_ptr.hpp>

namespace kxudm {

namespace spi {
class AttributeDefinitionState;
class ContentDefinitionState;
}  // namespace spi

// One attribute of a content definition.
class KXUDMRT_EXPORT UDMAttributeDefinitionHandle : public UDMHandle {
  public:
    UDMAttributeDefinitionHandle() = default;
    explicit UDMAttributeDefinitionHandle(
        boost::shared_ptr<const spi::AttributeDefinitionState> state);
    UDMAttributeDefinitionHandle(const UDMAttributeDefinitionHandle&) = default;
    UDMAttributeDefinitionHandle& operator=(const UDMAttributeDefinitionHandle&) = default;
    ~UDMAttributeDefinitionHandle() override;

    kxString ToString() const override;
    kxString GetName() const;
    kxString GetDisplayName() const;
    kxString GetDescription() const;
    kxString GetCategory() const;
    // "Boolean", "Color", "Double", "Integer", "String", "StringList" or "Time".
    kxString GetDataType() const;
    bool IsSystem() const;
    bool IsDisplayable() const;
    bool IsMandatory() const;
    bool IsEditable() const;
    // True if only certain values are allowed; `values` then holds them as texts, in the
    // definition's order. Otherwise false with `values` empty.
    bool GetStaticValidValues(kxStlVector<kxString>& values) const;

  private:
    const spi::AttributeDefinitionState& State() const;

    boost::shared_ptr<const spi::AttributeDefinitionState> _state;
};

// One content definition with all that it inherits.
class KXUDMRT_EXPORT UDMContentDefinitionHandle : public UDMHandle {
  public:
    UDMContentDefinitionHandle() = default;
    explicit UDMContentDefinitionHandle(boost::shared_ptr<const spi::ContentDefinitionState> state);
    UDMContentDefinitionHandle(const UDMContentDefinitionHandle&) = default;
    UDMContentDefinitionHandle& operator=(const UDMContentDefinitionHandle&) = default;
    ~UDMContentDefinitionHandle() override;

    kxString ToString() const override;
    // The definition's type, such as "Foldertype"; the reference lives as long as the handle.
    const kxString& GetType() const;
    // Sets `name` to the definition's display name.
    void DisplayName(kxString& name) const;
    // Appends the names of all attributes, inherited ones first, in order of definition.
    void GetAttributeNames(kxStlVector<kxString>& names) const;
    // Appends a handle for each attribute, in the same order.
    void GetAttributeDefinitions(kxStlVector<UDMAttributeDefinitionHandle>& definitions) const;

  private:
    const spi::ContentDefinitionState& State() const;

    boost::shared_ptr<const spi::ContentDefinitionState> _state;
};

// A registered content definition as the runtime lists it.
class KXUDMRT_EXPORT UDMContentDefinition {
  public:
    UDMContentDefinition(const kxString& name, const UDMContentDefinitionHandle& handle);
    UDMContentDefinition(const UDMContentDefinition&) = default;
    UDMContentDefinition& operator=(const UDMContentDefinition&) = default;
    virtual ~UDMContentDefinition();

    const kxString& GetName() const { return _name; }
    const UDMContentDefinitionHandle& GetHandle() const { return _handle; }

  private:
    kxString _name;
    UDMContentDefinitionHandle _handle;
};

}  // namespace kxudm
