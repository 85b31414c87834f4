// How a bulk import takes files into the vault. How they become contents: BulkImportRows.cpp.
#include "profile/BulkImport.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include "profile/Creation.h"
#include "profile/FileIntake.h"
#include "profile/Groups.h"
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
    std::size_t next = 0;
    while (next < plan.files.size() && TakeIn(next)) {
        ++next;
        if (IsGroupFull()) {
            WriteGroup();
        }
    }
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
bool BulkImport::TakeIn(std::size_t file) {
    const std::string source = _plan->SourceOf(_plan->files[file]);
    if (!_report.Begin(source)) {
        return false;
    }
    try {
        Take(file, source);
    } catch (const vault::StoppedException&) {
        return false;
    } catch (const sql::Error&) {
        throw;
    } catch (const vault::FileError& error) {
        if (IsOfTheVault(error)) {
            throw;
        }
        _report.Fail(source, error.what());
    } catch (const UDMException& refusal) {
        _report.Fail(source, refusal.what());
    }
    _report.End(_plan->files[file].size);
    return !_report.IsCancelled();
}

void BulkImport::Take(std::size_t file, const std::string& source) {
    const ImportFile& planned = _plan->files[file];
    Place& place = _folders.At(_plan->folders[planned.folder].target);
    std::vector<store::FileRow> there;
    bool isTaken = FindNamed(place, planned.name, there);
    const auto same = _pendingNames.find({&place, planned.name});
    if (same != _pendingNames.end()) {
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
    const ContentDefinition& definition = DefinitionFor(planned.name, place);
    std::future<std::string> text;
    store::FileRow row = Store(planned.name, source, text);
    _pending.push_back({file, &place, &definition, std::move(row), std::move(text)});
    _pendingNames.emplace(std::pair(&place, std::string_view(planned.name)), _pending.size() - 1);
    _pendingBytes += planned.size;
}

// What lies together in a folder is of a vault or is not. Looking costs as much as a small file.
bool BulkImport::IsOfVault(std::size_t folder, const std::string& source) {
    if (folder != _lookedAt) {
        _lookedAt = folder;
        _isOfVault = _session.Vaults().Keeps(source);
    }
    return _isOfVault;
}

store::FileRow BulkImport::Store(const std::string& name,
                                 const std::string& source,
                                 std::future<std::string>& text) {
    if (_options.external) {
        return ExternalFile(_session.Vaults(), source);
    }
    if (!_batch) {
        _batch.emplace(_vault);
    }
    const vault::Stored stored = _batch->Add(
        source,
        {.progress = [this](std::uint64_t bytes) { return _report.Advance(bytes); },
         .beginning = [this, &text](std::string_view bytes) { PrepareText(bytes, text); }});
    return StoredFile(name, stored, {});
}

// While the file is compressed and written. What is too much to be kept is indexed later.
void BulkImport::PrepareText(std::string_view beginning, std::future<std::string>& text) {
    if (!text::MayBeText(beginning)) {
        std::promise<std::string> nothing;
        nothing.set_value({});
        text = nothing.get_future();
    } else if (_textBytes < kMostTextBytes) {
        _textBytes += beginning.size();
        text = _texts.Prepare(beginning);
    }
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
