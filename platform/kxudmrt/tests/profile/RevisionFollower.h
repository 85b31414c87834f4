// A listener of one session, for the generated steps of revisions.
#pragma once

#include <map>
#include <set>
#include <utility>

#include "RevisionModel.h"
#include "Revisions.h"

namespace kxudm::test {

// Follows the updates of one session like somebody who shows the newest revisions and what is in
// them, and in folders.
class RevisionFollower : public IUDMProfileSlot {
  public:
    // Children by group, as base UIDs, and what else is shown of the newest revision.
    using Shown = std::map<kxString, std::vector<kxString>>;

    explicit RevisionFollower(ProfilePtr profile) : _profile(std::move(profile)) {}

    void update(UDMProfileUpdate update) override {
        told.push_back(Recorder::Text(update));
        codes.insert(update.GetOpCode());
        const UDMItemHandle& subject = update.GetUDMHandle();
        if (!subject.IsEmpty()) {
            touched.insert(Base(subject));
        }
        switch (update.GetOpCode()) {
            case SIGNAL_REVISION_ADVANCED:
                newest[Base(update.GetUDMHandle())] = update.GetUDMHandle().GetRevision();
                break;
            case SIGNAL_REVISION_UNDONE:
                if (!afterBulkEdit) {
                    EXPECT_EQ(kxString(update.GetUID()),
                              At(update.GetUDMHandle(), newest[Base(update.GetUDMHandle())]));
                }
                newest[Base(update.GetUDMHandle())] = update.GetUDMHandle().GetRevision();
                break;
            case SIGNAL_ENTITY_DELETED:
                newest.erase(UDMUID(update.GetUID()).GetDmUid());
                shown.erase(UDMUID(update.GetUID()).GetDmUid());
                break;
            default:
                break;
        }
        // Last: a call tells what is queued behind this update.
        if (!subject.IsEmpty()) {
            Check(update);
        }
    }

    void Read(const kxString& base) {
        const UDMItemHandle handle = _profile->GetEntity(base);
        Shown& groups = shown[base];
        groups.clear();
        if (handle.GetCdef() == "Foldertype") {
            groups["folder"] = List(handle, "folder");
            return;
        }
        for (const char* group : RevisionModel::GROUPS) {
            groups[group] = List(handle, group);
        }
        groups["attributes"] = {handle.GetAttributeValue("load").GetString(),
                                handle.GetAttributeValue("smd_comment").GetString(),
                                handle.IsEditable() ? "editable" : "published"};
    }
    // What was told since the last call is read again.
    void Refresh() {
        for (const kxString& base : std::exchange(touched, {})) {
            if (Sees(_profile, base)) {
                Read(base);
            }
        }
        told.clear();
        codes.clear();
        afterBulkEdit = false;
    }

    std::map<kxString, int> newest;
    std::map<kxString, Shown> shown;
    std::set<kxString> touched;
    std::set<int> codes;
    Names told;
    // What was told may be behind what has happened by then.
    bool afterBulkEdit = false;

  private:
    void Check(const UDMProfileUpdate& update) {
        const UDMItemHandle& subject = update.GetUDMHandle();
        ASSERT_TRUE(Sees(_profile, subject.GetUID())) << Recorder::Text(update);
        const int now = NewestNumber(_profile, subject);
        const bool ofOneRevision =
            update.GetOpCode() == SIGNAL_REVISION_ADVANCED ||
            update.GetOpCode() == SIGNAL_STATE_CHANGED ||
            (afterBulkEdit && (update.GetOpCode() == SIGNAL_CONTENT_CHANGED ||
                               update.GetOpCode() == SIGNAL_REVISION_UNDONE));
        if (!ofOneRevision) {
            EXPECT_EQ(subject.GetRevision(), now) << Recorder::Text(update);
        }
    }
    std::vector<kxString> List(const UDMItemHandle& parent, const kxString& group) {
        kxStlVector<UDMItemHandle> children;
        _profile->GetChildren(children, parent, group, "");
        std::vector<kxString> bases;
        for (const UDMItemHandle& child : children) {
            bases.push_back(Base(child));
        }
        return bases;
    }

    ProfilePtr _profile;
};

}  // namespace kxudm::test
