// Many changes of one session as one: they are committed together or not at all, and slots are told
// once, when they are.
//
//     UDMBulkEdit edit(profile);
//     for (const kxString& name : names) {
//         profile->CreateAndAddChild("Document", name, folder, "folder");
//     }
//     edit.Commit();
//
// Within, the session sees its own changes; nobody else does. Other sessions read as before, but
// can't write: their changes wait up to the busy timeout and then fail, and one on the same thread
// could wait for nothing else. So keep the scope short, and do no user interaction in it. Slots
// are told at Commit: one structure change per parent and one change per revision, however many
// there were. What follows a slot, as items do, stands for what was before until then: work with
// handles within. Files that are added or replaced within become durable together, by one flush at
// Commit. An operation that fails before it has changed anything leaves the rest valid; one
// that fails halfway makes Commit fail.
#pragma once

#include <kxudmrt/kxudmrt_export.h>

#include <boost/smart_ptr/shared_ptr.hpp>

namespace kxudm {

class IUDMProfile;

namespace spi {
class IBulkEdit;
}

class KXUDMRT_EXPORT UDMBulkEdit {
  public:
    // Throws UDMNotSupportedException if the session's data source can't do it, UDMException if a
    // bulk edit of the session is open already. Shares ownership of the session.
    explicit UDMBulkEdit(const boost::shared_ptr<IUDMProfile>& profile);
    // Takes everything back unless Commit was called. Handles then answer what was before; those
    // of entities created within stand for nothing.
    ~UDMBulkEdit();
    UDMBulkEdit(const UDMBulkEdit&) = delete;
    UDMBulkEdit& operator=(const UDMBulkEdit&) = delete;

    // Makes all of it last, then tells the slots; what one of them throws comes out, with the
    // changes standing. Any other failure takes everything back. To be called once.
    void Commit();

  private:
    boost::shared_ptr<IUDMProfile> _profile;
    spi::IBulkEdit* _bulk;  // the same object; null after Commit
};

}  // namespace kxudm
