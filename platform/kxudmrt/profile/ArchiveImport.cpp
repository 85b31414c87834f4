#include "profile/ArchiveImport.h"

#include <utility>

#include "exchange/ArchiveFormat.h"
#include "exchange/ArchiveWriter.h"
#include "exchange/Records.h"
#include "profile/ArchiveContents.h"
#include "profile/DefinitionChange.h"
#include "profile/ImportDefinitions.h"
#include "profile/Neighbours.h"
#include "profile/Words.h"
#include "store/LibraryCheck.h"
#include "store/MaintenanceStatements.h"
#include "vault/DocumentName.h"

namespace kxudm::profile {

namespace {

using exchange::ArchiveException;
using exchange::DocumentHandler;
using exchange::EntityRecord;
using exchange::LinkRecord;

store::EntityId Youngest(store::LibraryStore& store) {
    sql::Statement find(store.Connection(), store::statements::YOUNGEST_ENTITY);
    return find.Step() && !find.IsNull(0) ? find.Int64(0) : 0;
}

}  // namespace

// What can be said of the document without changing the library. Puts its records aside.
class ArchiveImport::Scan final : public DocumentHandler {
  public:
    explicit Scan(ArchiveImport& import)
        : _import(import), _records([&import](std::string_view bytes) {
              import._document->Write(bytes.data(), bytes.size());
          }) {}

    void Begin(exchange::Scope /*scope*/, std::string&& catalogueXml) override {
        _import._definitions = catalogue::Catalogue::ReadText(
            catalogueXml, kxString(_import._path + ", " + std::string(exchange::kDocumentEntry)));
        // Before anything is taken in; and once more when nobody else can write.
        static_cast<void>(MergedCatalogue(_import._session.Catalogue(),
                                          *_import._definitions,
                                          !exchange::HasAnyEntity(_import._session.Store())));
    }
    void Entity(EntityRecord&& entity) override {
        _import._progress.Begin(entity.name);
        RequireFitting(*_import._definitions, entity);
        for (const exchange::FileRecord& file : entity.files) {
            _import._contents.Note(entity, file);
        }
        if (_import._definitions->Get(entity.definition).Type() == FOLDER_TYPE) {
            _import._folders.Note(entity);
        }
        _records.Entity(entity);
    }
    void Link(const std::string& first, LinkRecord&& link) override {
        _import._folders.NoteLink(first, link);
        _records.Link(first, link);
    }
    void End(const exchange::DocumentCounts& counts) override {
        _import._counts = counts;
        _import._documentHash = _records.Finish(counts);
    }

  private:
    ArchiveImport& _import;
    exchange::RecordWriter _records;
};

// The same records for the second time: into the library.
class ArchiveImport::Rows final : public DocumentHandler {
  public:
    Rows(ArchiveImport& import, const catalogue::Catalogue& catalogue)
        : notes(Youngest(import._session.Store()), import._report),
          _import(import),
          _links(import._session.Store(), catalogue, notes),
          _entities(import._session.Store(), catalogue, import._folders, _links, notes) {}

    void Begin(exchange::Scope /*scope*/, std::string&& /*catalogueXml*/) override {}
    void Entity(EntityRecord&& entity) override {
        _import._progress.Begin(entity.name);
        _entities.Take(std::move(entity));
        _import._progress.End();
    }
    void Link(const std::string& first, LinkRecord&& link) override { _links.Take(first, link); }
    void End(const exchange::DocumentCounts& /*counts*/) override { _links.Finish(); }

    ImportNotes notes;

