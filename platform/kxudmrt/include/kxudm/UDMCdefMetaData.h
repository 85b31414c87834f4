// One attribute of a content definition as a plain record, for reading and changing definitions.
//
// The three flags are, in the order of the constructor: system, displayable, editable. As data of
// the record displayable stands first, before system: whoever copies the flags one to one in the
// order of the record relies on that.
#pragma once

#include <kxutl/kxStlVector.h>
#include <kxutl/kxString.h>

#include <utility>

namespace kxudm {

class UDMCdefMetaData {
  public:
    UDMCdefMetaData(kxString name,
                    kxString displayName,
                    kxString description,
                    kxString defaultValue,
                    kxString type,
                    kxString category,
                    bool system,
                    bool displayable,
                    bool editable,
                    const kxStlVector<kxString>& validValues)
        : isDisplayable(displayable),
          isSystem(system),
          isEditable(editable),
          _name(std::move(name)),
          _displayName(std::move(displayName)),
          _description(std::move(description)),
          _defaultValue(std::move(defaultValue)),
          _type(std::move(type)),
          _category(std::move(category)),
          _validValues(validValues) {}

    kxString Name() const { return _name; }
    kxString DisplayName() const { return _displayName; }
    kxString Description() const { return _description; }
    // As text, in the form that the data type reads.
    kxString DefaultValue() const { return _defaultValue; }
    kxString Type() const { return _type; }
    kxString Category() const { return _category; }
    const kxStlVector<kxString>& ValidVal() const { return _validValues; }

    // The flags have no getter: they are data of the record.
    bool isDisplayable;
    bool isSystem;
    bool isEditable;

  private:
    kxString _name;
    kxString _displayName;
    kxString _description;
    kxString _defaultValue;
    kxString _type;
    kxString _category;
    kxStlVector<kxString> _validValues;
};

}  // namespace kxudm
