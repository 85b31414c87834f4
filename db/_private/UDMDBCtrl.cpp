#include <kxct/UDMDBCtrl.h>
#include <kxct/UDMSessionSlot.h>
#include <kxctinterfaces/MasterDBManager.h>
#include <kxudm/UDMProfileMgr.h>

#include <boost/smart_ptr/make_shared.hpp>
#include <iterator>
#include <utility>

#include "db/_private/UDMDBCtrlGuard.h"

namespace kxct {

using kxudm::IUDMProfile;
using kxudm::UDMProfileMgr;
using kxudm::UDMProfileUpdate;
using kxudm::UDMUID;

namespace {

// The source that failures name. Not __FILE__: how that is spelled depends on the build, and the
// session's operations stand in several files.
constexpr char SOURCE[] = "db/_private/UDMDBCtrl.cpp";

// Runs where nothing can be thrown: a session that can't be closed properly is still over for us.
void EndSession(boost::shared_ptr<IUDMProfile> profile) noexcept {
    try {
        UDMProfileMgr::DiscardProfile(profile);
    } catch (...) {
    }
}

// What `ask` answers, or false where it throws.
template <class Ask>
bool AnswerOf(Ask&& ask) {
    try {
        return std::forward<Ask>(ask)();
    } catch (const std::exception&) {
        return false;
    }
}

void AppendRecord(kxStlVector<kxString>& out,
                  const kxString& id,
                  const kxStlVector<kxString>& keys,
                  const kxStlMap<kxString, kxString>& info) {
    out.push_back(id);
    for (const kxString& key : keys) {
        if (const auto found = info.find(key); found != info.end()) {
            out.push_back(key);
            out.push_back(found->second);
        }
    }
}

}  // namespace

void ThrowMissingInSession(const char* function, const char* pointerName) {
    ThrowNullPointer(function, SOURCE, pointerName);
}

UDMDBCtrl::UDMDBCtrl(const kxStlMap<kxString, kxVariant>& params) : _parameters(params) {
    _udmProfilePtr = UDMProfileMgr::GetProfile(_parameters);
    RequireProfile(_udmProfilePtr, __PRETTY_FUNCTION__);
    Connect();
    try {
        _sessionUID = UDMUID(_udmProfilePtr->GetSessionId());
    } catch (...) {
        // The observer would outlive this object.
        EndSession(_udmProfilePtr);
        throw;
    }
}

UDMDBCtrl::UDMDBCtrl(const UDMDBCtrl& other) = default;
UDMDBCtrl& UDMDBCtrl::operator=(const UDMDBCtrl& other) = default;

UDMDBCtrl::~UDMDBCtrl() {
    if (_udmProfilePtr) {
        EndSession(_udmProfilePtr);
    }
}

bool UDMDBCtrl::Connect() {
    if (_isConnected || !_udmProfilePtr) {
        return false;
    }
    if (!_sessionSlot) {
        _sessionSlot = boost::make_shared<UDMSessionSlot>(this);
    }
    try {
        _udmProfilePtr->Connect(_sessionSlot);
    } catch (const std::exception&) {
        _isConnected = false;
        return false;
    }
    _isConnected = true;
    return true;
}

bool UDMDBCtrl::Disconnect() {
    if (!_isConnected || !_sessionSlot) {
        return false;
    }
    // Must not be turned round: hosts count on a living session staying connected.
    if (_udmProfilePtr) {
        return false;
    }
    _isConnected = false;
    return true;
}

bool UDMDBCtrl::IsConnected() {
    return _isConnected;
}

boost::shared_ptr<IUDMProfile> UDMDBCtrl::GetProfile() {
    return _udmProfilePtr;
}

const UDMUID& UDMDBCtrl::GetSessionUID() const {
    return _sessionUID;
}

const kxString UDMDBCtrl::GetUser() {
    return _parameters.at("username").GetString();
}

const kxString UDMDBCtrl::GetLibraryName() {
    return _parameters.at("RepositoryName").GetString();
}

const kxString UDMDBCtrl::GetWorkspaceName() {
    return _parameters.at("WorkspaceName").GetString();
}

void UDMDBCtrl::DumpSession() {
    WithProfile(
        _udmProfilePtr, __PRETTY_FUNCTION__, [](IUDMProfile& profile) { profile.DumpSession(); });
}

void UDMDBCtrl::Update(const UDMProfileUpdate& update) {
    if (update.GetOpCode() == kxudm::SIGNAL_SESSION_CLOSED &&
        UDMUID(update.GetSessionId()) == _sessionUID) {
        _isConnected = false;
    }
}

bool UDMDBCtrl::GetLibrariesInfo(const kxStlMap<kxString, kxVariant>& params,
                                 const kxStlVector<kxString>& keys,
                                 kxStlVector<kxString>& out,
                                 CONN_TYPE type) {
    return AnswerOf([&] {
        if (params.empty()) {
            return false;
        }
        kxStlVector<kxString> ids;
        UDMProfileMgr::GetRepositoryIds(ids, params, static_cast<unsigned int>(type));
        out.clear();
        for (const kxString& id : ids) {
            kxStlMap<kxString, kxString> info;
            // The constant must not become `type`: records are asked for as those of libraries,
            // whichever kind of id was listed.
            UDMProfileMgr::GetRepositoryInfo(info, id, keys, params, CONN_TYPE_LIBRARY);
            AppendRecord(out, id, keys, info);
        }
        return true;
    });
}

bool UDMDBCtrl::GetWorkspacesInfo(const kxStlMap<kxString, kxVariant>& params,
                                  const kxStlVector<kxString>& keys,
                                  kxStlVector<kxString>& out) {
    return AnswerOf([&] {
        if (params.empty()) {
            return false;
        }
        kxStlVector<kxString> ids;
        UDMProfileMgr::GetWorkspaces(ids, params);
        out.clear();
        for (const kxString& id : ids) {
            kxStlMap<kxString, kxString> info;
            UDMProfileMgr::GetWorkspaceInfo(info, id, keys, params);
            AppendRecord(out, id, keys, info);
        }
        return true;
    });
}

const kxString UDMDBCtrl::GetLibraryIDByName(const kxStlMap<kxString, kxVariant>& params,
                                             const kxString& name,
                                             CONN_TYPE type) {
    kxString found;
    AnswerOf([&] {
        if (params.empty()) {
            return false;
        }
        kxStlVector<kxString> ids;
        UDMProfileMgr::GetRepositoryIds(ids, params, static_cast<unsigned int>(type));
        const kxStlVector<kxString> keys{"id", "name"};
        for (const kxString& id : ids) {
            kxStlMap<kxString, kxString> info;
            UDMProfileMgr::GetRepositoryInfo(
                info, id, keys, params, static_cast<unsigned int>(type));
            if (info.size() >= 2 && std::next(info.begin())->second == name) {
                found = info.begin()->second;
                return true;
            }
        }
        return false;
    });
    return found;
}

bool UDMDBCtrl::GetLibraryInfoByID(const kxStlMap<kxString, kxVariant>& params,
                                   const kxString& id,
                                   kxStlMap<kxString, kxString>& out,
                                   CONN_TYPE type) {
    return AnswerOf([&] {
        if (params.empty()) {
            return false;
        }
        const kxStlVector<kxString> keys{
            "id", "name", "profile_name", "is_default", "type", "ldbFile", "dbhost", "dbport"};
        UDMProfileMgr::GetRepositoryInfo(out, id, keys, params, static_cast<unsigned int>(type));
        return !out.empty();
    });
}

bool UDMDBCtrl::GetWorkspaceInfo(const kxStlMap<kxString, kxVariant>& params,
                                 const kxString& id,
                                 kxStlMap<kxString, kxString>& out) {
    return AnswerOf([&] {
        if (params.empty()) {
            return false;
        }
        out.clear();
        const kxStlVector<kxString> keys{"name",
                                         "workingDir",
                                         "client_working_dir",
                                         "host_name",
                                         "user_name",
                                         "uname",
                                         "is_default"};
        UDMProfileMgr::GetWorkspaceInfo(out, id, keys, params);
        return !out.empty();
    });
}

bool UDMDBCtrl::GetLibraryClientSettings(const kxStlMap<kxString, kxVariant>& params,
                                         const kxString& id,
                                         kxStlMap<kxString, kxVariant>& out) {
    return AnswerOf([&] {
        if (params.empty()) {
            return false;
        }
        UDMProfileMgr::GetRepositoryClientSettings(out, id, params);
        return !out.empty();
    });
}

bool UDMDBCtrl::CheckConnection(const kxString& dataSource,
                                const kxString& a,
                                const kxString& b,
                                const kxString& host,
                                const kxString& c,
                                const kxString& username,
                                const kxString& password,
                                kxString& message) {
    // Spelled out: the text keeps a const of the result that the language drops.
    constexpr auto function =
        "const bool kxct::UDMDBCtrl::CheckConnection(const kxString&, const kxString&, const "
        "kxString&, const kxString&, const kxString&, const kxString&, const kxString&, kxString&)";
    return Translated(function, [&] {
        return UDMProfileMgr::CheckConnection(
            dataSource, a, b, host, c, username, password, message);
    });
}

void UDMDBCtrl::AddExistingLibrary(const kxStlMap<kxString, kxVariant>& params,
                                   const kxString& name) {
    UDMProfileMgr::AddExistingRepository(params, name);
}

void UDMDBCtrl::DeleteLibrary(const kxStlMap<kxString, kxVariant>& params, bool deleteFiles) {
    UDMProfileMgr::DeleteRepository(params, deleteFiles, true);
}

void UDMDBCtrl::SetDefaultLibrary(const kxStlMap<kxString, kxVariant>& params) {
    UDMProfileMgr::SetDefaultRepository(params);
}

}  // namespace kxct
