// The settings of an installation and a user as keys and values. The user's file is read if it is
// there, otherwise the default file, of which the user's file becomes a copy; changes go to the
// user's file, and the default file is never written.
//
// On top of SettingsImpl, which tells how key paths are read, this class chooses the file and
// expands values into paths. One thread, the one that uses the owning master database manager: the
// environment is read with getenv.
//
//     kxct::Settings settings(installation + "/settings/default.xml", home +
//     "/.kxct/settings.xml"); kxString dataSource = settings.GetValue("PostGres"); kxString
//     masterDatabase = settings.GetPath("common/System/2020/MasterDB/linux64");
//     settings.Set("PostGres/PostGresCredentials/dbhost", "db.example");
//     settings.Write();
#pragma once

#include <kxct/kxct_export.h>
#include <kxutl/kxStlVector.h>
#include <kxutl/kxString.h>

namespace kxct {

class SettingsImpl;

class KXCT_EXPORT Settings {
  public:
    /// Reads `userFile` if it exists, else `defaultFile`; in the second case a copy is written to
    /// `userFile`, with its folder, unless its path is empty. Never fails: a file that can't be
    /// read gives an empty document, and a copy that can't be written is left out in silence.
    Settings(const kxString& defaultFile, const kxString& userFile);

    /// Reads `file` as the default file; without a user's file, Write does nothing.
    explicit Settings(const kxString& file);

    /// Copies share one document, which each destructor deletes: only one of them may be destroyed,
    /// and an assignment abandons the document that was held before.
    Settings(const Settings&) = default;
    Settings& operator=(const Settings&) = default;
    ~Settings();

    /// The value as it stands in the document; empty if the key or its value is missing.
    kxString GetValue(const kxString& key) const;

    /// The value as an absolute path with forward slashes. Each `[NAME]` in it is replaced by that
    /// variable of the environment, then the first "~" by the user's home folder; a relative path
    /// starts at the folder of the default file. Links and ".." are resolved.
    ///
    /// Empty if the key or its value is missing, or if a variable is not set. The target has to
    /// exist: otherwise boost::filesystem::filesystem_error is thrown, also for an absolute path.
    kxString GetPath(const kxString& key) const;

    /// The names of the keys below `key`, or the top-level names for an empty path, in document
    /// order. Empty if there is no such key.
    kxStlVector<kxString> GetKeys(const kxString& key) const;

    /// The values that the document offers for `key`, in document order. Empty if there is no such
    /// key.
    kxStlVector<kxString> GetLookups(const kxString& key) const;

    /// Sets a value in memory. Nothing happens if the path does not begin with a top-level key of
    /// the document. See SettingsImpl::Set for what becomes of missing keys.
    void Set(const kxString& key, const kxString& value);

    /// Writes the document to the user's file, whose folder is made if it is missing. A failure is
    /// not reported and leaves the file as it was.
    void Write();

    /// The path of the default file or of the user's file, as given.
    kxString GetSettingsFile(bool useDefaultFile) const;

    /// Whether there is a document. True after every construction, also from a missing file.
    bool IsValid();

  protected:
    /// Replaces each `[NAME]` by that variable of the environment, again and again until none is
    /// left, so that a value may name further variables. False if a variable is not set, or if the
    /// variables refer to each other without end; `text` is then partly expanded.
    bool _ReplaceEnvVariables(kxString& text) const;

  private:
    kxString _defaultFile;
    kxString _userFile;
    SettingsImpl* _impl = nullptr;
};

}  // namespace kxct
