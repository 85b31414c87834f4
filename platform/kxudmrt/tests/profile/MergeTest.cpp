// Entities copied into another library by UDMKXMergeToCatalog.
#include <kxudm/UDMKXMergeToCatalog.h>
#include <kxudm/UDMMaintenance.h>
#include <kxudm/UDMProgress.h>
#include <kxudm/UDMQuerySettings.h>

#include "Files.h"
#include "Maintained.h"

namespace kxudm::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

using Groups = kxStlMap<UDMUID, kxStlVector<kxString>>;
using Uids = kxStlVector<UDMUID>;
using Handles = kxStlVector<UDMItemHandle>;

class Merging : public Files {
  protected:
    [[nodiscard]] Parameters TargetParams(const std::string& user = "bob") const {
        Parameters params = library.Params(user);
        params["RepositoryName"] = "Shared";
        params["RepositoryBaseDir"] = TargetDirectory();
        return params;
    }
    [[nodiscard]] std::string TargetDirectory() const { return library.Folder().File("shared"); }

    boost::shared_ptr<UDMKXMergeToCatalog> Engine(const kxString& folder = "/Merged",
                                                  const kxString& comment = "merged") {
        boost::shared_ptr<UDMKXMergeToCatalog> engine;
        EXPECT_EQ(UDMKXMergeToCatalog::CreateInstance(engine, "Shared", folder, ann, comment),
                  UDMResult::Ok);
        return engine;
    }
    Handles Merge(const UDMItemHandle& entity, bool publish = false) {
        return Engine()->merge(Uids{UDMUID(Base(entity))}, publish);
    }
    Handles MergeGroups(const UDMItemHandle& entity, const kxStlVector<kxString>& groups) {
        return Engine()->merge(Groups{{UDMUID(Base(entity)), groups}}, false);
    }
    // Published, with a file, in a folder.
    UDMItemHandle Wheel() {
        const UDMItemHandle wheel = Part("Wheel");
        ann->SetAttributeValue(wheel, "mass", 4.5);
        Put(wheel, "wheel.inp", "deck");
        UDMItemHandle folder;
        ann->GetOrCreateFolder(folder, "/Own", true);
        ann->MoveContent(wheel, folder);
        return Publish(ann, wheel, "first");
    }
    // What is in the target, by name.
    Names InTarget() {
        UDMQuerySettingHandle settings;
        kxStlVector<UDMItemHandle> hits;
        bob->RunQuery(hits, "name like \"*\"", -1, 0, 0, settings, false, false);
        Names names = DisplayNames(hits);
        std::sort(names.begin(), names.end());
        return names;
    }
    kxString FolderOf(const UDMItemHandle& handle) {
        return bob->GetEntity(Base(handle)).GetAttributeValue("smd_folder").GetString();
    }
    // Nothing is wrong in the target, and nothing is left over.
    void ExpectSound() {
        EXPECT_THAT(Texts(UDMMaintenance(bob).Verify(AT_ONCE)), IsEmpty());
        EXPECT_THAT(FilesIn(TargetDirectory() + "/vault/tmp"), IsEmpty());
    }

    ProfilePtr bob = library.Keep(UDMProfileMgr::GetProfile(TargetParams()));
};

TEST_F(Merging, G1_CopiesAllPublishedRevisionsUnderTheirUids) {
    const UDMItemHandle wheel = Wheel();
    ann->SetAttributeValue(CheckOut(ann, wheel), "mass", 5.0);
    Publish(ann, wheel, "second");
    const Handles merged = Merge(wheel);
    ASSERT_EQ(merged.size(), 1U);
    EXPECT_EQ(merged[0].GetUID(), At(wheel, 2));
    const UDMItemHandle copy = Newest(bob, wheel);
    EXPECT_EQ(copy.GetUID(), At(wheel, 2));
    EXPECT_EQ(copy.GetAttributeValue("mass"), kxVariant(5.0));
    EXPECT_EQ(copy.GetAttributeValue("smd_comment"), kxVariant("second"));
    EXPECT_EQ(bob->GetEntity(At(wheel, 1)).GetAttributeValue("mass"), kxVariant(4.5));
    EXPECT_THAT(Versions(bob, copy), ElementsAre(1, 2));
    EXPECT_THAT(Contents(bob, copy), ElementsAre("wheel.inp=deck"));
    ExpectSound();
}

