#include "settings/_private/XmlDocument.h"

#include <kxudmrtxmlbinding/XmlNamespaces.h>
#include <pthread.h>
#include <stdsoap2.h>

#include <algorithm>
#include <cstdint>

namespace kxct {

namespace {

// gcc and clang tell in different ways that the address sanitizer, with its large frames, is on.
#ifdef __has_feature
#if __has_feature(address_sanitizer)
#define KXCT_LARGE_FRAMES
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define KXCT_LARGE_FRAMES
#endif

// What one level of nesting takes of the stack while a document is read, generously.
#ifdef KXCT_LARGE_FRAMES
constexpr std::size_t stackPerLevel = 4096;
#else
constexpr std::size_t stackPerLevel = 600;
#endif

// Bytes of the calling thread's stack that are not in use; 0 if that can't be told.
std::size_t FreeStack() {
    pthread_attr_t attributes;
    if (pthread_getattr_np(pthread_self(), &attributes) != 0) {
        return 0;
    }
    void* lowest = nullptr;
    std::size_t size = 0;
    const bool known = pthread_attr_getstack(&attributes, &lowest, &size) == 0;
    pthread_attr_destroy(&attributes);
    const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
    const auto bottom = reinterpret_cast<std::uintptr_t>(lowest);
    return known && here > bottom ? here - bottom : 0;
}

// The readers of nested elements call each other, so that the nesting of a document has to end
// before the stack of a thread does. The runtime's own limit fits into the usual 8 MiB.
unsigned int MaxLevel() {
    constexpr std::size_t reserve = 65536;
    const std::size_t stack = FreeStack();
    const std::size_t levels = stack > reserve ? (stack - reserve) / stackPerLevel : 0;
    return static_cast<unsigned int>(std::clamp<std::size_t>(levels, 100, SOAP_MAXLEVEL));
}

}  // namespace

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
    context->maxlevel = MaxLevel();
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
