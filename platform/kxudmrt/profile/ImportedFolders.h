// Which folders of an archive are in the library already under another UID: a path names one
// folder.
//
// Layer: profile. Grows with the number of folders in the archive.
#pragma once

#include <map>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "exchange/Document.h"
#include "profile/Session.h"

namespace kxudm::profile {

class ImportedFolders {
  public:
    // While the document is read for the first time.
    void Note(const exchange::EntityRecord& folder);
    void NoteLink(const std::string& first, const exchange::LinkRecord& link);

    // Looks where each of them would come to lie. Within the import's operation. Throws
    // UDMException if two of them would meet in one place.
    void Resolve(Session& session);
    struct Target {
        store::EntityId id = 0;
        std::string uid = {};
    };
    // The folder of the library that stands for one of the archive; null if it comes itself.
    [[nodiscard]] const Target* Find(const std::string& uid) const;

  private:
    enum class Progress { Open, UnderWay, Done };
    struct Folder {
        std::string uid = {};
        std::string name = {};
        std::string parent = {};  // UID; empty: none
        Progress progress = Progress::Open;
        store::EntityId id = 0;  // in the library; 0: it comes
        bool isRefused = false;  // it neither comes nor is there
    };

    void Resolve(Session& session, std::size_t index);
    void ResolveIn(Session& session, Folder& folder);

    std::vector<Folder> _folders;
    std::unordered_map<std::string, std::size_t> _byUid;
    std::unordered_map<std::string, Target> _targets;
    std::map<std::pair<std::string, std::string>, std::string> _coming;  // place, name -> UID
};

}  // namespace kxudm::profile