TEST_F(Merging, G3_PutsTheCopyIntoTheFolderWhichIsMade) {
    const UDMItemHandle wheel = Wheel();
    Engine("/Merged/By Ann")->merge(Uids{UDMUID(Base(wheel))}, false);
    EXPECT_EQ(FolderOf(wheel), "/Merged/By Ann");
    EXPECT_THAT(InTarget(), ElementsAre("By Ann", "Merged", "Wheel"));
    // That of the source stays where it is.
    EXPECT_EQ(Newest(ann, wheel).GetAttributeValue("smd_folder"), kxVariant("/Own"));
    ExpectSound();
}

TEST_F(Merging, G3_WithoutAFolderTheCopyLiesAtTheTop) {
    const UDMItemHandle wheel = Wheel();
    Engine("")->merge(Uids{UDMUID(Base(wheel))}, false);
    EXPECT_EQ(FolderOf(wheel), "");
    EXPECT_THAT(InTarget(), ElementsAre("Wheel"));
}

TEST_F(Merging, G9_HandlesAreThoseOfTheTargetAndGoodForWork) {
    const UDMItemHandle wheel = Wheel();
    const UDMItemHandle copy = Merge(wheel)[0];
    EXPECT_EQ(copy.GetAttributeValue("smd_folder"), kxVariant("/Merged"));
    // Of a session there for the same user in the same workspace.
    bob->Checkout(Newest(bob, wheel), "mine");
    EXPECT_FALSE(copy.IsEditable());
    EXPECT_EQ(NewestNumber(ann, wheel), 1);
}

TEST_F(Merging, G9_TheTargetStaysOpenAsLongAsTheSource) {
    const UDMItemHandle wheel = Wheel();
    ProfilePtr source = UDMProfileMgr::GetProfile(library.Params("ann"));
    boost::shared_ptr<UDMKXMergeToCatalog> engine;
    UDMKXMergeToCatalog::CreateInstance(engine, "Shared", "/M", source, "");
    const UDMItemHandle copy = engine->merge(Uids{UDMUID(Base(wheel))}, false)[0];
    engine.reset();
    EXPECT_THAT(copy.GetAttributeValue("smd_folder"), kxVariant("/M"));
    UDMProfileMgr::DiscardProfile(source);
    // Everything is closed, so the library may go.
    UDMProfileMgr::DiscardProfile(bob);
    UDMProfileMgr::DeleteRepository(TargetParams(), true, false);
    EXPECT_FALSE(std::filesystem::exists(TargetDirectory() + "/Shared.ldb"));
}

TEST_F(Merging, G4_MergingTwiceAddsNothing) {
    const UDMItemHandle wheel = Wheel();
    Merge(wheel);
    const Names before = InTarget();
    Listening listening(bob);
    const Handles merged = Merge(wheel);
    ASSERT_EQ(merged.size(), 1U);
    EXPECT_EQ(merged[0].GetUID(), At(wheel, 1));
    EXPECT_EQ(InTarget(), before);
    EXPECT_THAT(Versions(bob, Newest(bob, wheel)), ElementsAre(1));
    EXPECT_THAT(listening.Take(), IsEmpty());
    ExpectSound();
}

TEST_F(Merging, G4_NewerRevisionsAreAppendedAndStayInTheFolder) {
    const UDMItemHandle wheel = Wheel();
    Merge(wheel);
    CheckOut(ann, wheel);
    PutAgain(Newest(ann, wheel), "wheel.inp", "newer");
    Publish(ann, wheel);
    EXPECT_EQ(Merge(wheel)[0].GetUID(), At(wheel, 2));
    EXPECT_THAT(Versions(bob, Newest(bob, wheel)), ElementsAre(1, 2));
    EXPECT_THAT(Contents(bob, Newest(bob, wheel)), ElementsAre("wheel.inp=newer"));
    EXPECT_EQ(FolderOf(wheel), "/Merged");
    ExpectSound();
}

TEST_F(Merging, G3_ACopyThatWasMovedInTheTargetStaysThere) {
    const UDMItemHandle wheel = Wheel();
    Merge(wheel);
    UDMItemHandle folder;
    bob->GetOrCreateFolder(folder, "/Chosen", true);
    bob->MoveContent(CheckOut(bob, wheel), folder);
    Publish(bob, wheel);
    Merge(wheel);
    EXPECT_EQ(FolderOf(wheel), "/Chosen");
    EXPECT_THAT(Versions(bob, Newest(bob, wheel)), ElementsAre(1, 2));
}

