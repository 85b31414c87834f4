// Which folders of an archive are in the library already under another UID: a path names one
// folder.
//
// Layer: profile. They stand in a temporary table of the library's connection, so that memory
// doesn't grow with their number.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "exchange/Document.h"
#include "profile/Session.h"

namespace kxudm::profile {

class ImportedFolders {
  public:
    // The store outlives this.
    explicit ImportedFolders(store::LibraryStore& store) : _store(store) {}

    // While the document is read for the first time.
    void Note(const exchange::EntityRecord& folder);
    void NoteLink(const std::string& first, const exchange::LinkRecord& link);

    // Looks where each of them would come to lie. Within the import's operation. Throws
    // UDMException if two of them would meet in one place that lie apart in the archive.
    void Resolve(Session& session);
    struct Target {
        store::EntityId id = 0;
        std::string uid = {};
    };
    // The folder of the library that stands for one of the archive; none if it comes itself.
    [[nodiscard]] std::optional<Target> Find(const std::string& uid) const;

  private:
    enum class Progress : int { Open, UnderWay, Done };
    // A row of the table.
    struct Folder {
        std::int64_t number = 0;
        std::string uid = {};
        std::string name = {};
        std::string parent = {};  // UID; empty: none
        Progress progress = Progress::Open;
        store::EntityId id = 0;  // in the library; 0: it comes
        bool isRefused = false;  // it neither comes nor is there
    };

    void Write();
    static void Read(sql::Statement& find, Folder& folder);
    bool FindBehind(std::int64_t number, Folder& folder);
    bool FindOfUid(const std::string& uid, Folder& folder);
    void Resolve(Session& session, Folder folder);
    void ResolveIn(Session& session, Folder& folder);
    void NoteComing(const Folder& folder, const std::string& place);

    store::LibraryStore& _store;
    // Of folders and names, and of contents and the UIDs of their folders: not in the table yet.
    std::vector<std::pair<std::string, std::string>> _unwritten;
    std::vector<std::pair<std::string, std::string>> _unwrittenLinks;
};

}  // namespace kxudm::profile
