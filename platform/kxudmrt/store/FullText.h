// The full text index of a library: the words of attributes, and of files.
//
// Layer: store. Belongs to a LibraryStore and its thread. What is known of words stands in text/;
// the content of files comes from a Reader, since the store knows no vault.
//
// Nobody who changes a library indexes anything. Triggers mark the entity whose words changed (a
// row of text_pending), and a file's row says which document holds its words (NULL: none yet). A
// search brings the index forward if the write lock is free just then, and compares what is left
// over in memory. So an edit costs what it has cost, and a search never waits for a writer and
// never misses a word, even within a transaction that is still open.
//
// Whoever writes rows of revisions, entities or files, in bulk, too, has to call nothing. Two are
// different: who changes head_attribute without the revision calls MarkTexts, and who has the
// content of a file in memory saves the next search from reading it again by
//
//     ContentTexts texts(store);  // in the transaction of the rows
//     row.text = texts.Add(row.hash, prepared);  // for each
//     texts.Write();
//
// A document of attributes belongs to an entity and is replaced. One of a content belongs to its
// hash and is never changed: whatever files it has, whoever sees them, stands in the table of
// files. Such documents without a file are removed by a rebuild.
#ifndef KXUDMRT_STORE_FULLTEXT_H
#define KXUDMRT_STORE_FULLTEXT_H

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "store/LibraryCheck.h"
#include "store/LibraryStore.h"
#include "text/Question.h"

namespace kxudm::store {

// The prepared text (text/Terms.h) of a content; empty for what is no text. Nothing: it can't be
// read, which is not to be told here.
using TextReader =
    std::function<std::optional<std::string>(const std::string& vault, const std::string& hash)>;

// What queries see of the entity's attributes has changed.
void MarkTexts(LibraryStore& store, EntityId id);

// The documents of a few or many contents, within one transaction. They come into the index
// together: whatever else is written in between would have it write what it has collected so far,
// to be merged later.
class ContentTexts {
  public:
    // Outlives it.
    explicit ContentTexts(LibraryStore& store) : _store(store) {}

    // Number of the document that holds a content's prepared text; 0 if there are no words in it.
    // It is to be written into the content's row before the next one is added.
    [[nodiscard]] std::int64_t Add(std::string_view hash, std::string prepared);
    // Without it nothing that was added may be committed.
    void Write();

  private:
    void ReadLast();

    LibraryStore& _store;
    std::vector<std::string> _prepared;
    // Numbers are never given twice: a document that no file has may still stand in the index.
    std::int64_t _last = 0;
};

// How what is indexed otherwise than it should be is put right.
inline constexpr const char* REBUILD = "; rebuild the full text index";

class FullText {
  public:
    // Both outlive it.
    FullText(LibraryStore& store, const TextReader& reader) : _store(store), _reader(reader) {}

    // Indexes a portion of what is new, or puts the index in order after many of them, in a
    // transaction of its own. False: nothing was left.
    // Throws sql::Error of kind Busy where the write lock can't be had; see Connection::SetPatient.
    bool BringForward();

    // Whether nothing is new.
    [[nodiscard]] bool IsCurrent();

    // Newest revisions that the question finds and that meet the condition, as of
    // LibraryStore::VisitHits. Inside of a View.
    std::int64_t VisitHits(const text::Question& question,
                           const Condition& allowed,
                           const Viewer& viewer,
                           bool rootsOnly,
                           std::int64_t first,
                           std::int64_t last,
                           const std::function<void(EntityRow&)>& visit);

    // --- Care ---

    // How many entities and contents are not indexed yet.
    [[nodiscard]] std::int64_t CountPending();
    // Forgets everything; BringForward makes it anew.
    void Clear();
    // Reports the entities of whose attributes other words are indexed than there are. Inside of a
    // View.
    void CheckAttributes(const Report& report);
    // What is indexed of contents, by document. Inside of a View.
    using Sums = std::unordered_map<std::int64_t, std::uint64_t>;
    [[nodiscard]] Sums SumsOfContents();
    // The sum of a document with these words. Any thread.
    [[nodiscard]] static std::uint64_t SumOf(std::string_view prepared);

  private:
    bool IndexEntities();
    bool IndexContents();
    bool MergePieces();

    LibraryStore& _store;
    const TextReader& _reader;
    std::size_t _indexed = 0;  // entities, since the index was put in order
    bool _merging = false;
};

}  // namespace kxudm::store

#endif