  private:
    ArchiveImport& _import;
    LinkImport _links;
    EntityImport _entities;
};

ArchiveImport::ArchiveImport(Session& session, const kxString& path, UDMImportReport* report)
    : _session(session),
      _path(path),
      _report(report),
      _progress(session.ProgressListener(), "The import of '" + vault::Printable(path) + "'"),
      _block(std::make_unique_for_overwrite<char[]>(exchange::kPiece)),
      _contents(session.Store(), _path),
      _folders(session.Store()) {}

ArchiveImport::~ArchiveImport() = default;

void ArchiveImport::Run(const Finish& finish) {
    exchange::BeginExchange(_session.Store());
    _archive.emplace(_session.Vaults().Files(), _path);
    ReadDocument();
    TakeContents();
    _archive.reset();
    Write(finish);
}

void ArchiveImport::ReadDocument() {
    if (!_archive->Next()) {
        throw ArchiveException("'" + vault::Printable(_path) + "' has no document; expected \"" +
                               std::string(exchange::kDocumentEntry) + "\"");
    }
    _document = _session.Vaults().In({}).NewTemporary();
    Scan scan(*this);
    exchange::DocumentReader reader(scan, _path + ", " + std::string(exchange::kDocumentEntry));
    while (const std::size_t count = _archive->Read(_block.get(), exchange::kPiece)) {
        reader.Feed({_block.get(), count});
    }
    reader.Finish();
    _document->Close();
}

void ArchiveImport::TakeContents() {
    const exchange::ContentTotal total = _contents.Total();
    _progress.SetTotal(_counts.entities + total.count, total.bytes);
    _delivery.emplace(_session.Vaults().In({}));
    ArchiveContents contents(*_archive, _path, *_delivery, _progress, total.count);
    try {
        while (_archive->Next()) {
            _contents.Meet(_archive->Hash(), _archive->Name(), _archive->Size());
            contents.Take();
        }
        _contents.MeetEnd();
    } catch (const ArchiveException&) {
        // What came before may be wrong, too, and is told first.
        contents.Finish();
        throw;
    }
    contents.Finish();
}

// What takes long, the bytes themselves, is safe before others have to wait.
void ArchiveImport::Write(const Finish& finish) {
    _delivery->Flush();
    bool areContentsThere = false;
    try {
        Operation operation(_session, "Import", sql::Transaction::Durability::Full);
        const CataloguePtr catalogue = TakeDefinitions(operation);
        _folders.Resolve(_session);
        Rows rows(*this, *catalogue);
        try {
            ReadAgain(rows);
            rows.notes.Record(_session, operation);
            finish(operation, *catalogue);
            // The last moment at which a listener may end it.
            _progress.Finish();
            areContentsThere = true;
            _delivery->Commit();
            operation.Commit();
        } catch (...) {
            rows.notes.Forget(_session);
            throw;
        }
        areContentsThere = false;
        _session.TakeCatalogue(catalogue);
        if (!rows.notes.AreAllNew()) {
            TakeBack();
        }
        operation.Tell();
    } catch (...) {
        if (areContentsThere) {
            TakeBack();
        }
        throw;
    }
}

CataloguePtr ArchiveImport::TakeDefinitions(Operation& operation) {
    CataloguePtr before = _session.Catalogue();
    const CataloguePtr merged =
        MergedCatalogue(before, *_definitions, !exchange::HasAnyEntity(operation.Store()));
    if (merged == before) {
        return before;
    }
    const kxString text = merged->ToXml();
    CataloguePtr after = catalogue::Catalogue::ReadText(text, _session.Options().libraryFile);
    BringInLine(operation.Store(), *before, *after, false);
    operation.Store().SetCatalogueXml(text);
    _session.RecordCatalogue(operation);
    if (_report != nullptr) {
        for (const auto& is : after->Definitions()) {
            const auto* was = before->Find(is->Name());
            _report->definitions +=
                was == nullptr || !(was->Declaration() == is->Declaration()) ? 1U : 0U;
        }
    }
    return after;
}

void ArchiveImport::ReadAgain(DocumentHandler& handler) {
    vault::FileLayer& files = _session.Vaults().Files();
    vault::FileHandle file(files);
    if (!files.OpenToRead(_document->Path(), file.File())) {
        throw UDMStoreException("'" + vault::Printable(_document->Path()) +
                                "', in which the document of '" + vault::Printable(_path) +
                                "' was put aside, is gone; import again");
    }
    exchange::ReadRecords(
        [&](char* bytes, std::size_t size) { return files.Read(file.File(), bytes, size); },
        _documentHash,
        "'" + vault::Printable(_path) + "'",
        handler);
}

// Contents that came into the vault and that no row names, here or in a library beside this one:
// after a failure all of them, else those of entities that were refused.
void ArchiveImport::TakeBack() noexcept {
    try {
        Neighbours neighbours(_session.Options().libraryFile);
        if (!neighbours.Unreadable().empty()) {
            return;
        }
        sql::Transaction lock(_session.Store().Connection());
        neighbours.Lock();
        _delivery->TakeBack([&](const std::string& hash) {
            return store::IsContentUsed(_session.Store().Connection(), {}, hash) ||
                   neighbours.Uses({}, hash);
        });
        lock.Commit();
    } catch (const std::exception&) {
        // They are orphans, which a purge takes away; the first failure is told.
    }
}

}  // namespace kxudm::profile
