// Writes entities of a library into an archive.
//
// Layer: profile. The document is written from one unchanging view of the library; the contents,
// which never change, follow outside of it. Memory doesn't grow with the number of entities.
#pragma once

#include "exchange/ArchiveWriter.h"
#include "exchange/DocumentWriter.h"
#include "exchange/LibraryExchange.h"
#include "profile/ExchangeProgress.h"
#include "profile/Session.h"

namespace kxudm::profile {

class ArchiveExport {
  public:
    // The session outlives the export.
    ArchiveExport(Session& session, const kxString& path, exchange::Scope scope);

    // UIDs as IUDMProfile::Export takes them. The file has its name when this returns; a failure
    // leaves what was there.
    void Run(const kxStlVector<kxString>& uids);

    // The same for what `select` adds to the selection. Left: without the folders and
    // classifications that it lies in.
    enum class Places { Taken, Left };
    using Select = std::function<void(exchange::ExportSelection&)>;
    void Run(const Select& select, Places places);

  private:
    void SelectUids(const kxStlVector<kxString>& uids);
    void WriteDocument();
    void WriteContents();
    void WriteContent(const exchange::NotedContent& content);

    Session& _session;
    const exchange::Scope _scope;
    Places _places = Places::Taken;
    exchange::ArchiveWriter _archive;
    exchange::ExportSelection _selection;
    ExchangeProgress _progress;
    std::unique_ptr<char[]> _block;
};

}  // namespace kxudm::profile
