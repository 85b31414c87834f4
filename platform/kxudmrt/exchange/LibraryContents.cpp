// Contents of files that an export or an import has to do with, in a table of the connection.
#include "exchange/LibraryExchange.h"
#include "store/ExchangeStatements.h"
#include "store/RowReader.h"

namespace kxudm::exchange {
namespace {

constexpr int PORTION = 1000;

}  // namespace

std::uint64_t NoteContent(store::LibraryStore& store, const NotedContent& content) {
    sql::Statement note(store.Connection(), store::statements::NOTE_CONTENT);
    note.BindAll(content.hash, content.vault, static_cast<std::int64_t>(content.size));
    note.Run();
    if (store.Connection().Changes() != 0) {
        return content.size;
    }
    sql::Statement find(store.Connection(), store::statements::SIZE_OF_CONTENT);
    find.BindAll(content.hash);
    return find.Step() ? static_cast<std::uint64_t>(find.Int64(0)) : content.size;
}

ContentTotal CountContents(store::LibraryStore& store) {
    sql::Statement count(store.Connection(), store::statements::COUNT_CONTENT);
    return count.Step() ? ContentTotal{static_cast<std::uint64_t>(count.Int64(0)),
                                       static_cast<std::uint64_t>(count.Int64(1))}
                        : ContentTotal{};
}

const NotedContent* NotedContents::Next() {
    if (next_ == portion_.size()) {
        const std::string last = portion_.empty() ? std::string() : portion_.back().hash;
        portion_.clear();
        next_ = 0;
        sql::Statement read(store_.Connection(), store::statements::CONTENT_BEHIND);
        read.BindAll(last, PORTION);
        while (read.Step()) {
            portion_.push_back(
                {read.String(0), read.String(1), static_cast<std::uint64_t>(read.Int64(2))});
        }
    }
    return next_ < portion_.size() ? &portion_[next_++] : nullptr;
}

}  // namespace kxudm::exchange
