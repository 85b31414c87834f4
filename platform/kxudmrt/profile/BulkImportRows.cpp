// How files that a bulk import has taken in become contents.
#include <algorithm>

#include "profile/BulkImport.h"
#include "profile/Creation.h"
#include "profile/Groups.h"
#include "profile/RevisionsCheck.h"
#include "profile/Words.h"

namespace kxudm::profile {

namespace {

constexpr std::string_view FILE_TYPE = "filetype";
constexpr std::string_view FILE_SIZE = "filesize";
constexpr std::string_view FILE_MODIFIED = "filelastmodified";

void Describe(const catalogue::ContentDefinition& definition,
              std::string_view attribute,
              const kxVariant& value,
              store::AttributeList& values) {
    const catalogue::AttributeDefinition* const found = definition.FindAttribute(attribute);
    if (found != nullptr && !found->system) {
        values.emplace_back(kxString(attribute), definition.CheckedValue(attribute, value));
    }
}

// What the definition has a place for.
store::AttributeList Described(const catalogue::ContentDefinition& definition,
                               const store::FileRow& file) {
    store::AttributeList values;
    const std::size_t dot = file.name.rfind('.');
    if (dot != std::string::npos && dot > 0) {
        Describe(definition, FILE_TYPE, kxVariant(file.name.substr(dot + 1)), values);
    }
    Describe(definition, FILE_SIZE, kxVariant(static_cast<long long>(file.size)), values);
    Describe(definition, FILE_MODIFIED, kxVariant(WholeSeconds(file.modified)), values);
    return values;
}

}  // namespace

// A content that the library refuses fails alone: the others of its group are written without it.
void BulkImport::WriteGroup() {
    if (_batch) {
        // It is the same for all groups, since files of the next one are on their way.
        _batch->Commit();
    }
    std::size_t from = 0;
    while (const std::optional<Refusal> refusal = TryWrite(from)) {
        if (refusal->isFolder) {
            _refusedFolders.insert(refusal->index);
            _report.Fail(_plan->folders[refusal->index].source, refusal->reason);
            continue;
        }
        const std::size_t file = _pending[refusal->index].file;
        _report.Fail(_plan->SourceOf(_plan->files[file]), refusal->reason);
        Position position;
        Write(from, refusal->index, 0, position);
        from = refusal->index + 1;
    }
    for (const Pending& pending : _pending) {
        _names.erase({pending.place, _plan->files[pending.file].name});
        _textBytes -= pending.textBytes;
    }
    _pending.clear();
    _pendingBytes = 0;
}

// What is pending from there on, as a whole, and at the end of the import the folders that are
// left. None if it was written, else what it failed at; nothing of it is there then.
std::optional<BulkImport::Refusal> BulkImport::TryWrite(std::size_t from) {
    Position position;
    try {
        Write(from, _pending.size(), _atEnd ? _plan->folders.size() : 0, position);
        return std::nullopt;
    } catch (const UDMStoreException&) {
        throw;
    } catch (const UDMException& error) {
        // A transaction within another can't be taken back alone.
        if (_session.InBulk()) {
            throw;
        }
        return Refusal{position, error.what()};
    }
}

void BulkImport::Write(std::size_t from,
                       std::size_t to,
                       std::size_t foldersEnd,
                       Position& position) {
    if (from == to && _nextFolder >= foldersEnd) {
        return;
    }
    std::size_t nextFolder = _nextFolder;
    int made = 0;
    try {
        Operation operation(_session, "AddFoldersAndFiles", sql::Transaction::Durability::Full);
        store::ContentTexts texts(operation.Store());
        for (std::size_t i = from; i < to; ++i) {
            const std::size_t folder = _plan->files[_pending[i].file].folder;
            MakeWanted(operation, nextFolder, folder + 1, position);
            position = {false, i};
            made += WriteContent(operation, _pending[i], texts) ? 1 : 0;
        }
        MakeWanted(operation, nextFolder, foldersEnd, position);
        texts.Write();
        operation.Commit();
        operation.TellLater(_changes);
    } catch (...) {
        _folders.Forget();
        throw;
    }
    _folders.Keep();
    _session.TouchLinks();
    _nextFolder = nextFolder;
    _made += made;
}

void BulkImport::MakeWanted(Operation& operation,
                            std::size_t& next,
                            std::size_t end,
                            Position& position) {
    for (; next < end; ++next) {
        const ImportFolder& folder = _plan->folders[next];
        if (folder.wanted && _refusedFolders.count(next) == 0) {
            position = {true, next};
            static_cast<void>(_folders.Make(operation, _folders.At(folder.target)));
        }
    }
}

// False if somebody else has brought the same file there meanwhile.
bool BulkImport::WriteContent(Operation& operation, Pending& pending, store::ContentTexts& texts) {
    const Session::State folder = _folders.Make(operation, *pending.place);
    std::vector<store::FileRow> there;
    if (FindNamed(*pending.place, pending.row.name, there)) {
        const bool isSame = std::any_of(there.begin(), there.end(), [&](const auto& row) {
            return row.hash == pending.row.hash && row.externalPath == pending.row.externalPath;
        });
        if (!isSame) {
            throw UDMException("somebody else has made a content of that name there meanwhile");
        }
        return false;
    }
    const Session::State content = CreateState(_session,
                                               operation,
                                               *pending.definition,
                                               CheckedName(*pending.definition, pending.row.name),
                                               Described(*pending.definition, pending.row));
    PlaceContent(operation, content, folder);
    if (!operation.Store().AddFile(
            content->Id(), content->Revision(), RowOf(pending, texts), operation.Stamp())) {
        throw UDMException("its content has a file of that name already");
    }
    FinishContent(operation, content);
    return true;
}

// With the document of its words, if it has any. Written a second time, after another content was
// refused, it is left to the next search.
store::FileRow BulkImport::RowOf(Pending& pending, store::ContentTexts& texts) {
    store::FileRow row = pending.row;
    if (pending.text.valid()) {
        row.text = texts.Add(row.hash, pending.text.get());
    }
    return row;
}

void BulkImport::PlaceContent(Operation& operation,
                              const Session::State& content,
                              const Session::State& folder) {
    if (!folder) {
        return;
    }
    operation.Store().AddLink({.parent = folder->Id(),
                               .child = content->Id(),
                               .kind = store::LinkKind::Folder,
                               .revision = content->Revision(),
                               .childIsNew = true},
                              operation.Stamp());
    // Who sees the content when all is done.
    const bool isPrivate = content->IsPrivate() && !_options.publish;
    operation.Record(Change::Of(SIGNAL_CONTAINER_ENTERED, folder)
                         .Private(isPrivate || folder->IsNeverPublished()));
}

// Nobody has seen the content yet, so that its folder is all there is to tell of.
void BulkImport::FinishContent(Operation& operation, const Session::State& content) {
    if (!content->IsPrivate()) {
        return;
    }
    if (!_options.publish) {
        if (!_options.comment.empty()) {
            operation.Store().AddSavePoint(content->Id(), _options.comment, operation.Stamp());
        }
        return;
    }
    RequirePublishable(_session, *content);
    static_cast<void>(
        operation.Store().Publish(content->Id(), _options.comment, false, operation.Stamp()));
    _session.Outdate(content->BaseUid());
}

}  // namespace kxudm::profile
