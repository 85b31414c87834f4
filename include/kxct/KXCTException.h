// The one exception type of this library.
//
// Layer: framework; depends on nothing but the base library. Session operations, the master
// database manager and the items throw it; the controller's operations catch it and answer false,
// null, 0 or an empty value. Its text says first where a failure came from (the signature of the
// operation), then what it was.
//
//     try {
//         session->AddChild(parent, child, group);
//     } catch (const kxct::KXCTException& failure) {
//         log(failure.what());
//     }
//
// Values own their text; the class is safe to throw, copy and keep on any thread.
#pragma once

#include <kxct/kxct_export.h>
#include <kxutl/kxString.h>

#include <stdexcept>

namespace kxct {

class KXCT_EXPORT KXCTException : public std::logic_error {
  public:
    // Keeps a copy of `text`.
    explicit KXCTException(const kxString& text);

    // Keeps a copy of `text`; null means no text.
    explicit KXCTException(const char* text);

    KXCTException(const KXCTException& other);
    KXCTException& operator=(const KXCTException& other);
    ~KXCTException() override;

    // The text, or "Unknown exception" if there is none.
    [[nodiscard]] const char* what() const noexcept override;
};

// Throws a KXCTException whose text is `where`, ":: " and `message`.
[[noreturn]] KXCT_EXPORT void ThrowKXCTException(const kxString& where, const kxString& message);

}  // namespace kxct
