// Records of a document that were read and checked once, put aside so that they can be taken up
// again for a fraction of the price. The form is this program's own, for the time of one import:
// each record is its kind, its length in eight bytes, and its fields one behind the other, numbers
// as base-128 varints and texts with their lengths. At the end stand the document's counts.
//
// Layer: exchange. Memory is that of one record. The SHA-256 over all that was written says whether
// what comes back is what was put aside; the reader refuses anything else, though only at its end,
// so that what was made of the records must still be undone then.
//
//     RecordWriter writer([&](std::string_view bytes) { file.Write(bytes); });
//     writer.Entity(entity); writer.Link(first, link);
//     const std::string hash = writer.Finish(counts);
//     ReadRecords([&](char* bytes, std::size_t size) { return file.Read(bytes, size); },
//                 hash, "the document of 'a.kxa'", handler);
#ifndef KXUDMRT_EXCHANGE_RECORDS_H
#define KXUDMRT_EXCHANGE_RECORDS_H

#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "exchange/Document.h"
#include "vault/Sha256.h"

namespace kxudm::exchange {

class DocumentHandler;

class RecordWriter {
  public:
    using Sink = std::function<void(std::string_view)>;

    explicit RecordWriter(Sink sink) : sink_(std::move(sink)) {}

    void Entity(const EntityRecord& entity);
    void Link(const std::string& first, const LinkRecord& link);
    // Last. The hash that ReadRecords asks for.
    [[nodiscard]] std::string Finish(const DocumentCounts& counts);

  private:
    void EndRecord(std::size_t begin);
    void Flush();

    Sink sink_;
    std::string bytes_;
    vault::Sha256 hash_;
};

// The next bytes, as many as there are; 0 at the end.
using RecordSource = std::function<std::size_t(char*, std::size_t)>;

// Calls the handler's Entity, Link and End. Throws UDMStoreException, naming `name`, for anything
// but what was written; what the handler throws comes out.
void ReadRecords(const RecordSource& source,
                 const std::string& hash,
                 const std::string& name,
                 DocumentHandler& handler);

}  // namespace kxudm::exchange

#endif
