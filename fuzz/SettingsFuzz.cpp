// Settings documents: any bytes are read as each of the three kinds and written; and what was read
// out of a well-formed document comes back without a change when it is read again. The runtime also
// reads some that are not: the literal body of a Lookup, which is written as it stands, may then
// hold anything.
#include <kxctH.h>

#include <algorithm>
#include <pugixml.hpp>
#include <sstream>
#include <vector>

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

class AttributeSorter final : public pugi::xml_tree_walker {
  public:
    bool for_each(pugi::xml_node& node) override {
        std::vector<std::string> names;
        for (const pugi::xml_attribute& attribute : node.attributes()) {
            names.emplace_back(attribute.name());
        }
        std::sort(names.begin(), names.end());
        for (const std::string& name : names) {
            const pugi::xml_attribute attribute = node.attribute(name.c_str());
            node.append_copy(attribute);
            node.remove_attribute(attribute);
        }
        return true;
    }
};

// A context writes attributes in the order in which it met them first, which for what was left out
// is another one when the document is read again.
std::string WithSortedAttributes(const std::string& text) {
    pugi::xml_document document;
    fuzz::Demand(document.load_buffer(text.data(), text.size(), pugi::parse_full),
                 "what was written is not well-formed:\n" + text);
    AttributeSorter sorter;
    document.traverse(sorter);
    std::ostringstream stream;
    document.save(stream, "", pugi::format_raw);
    return stream.str();
}

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
    fuzz::Demand(first == second || WithSortedAttributes(first) == WithSortedAttributes(second),
                 "reading changed the document:\n" + first + "\n" + second);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(fuzz::TextOf(data, size));
    Run(kxct::soap_new__kxct__Settings, "kxct:Settings", text);
    Run(kxct::soap_new__kxct__PASettings, "kxct:PASettings", text);
    Run(kxct::soap_new__kxct__NorvikLibraryInfo, "kxct:NorvikLibraryInfo", text);
    return 0;
}
