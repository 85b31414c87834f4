// Documents on their way out of a library into one folder: all of them or none.
//
//     FileRetrieval retrieval(session, folder, overwrite);
//     retrieval.AddAll(state, withChildren);   // what is to be written
//     retrieval.Run(paths);                    // checks everything, then writes
//
// First everything is checked: names, documents that would meet under one name, contents that are
// missing, files in the folder that differ. Then the files are written under temporary names and
// verified, and only when all of them are whole do they get their own. A failure or a cancellation
// leaves the folder as it was; only if the machine refuses to rename do files stay that were
// replaced before that.
//
// Layer: profile. Files are written with no transaction open. For one use.
#pragma once

#include <kxudm/UDMProgress.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "profile/Session.h"

namespace kxudm::profile {

class FileRetrieval {
  public:
    // The folder is made if it is missing. `overwrite`: files in it that differ are replaced, else
    // they are an error; equal ones are left alone.
    FileRetrieval(Session& session, const std::string& folder, bool overwrite);

    // One document of a revision. Throws UDMNotFoundException if it has none of that name.
    void AddOne(const EntityState& state, const std::string& document);
    // All documents, by name; `withChildren`: those of owned children at any depth behind them,
    // in the order of GetChildren, each child once.
    void AddAll(const EntityState& state, bool withChildren);

    // Appends the absolute paths, in the order in which the documents were added, of all that is in
    // the folder now, also of what was there and equal.
    void Run(kxStlVector<kxString>& paths);

  private:
    struct Piece {
        store::FileRow file;
        std::string owner;  // for messages
        std::string target;
        bool wasThere = false;
        bool inPlace = false;
        std::unique_ptr<vault::TemporaryFile> written = {};
    };

    void AddFilesOf(store::EntityId id, int revision, const std::string& owner);
    void Add(store::FileRow&& file, const std::string& owner);
    void CheckFolder();
    void CheckSource(Piece& piece);
    void CheckTarget(Piece& piece);
    bool IsEqual(const Piece& piece, const vault::FileStatus& target);
    void MakeFolder();
    void Write(Piece& piece);
    void WriteAll();
    void MoveAll();
    void TakeBack() noexcept;

    void Begin(const std::string& name);
    void Advance(std::uint64_t bytes);

    Session& _session;
    vault::FileLayer& _files;
    const std::string _folder;
    const bool _overwrite;
    std::vector<Piece> _pieces;
    std::map<std::string, std::size_t, std::less<>> _byName;
    bool _folderReady = false;
    std::vector<std::string> _madeFolders;  // outermost first
    std::vector<std::string> _madeFiles;
    UDMProgress _progress;
};

}  // namespace kxudm::profile
