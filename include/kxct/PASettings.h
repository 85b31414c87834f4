// The attribute settings document: per content definition, the attributes that an application
// shows, with display name, description, category and flags. Read-only.
//
// Layer: settings. An object owns its document and belongs to one thread. A file that is missing,
// unreadable or malformed gives an empty document; every question to it has an empty answer.
//
//     kxct::PASettings settings("/opt/app/attributes.xml");
//     kxVariant shown = settings.GetMetadataAttribute("UDMPart", "mass", "displayname");
#pragma once

#include <kxct/kxct_export.h>
#include <kxutl/kxStlVector.h>
#include <kxutl/kxString.h>
#include <kxutl/kxVariant.h>

#include <iosfwd>

struct soap;

namespace kxct {

class _kxct__PASettings;
class kxct__ContentDefinition;
class kxct__Metadata;

// Selects one field of an attribute's record.
enum MetadataAttribute : int {
    METADATA_NAME = 0,
    METADATA_DISPLAYNAME = 1,
    METADATA_DESCRIPTION = 2,
    METADATA_CATEGORY = 3,
    METADATA_COMMON = 4,
    METADATA_ISEDITABLE = 5,
    METADATA_ISHIDDEN = 6,
    METADATA_NONE = 7,  // no field: every question with it has an empty answer
};

class KXCT_EXPORT PASettingsImpl {
  public:
    explicit PASettingsImpl(const kxString& path);
    PASettingsImpl(const PASettingsImpl&) = delete;
    PASettingsImpl& operator=(const PASettingsImpl&) = delete;
    ~PASettingsImpl();

    // See PASettings.
    kxStlVector<kxString> GetContentDefinitions() const;
    kxStlVector<kxString> GetMetadataNames(const kxString& name) const;
    kxVariant GetMetadataAttribute(const kxString& contentDefinitionName,
                                   const kxString& metadataName,
                                   MetadataAttribute attribute) const;

  protected:
    // The first record of that name; null without one. The document owns it.
    const kxct__ContentDefinition* _GetContentDefinition(const kxString& name) const;
    const kxct__Metadata* _GetMetadata(const kxString& contentDefinitionName,
                                       const kxString& metadataName) const;

  private:
    void _ReadFromStream(std::istream& stream,
                         _kxct__PASettings* root,
                         const char* tag,
                         const char* type);

    soap* _soap;
    _kxct__PASettings* _root;
};

class KXCT_EXPORT PASettings {
  public:
    // No document: everything is empty.
    PASettings();
    // Reads the file. Never fails.
    explicit PASettings(const kxString& path);
    PASettings(const PASettings&) = delete;
    PASettings& operator=(const PASettings&) = delete;
    ~PASettings();

    // The path as it was given; empty without a document.
    kxString GetSettingsFile() const;
    // Names in document order.
    kxStlVector<kxString> GetContentDefinitions() const;
    // Names of the attributes of a definition in document order; of two definitions of one name
    // the first counts. Empty for an unknown one.
    kxStlVector<kxString> GetMetadataNames(const kxString& contentDefinitionName) const;
    // One field: "name", "displayname", "description", "category" as text, "common", "iseditable",
    // "ishidden" as boolean. Empty for an unknown definition, attribute or field word, and for an
    // optional field that the document doesn't set.
    kxVariant GetMetadataAttribute(const kxString& contentDefinitionName,
                                   const kxString& metadataName,
                                   const kxString& attributeName) const;

  private:
    kxString _file;
    PASettingsImpl* _impl = nullptr;
};

}  // namespace kxct
