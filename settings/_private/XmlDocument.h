// How the three kinds of settings document are read and written through the generated binding. For
// internal use of settings/; hidden outside the library.
//
// A context of the XML runtime owns the document: the root, everything below it and all optional
// values. It belongs to one thread. Each of the documents' Impl classes holds one context and one
// root:
//
//     _soap = NewDocumentContext();
//     _root = soap_new__kxct__Settings(_soap, -1);
//     ReadDocument(_soap, file, _root, nullptr, nullptr);
//     ...
//     FreeDocumentContext(_soap);  // _root is gone with it
#pragma once

#include <istream>
#include <ostream>

#include "settings/_private/DocumentGuard.h"

struct soap;

namespace kxct {

/// A context that indents what it writes and knows the documents' namespaces. The caller owns it.
/// Null if memory is short.
soap* NewDocumentContext();

/// Frees `context` with all objects it owns. Null is allowed.
void FreeDocumentContext(soap* context);

namespace document_detail {
bool BeginRead(soap* context, std::istream& stream);
void EndRead(soap* context, bool complete);
bool BeginWrite(soap* context, std::ostream& stream);
bool EndWrite(soap* context, bool put);
}  // namespace document_detail

/// Reads XML text into `root`, which keeps what it has: lists add up. Bytes are taken as UTF-8
/// whatever encoding is declared. With a null `tag` and `type` any root element is taken. Nothing
/// is reported: `root` keeps what could be read up to a failure, and text that doesn't begin with
/// "<" leaves it as it is.
template <class Root>
void ReadDocument(
    soap* context, std::istream& stream, Root* root, const char* tag, const char* type) {
    DocumentGuard guard(stream);
    if (!guard.BeginsWithMarkup()) {
        return;
    }
    std::istream checked(&guard);
    if (document_detail::BeginRead(context, checked)) {
        document_detail::EndRead(context, root->soap_in(context, tag, type) != nullptr);
    }
}

/// Writes `root` as UTF-8 under the root element `tag`. False if the runtime reported a failure;
/// the context's error word then tells which. The stream may still hold bytes back: a caller who
/// needs to know that they arrived flushes it and looks at its state.
template <class Root>
bool WriteDocument(
    soap* context, std::ostream& stream, const Root* root, const char* tag, const char* type) {
    const bool begun = document_detail::BeginWrite(context, stream);
    const bool put = begun && root->soap_put(context, tag, type) == 0;
    return document_detail::EndWrite(context, put);
}

}  // namespace kxct
