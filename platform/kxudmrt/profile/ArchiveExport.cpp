#include "profile/ArchiveExport.h"

#include "exchange/ArchiveFormat.h"
#include "vault/DocumentName.h"

namespace kxudm::profile {

ArchiveExport::ArchiveExport(Session& session, const kxString& path, exchange::Scope scope)
    : _session(session),
      _scope(scope),
      _archive(session.Vaults().Files(), path),
      _selection(session.Store(), scope),
      _progress(session.ProgressListener(), "The export to '" + vault::Printable(path) + "'"),
      _block(std::make_unique_for_overwrite<char[]>(exchange::kPiece)) {}

void ArchiveExport::Run(const kxStlVector<kxString>& uids) {
    Run([&](exchange::ExportSelection& /*selection*/) { SelectUids(uids); }, Places::Taken);
}

void ArchiveExport::Run(const Select& select, Places places) {
    _places = places;
    exchange::BeginExchange(_session.Store());
    _archive.Begin(exchange::kDocumentEntry);
    _session.Store().View([&] {
        select(_selection);
        if (_places == Places::Taken) {
            _selection.AddPlaces();
        }
        WriteDocument();
    });
    _archive.End();
    WriteContents();
    _progress.Finish();
    _archive.Finish();
}

void ArchiveExport::SelectUids(const kxStlVector<kxString>& uids) {
    for (const kxString& uid : uids) {
        const Session::State state = _session.Get(uid);
        if (!_selection.Add(state->Id())) {
            throw UDMException(state->Cdef() + " " + state->Uid() +
                               " was never published, so that it can't be exported; publish it "
                               "first");
        }
    }
    if (uids.empty()) {
        _selection.AddAll();
    }
    if (_scope == exchange::Scope::AllWithFiles) {
        _selection.AddOwned();
    }
}

void ArchiveExport::WriteDocument() {
    const auto total = static_cast<std::uint64_t>(_selection.Count());
    _progress.SetTotal(total, 0);
    exchange::DocumentWriter document([this](std::string_view bytes) { _archive.Write(bytes); });
    document.Begin(_scope, _session.Catalogue()->Needed(_selection.Definitions())->ToXml());
    _selection.Visit([&](store::EntityId id) {
        const exchange::EntityRecord entity = _selection.Read(id);
        _progress.Begin(entity.name);
        document.Entity(entity);
        _progress.End();
    });
    _selection.VisitLinks([&](const std::string& first, exchange::LinkRecord&& link) {
        if (_places == Places::Taken || link.kind != store::LinkKind::Folder) {
            document.Link(first, link);
        }
    });
    document.End();
    const exchange::ContentTotal contents = exchange::CountContents(_session.Store());
    _progress.SetTotal(total + contents.count, contents.bytes);
}

void ArchiveExport::WriteContents() {
    exchange::NotedContents contents(_session.Store());
    while (const exchange::NotedContent* const content = contents.Next()) {
        _progress.Begin(content->hash);
        WriteContent(*content);
        _progress.End();
    }
}

void ArchiveExport::WriteContent(const exchange::NotedContent& content) {
    const auto reader = _session.Vaults().In(content.vault).Open(content.hash);
    _archive.Begin(exchange::FileEntry(content.hash), content.size);
    while (const std::size_t count = reader->Read(_block.get(), exchange::kPiece)) {
        _archive.Write({_block.get(), count});
        _progress.Advance(count);
    }
    _archive.End();
}

}  // namespace kxudm::profile
