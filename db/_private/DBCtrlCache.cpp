#include <kxct/DBCtrlCache.h>
#include <kxct/UDMDBCtrl.h>

#include <tuple>

namespace kxct {

using kxudm::UDMUID;

bool operator<(const DBCtrlKey& a, const DBCtrlKey& b) {
    return std::tie(a.library, a.workspace, a.user) < std::tie(b.library, b.workspace, b.user);
}

DBCtrlCache::DBCtrlCache() = default;
DBCtrlCache::DBCtrlCache(const DBCtrlCache& other) = default;
DBCtrlCache& DBCtrlCache::operator=(const DBCtrlCache& other) = default;

DBCtrlCache::~DBCtrlCache() {
    for (const auto& [uid, entry] : _sessions) {
        delete entry.session;
    }
    _sessions.clear();
    _keys.clear();
}

bool DBCtrlCache::Add(const kxString& library,
                      const kxString& workspace,
                      const kxString& user,
                      UDMDBCtrl* session,
                      bool firstUse) {
    const DBCtrlKey key{library, workspace, user};
    if (_keys.count(key) != 0) {
        return false;
    }
    const UDMUID uid = session->GetSessionUID();
    _keys[key] = uid;
    _sessions[uid] = {session, firstUse ? 1U : 0U};
    return true;
}

bool DBCtrlCache::Exists(const kxString& library, const kxString& workspace, const kxString& user) {
    return _keys.count({library, workspace, user}) != 0;
}

UDMDBCtrl* DBCtrlCache::Get(const UDMUID& uid) {
    const auto found = _sessions.find(uid);
    if (found == _sessions.end()) {
        return nullptr;
    }
    ++found->second.useCount;
    return found->second.session;
}

UDMDBCtrl* DBCtrlCache::Get(const kxString& library,
                            const kxString& workspace,
                            const kxString& user) {
    const auto found = _keys.find({library, workspace, user});
    return found == _keys.end() ? nullptr : Get(found->second);
}

void DBCtrlCache::Drop(UDMDBCtrl* session) {
    const auto found = _sessions.find(session->GetSessionUID());
    if (found == _sessions.end()) {
        return;
    }
    if (found->second.useCount-- != 1) {
        return;
    }
    delete found->second.session;
    // Only the first key goes. A second one of the same session stays on and leads to nothing.
    for (auto key = _keys.begin(); key != _keys.end(); ++key) {
        if (key->second == found->first) {
            _keys.erase(key);
            break;
        }
    }
    _sessions.erase(found);
}

}  // namespace kxct
