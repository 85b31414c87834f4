// Settings documents: any bytes are read as each of the three kinds and written; and what was read
// out of a well-formed document comes back without a change when it is read again. The runtime also
// reads some that are not: the literal body of a Lookup, which is written as it stands, may then
// hold anything.
#include <kxctH.h>

#include <pugixml.hpp>
#include <sstream>

#include "Fuzz.h"
#include "settings/_private/XmlDocument.h"

namespace {

// A context with one root of the kind.
template <class Root>
class Document {
  public:
    using Make = Root* (*)(soap*, int);

    Document(Make make, const char* tag, const std::string& text)
        : _context(kxct::NewDocumentContext()), _root(make(_context, -1)), _tag(tag) {
        std::istringstream stream(text);
        kxct::ReadDocument(_context, stream, _root, nullptr, nullptr);
    }
    ~Document() { kxct::FreeDocumentContext(_context); }
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    // False if the runtime refuses, as it does for a list with gaps.
    bool Write(std::string& text) {
        std::ostringstream stream;
        const bool written = kxct::WriteDocument(_context, stream, _root, _tag, nullptr);
        text = stream.str();
        return written;
    }

  private:
    soap* _context;
    Root* _root;
    const char* _tag;
};

template <class Root>
void Run(Root* (*make)(soap*, int), const char* tag, const std::string& text) {
    Document<Root> document(make, tag, text);
    std::string first;
    const bool wellFormed = pugi::xml_document().load_buffer(text.data(), text.size());
    if (!document.Write(first) || !wellFormed) {
        return;
    }
    Document<Root> again(make, tag, first);
    std::string second;
    fuzz::Demand(again.Write(second), "a document that was written can't be written again");
    fuzz::Demand(first == second, "reading changed the document:\n" + first + "\n" + second);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(fuzz::TextOf(data, size));
    Run(kxct::soap_new__kxct__Settings, "kxct:Settings", text);
    Run(kxct::soap_new__kxct__PASettings, "kxct:PASettings", text);
    Run(kxct::soap_new__kxct__NorvikLibraryInfo, "kxct:NorvikLibraryInfo", text);
    return 0;
}
