// The life of revisions between processes.
#include <set>

#include "ChildProcess.h"
#include "Revisions.h"

namespace kxudm::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class RevisionProcesses : public testing::Test {
  protected:
    // The first content that lies in the folder "/Shared".
    static UDMItemHandle Shared(const ProfilePtr& profile) {
        UDMItemHandle folder;
        profile->GetFolder(folder, "/Shared", false);
        kxStlVector<UDMItemHandle> contents;
        profile->GetChildren(contents, folder, "folder", "");
        return contents.at(0);
    }
    // Makes a published content there.
    UDMItemHandle Prepare(const ProfilePtr& profile) {
        UDMItemHandle folder;
        profile->CreateFolder(folder, "/Shared");
        return Publish(profile, profile->CreateAndAddChild("Part", "Wheel", folder, "contents"));
    }
    std::function<void(int)> As(const std::string& user,
                                const std::function<void(const ProfilePtr&, int)>& work) {
        return [this, user, work](int out) {
            ProfilePtr profile = UDMProfileMgr::GetProfile(library.Params(user));
            work(profile, out);
            UDMProfileMgr::DiscardProfile(profile);
        };
    }

    Library library;
};

TEST_F(RevisionProcesses, S5_ACheckOutOfAnotherProcessIsALock) {
    Child child(As("bob", [&](const ProfilePtr& bob, int) { CheckOut(bob, Shared(bob)); }));
    const ProfilePtr ann = library.Open("ann");
    const UDMItemHandle one = Prepare(ann);
    child.Go();
    ASSERT_EQ(child.Wait(), 0);
    // The lock outlives the session that took it.
    EXPECT_THAT(Refusal([&] { ann->Checkout(one, ""); }),
                HasSubstr("bob has it checked out in workspace 'desk' since"));
    EXPECT_EQ(NewestNumber(ann, one), 1);
    EXPECT_THAT(Versions(ann, one), ElementsAre(1));
}

TEST_F(RevisionProcesses, N20_EachStepOfAnotherUserIsToldAtTheNextCall) {
    Child child(As("bob", [&](const ProfilePtr& bob, int) {
        const UDMItemHandle two = CheckOut(bob, Shared(bob));
        bob->SetAttributeValue(two, "mass", 7.0);
        bob->SaveEntity(two, "x", true);
        Publish(bob, two, "", true);
        bob->UndoCheckout(Newest(bob, two));
    }));
    const ProfilePtr ann = library.Open("ann");
    const UDMItemHandle one = Prepare(ann);
    const auto told = Listen(ann);
    child.Go();
    ASSERT_EQ(child.Wait(), 0);
    EXPECT_THAT(told->Take(), IsEmpty());
    UDMProfileMgr::DispatchUpdates();
    EXPECT_THAT(told->Take(), ElementsAre("10 Wheel", "5 Wheel", "10 Wheel"));
    EXPECT_EQ(told->updates[0].GetUDMHandle().GetRevision(), 1);
    EXPECT_EQ(told->updates[1].GetUDMHandle().GetRevision(), 2);
    EXPECT_EQ(told->updates[2].GetUDMHandle().GetRevision(), 2);
    EXPECT_EQ(Newest(ann, one).GetAttributeValue("mass"), kxVariant(7.0));
    EXPECT_EQ(one.GetAttributeValue("mass"), kxVariant(1.5));
}

TEST_F(RevisionProcesses, N20_EachStepOfTheOwnWorkspaceIsToldAtTheNextCall) {
    Child child(As("ann", [&](const ProfilePtr& other, int) {
        const UDMItemHandle two = CheckOut(other, Shared(other));
        other->SetAttributeValue(two, "mass", 7.0);
    }));
    Child undo(As("ann", [&](const ProfilePtr& other, int) {
        other->UndoCheckout(Newest(other, Shared(other)));
    }));
    const ProfilePtr ann = library.Open("ann");
    const UDMItemHandle one = Prepare(ann);
    const auto told = Listen(ann);
    child.Go();
    ASSERT_EQ(child.Wait(), 0);
    const UDMItemHandle two = Newest(ann, one);
    EXPECT_EQ(two.GetRevision(), 2);
    EXPECT_TRUE(two.IsEditable());
    EXPECT_EQ(two.GetAttributeValue("mass"), kxVariant(7.0));
    EXPECT_THAT(told->Take(), ElementsAre("5 Wheel", "3 Wheel"));
    undo.Go();
    ASSERT_EQ(undo.Wait(), 0);
    UDMProfileMgr::DispatchUpdates();
    EXPECT_THAT(told->Take(), ElementsAre("39 Wheel"));
    EXPECT_EQ(told->updates.back().GetUDMHandle().GetUID(), one.GetUID());
    EXPECT_EQ(kxString(told->updates.back().GetUID()), two.GetUID());
    EXPECT_FALSE(two.IsEditable());
    EXPECT_EQ(NewestNumber(ann, one), 1);
}

