// Verify and purge; see UDMMaintenance.h. Rows are looked at in one transaction, contents by other
// threads at the same time and beyond it, because that takes long: what seems wrong is asked again
// before it is told.
#include "profile/Maintenance.h"

#include <algorithm>
#include <set>
#include <unordered_set>
#include <utility>

#include "profile/ContentsCheck.h"
#include "profile/DefinitionChange.h"
#include "profile/Neighbours.h"
#include "profile/Profile.h"
#include "profile/Texts.h"
#include "profile/Words.h"
#include "store/LibraryCheck.h"
#include "vault/DocumentName.h"

namespace kxudm::profile {

namespace {

using Kind = UDMFindingKind;
using State = vault::Finding::State;
using Findings = kxStlVector<UDMFinding>;

// Sessions of other processes read the journal at their next call.
constexpr std::chrono::seconds JOURNAL_KEPT = std::chrono::hours(30 * 24);

std::int64_t Before(Session& session, std::chrono::seconds age) {
    return session.Now().time - std::chrono::microseconds(age).count();
}

// The common one first.
std::vector<std::string> VaultsOf(Session& session, Neighbours& neighbours) {
    std::vector<std::string> vaults = session.Store().Vaults();
    neighbours.AddVaults(vaults);
    vaults.emplace_back();
    std::sort(vaults.begin(), vaults.end());
    vaults.erase(std::unique(vaults.begin(), vaults.end()), vaults.end());
    return vaults;
}

// Contents of a vault that nobody names and nobody has added since `before`.
class Orphans {
  public:
    Orphans(Session& session, Neighbours& neighbours) : _session(session), _neighbours(neighbours) {
        for (const store::ContentUse& use : store::ContentsInUse(session.Store())) {
            _used.insert(use.vault + '/' + use.hash);
        }
    }

    [[nodiscard]] bool IsOne(const std::string& vault, const vault::Entry& entry) {
        return !entry.hash.empty() && _used.count(vault + '/' + entry.hash) == 0 &&
               IsUnused(vault, entry.hash);
    }
    // As it stands now.
    [[nodiscard]] bool IsUnused(const std::string& vault, const std::string& hash) {
        return !store::IsContentUsed(_session.Store().Connection(), vault, hash) &&
               !_neighbours.Uses(vault, hash);
    }

  private:
    Session& _session;
    Neighbours& _neighbours;
    std::unordered_set<std::string> _used;
};

class Verification {
  public:
    Verification(Session& session, const UDMVerifyOptions& options)
        : _session(session), _options(options), _neighbours(session.Options().libraryFile) {}

    Findings Run() {
        std::vector<store::ContentUse> uses;
        ContentsCheck check(_session);
        _session.Store().View([&] {
            uses = store::ContentsInUse(_session.Store());
            if (_options.contents) {
                check.Begin(uses, _options.words);
            }
            store::CheckRows(
                _session.Store(),
                [this](const std::string& definition, store::AttributeList& attributes) {
                    if (const auto* known = _session.Catalogue()->Find(definition)) {
                        ShowThrough(*known, attributes);
                    }
                },
                [this](Kind kind, const std::string& object, const std::string& text) {
                    Report(kind, object, text);
                });
            CheckDefinitions();
            if (_options.words) {
                CheckWords();
            }
        });
        CheckContents(uses, check);
        CheckVaults();
        std::stable_sort(_findings.begin(), _findings.end(), [](const auto& a, const auto& b) {
            return a.kind < b.kind;
        });
        return std::move(_findings);
    }

  private:
    void Report(Kind kind, const std::string& object, const std::string& text) {
        _findings.push_back({kind, object, text});
    }

    void CheckWords() {
        const store::TextReader reader = TextsOf(_session);
        store::FullText index(_session.Store(), reader);
        index.CheckAttributes([this](Kind kind,
                                     const std::string& object,
                                     const std::string& text) { Report(kind, object, text); });
        _indexed = index.SumsOfContents();
    }

    void CheckDefinitions() {
        for (const store::DefinitionUse& use : store::DefinitionsInUse(_session.Store())) {
            if (_session.Catalogue()->Find(use.definition) == nullptr) {
                Report(Kind::DefinitionMissing,
                       use.uid,
                       "its content definition \"" + use.definition + "\", that of " +
                           std::to_string(use.count) +
                           " entities, is not in the library's catalogue; add it");
            }
        }
    }

