#include "vault/FileError.h"

#include <cerrno>
#include <system_error>

#include "vault/DocumentName.h"

namespace kxudm::vault {
namespace {

const char* Advice(int code) {
    switch (code) {
        case ENOSPC:
        case EDQUOT:
            return "free some space there, then try again";
        case EFBIG:
            return "its file system or a limit of this process allows no larger file";
        case EROFS:
            return "its file system is mounted read-only; choose a place that can be written";
        case EACCES:
        case EPERM:
            return "give this user the permission for the file and its folder";
        case ENOENT:
            return "name one that exists";
        case EEXIST:
            return "choose another name";
        case ENOTDIR:
        case EISDIR:
        case ELOOP:
        case ENAMETOOLONG:
        case EINVAL:
            return "check the path";
        case EMFILE:
        case ENFILE:
            return "too many files are open; close some, then try again";
        case EIO:
        case ESTALE:
            return "check the disk or the network, then try again";
        default:
            return "correct this, then try again";
    }
}

}  // namespace

FileError::FileError(int code, const std::string& action, const std::string& path)
    : UDMStoreException("'" + Printable(path) + "' can't be " + action + ": " +
                        std::generic_category().message(code) + "; " + Advice(code)),
      code_(code) {}

FileError::FileError(const std::string& task, const FileError& cause)
    : UDMStoreException(task + ": " + cause.what()), code_(cause.Code()) {}

}  // namespace kxudm::vault
