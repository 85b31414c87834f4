// Reads and writes settings documents of all three kinds through the generated binding, in memory.
//
//     Document<kxct::_kxct__Settings> document;
//     document.Read("<kxct:Settings version='1'/>");
//     EXPECT_EQ(document->version, "1");
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kxctH.h>

#include <sstream>
#include <string>

#include "settings/_private/XmlDocument.h"

namespace kxct::test {

inline _kxct__Settings* NewRoot(soap* context, const _kxct__Settings*) {
    return soap_new__kxct__Settings(context, -1);
}
inline _kxct__PASettings* NewRoot(soap* context, const _kxct__PASettings*) {
    return soap_new__kxct__PASettings(context, -1);
}
inline _kxct__NorvikLibraryInfo* NewRoot(soap* context, const _kxct__NorvikLibraryInfo*) {
    return soap_new__kxct__NorvikLibraryInfo(context, -1);
}

inline const char* RootTag(const _kxct__Settings*) {
    return "kxct:Settings";
}
inline const char* RootTag(const _kxct__PASettings*) {
    return "kxct:PASettings";
}
inline const char* RootTag(const _kxct__NorvikLibraryInfo*) {
    return "kxct:NorvikLibraryInfo";
}

template <class Root>
class Document {
  public:
    Document() : _context(NewDocumentContext()) {
        _root = NewRoot(_context, static_cast<Root*>(nullptr));
    }
    explicit Document(const std::string& text) : Document() { Read(text); }
    ~Document() { FreeDocumentContext(_context); }
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    Root* operator->() { return _root; }
    soap* Context() { return _context; }

    void Read(const std::string& text) {
        std::istringstream stream(text);
        ReadDocument(_context, stream, _root, nullptr, nullptr);
    }

    std::string Write() {
        std::ostringstream stream;
        EXPECT_TRUE(WriteDocument(_context, stream, _root, RootTag(_root), nullptr));
        return stream.str();
    }

    std::string* NewText(const std::string& text) {
        std::string* made = soap_new_std__string(_context, -1);
        *made = text;
        return made;
    }

  private:
    soap* _context;
    Root* _root = nullptr;
};

using SettingsDocument = Document<_kxct__Settings>;
using AttributeDocument = Document<_kxct__PASettings>;
using LibraryDocument = Document<_kxct__NorvikLibraryInfo>;

/// A document with `content` below the root.
inline std::string SettingsText(const std::string& content) {
    return "<kxct:Settings>" + content + "</kxct:Settings>";
}

/// The names of a list of keys; "(null)" for a null pointer.
template <class Elements>
std::vector<std::string> NamesOf(const Elements& elements) {
    std::vector<std::string> names;
    for (const auto* element : elements) {
        names.push_back(element ? element->name : "(null)");
    }
    return names;
}

}  // namespace kxct::test
