// The owner of the open sessions of one master database manager.
//
// Whoever asks for the same library, workspace and user shares one session. The cache counts the
// uses: Add starts at one, each Get adds one, each Drop takes one back, and the last Drop deletes
// the session. Sessions that are still in use when the cache goes are deleted with it.
//
// Layer: session. Threads: those of the manager; nothing is locked. No operation reports failures
// of its own.
//
//     UDMDBCtrl* session = cache.Get(library, workspace, user);
//     if (!session) {
//         session = new UDMDBCtrl(params);
//         cache.Add(library, workspace, user, session, true);
//     }
//     ...
//     cache.Drop(session);
#pragma once

#include <kxct/kxct_export.h>
#include <kxudm/UDMUID.h>
#include <kxutl/kxStlMap.h>
#include <kxutl/kxString.h>

#include <cstdint>

namespace kxct {

class UDMDBCtrl;

// What a session is shared by.
struct DBCtrlKey {
    kxString library;
    kxString workspace;
    kxString user;

    // By library, then workspace, then user, each byte for byte.
    friend KXCT_EXPORT bool operator<(const DBCtrlKey& a, const DBCtrlKey& b);
};

struct DBCtrlEntry {
    UDMDBCtrl* session = nullptr;  // owned by the cache
    std::uint64_t useCount = 0;
};

class KXCT_EXPORT DBCtrlCache {
  public:
    DBCtrlCache();
    // Copies share the sessions with the original, so only one of the two may be destroyed.
    DBCtrlCache(const DBCtrlCache& other);
    DBCtrlCache& operator=(const DBCtrlCache& other);
    // Deletes all sessions, whatever their use counts.
    virtual ~DBCtrlCache();

    // Takes over a session, as used once or, with `firstUse` false, not yet. False if the key is
    // taken: then nothing changes, and the session stays the caller's.
    bool Add(const kxString& library,
             const kxString& workspace,
             const kxString& user,
             UDMDBCtrl* session,
             bool firstUse);

    // Does not count as a use.
    bool Exists(const kxString& library, const kxString& workspace, const kxString& user);

    // The session, used once more; null if there is none.
    UDMDBCtrl* Get(const kxudm::UDMUID& uid);
    UDMDBCtrl* Get(const kxString& library, const kxString& workspace, const kxString& user);

    // Ends one use; the last one deletes the session. A session that is not in the cache is left
    // alone.
    void Drop(UDMDBCtrl* session);

  private:
    kxStlMap<DBCtrlKey, kxudm::UDMUID> _keys;
    kxStlMap<kxudm::UDMUID, DBCtrlEntry> _sessions;
};

}  // namespace kxct