TEST_F(Merging, G3_ACopyInAFolderThatWasDeletedInTheTargetStaysThere) {
    const UDMItemHandle wheel = Wheel();
    Merge(wheel);
    UDMItemHandle folder;
    bob->GetOrCreateFolder(folder, "/Merged", true);
    bob->DeleteEntity(folder, false, false);
    Engine("/Other")->merge(Uids{UDMUID(Base(wheel))}, false);
    EXPECT_TRUE(UDMMaintenance(bob).Undelete(Base(folder)));
    EXPECT_EQ(FolderOf(wheel), "/Merged");
    EXPECT_THAT(UDMMaintenance(bob).Verify(), IsEmpty());
}

TEST_F(Merging, G5_WhatBothWentOnWithBecomesABranch) {
    const UDMItemHandle wheel = Wheel();
    Merge(wheel);
    bob->SetAttributeValue(CheckOut(bob, wheel), "mass", 7.0);
    Publish(bob, wheel);
    ann->SetAttributeValue(CheckOut(ann, wheel), "mass", 8.0);
    Publish(ann, wheel);
    const UDMItemHandle branch = Merge(wheel)[0];
    EXPECT_NE(Base(branch), Base(wheel));
    EXPECT_EQ(branch.GetAttributeValue("mass"), kxVariant(8.0));
    EXPECT_EQ(Newest(bob, wheel).GetAttributeValue("mass"), kxVariant(7.0));
    // Again, nothing is doubled.
    EXPECT_EQ(Base(Merge(wheel)[0]), Base(branch));
    EXPECT_EQ(InTarget().size(), 3U);
    ExpectSound();
}

class MergingATree : public Merging {
  protected:
    MergingATree() {
        Put(drawing, "front.dwg", "lines");
        Publish(ann, bolt);
        Publish(ann, nut);
        Publish(ann, drawing);
        Publish(ann, wheel);
    }

    UDMItemHandle wheel = Part("Wheel");
    UDMItemHandle drawing = ann->CreateAndAddChild("Drawing", "Front", wheel, "drawings");
    UDMItemHandle nut = ann->CreateAndAddChild("Part", "Nut", wheel, "parts");
    UDMItemHandle bolt = ann->CreateAndAddChild("Part", "Bolt", nut, "parts");
};

TEST_F(MergingATree, G2_BringsWhatIsOwnedAtAnyDepth) {
    EXPECT_EQ(Merge(wheel).size(), 1U);
    EXPECT_THAT(InTarget(), ElementsAre("Bolt", "Front", "Merged", "Nut", "Wheel"));
    EXPECT_THAT(Children(bob, Newest(bob, wheel)), ElementsAre("Front", "Nut"));
    EXPECT_THAT(Children(bob, Newest(bob, nut)), ElementsAre("Bolt"));
    EXPECT_THAT(Contents(bob, Newest(bob, drawing)), ElementsAre("front.dwg=lines"));
    // The place is that of what was named.
    EXPECT_EQ(FolderOf(nut), "");
    ExpectSound();
}

TEST_F(MergingATree, G2_BringsTheNamedGroupsOnly) {
    MergeGroups(wheel, {"parts"});
    EXPECT_THAT(InTarget(), ElementsAre("Bolt", "Merged", "Nut", "Wheel"));
    EXPECT_THAT(Children(bob, Newest(bob, wheel)), ElementsAre("Nut"));
    ExpectSound();
    // The rest comes later, and nothing twice.
    MergeGroups(wheel, {});
    EXPECT_THAT(InTarget(), ElementsAre("Bolt", "Front", "Merged", "Nut", "Wheel"));
    EXPECT_THAT(Children(bob, Newest(bob, wheel)), UnorderedElementsAre("Front", "Nut"));
    ExpectSound();
}

