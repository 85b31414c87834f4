#include "profile/FileRetrieval.h"

#include <algorithm>
#include <cerrno>
#include <unordered_set>
#include <utility>

#include "core/HeldFiles.h"
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

FileRetrieval::FileRetrieval(Session& session, bool overwrite)
    : _session(session), _files(session.Vaults().Files()), _overwrite(overwrite) {}

void FileRetrieval::SetFolder(const std::string& folder) {
    std::string path = RequireFolderPath(folder);
    _folder = &_folders[path];
    _folder->path = std::move(path);
}

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
    const auto [known, isNew] = _folder->byName.try_emplace(file.name, _pieces.size());
    if (isNew) {
        std::string target = (_folder->path == "/" ? "" : _folder->path) + "/" + file.name;
        _progress.totalBytes += static_cast<std::uint64_t>(file.size);
        _pieces.push_back({std::move(file), owner, _folder, std::move(target)});
        return;
    }
    const Piece& other = _pieces[known->second];
    if (!IsSame(other.file, file)) {
        throw UDMException("Two different documents '" + Printable(file.name) +
                           "' would meet in the folder '" + Printable(_folder->path) + "', of " +
                           other.owner + " and of " + owner +
                           "; retrieve them into different folders");
    }
}

void FileRetrieval::Run(kxStlVector<kxString>& paths) {
    _progress.total = _pieces.size();
    for (const auto& [path, folder] : _folders) {
        CheckFolder(folder);
    }
    for (Piece& piece : _pieces) {
        CheckSource(piece);
    }
    for (Piece& piece : _pieces) {
        CheckTarget(piece);
    }
    try {
        if (IsLarge()) {
            WriteTogether();
        } else {
            WriteOneByOne();
        }
        MoveAll();
    } catch (...) {
        TakeBack();
        throw;
    }
    for (const Piece& piece : _pieces) {
        paths.push_back(piece.target);
    }
}

void FileRetrieval::CheckFolder(const Folder& folder) {
    FileStatus status;
    if (!_files.Status(folder.path, status) || status.kind == FileKind::Folder) {
        return;
    }
    if (status.kind != FileKind::Link) {
        throw UDMStoreException("'" + Printable(folder.path) +
                                "' is no folder; name one to retrieve files into");
    }
    vault::FileHandle followed(_files);
    _files.OpenFolder(folder.path, followed.File());
}

void FileRetrieval::CheckSource(Piece& piece) {
    const std::string document = "document '" + Printable(piece.file.name) + "'";
    if (piece.file.IsExternal()) {
        RequireUnchanged(_files, piece.file, piece.owner + " has the external " + document);
        return;
    }
    vault::Vault& vault = _session.Vaults().In(piece.file.vault);
    piece.vault = &vault;
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
    if (core::HeldFiles::Have(piece.target)) {
        throw UDMStoreException("'" + Printable(piece.target) +
                                "' is part of a library that is open in this program; choose "
                                "another place");
    }
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
    if (piece.vault != nullptr) {
        return piece.vault->IsContent(piece.file.hash, piece.target);
    }
    try {
        return IsEqualFile(_files, piece.file.externalPath, piece.target);
    } catch (const UDMStoreException&) {
        // A link to what is no file.
        return false;
    }
}

}  // namespace kxudm::profile