TEST_F(RevisionProcesses, S10_ALostRaceForTheNewestRevisionIsNoBranch) {
    Child child(
        As("bob", [&](const ProfilePtr& bob, int) { Publish(bob, CheckOut(bob, Shared(bob))); }));
    const ProfilePtr ann = library.Open("ann");
    const UDMItemHandle one = Prepare(ann);
    child.Go();
    ASSERT_EQ(child.Wait(), 0);
    // For ann it is the newest until this very call.
    EXPECT_THAT(Refusal([&] { ann->Checkout(one, ""); }),
                HasSubstr("revision 2 was published meanwhile; look at that and check it out"));
    EXPECT_EQ(NewestNumber(ann, one), 2);
    EXPECT_TRUE(ann->GetHistory(one)->GetBranchList().empty());
    // Now she knows better, and what she asks for is a branch.
    ann->Checkout(one, "");
    EXPECT_EQ(ann->GetHistory(one)->GetBranchList().size(), 1u);
}

TEST_F(RevisionProcesses, S5_OfManyWhoCheckOutAtOnceOneGetsIt) {
    constexpr int PROCESSES = 4;
    std::vector<std::unique_ptr<Child>> children;
    for (int i = 0; i < PROCESSES; ++i) {
        const std::string user = "user" + std::to_string(i);
        children.push_back(
            std::make_unique<Child>(As(user, [&, user](const ProfilePtr& profile, int out) {
                try {
                    profile->Checkout(Shared(profile), "");
                    WriteLine(out, "mine");
                } catch (const UDMException& failure) {
                    WriteLine(out, failure.what());
                }
            })));
    }
    const ProfilePtr ann = library.Open("ann");
    const UDMItemHandle one = Prepare(ann);
    for (const auto& child : children) {
        child->Go();
    }
    int mine = 0;
    for (const auto& child : children) {
        const std::string line = child->Line();
        EXPECT_EQ(child->Wait(), 0);
        mine += line == "mine" ? 1 : 0;
        EXPECT_TRUE(line == "mine" || line.find("has it checked out") != std::string::npos) << line;
    }
    EXPECT_EQ(mine, 1);
    EXPECT_THAT(Refusal([&] { ann->Checkout(one, ""); }), HasSubstr("has it checked out"));
}

TEST_F(RevisionProcesses, B15_WhatWasReportedAsPublishedSurvivesTheDeathOfTheProcess) {
    Child child(As("bob", [&](const ProfilePtr& bob, int out) {
        for (UDMItemHandle part = Shared(bob);;) {
            bob->Checkout(part, "");
            part = Newest(bob, part);
            bob->SetAttributeValue(part, "count", part.GetRevision());
            part = Publish(bob, part);
            WriteLine(out, std::to_string(part.GetRevision()));
        }
    }));
    {
        const ProfilePtr ann = UDMProfileMgr::GetProfile(library.Params("ann"));
        Prepare(ann);
        ProfilePtr closing = ann;
        UDMProfileMgr::DiscardProfile(closing);
    }
    child.Go();
    int reported = 0;
    while (reported < 20) {
        reported = std::stoi(child.Line());
    }
    child.Kill();
    EXPECT_EQ(child.Wait(), -SIGKILL);
    const ProfilePtr ann = library.Open("ann");
    const UDMItemHandle newest = Shared(ann);
    EXPECT_GE(newest.GetRevision(), reported);
    for (int revision = 2; revision <= newest.GetRevision(); ++revision) {
        EXPECT_EQ(ann->GetEntity(At(newest, revision)).GetAttributeValue("count"),
                  kxVariant(revision));
    }
    EXPECT_EQ(Versions(ann, newest).size(), static_cast<std::size_t>(newest.GetRevision()));
}

}  // namespace
}  // namespace kxudm::test
