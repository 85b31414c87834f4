// Archives of a library: what is carried to another one, and what became of it there.
//
//     UDMExchange exchange(profile);
//     exchange.Export("/home/u/plates.kxa", {}, 2);           // all of the library
//     const UDMImportReport report = UDMExchange(other).Import("/home/u/plates.kxa");
//     for (const UDMImportedEntity& each : report.entities) {
//         std::cout << each.name << " " << UDMExchange::Name(each.outcome) << " " << each.text;
//     }
//
// IUDMProfile::Export and Import do the same without a report. docs/exchange-format.md describes
// the archive, and numbers every case of an import. Both tell the session's progress listener of
// each entity and content; an import calls it with its transaction open while rows are written.
// Cancelled, they throw UDMCancelledException and leave everything as it was, as they do after any
// other failure. Neither may be called in a bulk edit (UDMException).
//
// Layer: as IUDMProfile; thread: that of the session.
#pragma once

#include <kxudmrt/kxudmrt_export.h>
#include <kxutl/kxStlVector.h>
#include <kxutl/kxString.h>

#include <boost/smart_ptr/shared_ptr.hpp>
#include <cstddef>

namespace kxudm {

class IUDMProfile;

namespace spi {
class IExchange;
}

enum class UDMImportOutcome {
    New,        // it was not there
    Equal,      // all that the archive says of it is there
    Appended,   // newer revisions came behind those that are there
    Branched,   // it went on in another way here: what differs became a branch, `target`
    Kept,       // it has no revisions and is another here: it stays as it is
    SamePlace,  // a folder of its path is there, `target`, and stands for it
    Refused     // nothing of it was taken, `text` says why
};

struct UDMImportedEntity {
    kxString uid;   // in the archive, without revision
    kxString name;  // in the archive
    UDMImportOutcome outcome = UDMImportOutcome::New;
    std::size_t revisions = 0;  // that came
    kxString target;            // UID here of what it became, if another
    kxString text;              // one line that says more; may be empty
};

// A link of the archive that was left out.
struct UDMLeftOutLink {
    kxString uid;   // of the entity that bears it
    kxString text;  // which link, and why
};

struct UDMImportReport {
    kxStlVector<UDMImportedEntity> entities;  // in the order of the archive
    // Links to entities that are neither in the archive nor here are not among them.
    kxStlVector<UDMLeftOutLink> leftOut;
    std::size_t definitions = 0;  // content definitions that are new or have got more

    [[nodiscard]] KXUDMRT_EXPORT std::size_t Count(UDMImportOutcome outcome) const;
};

class KXUDMRT_EXPORT UDMExchange {
  public:
    // Throws UDMException for a null session, UDMNotSupportedException if the session's data source
    // has no archives. Shares ownership of the session.
    explicit UDMExchange(const boost::shared_ptr<IUDMProfile>& profile);

    // See IUDMProfile::Export.
    void Export(const kxString& path, const kxStlVector<kxString>& uids, int scope);
    // See IUDMProfile::Import.
    UDMImportReport Import(const kxString& path);

    // "new", "equal", ...; for reports.
    [[nodiscard]] static const char* Name(UDMImportOutcome outcome);

  private:
    boost::shared_ptr<IUDMProfile> _profile;
    spi::IExchange* _exchange;  // the same object
};

}  // namespace kxudm
