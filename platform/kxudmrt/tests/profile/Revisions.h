// Shorthands for steps in the life of revisions.
#pragma once

#include "Library.h"

namespace kxudm::test {

inline kxString Base(const UDMItemHandle& handle) {
    return handle.GetUID().substr(0, handle.GetUID().find(':'));
}
inline kxString At(const UDMItemHandle& handle, int revision) {
    return Base(handle) + ":" + std::to_string(revision);
}
// The newest revision for the session.
inline UDMItemHandle Newest(const ProfilePtr& profile, const UDMItemHandle& handle) {
    return profile->GetEntity(Base(handle));
}
inline int NewestNumber(const ProfilePtr& profile, const UDMItemHandle& handle) {
    return Newest(profile, handle).GetRevision();
}
inline UDMItemHandle Publish(const ProfilePtr& profile,
                             const UDMItemHandle& handle,
                             const kxString& comment = "",
                             bool keep = false) {
    profile->PersistEntity(profile->GetWorkingHandle(handle), comment, keep, true, true);
    return Newest(profile, handle);
}
inline UDMItemHandle CheckOut(const ProfilePtr& profile,
                              const UDMItemHandle& handle,
                              const kxString& comment = "") {
    profile->Checkout(Newest(profile, handle), comment);
    return Newest(profile, handle);
}
// A published content at revision 1.
inline UDMItemHandle Published(const ProfilePtr& profile,
                               const kxString& name,
                               const kxString& definition = "Part") {
    return Publish(profile, profile->CreateEntity(definition, name));
}
inline bool Sees(const ProfilePtr& profile, const kxString& uid) {
    try {
        profile->GetEntity(uid);
        return true;
    } catch (const UDMNotFoundException&) {
        return false;
    }
}
inline std::vector<int> Versions(const ProfilePtr& profile, const UDMItemHandle& handle) {
    std::vector<int> numbers;
    const auto root = profile->GetHistory(handle);
    for (const auto& node : root->GetVersionList()) {
        numbers.push_back(node->GetVersion());
    }
    return numbers;
}

// Code and revision, the child's revision and the UID where there are such.
inline std::string Step(const UDMProfileUpdate& update) {
    std::string text = std::to_string(update.GetOpCode());
    if (!update.GetUDMHandle().IsEmpty()) {
        text += " " + update.GetUDMHandle().GetDisplayName() + ":" +
                std::to_string(update.GetUDMHandle().GetRevision());
    }
    if (!update.GetChild().IsEmpty()) {
        text += " " + update.GetChild().GetDisplayName() + ":" +
                std::to_string(update.GetChild().GetRevision());
    }
    const kxString uid(update.GetUID());
    if (!uid.empty()) {
        text += " ~" + uid.substr(uid.find(':'));
    }
    return text;
}

class Listening {
  public:
    explicit Listening(const ProfilePtr& profile) : _recorder(Listen(profile)) {}
    Names Take() {
        Names steps;
        for (const UDMProfileUpdate& update : std::exchange(_recorder->updates, {})) {
            steps.push_back(Step(update));
        }
        return steps;
    }
    Recorder& Slot() { return *_recorder; }

  private:
    boost::shared_ptr<Recorder> _recorder;
};

}  // namespace kxudm::test
