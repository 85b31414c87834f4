// Brings planned folders and files into the library.
//
// Layer: profile. Files are taken into the vault first, many together, then their rows follow in
// one transaction: at every moment the library has whole contents only, and other writers wait for
// the rows alone, never for the reading. A strict import is one such group, whatever its size.
//
// Small files are read, compressed and written by a crew of threads, up to a group ahead of the
// rows; large ones by the calling thread, which tells how far it is within them. Each file is
// announced to the listener before anybody reads it, and what failed is told in the plan's order.
#pragma once

#include <atomic>
#include <deque>
#include <exception>
#include <future>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "core/Crew.h"
#include "profile/ImportFolders.h"
#include "profile/ImportWalk.h"
#include "profile/Texts.h"
#include "vault/Vault.h"

namespace kxudm::profile {

class BulkImport {
  public:
    // All of them outlive the import.
    BulkImport(Session& session, const ImportOptions& options, ImportReport& report);

    // How many contents were made. What fails as a whole (library or vault) throws; the groups that
    // were committed before stand.
    int Run(const ImportPlan& plan);
    // So far.
    [[nodiscard]] int Made() const { return _made; }
    // Tells the slots of what was committed, each parent once.
    void Tell();

  private:
    using Place = ImportFolders::Place;

    struct Pending {
        std::size_t file = 0;  // in the plan
        Place* place = nullptr;
        const catalogue::ContentDefinition* definition = nullptr;
        store::FileRow row = {};
        std::future<std::string> text = {};  // prepared; none if the next search is to do it
        std::uint64_t textBytes = 0;         // that it was made of
    };
    // What the vault has got of a file.
    struct Taken {
        vault::Incoming incoming;
        std::future<std::string> text;
    };
    // A file that was announced.
    struct Coming {
        Pending pending;
        std::future<Taken> taken = {};         // none: it needs no vault
        std::exception_ptr failure = nullptr;  // without a look into it
        bool isNew = false;                    // is to become a content
    };
    // What a transaction is at.
    struct Position {
        bool isFolder = false;
        std::size_t index = 0;  // of the plan's folder, or of what is pending
    };
    struct Refusal : Position {
        std::string reason;
    };

    // --- Into the vault ---
    bool Begin(std::size_t file);
    bool IsComing(std::size_t file);
    void Take(const std::string& source, Coming& coming);
    void Store(const std::string& source, std::uint64_t size, Coming& coming);
    Taken TakeAlone(const std::string& source, bool withText);
    Taken TakeLarge(const std::string& source, bool withText);
    std::future<std::string> PrepareBeside(std::string_view beginning);
    void EndNext();
    void EndAll();
    void Keep(Coming& coming);
    const catalogue::ContentDefinition& DefinitionFor(const std::string& name, Place& place);
    bool IsOfVault(std::size_t folder, const std::string& source);
    // Whether contents of that name lie there, and their files of that name.
    bool FindNamed(Place& place, const std::string& name, std::vector<store::FileRow>& files);
    bool IsFile(const store::FileRow& row, const std::string& source, std::uint64_t size);
    [[nodiscard]] bool IsGroupFull() const;

    // --- Rows ---
    void WriteGroup();
    std::optional<Refusal> TryWrite(std::size_t from);
    void Write(std::size_t from, std::size_t to, std::size_t foldersEnd, Position& position);
    void MakeWanted(Operation& operation, std::size_t& next, std::size_t end, Position& position);
    bool WriteContent(Operation& operation, Pending& pending, store::ContentTexts& texts);
    store::FileRow RowOf(Pending& pending, store::ContentTexts& texts);
    void PlaceContent(Operation& operation,
                      const Session::State& content,
                      const Session::State& folder);
    void FinishContent(Operation& operation, const Session::State& content);

    Session& _session;
    vault::Vault& _vault;  // new contents have no vault of their own
    const ImportOptions& _options;
    ImportReport& _report;
    const std::shared_ptr<const catalogue::Catalogue> _catalogue;
    ImportFolders _folders;

    const ImportPlan* _plan = nullptr;
    std::optional<vault::Batch> _batch;
    std::deque<Coming> _coming;
    std::vector<Pending> _pending;
    // Of what is new in both; the index is that in _pending, or COMING.
    std::map<std::pair<const Place*, std::string_view>, std::size_t> _names;
    std::uint64_t _pendingBytes = 0;
    std::uint64_t _textBytes = 0;                          // of texts that are kept just now
    std::size_t _lookedAt = static_cast<std::size_t>(-1);  // folder of the plan
    bool _isOfVault = false;                               // what is in that one
    std::size_t _nextFolder = 0;  // folders of the plan before it are made where wanted
    std::set<std::size_t> _refusedFolders;
    bool _atEnd = false;
    int _made = 0;
    ChangeList _changes;
    std::atomic<std::size_t> _waitingBytes{0};  // of texts that the crew has still to prepare
    std::unique_ptr<core::Crew> _crew;          // ends first: it uses what stands above
};

}  // namespace kxudm::profile
