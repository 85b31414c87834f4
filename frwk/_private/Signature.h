// The text by which a failure names the operation that it comes from.
//
// Layer: framework, private to this library. The texts have one shape on every compiler: result
// type, calling convention word, qualified name, argument types, each class named as such:
//
//     void __cdecl kxct::UDMDBCtrl::AddChild(const class kxudm::UDMItemHandle &,
//         const class kxudm::UDMItemHandle &,const class kxString &)        (in one line)
//
// They are made from what the compiler itself calls the function, and only when a failure is
// raised: an operation that succeeds pays nothing for them. Guards and translations that use them
// are in Guards.h.
#pragma once

#include <string>
#include <string_view>

namespace kxct {

// Turns a C++ function name as __PRETTY_FUNCTION__ or a programmer spells it into the shape above.
//
// `function` is one declaration without a body: result type, qualified name, argument types, with
// or without argument names, and a "const" behind it for a const operation. Classes must be
// spelled with their namespaces. Storage words ("static", "virtual") are dropped, default template
// arguments of the containers are written out, 64-bit unsigned integers become "unsigned __int64",
// and what a lambda or a template instantiation adds behind the function's name is cut off. A text
// that is no declaration comes back as it is.
std::string SignatureText(std::string_view function);

}  // namespace kxct

// The signature text of the enclosing function.
#define KXCT_SIGNATURE ::kxct::SignatureText(__PRETTY_FUNCTION__)

// The signature text of a spelled-out declaration. Needed where the compiler's own name loses
// something: GCC leaves out the const of arguments taken by value.
#define KXCT_SIGNATURE_OF(declaration) ::kxct::SignatureText(declaration)
