#include <kxlmcore/iFileMgr.h>
#include <kxlmcore/iLibraryManagerResponder.h>
#include <kxlmcore/iMessageLogger.h>
#include <kxlmcore/iSettings.h>

// The first virtual function of each interface lives here, so that its type information exists
// once.
namespace kxlm {

iFileMgr::~iFileMgr() = default;

iSettings::~iSettings() = default;

iLibraryManagerResponder::~iLibraryManagerResponder() = default;

bool iLibraryManagerResponder::SupportsNewInterface() {
    return false;
}

iMessageLogger::~iMessageLogger() = default;

void iMessageLogger::Reserved1() {}

bool iMessageLogger::SupportsNewInterface() {
    return false;
}

void iMessageLogger::Reserved2() {}

void iMessageLogger::Reserved3() {}

}  // namespace kxlm
