// Reads the document of an archive as a stream and checks everything that can be said of it without
// a library: its form, the order of its parts, each text, number and time, intervals within an
// entity's revisions, and the counts at its end. What it hands on can be relied on that far;
// whether definitions, other ends and contents are there is up to the handler.
//
// Layer: exchange, over expat. Trusts nothing: a document type (and so every entity beside the five
// of XML), another encoding than UTF-8, unknown elements and attributes, depth, and sizes beyond
// kLongestText, kLongestTag, kLargestEntity and kLargestDefinitions are refused. Memory is that of
// one entity with its revisions and files, or of one link. One thread at a time.
//
//     DocumentReader document(handler, path + ", library.xml");
//     while (const std::size_t count = archive.Read(buffer, size)) document.Feed({buffer, count});
//     document.Finish();
#ifndef KXUDMRT_EXCHANGE_DOCUMENTREADER_H
#define KXUDMRT_EXCHANGE_DOCUMENTREADER_H

#include <kxudm/UDMException.h>

#include <memory>
#include <string>
#include <string_view>

#include "exchange/Document.h"

namespace kxudm::exchange {

// "<name>:<line>:<column>: what is wrong; what was expected".
class DocumentException : public UDMStoreException {
  public:
    using UDMStoreException::UDMStoreException;
};

// Bytes of all texts of one entity, and of the definitions.
constexpr std::size_t kLargestEntity = std::size_t{256} << 20;
constexpr std::size_t kLargestDefinitions = std::size_t{16} << 20;

// Hears of the document's records in their order. What it throws ends the reading and comes out of
// Feed.
class DocumentHandler {
  public:
    DocumentHandler() = default;
    DocumentHandler(const DocumentHandler&) = delete;
    DocumentHandler& operator=(const DocumentHandler&) = delete;
    virtual ~DocumentHandler() = default;

    // First. The definitions as a text for Catalogue::ReadText, in which each element stands in the
    // line where it stands in the document.
    virtual void Begin(Scope scope, std::string&& catalogueXml) = 0;
    virtual void Entity(EntityRecord&& entity) = 0;
    // All links of an entity come one behind the other.
    virtual void Link(const std::string& first, LinkRecord&& link) = 0;
    // Last; the counts are those of what came.
    virtual void End(const DocumentCounts& counts) = 0;
};

class DocumentReader {
  public:
    // The handler outlives the reader; `name` stands before error texts.
    DocumentReader(DocumentHandler& handler, std::string name);
    ~DocumentReader();
    DocumentReader(const DocumentReader&) = delete;
    DocumentReader& operator=(const DocumentReader&) = delete;

    // The next bytes, cut anywhere. Throws DocumentException; after any exception only the
    // destructor is of use.
    void Feed(std::string_view bytes);
    // Behind the last byte: refuses a document that is not at its end.
    void Finish();

  private:
    class Parser;
    std::unique_ptr<Parser> parser_;
};

}  // namespace kxudm::exchange

#endif