    void CheckContents(const std::vector<store::ContentUse>& uses, ContentsCheck& check) {
        UDMProgress progress;
        progress.total = uses.size();
        for (const store::ContentUse& use : uses) {
            progress.totalBytes += use.size;
        }
        for (const store::ContentUse& use : uses) {
            progress.name = use.where;
            Tell(progress);
            const ContentsCheck::Result result = _options.contents ? check.Next() : LookUp(use);
            ReportContent(use, result.finding);
            if (_options.words) {
                ReportWords(use, result.words);
            }
            ++progress.done;
            progress.doneBytes += use.size;
        }
        progress.name.clear();
        Tell(progress);
    }

    void Tell(const UDMProgress& progress) {
        IUDMProgressListener* listener = _session.ProgressListener();
        if (listener != nullptr && !listener->Advance(progress)) {
            throw UDMCancelledException("Verifying the library \"" +
                                        _session.Options().libraryName + "\" was cancelled");
        }
    }

    ContentsCheck::Result LookUp(const store::ContentUse& use) {
        try {
            vault::Vault& vault = _session.Vaults().In(use.vault);
            if (vault.Holds(use.hash)) {
                return {};
            }
            return {{State::Missing,
                     "the vault '" + vault.Directory() +
                         "' doesn't hold it; restore it from a backup, or add the file again"}};
        } catch (const UDMException& failure) {
            return {{State::Unreadable, failure.what()}};
        }
    }

    void ReportContent(const store::ContentUse& use, const vault::Finding& finding) {
        if (finding.state == State::Sound ||
            (finding.state == State::Missing &&
             !store::IsContentUsed(_session.Store().Connection(), use.vault, use.hash))) {
            return;
        }
        const Kind kind = finding.state == State::Missing   ? Kind::ContentMissing
                          : finding.state == State::Damaged ? Kind::ContentDamaged
                                                            : Kind::ContentUnreadable;
        Report(kind, use.hash, "of the file " + use.where + ": " + finding.problem);
    }

    // Once for each content, in whatever vaults it lies. What can't be read is told with the
    // contents.
    void ReportWords(const store::ContentUse& use, std::optional<std::uint64_t> words) {
        const char* problem = nullptr;
        if (use.text < 0) {
            problem =
                "its words are not in the full text index, since it could not be read; see "
                "that it can be read";
        } else if (use.text > 0) {
            const auto found = _indexed.find(use.text);
            if (found == _indexed.end()) {
                problem = "its words are missing in the full text index";
            } else if (words && *words != found->second) {
                problem = "the full text index has other words of it than it has";
            }
        }
        if (problem != nullptr && _withWrongWords.insert(use.hash).second) {
            Report(Kind::FullText, use.hash, std::string(problem) + store::REBUILD);
        }
    }

    void CheckVaults() {
        for (const auto& [file, problem] : _neighbours.Unreadable()) {
            Report(Kind::NeighbourUnreadable,
                   file,
                   "it lies beside the library and can't be read, so that orphaned contents can't "
                   "be told: " +
                       problem);
        }
        Orphans orphans(_session, _neighbours);
        const std::int64_t before = Before(_session, _options.minimumAge);
        for (const std::string& directory : VaultsOf(_session, _neighbours)) {
            CheckVault(directory, orphans, before);
        }
    }

    void CheckVault(const std::string& directory, Orphans& orphans, std::int64_t before) {
        std::set<std::string> told;
        const auto look = [&](const vault::Entry& entry) {
            if (entry.hash.empty()) {
                Report(Kind::VaultStranger,
                       entry.path,
                       "no vault has put this here; move it elsewhere or remove it");
            } else if (_neighbours.Unreadable().empty() && entry.modified < before &&
                       orphans.IsOne(directory, entry) && told.insert(entry.hash).second) {
                Report(Kind::ContentOrphan,
                       entry.hash,
                       "no file names it, and it takes " + std::to_string(entry.storedSize) +
                           " bytes ('" + vault::Printable(entry.path) + "'); purge the library");
            }
        };
        try {
            _session.Vaults().In(directory).List(look);
        } catch (const UDMException& failure) {
            Report(Kind::ContentUnreadable, directory, failure.what());
        }
    }

