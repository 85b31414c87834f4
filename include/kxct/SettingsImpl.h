// The settings document itself: a tree of keys with optional values, read from and written to one
// XML file. What the values mean, and which file is read, is told by Settings.
//
// A key path is names separated by "/"; empty parts are skipped, so "/a//b" and "a/b" lead to the
// same key. Names compare byte for byte, and of equal siblings the first one wins. Names and values
// are UTF-8; a NUL byte ends a value on writing.
//
// An object owns its document; it belongs to one thread. Text is changed in memory only, until
// Write. A lookup costs time linear in the siblings on each level.
//
//     kxct::SettingsImpl settings("/opt/app/settings.xml");
//     kxVariant value;
//     if (settings.Get("PostGres/PostGresCredentials/dbhost", value)) { ... }
#pragma once

#include <kxct/kxct_export.h>
#include <kxutl/kxStlVector.h>
#include <kxutl/kxString.h>
#include <kxutl/kxVariant.h>

#include <iosfwd>
#include <string>
#include <vector>

struct soap;

namespace kxct {

class _kxct__Settings;
class kxct__Key;

class KXCT_EXPORT SettingsImpl {
  public:
    /// Reads the file. Never fails: a file that is missing, unreadable or malformed gives an empty
    /// document, or one with what stands before the damage.
    explicit SettingsImpl(const kxString& path);

    /// Copies share one document, which the first destructor frees: only one of them may be
    /// destroyed, and an assignment abandons the document that was held before.
    SettingsImpl(const SettingsImpl&) = default;
    SettingsImpl& operator=(const SettingsImpl&) = default;
    ~SettingsImpl();

    /// The value of a key as a text. False, with an empty text in `value`, if there is no such key
    /// or it has no value; an empty value is a value.
    bool Get(const kxString& key, kxVariant& value);

    /// The names of the keys below `key` in document order, or the top-level names for an empty
    /// path. `keys` is emptied first. False if there is no such key, which a path of separators
    /// only counts as.
    bool GetKeys(const kxString& key, kxStlVector<kxString>& keys);

    /// The values of the lookups of `key` in document order. `lookups` is emptied first. False if
    /// there is no such key; the empty path is none.
    bool GetLookups(const kxString& key, kxStlVector<kxString>& lookups);

    /// Sets the value of a key in memory. Missing keys are made, except on the top level: false,
    /// and nothing changed, if the path does not begin with a key of the document.
    ///
    /// All missing keys of a path become children of the deepest key that exists: with only "a"
    /// there, "a/b/c" makes "a/b" without a value and "a/c" with it.
    bool Set(kxString key, kxVariant value);

    /// Writes the document to a file, new or existing, as a whole: after a failure an existing file
    /// is as it was. False if it could not be written. The folder has to exist.
    bool Write(const kxString& path);

  private:
    using Keys = std::vector<kxct__Key*>;

    void _ReadFromStream(std::istream& stream,
                         _kxct__Settings* root,
                         const char* tag,
                         const char* type);
    bool _WriteToStream(std::ostream& stream,
                        _kxct__Settings* root,
                        const char* tag,
                        const char* type);
    kxct__Key* _NewKey(const kxString& name);
    kxct__Key* _Add(kxct__Key* parent, kxct__Key* key);
    kxct__Key* _GetKey(const std::string& name, const Keys* keys) const;
    kxct__Key* _Walk(const kxString& path) const;

    soap* _soap;
    _kxct__Settings* _root;
};

}  // namespace kxct