TEST_F(MergingATree, G2_BringsReferencesIfTheirGroupIsNamed) {
    const UDMItemHandle hub = Published(ann, "Hub");
    ann->AddChild(CheckOut(ann, wheel), hub, "uses");
    Publish(ann, wheel);
    Merge(wheel);
    EXPECT_FALSE(Sees(bob, Base(hub)));
    MergeGroups(wheel, {"uses"});
    EXPECT_TRUE(Sees(bob, Base(hub)));
    EXPECT_THAT(Children(bob, Newest(bob, wheel), "uses"), ElementsAre("Hub"));
    ExpectSound();
}

TEST_F(MergingATree, G2_AnUnknownGroupIsRefused) {
    EXPECT_THAT(Refusal([&] { MergeGroups(wheel, {"wings"}); }), HasSubstr("wings"));
    EXPECT_THAT(InTarget(), IsEmpty());
}

TEST_F(MergingATree, G2_EachEntityComesOnceThoughItIsNamedTwice) {
    const Handles merged =
        Engine()->merge(Uids{UDMUID(Base(nut)), UDMUID(Base(wheel)), UDMUID(At(nut, 1))}, false);
    ASSERT_EQ(merged.size(), 3U);
    EXPECT_THAT(DisplayNames(merged), ElementsAre("Nut", "Wheel", "Nut"));
    EXPECT_THAT(InTarget(), ElementsAre("Bolt", "Front", "Merged", "Nut", "Wheel"));
    ExpectSound();
}

TEST_F(Merging, OfNothingDoesNothing) {
    EXPECT_THAT(Engine()->merge(Uids(), true), IsEmpty());
    EXPECT_THAT(Engine()->merge(Groups(), true), IsEmpty());
    EXPECT_THAT(InTarget(), IsEmpty());
}

TEST_F(Merging, G6_WhatWasNeverPublishedIsRefused) {
    const UDMItemHandle wheel = Part();
    EXPECT_EQ(Refusal([&] { Merge(wheel); }),
              "Part " + At(wheel, 0) +
                  " was never published, so that it can't be merged; publish it first, or merge "
                  "with publishing");
    EXPECT_THAT(InTarget(), IsEmpty());
    ExpectSound();
}

TEST_F(Merging, G7_WithPublishingWhatIsInWorkIsPublishedWithTheComment) {
    const UDMItemHandle wheel = Part();
    const UDMItemHandle nut = ann->CreateAndAddChild("Part", "Nut", wheel, "parts");
    EXPECT_EQ(Merge(wheel, true)[0].GetUID(), At(wheel, 1));
    for (const ProfilePtr& profile : {ann, bob}) {
        EXPECT_EQ(NewestNumber(profile, nut), 1);
        EXPECT_EQ(Newest(profile, wheel).GetAttributeValue("smd_comment"), kxVariant("merged"));
        EXPECT_THAT(Children(profile, Newest(profile, wheel)), ElementsAre("Nut"));
    }
    // And what is published already is not published again.
    Merge(wheel, true);
    EXPECT_EQ(NewestNumber(ann, wheel), 1);
    ExpectSound();
}

TEST_F(Merging, G6_WithoutPublishingWhatIsInWorkStaysBehind) {
    const UDMItemHandle wheel = Wheel();
    ann->SetAttributeValue(CheckOut(ann, wheel), "mass", 9.0);
    EXPECT_EQ(Merge(wheel)[0].GetUID(), At(wheel, 1));
    EXPECT_EQ(Newest(bob, wheel).GetAttributeValue("mass"), kxVariant(4.5));
    EXPECT_EQ(NewestNumber(ann, wheel), 2);
}

TEST_F(Merging, G7_IfOneCantBePublishedNoneIs) {
    const UDMItemHandle wheel = Part();
    const UDMItemHandle order = ann->CreateEntity("Order", "Order");
    EXPECT_NE(ErrorOf([&] {
                  Engine()->merge(Uids{UDMUID(Base(wheel)), UDMUID(Base(order))}, true);
              }),
              "");
    EXPECT_EQ(NewestNumber(ann, wheel), 0);
    EXPECT_THAT(InTarget(), IsEmpty());
    ExpectSound();
}

TEST_F(Merging, G8_AFailureLeavesTheTargetAsItWas) {
    const UDMItemHandle wheel = Wheel();
    const UDMItemHandle annex = Published(ann, "Metals", "Categories");
    // No folder takes a classification.
    EXPECT_THAT(Refusal([&] {
                    Engine()->merge(Uids{UDMUID(Base(wheel)), UDMUID(Base(annex))}, false);
                }),
                HasSubstr("takes no \"Categories\""));
    EXPECT_THAT(InTarget(), IsEmpty());
    EXPECT_THAT(FilesIn(TargetDirectory() + "/vault/tmp"), IsEmpty());
    Merge(wheel);
    EXPECT_THAT(InTarget(), ElementsAre("Merged", "Wheel"));
}

