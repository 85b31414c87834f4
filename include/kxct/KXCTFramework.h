// Where the installation lies, and the few objects that exist once in a process.
//
// Layer: framework; every part of the library asks here for home, binary directory, platform and
// version, for the Tcl interpreter and the browser manager, and for master database managers by
// name. All operations are static and the class has no instances.
//
// Everything about the installation is computed from one environment variable, BIN_DIR below, at
// each call: <home>/kx/bin/<platform>. A missing variable gives empty texts, never an exception.
//
//     kxString home = kxct::KXCTFramework::GetNorvikHome();
//     kxct::MasterDBManager* manager = kxct::KXCTFramework::GetMasterDBManager(userSettingsPath);
//
// Ownership: nothing that is handed in or out here is owned here. Threads: the host's main thread;
// nothing is locked.
#pragma once

#include <kxct/kxct_export.h>
#include <kxutl/kxStlVector.h>
#include <kxutl/kxString.h>
#include <kxutl/kxVariant.h>

class kxInterpTcl;

namespace ui::browser {
class IManager;
}

namespace kxct {

class MasterDBManager;

// Names of environment variables of an installation. This library reads the first two; the others
// are vocabulary that hosts share.
namespace ENVIRONMENT {
// Absolute path of the platform's binary directory.
inline constexpr const char* NORVIK_KXE_KX_BIN_DIR = "NORVIK_KXE_KX_BIN_DIR";
// Only whether it exists counts: it switches the key of the master database.
inline constexpr const char* ZQA_TEST_UDMRT_TMP_DIR = "ZQA_TEST_UDMRT_TMP_DIR";
// The transposed letters are the variable's true name: installations set it exactly so.
inline constexpr const char* NOVRIK_HOME = "NOVRIK_HOME";
inline constexpr const char* NORVIK_KXE_KX_ROOTDIR = "NORVIK_KXE_KX_ROOTDIR";
inline constexpr const char* NORVIK_KXE_UDMRT_DB_DIR = "NORVIK_KXE_UDMRT_DB_DIR";
inline constexpr const char* NORVIK_KXE_UDMRT_LIB_DIR = "NORVIK_KXE_UDMRT_LIB_DIR";
inline constexpr const char* NORVIK_LIB_MGR_PATH = "NORVIK_LIB_MGR_PATH";
inline constexpr const char* NORVIK_KXE_UDMRT_WORKSPACE = "NORVIK_KXE_UDMRT_WORKSPACE";
inline constexpr const char* KX_PLATFORM = "KX_PLATFORM";
inline constexpr const char* KX_ROOTDIR = "KX_ROOTDIR";
inline constexpr const char* UDMRT_HOME = "UDMRT_HOME";
inline constexpr const char* UDMRT_LOGDIR = "UDMRT_LOGDIR";
}  // namespace ENVIRONMENT

class KXCT_EXPORT KXCTFramework {
  public:
    KXCTFramework(const KXCTFramework&) = delete;
    KXCTFramework& operator=(const KXCTFramework&) = delete;

    // The binary directory as GetEnvironmentVar strips it; empty if the variable is missing.
    static const kxString GetNorvikBinDir();

    // The directory three levels above the binary directory, with forward slashes; or empty.
    static const kxString GetNorvikHome();

    // The last part of the binary directory. One "d" at its end, which marks a debug build, is left
    // out, also where the letter belongs to the platform's name.
    static const kxString GetPlatform();

    // All supported versions, oldest first.
    static kxStlVector<kxString> GetVersions();

    // The newest of GetVersions.
    static kxString GetCurrentVersion();

    // Reads an environment variable; true if it exists. With `strip`, separators at the end of a
    // value of more than two characters are taken away, each together with the character before it:
    // "/opt/bin/" becomes "/opt/bi". Hosts set the variable in a form that counts on it.
    static bool GetEnvironmentVar(const kxString& name, kxString& value, bool strip);

    // The manager registered under `name`, null if there is none.
    static MasterDBManager* GetMasterDBManager(const kxString& name);

    // Registers `manager`, not owned, under `name` in the place of whatever stood there. Null is
    // stored like any other.
    static void SetMasterDBManager(const kxString& name, MasterDBManager* manager);

    // The interpreter of kind "tcl". Null until Kxct_Init has bound one; kept once it is found.
    static kxInterpTcl* GetTclInterp();

    // The browser manager; null until one was set. Never makes one.
    static ui::browser::IManager* GetUiBrowserManager();

    // Sets the browser manager for the life of the process: with one present, a further call does
    // nothing. Null asks the browser framework for a manager on the Tcl interpreter, which
    // Kxct_Init must have bound.
    static void SetUIBrowserManager(ui::browser::IManager* manager);

    // Calls a procedure of the Tcl interpreter, which Kxct_Init must have bound. Answers what the
    // interpreter reports.
    static bool InvokeTclMethod(const kxString& method,
                                kxStlVector<kxVariant>& arguments,
                                kxVariant& result);

  private:
    KXCTFramework() {}
    ~KXCTFramework() {}

    static kxInterpTcl* _interp;
    static ui::browser::IManager* _bm;
};

}  // namespace kxct
