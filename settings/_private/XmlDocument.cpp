#include "settings/_private/XmlDocument.h"

#include <kxudmrtxmlbinding/XmlNamespaces.h>
#include <stdsoap2.h>

namespace kxct {

// The mode words are part of how the documents look; the runtime's names for them may not move.
static_assert(SOAP_XML_INDENT == 0x2000 && SOAP_XML_TREE == 0x20000);

soap* NewDocumentContext() {
    soap* context = soap_new1(SOAP_XML_INDENT);
    if (context) {
        soap_set_namespaces(context, kxGetXmlNamespaces());
    }
    return context;
}

void FreeDocumentContext(soap* context) {
    if (context) {
        soap_delete(context, nullptr);
        soap_end(context);
        soap_free(context);
    }
}

namespace document_detail {

bool BeginRead(soap* context, std::istream& stream) {
    context->is = &stream;
    // Tree mode keeps the runtime from resolving SOAP references: a crafted one that stands beside
    // an encoding style ends the process otherwise. Strings are UTF-8 in memory.
    soap_set_imode(context, SOAP_XML_TREE | SOAP_C_UTFSTRING);
    return soap_begin_recv(context) == SOAP_OK;
}

// Ending the message only after a failure looks reversed and is required: the end of a complete
// document is not looked at, so that whatever follows the root element does no harm.
void EndRead(soap* context, bool complete) {
    if (!complete) {
        soap_end_recv(context);
    }
    context->is = nullptr;
}

bool BeginWrite(soap* context, std::ostream& stream) {
    context->os = &stream;
    // The second pair replaces the first: indentation is the mode in effect, and the tree mode is
    // not. The sequence is required, and shared objects are written as the runtime does without it.
    context->imode = SOAP_XML_TREE;
    context->omode = SOAP_XML_TREE;
    context->imode = SOAP_XML_INDENT;
    context->omode = SOAP_XML_INDENT;
    soap_set_imode(context, SOAP_C_UTFSTRING);
    soap_set_omode(context, SOAP_C_UTFSTRING);
    return soap_begin_send(context) == SOAP_OK;
}

bool EndWrite(soap* context, bool put) {
    const bool sent = put && soap_end_send(context) == SOAP_OK;
    context->os = nullptr;
    return sent || context->error == SOAP_OK;
}

}  // namespace document_detail

}  // namespace kxct
