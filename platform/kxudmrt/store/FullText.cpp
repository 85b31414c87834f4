// How the full text index is kept. How it is searched: FullTextSearch.cpp.
#include "store/FullText.h"

#include <utility>

#include "store/MaintenanceStatements.h"
#include "store/TextDocuments.h"
#include "store/TextStatements.h"
#include "text/Terms.h"

namespace kxudm::store {
namespace {

// Other writers wait for so much.
constexpr int kEntitiesAtOnce = 1000;
constexpr int kContentsAtOnce = 100;
constexpr int kPagesAtOnce = 500;
constexpr std::size_t kBytesAtOnce = std::size_t{4} << 20;

constexpr std::string_view kNoteOfDocuments = "text_document";
constexpr std::int64_t kNoWords = 0;
constexpr std::int64_t kUnreadable = -1;

void AppendText(std::string& document, std::string_view text) {
    if (!document.empty()) {
        text::AppendGap(document);
    }
    text::AppendPrepared(document, text, text::Source::Attribute);
}

void SetDocument(sql::Connection& connection, std::int64_t row, const std::string& words) {
    {
        sql::Statement find(connection, statements::TEXT_OF);
        find.BindAll(row);
        const bool there = find.Step();
        if (there ? find.Text(0) == words : words.empty()) {
            return;
        }
    }
    if (words.empty()) {
        sql::Statement drop(connection, statements::DROP_TEXT);
        drop.BindAll(row);
        drop.Run();
        return;
    }
    sql::Statement set(connection, statements::SET_TEXT);
    set.BindAll(row, words);
    set.Run();
}

void IndexEntity(sql::Connection& connection, EntityId id) {
    const TextDocuments documents = DocumentsOf(connection, id);
    SetDocument(connection, TextRow(id, false), documents.published);
    SetDocument(connection, TextRow(id, true), documents.working);
    sql::Statement unmark(connection, statements::UNMARK_TEXT);
    unmark.BindAll(id);
    unmark.Run();
}

struct PendingContent {
    std::string hash;
    std::string vault;
    std::optional<std::string> prepared = std::nullopt;
};

std::vector<PendingContent> ReadPendingContents(sql::Connection& connection) {
    std::vector<PendingContent> contents;
    sql::Statement find(connection, statements::CONTENTS_PENDING);
    find.BindAll(kContentsAtOnce);
    while (find.Step()) {
        contents.push_back({find.String(0), find.String(1)});
    }
    return contents;
}

// Or more: that of the youngest.
std::size_t CountEntities(sql::Connection& connection) {
    sql::Statement find(connection, statements::YOUNGEST_ENTITY);
    return find.Step() && !find.IsNull(0) ? static_cast<std::size_t>(find.Int64(0)) : 0;
}

}  // namespace

void MarkTexts(LibraryStore& store, EntityId id) {
    sql::Statement mark(store.Connection(), statements::MARK_TEXT);
    mark.BindAll(id);
    mark.Run();
}

TextDocuments DocumentsOf(sql::Connection& connection, EntityId id) {
    TextDocuments documents;
    std::string entityName;
    bool isPublished = false;
    bool isWorking = false;
    {
        sql::Statement entity(connection, statements::TEXT_ENTITY);
        entity.BindAll(id);
        if (!entity.Step()) {
            return documents;
        }
        entityName = entity.String(0);
        isPublished = entity.Int(1) != 0;
        isWorking = entity.Int(2) != 0;
    }
    AppendText(documents.published, entityName);
    documents.working = documents.published;
    // Of each name the published value comes first, then the working one, which counts instead.
    std::string name;
    std::string value;
    bool ofWorking = false;
    const auto end = [&] {
        if (!value.empty() && value != entityName) {
            AppendText(documents.working, value);
        }
        value.clear();
    };
    sql::Statement heads(connection, statements::TEXT_HEADS);
    heads.BindAll(id);
    while (heads.Step()) {
        if (heads.Text(0) != name) {
            end();
            name = heads.String(0);
        }
        value = heads.String(2);
        ofWorking = heads.Int(1) != 0;
        if (!ofWorking && !value.empty() && value != entityName) {
            AppendText(documents.published, value);
        }
    }
    end();
    if (!isPublished) {
        documents.published.clear();
    }
    if (!isWorking) {
        documents.working.clear();
    }
    return documents;
}

std::int64_t ContentTexts::Add(std::string_view hash, std::string prepared) {
    {
        sql::Statement find(_store.Connection(), statements::CONTENT_TEXT_OF);
        find.BindAll(hash);
        if (find.Step()) {
            return find.Int64(0);
        }
    }
    if (prepared.empty()) {
        return kNoWords;
    }
    if (_prepared.empty()) {
        ReadLast();
    }
    _prepared.push_back(std::move(prepared));
    return _last + static_cast<std::int64_t>(_prepared.size());
}

void ContentTexts::ReadLast() {
    sql::Statement find(_store.Connection(), statements::INFO);
    find.BindAll(kNoteOfDocuments);
    _last = find.Step() ? std::stoll(find.String(0)) : 0;
}

void ContentTexts::Write() {
    if (_prepared.empty()) {
        return;
    }
    sql::Connection& connection = _store.Connection();
    const std::string last = std::to_string(_last + static_cast<std::int64_t>(_prepared.size()));
    sql::Statement set(connection, statements::SET_INFO);
    set.BindAll(kNoteOfDocuments, last);
    set.Run();
    for (const std::string& prepared : _prepared) {
        sql::Statement add(connection, statements::ADD_CONTENT_TEXT);
        add.BindAll(++_last, prepared);
        add.Run();
    }
    _prepared.clear();
}

bool FullText::BringForward() {
    const bool entities = IndexEntities();
    return IndexContents() || entities || MergePieces();
}

bool FullText::IsCurrent() {
    sql::Statement find(_store.Connection(), statements::ANY_TEXT_PENDING);
    return !find.Step();
}

bool FullText::IndexEntities() {
    const auto read = [this] {
        std::vector<EntityId> pending;
        sql::Statement find(_store.Connection(), statements::TEXT_PENDING);
        find.BindAll(kEntitiesAtOnce);
        while (find.Step()) {
            pending.push_back(find.Int64(0));
        }
        return pending;
    };
    // A look without the lock first: mostly there is nothing.
    if (read().empty()) {
        return false;
    }
    return _store.Update([&] {
        const std::vector<EntityId> pending = read();
        for (const EntityId id : pending) {
            IndexEntity(_store.Connection(), id);
        }
        _indexed += pending.size();
        return pending.size() == kEntitiesAtOnce;
    });
}

// Each portion becomes a piece of the index, and a search looks into each piece. They are made one
// where what came is a good part of the whole: then no entity is written more than a few times.
bool FullText::MergePieces() {
    if (_indexed <= kEntitiesAtOnce || _indexed < CountEntities(_store.Connection()) / 4) {
        return false;
    }
    const bool more = _store.Update([&] {
        sql::Connection& connection = _store.Connection();
        const std::int64_t before = connection.TotalChanges();
        sql::Statement merge(connection, statements::MERGE_TEXTS);
        // Negative: of all sizes. Then on with those.
        merge.BindAll(_merging ? kPagesAtOnce : -kPagesAtOnce);
        merge.Run();
        // The command itself counts as a change.
        return connection.TotalChanges() - before > 1;
    });
    _merging = more;
    _indexed = more ? _indexed : 0;
    return more;
}

bool FullText::IndexContents() {
    std::vector<PendingContent> pending = ReadPendingContents(_store.Connection());
    const bool more = pending.size() == kContentsAtOnce;
    // Read before the lock is taken: contents never change.
    std::size_t bytes = 0;
    std::size_t count = 0;
    for (; count < pending.size() && bytes < kBytesAtOnce; ++count) {
        pending[count].prepared = _reader(pending[count].vault, pending[count].hash);
        bytes += pending[count].prepared.value_or(std::string()).size();
    }
    if (count == 0) {
        return false;
    }
    _store.Update([&] {
        ContentTexts texts(_store);
        for (std::size_t i = 0; i < count; ++i) {
            PendingContent& content = pending[i];
            const std::int64_t document =
                content.prepared ? texts.Add(content.hash, std::move(*content.prepared))
                                 : kUnreadable;
            sql::Statement set(_store.Connection(), statements::SET_CONTENT_TEXT);
            set.BindAll(content.hash, document);
            set.Run();
        }
        texts.Write();
    });
    return more || count < pending.size();
}

void FullText::Clear() {
    _store.Update([this] { _store.Connection().Execute(statements::CLEAR_TEXTS); });
}

}  // namespace kxudm::store
