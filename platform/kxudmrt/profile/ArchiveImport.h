// Takes an archive into a library: reads it once and checks all of it, takes its contents into the
// vault, and then writes all rows in one transaction.
//
// Layer: profile. Until that transaction the library isn't touched and other sessions can write.
// The document's records are put aside while it is read, so that neither the archive nor the
// document is read twice.
// Memory grows with what is told afterwards: the new revisions of what the library had before.
#pragma once

#include <optional>
#include <string>

#include "exchange/ArchiveReader.h"
#include "exchange/DocumentReader.h"
#include "profile/ArrivingContents.h"
#include "profile/DefinitionChange.h"
#include "profile/EntityImport.h"
#include "profile/ExchangeProgress.h"
#include "profile/LinkImport.h"
#include "vault/Delivery.h"

namespace kxudm::profile {

class ArchiveImport {
  public:
    // The session outlives the import; `report` may be null.
    ArchiveImport(Session& session, const kxString& path, UDMImportReport* report);
    ArchiveImport(const ArchiveImport&) = delete;
    ArchiveImport& operator=(const ArchiveImport&) = delete;
    ~ArchiveImport();

    // A failure leaves library and vault as they were.
    void Run() {
        Run([](Operation&, const catalogue::Catalogue&) {});
    }
    // `finish` adds to the rows before they are committed. The definitions are those that the
    // library then has.
    using Finish = std::function<void(Operation&, const catalogue::Catalogue&)>;
    void Run(const Finish& finish);

  private:
    class Scan;
    class Rows;

    // --- Once through the archive ---
    void ReadDocument();
    void TakeContents();

    // --- Into the library ---
    void Write(const Finish& finish);
    CataloguePtr TakeDefinitions(Operation& operation);
    void ReadAgain(exchange::DocumentHandler& handler);
    void TakeBack() noexcept;

    Session& _session;
    const std::string _path;
    UDMImportReport* const _report;
    ExchangeProgress _progress;
    std::unique_ptr<char[]> _block;

    std::optional<exchange::ArchiveReader> _archive;
    std::unique_ptr<vault::TemporaryFile> _document;  // its records
    std::string _documentHash;
    CataloguePtr _definitions;  // of the archive
    exchange::DocumentCounts _counts;
    ArrivingContents _contents;
    ImportedFolders _folders;

    std::optional<vault::Delivery> _delivery;
};

}  // namespace kxudm::profile
