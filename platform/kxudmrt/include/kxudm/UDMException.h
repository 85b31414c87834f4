// The failures that the data-model runtime reports.
//
// Every operation of the runtime that can't do what it was asked throws an exception derived from
// std::exception whose text is one line: the object (UID, path, name), what was wrong, and what
// would be right. UDMException is the one thrown by the runtime's own code; the derived classes
// exist where a caller can act differently on the kind of failure.
#pragma once

#include <kxudmrt/kxudmrt_export.h>
#include <kxutl/kxString.h>

#include <stdexcept>
#include <string>

namespace kxudm {

class KXUDMRT_EXPORT UDMException : public std::runtime_error {
  public:
    explicit UDMException(const std::string& text) : std::runtime_error(text) {}
    UDMException(const UDMException&) = default;
    UDMException& operator=(const UDMException&) = default;
    ~UDMException() override;
};

// The entity, definition, folder, library or workspace that was named is not there, or not for
// this session.
class KXUDMRT_EXPORT UDMNotFoundException : public UDMException {
  public:
    using UDMException::UDMException;
    UDMNotFoundException(const UDMNotFoundException&) = default;
    UDMNotFoundException& operator=(const UDMNotFoundException&) = default;
    ~UDMNotFoundException() override;
};

// The store itself failed: busy beyond its time limit, full, read-only, damaged or unreachable.
class KXUDMRT_EXPORT UDMStoreException : public UDMException {
  public:
    using UDMException::UDMException;
    UDMStoreException(const UDMStoreException&) = default;
    UDMStoreException& operator=(const UDMStoreException&) = default;
    ~UDMStoreException() override;
};

// A provider does not offer the operation that was asked of it.
class KXUDMRT_EXPORT UDMNotSupportedException : public UDMException {
  public:
    using UDMException::UDMException;
    UDMNotSupportedException(const UDMNotSupportedException&) = default;
    UDMNotSupportedException& operator=(const UDMNotSupportedException&) = default;
    ~UDMNotSupportedException() override;
};

// Kinds of invalid argument, as numbers that stay the same between versions.
enum class ExceptionSubCategory : int {
    UnsupportedReader = 1100,
};

// An argument of the wrong kind. `Signature` names the operation that refused it.
class KXUDMRT_EXPORT UDMInvalidArgException : public UDMException {
  public:
    UDMInvalidArgException(const kxString& message,
                           const kxString& signature,
                           ExceptionSubCategory subCategory);
    UDMInvalidArgException(const UDMInvalidArgException&) = default;
    UDMInvalidArgException& operator=(const UDMInvalidArgException&) = default;
    ~UDMInvalidArgException() override;

    const kxString& Signature() const { return _signature; }
    ExceptionSubCategory SubCategory() const { return _subCategory; }

  private:
    kxString _signature;
    ExceptionSubCategory _subCategory;
};

// Throws UDMInvalidArgException with `message` as its text. Does not return.
[[noreturn]] KXUDMRT_EXPORT void ThrowInvalidArgException(const kxString& message,
                                                          const kxString& signature,
                                                          const ExceptionSubCategory& subCategory);

}  // namespace kxudm
