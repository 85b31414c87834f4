// The care of a library: is everything as it should be, what may be thrown away, and what was
// deleted by mistake.
//
//     UDMMaintenance care(profile);
//     for (const UDMFinding& finding : care.Verify()) {
//         std::cout << UDMMaintenance::Name(finding.kind) << " " << finding.object << ": "
//                   << finding.text << "\n";
//     }
//     UDMPurgeOptions options;
//     options.deletedEntities = true;
//     const UDMPurged purged = care.Purge(options);
//
// It works through an open session and sees all of its library, also what that session's user does
// not see. Verify changes nothing and runs beside other sessions. Purge removes for good; it lets
// other sessions wait while it does, and leaves alone what is younger than an hour, because a
// session that has put a file into the vault may be about to commit its row. Libraries that lie
// beside each other share their vaults: what one of them uses is no orphan of another.
//
// None of it may be called in a bulk edit (UDMException). Layer: as IUDMProfile; thread: that of
// the session.
#pragma once

#include <kxudmrt/kxudmrt_export.h>
#include <kxutl/kxStlVector.h>
#include <kxutl/kxString.h>

#include <boost/smart_ptr/shared_ptr.hpp>
#include <chrono>
#include <cstddef>
#include <cstdint>

namespace kxudm {

class IUDMProfile;

namespace spi {
class IMaintenance;
}

enum class UDMFindingKind {
    Database,             // the database finds its own file damaged
    DefinitionMissing,    // an entity of a content definition that the catalogue doesn't have
    RevisionMissing,      // an entity's newest or working revision isn't stored
    RevisionStray,        // a stored revision that its entity doesn't know, or in another state
    AttributesDamaged,    // stored attributes that can't be read
    SearchAttributes,     // what queries search is not what the newest revision says
    LinkInterval,         // a link holds for revisions that aren't there, or twice
    LinkDangling,         // one end of a link isn't there
    LinkCycle,            // an owner, folder or classification below itself
    OwnedTwice,           // a child owned by composition has another owner, too
    InTwoFolders,         // a content in more than one folder
    FolderEntry,          // a folder knows a content under another name than its own
    FileInterval,         // as LinkInterval
    FileDangling,         // a file of an entity that isn't there
    StrayRow,             // a save point or search row of what isn't there
    ContentMissing,       // a file's content isn't in the vault
    ContentDamaged,       // bytes in the vault are not what they should be
    ContentUnreadable,    // the machine refuses to read them
    ContentOrphan,        // a content in the vault that no file names
    VaultStranger,        // a file in the vault that no vault has put there
    NeighbourUnreadable,  // a library beside this one can't be read: orphans can't be told
    FullText              // full text search looks at other words than there are
};

struct UDMFinding {
    UDMFindingKind kind = UDMFindingKind::Database;
    kxString object;  // a UID with its revision, a hash or a path
    kxString text;    // what is wrong with it, and what would help
};

struct UDMVerifyOptions {
    // Reads every content in the vaults and compares its hash: hours for a large library. Else it
    // is only looked up.
    bool contents = true;
    // Compares the words of the full text index with those that there are: of attributes, and with
    // `contents` of every text file, which takes longer than to read them. They can be rebuilt at
    // any time.
    bool words = true;
    // Younger contents are no orphans.
    std::chrono::seconds minimumAge = std::chrono::hours(1);
};

struct UDMPurgeOptions {
    // Contents, and deletions, that are younger stay.
    std::chrono::seconds minimumAge = std::chrono::hours(1);
    // Also removes deleted entities with all their rows; they can't be brought back then.
    bool deletedEntities = false;
};

struct UDMPurged {
    std::size_t entities = 0;
    std::size_t contents = 0;
    std::uint64_t bytes = 0;  // that the contents took on the disk
    std::size_t temporaries = 0;
};

struct UDMDeletedEntity {
    kxString uid;  // without revision
    kxString definition;
    kxString name;
    kxString time;  // of the deletion, "2026-01-31T12:00:00Z"; empty if nobody has noted it
};

class KXUDMRT_EXPORT UDMMaintenance {
  public:
    // Throws UDMException for a null session, UDMNotSupportedException if the session's data source
    // doesn't offer maintenance. Shares ownership of the session.
    explicit UDMMaintenance(const boost::shared_ptr<IUDMProfile>& profile);

    // Everything that is wrong, in the order of UDMFindingKind; empty for a sound library. Contents
    // are read by several threads, which end with the call. Tells the session's progress listener
    // of each content; cancelled, it throws UDMCancelledException.
    [[nodiscard]] kxStlVector<UDMFinding> Verify(const UDMVerifyOptions& options = {});

    // Removes contents that no file names, what dead processes left half written, and notes of
    // changes that are older than 30 days: a session that made no call for so long is told that
    // everything it holds has changed. Throws
    // UDMStoreException, and has removed no content, while a library beside this one can't be read.
    // The entity that was made last of all stays until there is a later one.
    UDMPurged Purge(const UDMPurgeOptions& options = {});

    // Deleted entities that can still be brought back, in the order of their creation.
    [[nodiscard]] kxStlVector<UDMDeletedEntity> DeletedEntities();
    // Brings back an entity (UID without revision) with all that was deleted together with it, and
    // with its links to what is there. False if it is unknown or not deleted. Throws UDMException,
    // and changes nothing, where it would come beside a folder of its name or a child would have
    // two owners.
    bool Undelete(const kxString& uid);

    // Makes the full text index anew from attributes and files, which find the same afterwards as
    // before, unless Verify told otherwise. Other sessions may search and, in between, write; what
    // is not indexed yet takes them longer. Tells the session's progress listener; cancelled, it
    // throws UDMCancelledException, and searches do the rest.
    void RebuildFullText();

    // "orphaned content", ...; for reports.
    [[nodiscard]] static const char* Name(UDMFindingKind kind);

  private:
    boost::shared_ptr<IUDMProfile> _profile;
    spi::IMaintenance* _maintenance;  // the same object
};

}  // namespace kxudm
