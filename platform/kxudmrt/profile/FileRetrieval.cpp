#include "profile/FileRetrieval.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <unordered_set>
#include <utility>

#include "profile/ExternalFile.h"
#include "profile/FileIntake.h"
#include "vault/DocumentName.h"

namespace kxudm::profile {

namespace {

using vault::FileKind;
using vault::FileStatus;
using vault::Printable;

std::string OwnerText(const std::string& definition, std::string_view uid, int revision) {
    return definition + " " + std::string(uid) + ":" + std::to_string(revision);
}

// The paths of one folder that has to be there before its files are written.
std::string RequireFolderPath(const std::string& folder) {
    if (folder.empty()) {
        throw UDMException("A folder to retrieve files into must be named; its path is empty");
    }
    return AbsolutePath(folder);
}

bool IsSame(const store::FileRow& a, const store::FileRow& b) {
    return a.hash == b.hash && a.externalPath == b.externalPath &&
           (!a.IsExternal() || (a.size == b.size && a.modified == b.modified));
}

}  // namespace

FileRetrieval::FileRetrieval(Session& session, const std::string& folder, bool overwrite)
    : _session(session),
      _files(session.Vaults().Files()),
      _folder(RequireFolderPath(folder)),
      _overwrite(overwrite) {}

void FileRetrieval::AddOne(const EntityState& state, const std::string& document) {
    Add(RequireDocument(_session, state, document),
        OwnerText(state.Cdef(), state.BaseUid(), state.Revision()));
}

void FileRetrieval::AddAll(const EntityState& state, bool withChildren) {
    struct Entity {
        store::EntityId id;
        int revision;
        std::string owner;
    };
    // A child may be owned by several, where it is shared.
    std::unordered_set<store::EntityId> known{state.Id()};
    std::vector<Entity> open{
        {state.Id(), state.Revision(), OwnerText(state.Cdef(), state.BaseUid(), state.Revision())}};
    store::LibraryStore& store = _session.Store();
    store.View([&] {
        while (!open.empty()) {
            const Entity entity = std::move(open.back());
            open.pop_back();
            AddFilesOf(entity.id, entity.revision, entity.owner);
            if (!withChildren) {
                return;
            }
            std::vector<store::LinkedRow> children;
            store.Children(entity.id,
                           entity.revision,
                           store::LinkKind::Owner,
                           {},
                           _session.Viewer(),
                           children);
            std::erase_if(children, [&](const store::LinkedRow& child) {
                return !known.insert(child.entity.id).second;
            });
            // The last one in comes out first.
            std::for_each(children.rbegin(), children.rend(), [&](const store::LinkedRow& child) {
                const store::EntityRow& row = child.entity;
                open.push_back(
                    {row.id, row.revision, OwnerText(row.definition, row.uid, row.revision)});
            });
        }
    });
}

void FileRetrieval::AddFilesOf(store::EntityId id, int revision, const std::string& owner) {
    std::vector<store::FileRow> files;
    _session.Store().Files(id, revision, files);
    for (store::FileRow& file : files) {
        Add(std::move(file), owner);
    }
}

void FileRetrieval::Add(store::FileRow&& file, const std::string& owner) {
    try {
        vault::CheckDocumentName(file.name);
    } catch (const UDMException& refusal) {
        throw UDMException(owner + " has a document that can't be retrieved: " + refusal.what());
    }
    const auto [known, isNew] = _byName.try_emplace(file.name, _pieces.size());
    if (isNew) {
        std::string target = (_folder == "/" ? "" : _folder) + "/" + file.name;
        _progress.totalBytes += static_cast<std::uint64_t>(file.size);
        _pieces.push_back({std::move(file), owner, std::move(target)});
        return;
    }
    const Piece& other = _pieces[known->second];
    if (!IsSame(other.file, file)) {
        throw UDMException("Two different documents '" + Printable(file.name) +
                           "' would meet in the folder '" + Printable(_folder) + "', of " +
                           other.owner + " and of " + owner +
                           "; retrieve them into different folders");
    }
}

void FileRetrieval::Run(kxStlVector<kxString>& paths) {
    _progress.total = _pieces.size();
    CheckFolder();
    for (Piece& piece : _pieces) {
        CheckSource(piece);
    }
    for (Piece& piece : _pieces) {
        CheckTarget(piece);
    }
    try {
        WriteAll();
        MoveAll();
    } catch (...) {
        TakeBack();
        throw;
    }
    for (const Piece& piece : _pieces) {
        paths.push_back(piece.target);
    }
}

void FileRetrieval::CheckFolder() {
    FileStatus status;
    if (!_files.Status(_folder, status) || status.kind == FileKind::Folder) {
        return;
    }
    if (status.kind != FileKind::Link) {
        throw UDMStoreException("'" + Printable(_folder) +
                                "' is no folder; name one to retrieve files into");
    }
    vault::FileHandle followed(_files);
    _files.OpenFolder(_folder, followed.File());
}

void FileRetrieval::CheckSource(Piece& piece) {
    const std::string document = "document '" + Printable(piece.file.name) + "'";
    if (piece.file.IsExternal()) {
        RequireUnchanged(_files, piece.file, piece.owner + " has the external " + document);
        return;
    }
    const vault::Vault& vault = _session.Vaults().In(piece.file.vault);
    if (!vault.Holds(piece.file.hash)) {
        throw vault::MissingException("The " + document + " of " + piece.owner +
                                      " is missing: the vault '" + vault.Directory() +
                                      "' doesn't hold its content " + piece.file.hash +
                                      "; restore it from a backup");
    }
}

void FileRetrieval::CheckTarget(Piece& piece) {
    FileStatus status;
    if (!_files.Status(piece.target, status)) {
        return;
    }
    piece.wasThere = true;
    if (status.kind != FileKind::Regular && status.kind != FileKind::Link) {
        throw UDMStoreException("'" + Printable(piece.target) + "' is " +
                                (status.kind == FileKind::Folder ? "a folder" : "no regular file") +
                                "; choose another place");
    }
    piece.inPlace = IsEqual(piece, status);
    if (!piece.inPlace && !_overwrite) {
        throw UDMStoreException("'" + Printable(piece.target) +
                                "' is there already and differs; allow to overwrite it or choose "
                                "another place");
    }
}

bool FileRetrieval::IsEqual(const Piece& piece, const FileStatus& target) {
    if (target.kind == FileKind::Regular &&
        target.size != static_cast<std::uint64_t>(piece.file.size)) {
        return false;
    }
    if (!piece.file.IsExternal()) {
        return _session.Vaults().In(piece.file.vault).IsContent(piece.file.hash, piece.target);
    }
    try {
        return IsEqualFile(_files, piece.file.externalPath, piece.target);
    } catch (const UDMStoreException&) {
        // A link to what is no file.
        return false;
    }
}

void FileRetrieval::MakeFolder() {
    if (std::exchange(_folderReady, true)) {
        return;
    }
    std::vector<std::string> missing;
    FileStatus status;
    for (std::filesystem::path path = _folder; !_files.Status(path.string(), status);
         path = path.parent_path()) {
        missing.push_back(path.string());
    }
    for (; !missing.empty(); missing.pop_back()) {
        _files.MakeFolder(missing.back());
        _madeFolders.push_back(missing.back());
    }
}

void FileRetrieval::WriteAll() {
    for (Piece& piece : _pieces) {
        Begin(piece.target);
        if (piece.inPlace) {
            Advance(static_cast<std::uint64_t>(piece.file.size));
        } else {
            MakeFolder();
            Write(piece);
        }
        ++_progress.done;
    }
    Begin({});
}

void FileRetrieval::Write(Piece& piece) {
    try {
        if (piece.file.IsExternal()) {
            piece.written = CopyExternal(
                _files, piece.file, piece.target, [this](std::uint64_t bytes) { Advance(bytes); });
            return;
        }
        vault::RetrieveOptions options;
        options.modified = piece.file.modified;
        options.progress = [this](std::uint64_t bytes) {
            Advance(bytes);
            return true;
        };
        piece.written =
            _session.Vaults().In(piece.file.vault).Fetch(piece.file.hash, piece.target, options);
    } catch (const vault::FileError& error) {
        throw vault::FileError("'" + Printable(piece.target) + "' was not retrieved", error);
    }
}

void FileRetrieval::MoveAll() {
    for (Piece& piece : _pieces) {
        if (piece.written == nullptr) {
            continue;
        }
        try {
            if (_overwrite) {
                piece.written->MoveTo(piece.target);
            } else if (!piece.written->MoveToNew(piece.target)) {
                throw vault::FileError(EEXIST, "made", piece.target);
            }
        } catch (const vault::FileError& error) {
            throw vault::FileError("'" + Printable(piece.target) + "' was not retrieved", error);
        }
        if (!piece.wasThere) {
            _madeFiles.push_back(piece.target);
        }
    }
}

void FileRetrieval::TakeBack() noexcept {
    for (Piece& piece : _pieces) {
        piece.written.reset();
    }
    for (const std::string& file : _madeFiles) {
        try {
            _files.Remove(file);
        } catch (const std::exception&) {
            // The failure that is on its way says more.
        }
    }
    std::error_code ignored;
    for (auto folder = _madeFolders.rbegin(); folder != _madeFolders.rend(); ++folder) {
        std::filesystem::remove(*folder, ignored);
    }
}

void FileRetrieval::Begin(const std::string& name) {
    _progress.name = name;
    Advance(0);
}

void FileRetrieval::Advance(std::uint64_t bytes) {
    _progress.doneBytes = std::min(_progress.doneBytes + bytes, _progress.totalBytes);
    IUDMProgressListener* const listener = _session.ProgressListener();
    if (listener != nullptr && !listener->Advance(_progress)) {
        throw UDMCancelledException("Retrieving files into '" + Printable(_folder) +
                                    "' was cancelled; it is as it was");
    }
}

}  // namespace kxudm::profile
