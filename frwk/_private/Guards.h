// The two guards that every operation over an inner pointer or over the data-model runtime uses.
//
// Layer: framework, private to this library. The null guard refuses an operation whose inner
// pointer is missing; the translation gives every failure of the runtime this library's exception
// type and puts the operation's signature in front of its text.
//
//     void UDMDBCtrl::AddChild(const UDMItemHandle& parent, ...) {
//         KXCT_GUARD(_udmProfilePtr);
//         KXCT_TRANSLATED([&] { _udmProfilePtr->AddChild(parent, child, group); });
//     }
//
//     void UDMDBCtrl::GetParents(..., const bool flag) {
//         constexpr auto function = "void kxct::UDMDBCtrl::GetParents(..., const bool)";
//         KXCT_GUARD_AS(function, _udmProfilePtr);
//         Translated(function, [&] { ... });
//     }
//
// Use the second form where the compiler's name of the function loses a const (see Signature.h).
#pragma once

#include <exception>
#include <utility>

#include "frwk/_private/Signature.h"

namespace kxct {

// Throws the failure of a null guard: signature, ":: ", source path, ". The pointer ", `name`,
// " is null!". `file` is __FILE__, which the build makes relative to the project's root.
[[noreturn]] void ThrowNullPointer(const char* function, const char* file, const char* name);

// Throws a KXCTException of `function`'s signature text, one blank and `cause.what()`.
[[noreturn]] void ThrowTranslated(const char* function, const std::exception& cause);

// Runs `call` and answers what it answers. A std::exception becomes a KXCTException (see
// ThrowTranslated); anything else that is thrown passes through unchanged.
template <class Call>
decltype(auto) Translated(const char* function, Call&& call) {
    try {
        return std::forward<Call>(call)();
    } catch (const std::exception& cause) {
        ThrowTranslated(function, cause);
    }
}

}  // namespace kxct

// Refuses to go on if `pointer` (plain or smart) is null. Names the enclosing function.
#define KXCT_GUARD(pointer) KXCT_GUARD_AS(__PRETTY_FUNCTION__, pointer)

// The same with the function's declaration spelled out.
#define KXCT_GUARD_AS(function, pointer)                            \
    do {                                                            \
        if (!(pointer)) [[unlikely]] {                              \
            ::kxct::ThrowNullPointer(function, __FILE__, #pointer); \
        }                                                           \
    } while (false)

// Translated() with the enclosing function's name.
#define KXCT_TRANSLATED(...) ::kxct::Translated(__PRETTY_FUNCTION__, __VA_ARGS__)