class Cancelling : public IUDMProgressListener {
  public:
    explicit Cancelling(int after) : _left(after) {}
    bool Advance(const UDMProgress&) override { return --_left >= 0; }
    [[nodiscard]] bool WasHeard() const { return _left < 0; }

  private:
    int _left;
};

TEST_F(Merging, G8_ItsListenerMayEndItAtAnyTime) {
    const UDMItemHandle wheel = Wheel();
    for (int after = 0; after < 100; ++after) {
        Cancelling listener(after);
        {
            const UDMProgressScope scope(ann, listener);
            try {
                Merge(wheel);
            } catch (const UDMCancelledException&) {
                EXPECT_THAT(InTarget(), IsEmpty());
                continue;
            }
        }
        EXPECT_FALSE(listener.WasHeard());
        EXPECT_GT(after, 3);
        EXPECT_THAT(InTarget(), ElementsAre("Merged", "Wheel"));
        ExpectSound();
        return;
    }
    FAIL() << "never came to its end";
}

TEST_F(Merging, G10_WhatTheTargetHasDeletedIsNotBroughtBack) {
    const UDMItemHandle wheel = Wheel();
    Merge(wheel);
    bob->DeleteEntity(Newest(bob, wheel), true, true);
    EXPECT_NE(Refusal([&] { Merge(wheel); }), "");
    EXPECT_FALSE(Sees(bob, Base(wheel)));
}

TEST_F(Merging, G11_TheOtherSessionsOnTheTargetAreTold) {
    const UDMItemHandle wheel = Wheel();
    UDMItemHandle folder;
    bob->GetOrCreateFolder(folder, "/Merged", true);
    Listening listening(bob);
    Merge(wheel);
    EXPECT_THAT(listening.Take(), testing::Contains("42 Merged:0"));
}

TEST_F(Merging, G9_ALibraryThatCantBeOpenedGivesNoEngine) {
    boost::shared_ptr<UDMKXMergeToCatalog> engine = Engine();
    EXPECT_EQ(UDMKXMergeToCatalog::CreateInstance(engine, "Nowhere", "/F", ann, ""),
              UDMResult::Failed);
    EXPECT_EQ(engine, nullptr);
    UDMProfileMgr::DiscardProfile(bob);
    ProfilePtr other = UDMProfileMgr::GetProfile(library.Params("eve"));
    vault::Folder().Write("x", "");
    std::ofstream(TargetDirectory() + "/Shared.ldb", std::ios::trunc) << "no database";
    EXPECT_EQ(UDMKXMergeToCatalog::CreateInstance(engine, "Shared", "/F", other, ""),
              UDMResult::Failed);
    EXPECT_EQ(engine, nullptr);
    UDMProfileMgr::DiscardProfile(other);
}

TEST_F(Merging, G9_AFolderPathThatIsNoneIsRefusedAtOnce) {
    EXPECT_NE(Refusal([&] { Engine("/A//B"); }), "");
    EXPECT_NE(Refusal([&] { Engine("A"); }), "");
}

TEST_F(Merging, G9_ALibraryIsNotMergedIntoItself) {
    const UDMItemHandle wheel = Wheel();
    boost::shared_ptr<UDMKXMergeToCatalog> engine;
    UDMKXMergeToCatalog::CreateInstance(engine, "Lib", "/M", ann, "");
    ASSERT_NE(engine, nullptr);
    EXPECT_EQ(Refusal([&] { engine->merge(Uids{UDMUID(Base(wheel))}, false); }),
              "The library \"Lib\" can't be merged into itself; name another one");
}

TEST_F(Merging, AfterItsSessionWasClosedAnEngineRefuses) {
    const UDMItemHandle wheel = Wheel();
    const auto engine = Engine();
    UDMProfileMgr::DiscardProfile(ann);
    EXPECT_NE(Refusal([&] { engine->merge(Uids{UDMUID(Base(wheel))}, false); }), "");
}

}  // namespace
}  // namespace kxudm::test
