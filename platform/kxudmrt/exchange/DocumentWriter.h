// Writes the document of an archive as a stream: head, definitions, entities, links, end, in this
// order. Memory is that of one record. Equal records give equal bytes.
//
// Layer: exchange. One thread at a time. What the sink throws comes out; the document is then of no
// use.
//
//     DocumentWriter document([&](std::string_view bytes) { archive.Write(bytes); });
//     document.Begin(Scope::AllWithFiles, catalogue->ToXml());
//     for (...) document.Entity(record);
//     for (...) document.Link(uid, link);   // all of one entity together
//     document.End();
#ifndef KXUDMRT_EXCHANGE_DOCUMENTWRITER_H
#define KXUDMRT_EXCHANGE_DOCUMENTWRITER_H

#include <functional>
#include <string>
#include <string_view>

#include "exchange/Document.h"

namespace kxudm::exchange {

class DocumentWriter {
  public:
    using Sink = std::function<void(std::string_view)>;

    explicit DocumentWriter(Sink sink) : sink_(std::move(sink)) {}

    // `catalogueXml` as Catalogue::ToXml gives it: the definitions that the entities need.
    void Begin(Scope scope, std::string_view catalogueXml);
    // Throws UDMException, naming entity and text, for one that no reader would take: longer than
    // kLongestText, or, in what stands in a tag, kLongestTag.
    void Entity(const EntityRecord& entity);
    void Link(const std::string& first, const LinkRecord& link);
    void End();

    [[nodiscard]] const DocumentCounts& Counts() const { return counts_; }

  private:
    void Revision(const EntityRecord& entity, const RevisionRecord& revision);
    void Value(const EntityRecord& entity, const kxString& name, const kxVariant& value);
    void File(const FileRecord& file);
    void BeginLinks();
    void Open(std::string_view element);
    void Put(std::string_view attribute, std::string_view text);
    void PutTime(std::string_view attribute, store::Microseconds time);
    void PutNumber(std::string_view attribute, std::int64_t number);
    void Flush();

    Sink sink_;
    std::string text_;  // of the record that is being written
    std::string uid_;   // whose links are being written
    bool inLinks_ = false;
    DocumentCounts counts_;
};

// What a reader takes, in bytes: one value, and one tag with all that stands in it.
constexpr std::size_t kLongestText = std::size_t{64} << 20;
constexpr std::size_t kLongestTag = std::size_t{1} << 20;

}  // namespace kxudm::exchange

#endif
