// How a bulk import takes files into the vault. How they become contents: BulkImportRows.cpp.
#include "profile/BulkImport.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include "core/Team.h"
#include "profile/Creation.h"
#include "profile/FileIntake.h"
#include "profile/Groups.h"
#include "profile/Texts.h"
#include "profile/Words.h"
#include "text/Decode.h"
#include "vault/SourceFile.h"

namespace kxudm::profile {

namespace {

using catalogue::ContentDefinition;

// A group is flushed and committed as one: a crash costs the last one, and other writers wait for
// its rows (about 0.1 ms each).
constexpr std::size_t kFilesInGroup = 1000;
constexpr std::uint64_t kBytesInGroup = std::uint64_t{1} << 30;
// Texts whose words are kept in memory until the group is written.
constexpr std::uint64_t kMostTextBytes = std::uint64_t{256} << 20;
// Of large files, copied for the crew.
constexpr std::size_t kMostWaitingBytes = std::size_t{16} << 20;
// So many files ahead the crew has work while the rows of a group are written and flushed.
constexpr std::size_t kMostComing = kFilesInGroup;

constexpr auto COMING = static_cast<std::size_t>(-1);

// The place where the vault lies can take nothing more, whatever the next file is.
bool IsOfTheVault(const vault::FileError& error) {
    return error.Code() == ENOSPC || error.Code() == EDQUOT || error.Code() == EROFS;
}

std::string_view ExtensionOf(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    return dot == std::string_view::npos || dot == 0 ? std::string_view() : name.substr(dot + 1);
}

std::string HashOf(vault::SourceFile& source, ImportReport& report) {
    vault::Sha256 hash;
    const auto block = std::make_unique_for_overwrite<char[]>(vault::kBlock);
    std::size_t count = vault::kBlock;
    while (count == vault::kBlock) {
        count = source.Fill(block.get(), vault::kBlock);
        hash.Update(block.get(), count);
        if (!report.Advance(count)) {
            throw vault::StoppedException("The comparison of a file was stopped");
        }
    }
    source.CheckUnchanged();
    return hash.Finish();
}

}  // namespace

BulkImport::BulkImport(Session& session, const ImportOptions& options, ImportReport& report)
    : _session(session),
      _vault(session.Vaults().In({})),
      _options(options),
      _report(report),
      _catalogue(session.Catalogue()),
      _folders(session) {}

int BulkImport::Run(const ImportPlan& plan) {
    _plan = &plan;
    _report.SetTotal(plan.files.size(), plan.bytes);
    _crew = std::make_unique<core::Crew>(core::Team::UsefulThreads(plan.files.size()));
    for (std::size_t next = 0; next < plan.files.size() && Begin(next); ++next) {
        while (_coming.size() >= kMostComing) {
            EndNext();
        }
    }
    EndAll();
    if (_options.strict) {
        _report.RequireGoingOn();
    }
    _atEnd = !_report.IsCancelled();
    WriteGroup();
    if (_atEnd) {
        _report.Begin({});
    }
    return _made;
}

bool BulkImport::IsGroupFull() const {
    return !_options.strict && (_pending.size() >= kFilesInGroup || _pendingBytes >= kBytesInGroup);
}

// False once the import is cancelled.
bool BulkImport::Begin(std::size_t file) {
    const std::string source = _plan->SourceOf(_plan->files[file]);
    if (!_report.Begin(source)) {
        return false;
    }
    if (IsComing(file)) {
        EndAll();
    }
    Coming coming{.pending = {.file = file}};
    try {
        Take(source, coming);
    } catch (const sql::Error&) {
        throw;
    } catch (const UDMException&) {
        coming.failure = std::current_exception();
    }
    _coming.push_back(std::move(coming));
    return !_report.IsCancelled();
}

// Whether another file is on its way that may become the content of that name.
bool BulkImport::IsComing(std::size_t file) {
    const ImportFile& planned = _plan->files[file];
    const auto same =
        _names.find({&_folders.At(_plan->folders[planned.folder].target), planned.name});
    return same != _names.end() && same->second == COMING;
}

// The file that was announced first.
void BulkImport::EndNext() {
    Coming coming = std::move(_coming.front());
    _coming.pop_front();
    const ImportFile& planned = _plan->files[coming.pending.file];
    try {
        Keep(coming);
    } catch (const vault::StoppedException&) {
        return;
    } catch (const sql::Error&) {
        throw;
    } catch (const vault::FileError& error) {
        if (IsOfTheVault(error)) {
            throw;
        }
        _report.Fail(_plan->SourceOf(planned), error.what());
    } catch (const UDMException& refusal) {
        _report.Fail(_plan->SourceOf(planned), refusal.what());
    }
    _report.End(planned.size);
    if (IsGroupFull()) {
        WriteGroup();
    }
}

void BulkImport::EndAll() {
    while (!_coming.empty()) {
        EndNext();
    }
}

void BulkImport::Keep(Coming& coming) {
    Pending& pending = coming.pending;
    const ImportFile& planned = _plan->files[pending.file];
    if (coming.failure) {
        std::rethrow_exception(coming.failure);
    }
    if (!coming.isNew) {
        return;
    }
    const auto name = _names.find({pending.place, planned.name});
    try {
        if (coming.taken.valid()) {
            Taken taken = coming.taken.get();
            pending.row = StoredFile(planned.name, _batch->Add(std::move(taken.incoming)), {});
            pending.text = std::move(taken.text);
        }
    } catch (...) {
        _names.erase(name);
        _textBytes -= pending.textBytes;
        throw;
    }
    name->second = _pending.size();
    _pendingBytes += planned.size;
    _pending.push_back(std::move(pending));
}

void BulkImport::Take(const std::string& source, Coming& coming) {
    const ImportFile& planned = _plan->files[coming.pending.file];
    Place& place = _folders.At(_plan->folders[planned.folder].target);
    std::vector<store::FileRow> there;
    bool isTaken = FindNamed(place, planned.name, there);
    if (const auto same = _names.find({&place, planned.name}); same != _names.end()) {
        isTaken = true;
        there.push_back(_pending[same->second].row);
    }
    if (isTaken) {
        const bool isSame = std::any_of(there.begin(), there.end(), [&](const auto& row) {
            return IsFile(row, source, planned.size);
        });
        if (!isSame) {
            throw UDMException(
                "the folder has a content of that name with another file already; check that out "
                "and replace its file, or import to another folder");
        }
        return;
    }
    if (IsOfVault(planned.folder, source)) {
        throw UDMException("it is part of a vault of this library; name files outside of it");
    }
    coming.pending.definition = &DefinitionFor(planned.name, place);
    coming.pending.place = &place;
    Store(source, planned.size, coming);
    _names.emplace(std::pair(&place, std::string_view(planned.name)), COMING);
    coming.isNew = true;
}

// What lies together in a folder is of a vault or is not. Looking costs as much as a small file.
bool BulkImport::IsOfVault(std::size_t folder, const std::string& source) {
    if (folder != _lookedAt) {
        _lookedAt = folder;
        _isOfVault = _session.Vaults().Keeps(source);
    }
    return _isOfVault;
}

void BulkImport::Store(const std::string& source, std::uint64_t size, Coming& coming) {
    Pending& pending = coming.pending;
    if (_options.external) {
        pending.row = ExternalFile(_session.Vaults(), source);
        return;
    }
    if (!_batch) {
        _batch.emplace(_vault);
    }
    const bool withText = _textBytes < kMostTextBytes;
    if (withText) {
        pending.textBytes = std::min<std::uint64_t>(size, text::kLongestText);
        _textBytes += pending.textBytes;
    }
    if (size < vault::kLarge) {
        coming.taken = _crew->Do([this, source, withText] { return TakeAlone(source, withText); });
        return;
    }
    std::promise<Taken> taken;
    coming.taken = taken.get_future();
    taken.set_value(TakeLarge(source, withText));
}

// By a thread of the crew.
BulkImport::Taken BulkImport::TakeAlone(const std::string& source, bool withText) {
    Taken taken;
    std::promise<std::string> text;
    const auto prepare = [&](std::string_view beginning) {
        text.set_value(text::MayBeText(beginning) ? PreparedText(beginning) : std::string());
        taken.text = text.get_future();
    };
    vault::AddOptions options;
    if (withText) {
        options.beginning = prepare;
    }
    taken.incoming = _batch->Prepare(source, options);
    return taken;
}

BulkImport::Taken BulkImport::TakeLarge(const std::string& source, bool withText) {
    Taken taken;
    vault::AddOptions options;
    options.progress = [this](std::uint64_t bytes) { return _report.Advance(bytes); };
    if (withText) {
        options.beginning = [&](std::string_view bytes) { taken.text = PrepareBeside(bytes); };
    }
    taken.incoming = _batch->Prepare(source, options);
    return taken;
}

// While the file is compressed and written.
std::future<std::string> BulkImport::PrepareBeside(std::string_view beginning) {
    beginning = beginning.substr(0, text::kLongestText);
    if (text::MayBeText(beginning) && _waitingBytes < kMostWaitingBytes) {
        _waitingBytes += beginning.size();
        return _crew->Do([this, bytes = std::string(beginning)] {
            _waitingBytes -= bytes.size();
            return PreparedText(bytes);
        });
    }
    std::promise<std::string> text;
    text.set_value(text::MayBeText(beginning) ? PreparedText(beginning) : std::string());
    return text.get_future();
}

// Everything that can be refused without reading the file.
const ContentDefinition& BulkImport::DefinitionFor(const std::string& name, Place& place) {
    const std::string_view extension = ExtensionOf(name);
    const ContentDefinition* definition =
        _options.definition != nullptr ? _options.definition : _catalogue->ForExtension(extension);
    if (definition == nullptr || definition->IsAbstract() || definition->Type() == FOLDER_TYPE) {
        throw UDMException("no content definition that contents can be of claims the extension \"" +
                           std::string(extension) + "\"; name one by the option \"definition\"");
    }
    static_cast<void>(CheckedName(*definition, name));
    if (!place.IsTop() &&
        !TakesInto(_folders.DefinitionOf(place), catalogue::kFolder, FOLDER_TYPE, *definition)) {
        throw UDMException("the folder takes no \"" + definition->Name() +
                           "\"; choose another definition or folder");
    }
    return *definition;
}

bool BulkImport::FindNamed(Place& place,
                           const std::string& name,
                           std::vector<store::FileRow>& files) {
    if (!_folders.IsThere(place)) {
        return false;
    }
    store::LibraryStore& store = _session.Store();
    std::vector<store::EntityRow> rows;
    store.FindInFolder(place.Id(), {}, name, _session.Viewer(), false, rows);
    bool found = false;
    for (const store::EntityRow& row : rows) {
        const ContentDefinition* definition = _catalogue->Find(row.definition);
        const bool isPlace = definition != nullptr && (definition->Type() == FOLDER_TYPE ||
                                                       definition->Type() == CLASSIFICATION_TYPE);
        // What somebody owns lies in no folder either, but not at the top.
        if (isPlace ||
            (place.IsTop() &&
             store.HasParent(row.id, row.revision, store::LinkKind::Owner, _session.Viewer()))) {
            continue;
        }
        found = true;
        store::FileRow file;
        if (store.FindFile(row.id, row.revision, name, file)) {
            files.push_back(std::move(file));
        }
    }
    return found;
}

bool BulkImport::IsFile(const store::FileRow& row, const std::string& source, std::uint64_t size) {
    if (row.IsExternal() != _options.external || row.size != static_cast<std::int64_t>(size)) {
        return false;
    }
    vault::SourceFile file(_vault.Files(), source);
    return row.IsExternal()
               ? row.externalPath == AbsolutePath(source) && row.modified == file.Modified()
               : row.hash == HashOf(file, _report);
}

void BulkImport::Tell() {
    _session.TellOnce(std::exchange(_changes, {}));
}

}  // namespace kxudm::profile
