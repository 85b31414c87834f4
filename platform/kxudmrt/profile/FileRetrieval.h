// Documents on their way out of a library into folders: all of them or none.
//
//     FileRetrieval retrieval(session, overwrite);
//     retrieval.SetFolder(folder);
//     retrieval.AddAll(state, withChildren);   // what is to be written there
//     retrieval.Run(paths);                    // checks everything, then writes
//
// First everything is checked: names, documents that would meet under one name, contents that are
// missing, files in the folders that differ. Then the files are written under temporary names and
// verified, and only when all of them are whole do they get their own. A failure or a cancellation
// leaves the folders as they were; only if the machine refuses to rename do files stay that were
// replaced before that.
//
// Many files are written by several threads, which end with the call and only ever use the file
// layer.
//
// Layer: profile. Files are written with no transaction open. For one use.
#pragma once

#include <kxudm/UDMProgress.h>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "profile/Session.h"

namespace kxudm::profile {

class FileRetrieval {
  public:
    // `overwrite`: files that are there and differ are replaced, else they are an error; equal ones
    // are left alone.
    FileRetrieval(Session& session, bool overwrite);

    // Where the documents that are added from now on go. It is made if it is missing and something
    // goes there.
    void SetFolder(const std::string& folder);
    // One document of a revision. Throws UDMNotFoundException if it has none of that name.
    void AddOne(const EntityState& state, const std::string& document);
    // All documents, by name; `withChildren`: those of owned children at any depth behind them,
    // in the order of GetChildren, each child once.
    void AddAll(const EntityState& state, bool withChildren);

    // Appends the absolute paths, in the order in which the documents were added, of all that is in
    // the folders now, also of what was there and equal.
    void Run(kxStlVector<kxString>& paths);

  private:
    struct Folder {
        std::string path;
        bool ready = false;
        std::map<std::string, std::size_t, std::less<>> byName;  // number of the piece
    };
    struct Piece {
        store::FileRow file;
        std::string owner;  // for messages
        Folder* folder;
        std::string target;
        vault::Vault* vault = nullptr;  // none for an external file
        bool wasThere = false;
        bool inPlace = false;
        std::unique_ptr<vault::TemporaryFile> written = {};
    };
    // Hears of bytes that were written; false or an exception ends it.
    using Heard = std::function<bool(std::uint64_t)>;

    void AddFilesOf(store::EntityId id, int revision, const std::string& owner);
    void Add(store::FileRow&& file, const std::string& owner);
    void CheckFolder(const Folder& folder);
    void CheckSource(Piece& piece);
    void CheckTarget(Piece& piece);
    bool IsEqual(const Piece& piece, const vault::FileStatus& target);

    // FileRetrievalWrite.cpp
    [[nodiscard]] bool IsLarge() const;
    void WriteOneByOne();
    void WriteTogether();
    void Write(Piece& piece, vault::Fetcher& fetcher, const Heard& heard);
    void MakeFolder(Folder& folder);
    void MoveAll();
    void TakeBack() noexcept;
    void Begin(const std::string& name);
    void Advance(std::uint64_t bytes);

    Session& _session;
    vault::FileLayer& _files;
    const bool _overwrite;
    std::map<std::string, Folder, std::less<>> _folders;
    Folder* _folder = nullptr;
    std::vector<Piece> _pieces;
    std::vector<std::string> _madeFolders;  // outermost first
    std::vector<std::string> _madeFiles;
    UDMProgress _progress;
};

}  // namespace kxudm::profile