    Session& _session;
    const UDMVerifyOptions& _options;
    Neighbours _neighbours;
    store::FullText::Sums _indexed;
    std::set<std::string> _withWrongWords;
    Findings _findings;
};

// Removes the orphans of all vaults while nobody can commit a row that names one.
void PurgeContents(Session& session,
                   Neighbours& neighbours,
                   const std::vector<std::string>& vaults,
                   std::int64_t before,
                   UDMPurged& purged) {
    std::vector<std::pair<const std::string*, vault::Entry>> found;
    Orphans orphans(session, neighbours);
    for (const std::string& directory : vaults) {
        session.Vaults().In(directory).List([&](const vault::Entry& entry) {
            if (entry.modified < before && orphans.IsOne(directory, entry)) {
                found.emplace_back(&directory, entry);
            }
        });
    }
    if (found.empty()) {
        return;
    }
    sql::Transaction lock(session.Store().Connection());
    neighbours.Lock();
    for (const auto& [directory, entry] : found) {
        if (!orphans.IsUnused(*directory, entry.hash)) {
            continue;
        }
        if (const auto removed = session.Vaults().In(*directory).RemoveOlder(entry, before)) {
            ++purged.contents;
            purged.bytes += *removed;
        }
    }
    lock.Commit();
}

}  // namespace

void BeginCare(Session& session, const char* operation) {
    session.Poll(operation);
    if (session.InBulk()) {
        throw UDMException(std::string(operation) + " can't be done in a bulk edit of session " +
                           session.Id() + "; commit that first");
    }
}

kxStlVector<UDMFinding> Profile::VerifyLibrary(const UDMVerifyOptions& options) {
    BeginCare(*_session, "Verify");
    return Verification(*_session, options).Run();
}

UDMPurged Profile::PurgeLibrary(const UDMPurgeOptions& options) {
    BeginCare(*_session, "Purge");
    Neighbours neighbours(_session->Options().libraryFile);
    if (!neighbours.Unreadable().empty()) {
        const auto& [file, problem] = neighbours.Unreadable().front();
        throw UDMStoreException("The library \"" + _session->Options().libraryName +
                                "\" can't be purged: '" + file +
                                "' beside it may use the same contents and can't be read (" +
                                problem + "); repair it or move it elsewhere");
    }
    const std::int64_t before = Before(*_session, options.minimumAge);
    // Before the entities go that name them.
    const std::vector<std::string> vaults = VaultsOf(*_session, neighbours);
    UDMPurged purged;
    if (options.deletedEntities) {
        purged.entities = store::PurgeDeleted(_session->Store(), before);
    }
    store::TrimJournal(_session->Store(), Before(*_session, JOURNAL_KEPT));
    for (const std::string& directory : vaults) {
        purged.temporaries +=
            _session->Vaults().In(directory).RemoveStaleTemporaries(*_session->Options().clock);
    }
    PurgeContents(*_session, neighbours, vaults, before, purged);
    return purged;
}

void Profile::RebuildFullTextIndex() {
    BeginCare(*_session, "RebuildFullText");
    const store::TextReader reader = TextsOf(*_session);
    store::FullText texts(_session->Store(), reader);
    texts.Clear();
    UDMProgress progress;
    progress.total = static_cast<std::size_t>(texts.CountPending());
    do {
        const auto left = static_cast<std::size_t>(texts.CountPending());
        progress.total = std::max(progress.total, left);
        progress.done = progress.total - left;
        IUDMProgressListener* listener = _session->ProgressListener();
        if (listener != nullptr && !listener->Advance(progress)) {
            throw UDMCancelledException("Rebuilding the full text index of the library \"" +
                                        _session->Options().libraryName + "\" was cancelled");
        }
    } while (texts.BringForward());
}

kxStlVector<UDMDeletedEntity> Profile::ListDeleted() {
    BeginCare(*_session, "DeletedEntities");
    kxStlVector<UDMDeletedEntity> deleted;
    for (const store::DeletedEntity& each : store::DeletedEntities(_session->Store())) {
        deleted.push_back({each.uid,
                           each.definition,
                           each.name,
                           each.time == 0 ? kxString() : WholeSeconds(each.time)});
    }
    return deleted;
}

}  // namespace kxudm::profile
