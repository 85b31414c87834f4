#include <kxlmosa/osaFile.h>
#include <kxutl/kxString.h>
#include <sys/stat.h>

bool osaFile::Exists(const kxString& path) {
    struct stat status;
    return path.find('\0') == kxString::npos && ::stat(path.c_str(), &status) == 0;
}
