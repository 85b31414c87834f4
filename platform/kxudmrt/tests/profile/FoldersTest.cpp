#include <kxudm/UDMMaintenance.h>

#include "Library.h"
#include "Revisions.h"

namespace kxudm::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class Folders : public testing::Test {
  protected:
    UDMItemHandle Made(const kxString& path) {
        UDMItemHandle folder;
        ann->GetOrCreateFolder(folder, path, true);
        return folder;
    }
    kxString Path(const UDMItemHandle& folder) {
        kxString path = "something";
        ann->GetFolderFullPath(path, folder);
        return path;
    }

    Library library;
    ProfilePtr ann = library.Open("ann");
};

TEST_F(Folders, AreMadeWithTheirParentsAndFoundByPath) {
    const UDMItemHandle folder = Made("/A/B/C");
    EXPECT_EQ(folder.GetCdef(), "Foldertype");
    EXPECT_EQ(folder.GetDisplayName(), "C");
    EXPECT_EQ(Path(folder), "/A/B/C");
    UDMItemHandle found;
    ann->GetFolder(found, "/A/B/C", false);
    EXPECT_EQ(found.GetUID(), folder.GetUID());
    EXPECT_EQ(Made("/A/B/C").GetUID(), folder.GetUID());
    ann->GetFolder(found, "/A", false);
    EXPECT_THAT(Children(ann, found, "folder"), ElementsAre("B"));
}

TEST_F(Folders, MayLieVeryDeep) {
    constexpr int DEPTH = 3000;
    kxString path;
    for (int i = 0; i < DEPTH; ++i) {
        path += "/d" + std::to_string(i);
    }
    const UDMItemHandle deepest = Made(path);
    EXPECT_EQ(Path(deepest), path);
    UDMItemHandle top;
    ann->GetFolder(top, "/d0", false);
    EXPECT_THAT(Refusal([&] { ann->MoveContent(top, deepest); }), HasSubstr("lies below it"));
}

TEST_F(Folders, AreCreatedOnceAndOnlyBelowOneThatIsThere) {
    UDMItemHandle folder;
    EXPECT_THAT(Refusal<UDMNotFoundException>([&] { ann->CreateFolder(folder, "/A/B"); }),
                HasSubstr("\"A\" is missing"));
    EXPECT_TRUE(folder.IsEmpty());
    ann->CreateFolder(folder, "/A");
    ann->CreateFolder(folder, "/A/B");
    EXPECT_EQ(Path(folder), "/A/B");
    EXPECT_THAT(Refusal([&] { ann->CreateFolder(folder, "/A/B"); }), HasSubstr("there already"));
}

TEST_F(Folders, AreNotMadeWithParentsUnlessAsked) {
    UDMItemHandle folder;
    EXPECT_THROW(ann->GetOrCreateFolder(folder, "/A/B", false), UDMNotFoundException);
    ann->GetOrCreateFolder(folder, "/A", false);
    ann->GetOrCreateFolder(folder, "/A/B", false);
    EXPECT_EQ(Path(folder), "/A/B");
}

TEST_F(Folders, HavePathsWithoutEmptyPartsAndDots) {
    UDMItemHandle folder;
    for (const char* path : {"", "/", "A", "A/B", "//A", "/A/", "/A//B", "/.", "/A/..", "/\xff"}) {
        EXPECT_THROW(ann->GetOrCreateFolder(folder, path, true), UDMException) << path;
        EXPECT_THROW(ann->CreateFolder(folder, path), UDMException) << path;
        EXPECT_THROW(ann->GetFolder(folder, path, false), UDMException) << path;
    }
    for (const char* name : {"", ".", "..", "A/B"}) {
        EXPECT_THROW(ann->CreateEntity("Foldertype", name), UDMException) << name;
    }
    EXPECT_TRUE(folder.IsEmpty());
}

TEST_F(Folders, HaveNamesThatAreByteExactUnlessCaseIsIgnored) {
    const UDMItemHandle lower = Made("/straße/ärger");
    const UDMItemHandle upper = Made("/straße/ÄRGER");
    UDMItemHandle found;
    EXPECT_THROW(ann->GetFolder(found, "/STRASSE/x", false), UDMNotFoundException);
    ann->GetFolder(found, "/Straße/ÄRGER", true);
    EXPECT_EQ(found.GetUID(), upper.GetUID());
    ann->GetFolder(found, "/STRAßE/ärger", true);
    EXPECT_EQ(found.GetUID(), lower.GetUID());
}

TEST_F(Folders, HaveOneNameEachInTheirPlace) {
    const UDMItemHandle a = Made("/A");
    const UDMItemHandle b = Made("/B");
    const UDMItemHandle inner = Made("/A/B");
    EXPECT_THROW(ann->CreateEntity("Foldertype", "A"), UDMException);
    EXPECT_THROW(ann->CreateAndAddChild("Foldertype", "B", a, "folders"), UDMException);
    EXPECT_THROW(ann->MoveContent(b, a), UDMException);
    EXPECT_THROW(ann->SetAttributeValue(b, "name", "A"), UDMException);
    EXPECT_EQ(Path(b), "/B");
    ann->SetAttributeValue(inner, "name", "C");
    EXPECT_EQ(Path(inner), "/A/C");
    ann->MoveContent(b, a);
    EXPECT_EQ(Path(b), "/A/B");
}

TEST_F(Folders, AreSeenByEverybodyAtOnce) {
    const UDMItemHandle folder = Made("/A/B");
    const ProfilePtr bob = library.Open("bob");
    UDMItemHandle found;
    bob->GetFolder(found, "/A/B", false);
    EXPECT_EQ(found.GetUID(), folder.GetUID());
    // Both make the same folder: it is one.
    UDMItemHandle first;
    UDMItemHandle second;
    ann->GetOrCreateFolder(first, "/A/New", true);
    bob->GetOrCreateFolder(second, "/A/New", true);
    EXPECT_EQ(first.GetUID(), second.GetUID());
}

TEST_F(Folders, HoldAContentInOnePlaceOnly) {
    const UDMItemHandle a = Made("/A");
    const UDMItemHandle b = Made("/B");
    const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    ann->MoveContent(part, a);
    EXPECT_EQ(part.GetAttributeValue("smd_folder"), kxVariant("/A"));
    EXPECT_THAT(Parents(ann, part, "folder"), ElementsAre("A"));
    ann->MoveContent(part, b);
    EXPECT_EQ(part.GetAttributeValue("smd_folder"), kxVariant("/B"));
    EXPECT_THAT(Parents(ann, part, "folder"), ElementsAre("B"));
    EXPECT_THAT(Children(ann, a, "folder"), IsEmpty());
    EXPECT_THAT(Children(ann, b, "folder"), ElementsAre("Wheel"));
    // It is no child by ownership.
    EXPECT_TRUE(part.IsRootEntity());
    EXPECT_THAT(Children(ann, b), IsEmpty());
    ann->RemoveChild(b, part);
    EXPECT_TRUE(part.GetAttributeValue("smd_folder").IsEmpty());
}

TEST_F(Folders, TakeChildrenByTheirGroupsAsWell) {
    const UDMItemHandle a = Made("/A");
    ann->CreateAndAddChild("Foldertype", "B", a, "folders");
    ann->CreateAndAddChild("Part", "Wheel", a, "contents");
    EXPECT_THAT(Children(ann, a, "folders"), ElementsAre("B"));
    EXPECT_THAT(Children(ann, a, "contents"), ElementsAre("Wheel"));
    EXPECT_EQ(ann->GetChildCount(a, "contents", ""), 1U);
    EXPECT_THAT(Children(ann, a, "folder"), UnorderedElementsAre("B", "Wheel"));
    UDMItemHandle found;
    ann->GetFolder(found, "/A/B", false);
    EXPECT_THAT(Parents(ann, found, "folders"), ElementsAre("A"));
    EXPECT_THAT(Parents(ann, found, "contents"), IsEmpty());
}

TEST_F(Folders, TakeWhatTheirDefinitionAllows) {
    const UDMItemHandle shelf = ann->CreateEntity("Shelf", "S");
    const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    EXPECT_THAT(Refusal([&] { ann->MoveContent(part, shelf); }), HasSubstr("takes no \"Part\""));
    EXPECT_THROW(ann->MoveContent(part, ann->CreateEntity("Note", "n")), UDMException);
    const UDMItemHandle note = ann->CreateEntity("Note", "m");
    ann->MoveContent(note, shelf);
    EXPECT_THAT(Children(ann, shelf, "notes"), ElementsAre("m"));
}

TEST_F(Folders, NeverFormACycle) {
    const UDMItemHandle a = Made("/A");
    const UDMItemHandle inner = Made("/A/B/C");
    EXPECT_THAT(Refusal([&] { ann->MoveContent(a, inner); }), HasSubstr("lies below"));
    EXPECT_THROW(ann->MoveContent(a, a), UDMException);
    EXPECT_EQ(Path(inner), "/A/B/C");
}

TEST_F(Folders, GoWithoutTheirContents) {
    const UDMItemHandle a = Made("/A");
    const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    ann->MoveContent(part, a);
    ann->DeleteEntity(a, true, false);
    EXPECT_TRUE(ann->GetEntity(part.GetUID()).GetAttributeValue("smd_folder").IsEmpty());
    UDMItemHandle found;
    EXPECT_THROW(ann->GetFolder(found, "/A", false), UDMNotFoundException);
    // The name is free again.
    ann->CreateFolder(found, "/A");
}

TEST_F(Folders, StayWhereTheirFoldersWouldMeetANamesakeAtTheTop) {
    const UDMItemHandle top = Made("/X");
    Made("/A/X");
    UDMItemHandle going = Made("/A");
    EXPECT_THAT(Refusal([&] { ann->DeleteEntity(going, true, false); }), HasSubstr("\"X\""));
    EXPECT_EQ(Path(going), "/A");
    ann->DeleteEntity(top, true, false);
    ann->DeleteEntity(going, true, false);
    UDMItemHandle lifted;
    ann->GetFolder(lifted, "/X", false);
    EXPECT_EQ(Path(lifted), "/X");
}

TEST_F(Folders, MayGoWhenOneInThemBearsTheirOwnName) {
    Made("/X/X");
    const UDMItemHandle outer = Made("/X");
    ann->DeleteEntity(outer, true, false);
    EXPECT_EQ(Path(Made("/X")), "/X");
}

TEST_F(Folders, ThePathOfAContentIsAnError) {
    kxString path;
    const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    EXPECT_THAT(Refusal([&] { ann->GetFolderFullPath(path, part); }), HasSubstr("no folder"));
}

class Classifications : public testing::Test {
  protected:
    Names Roots(const ProfilePtr& profile) {
        kxStlVector<UDMItemHandle> out;
        profile->GetClassifications(out, "");
        return DisplayNames(out);
    }

    Library library;
    ProfilePtr ann = library.Open("ann");
    UDMItemHandle metals = ann->CreateEntity("Categories", "Metals");
    UDMItemHandle steels = ann->CreateEntity("Categories", "Steels");
    UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
};

TEST_F(Classifications, HoldAnyNumberOfContentsEachUnderAnyNumber) {
    ann->AddClassification(part, metals);
    ann->AddClassification(part, steels);
    EXPECT_THAT(Parents(ann, part, "category"), ElementsAre("Metals", "Steels"));
    EXPECT_THAT(Children(ann, metals, "category"), ElementsAre("Wheel"));
    ann->RemoveClassification(part, metals);
    EXPECT_THAT(Parents(ann, part, "category"), ElementsAre("Steels"));
    EXPECT_THAT(Refusal<UDMNotFoundException>([&] { ann->RemoveClassification(part, metals); }),
                HasSubstr("not under"));
}

TEST_F(Classifications, HoldAContentOnce) {
    ann->AddClassification(part, metals);
    EXPECT_THAT(Refusal([&] { ann->AddClassification(part, metals); }), HasSubstr("already"));
    EXPECT_EQ(ann->GetChildCount(metals, "category", ""), 1U);
}

TEST_F(Classifications, WithoutOneAboveThemAreTheRoots) {
    EXPECT_THAT(Roots(ann), ElementsAre("Metals", "Steels"));
    ann->AddClassification(steels, metals);
    EXPECT_THAT(Roots(ann), ElementsAre("Metals"));
    EXPECT_THAT(Refusal([&] { ann->AddClassification(metals, steels); }), HasSubstr("lies below"));
}

TEST_F(Classifications, S1_OfSomebodyElseAreNotSeenBeforeTheyArePublished) {
    EXPECT_THAT(Roots(library.Open("bob")), IsEmpty());
}

TEST_F(Classifications, AreMasterOnesOnceTheyAreToldSo) {
    const auto isMaster = [&](const UDMItemHandle& handle) {
        return handle.GetReader<ClassificationReader, UDMItemHandle>().IsMaster();
    };
    EXPECT_FALSE(isMaster(metals));
    ann->SetMaster(metals, true);
    EXPECT_TRUE(isMaster(metals));
    EXPECT_FALSE(isMaster(steels));
    UDMProfileMgr::DiscardProfile(ann);
    const ProfilePtr again = library.Open("ann");
    EXPECT_TRUE(isMaster(again->GetEntity(metals.GetUID())));
    again->SetMaster(again->GetEntity(metals.GetUID()), false);
    EXPECT_FALSE(isMaster(again->GetEntity(metals.GetUID())));
}

TEST_F(Classifications, AreMasterOnesWithoutAnAttributeThatTheirDefinitionDeclaresToo) {
    ann->SetMaster(metals, true);
    EXPECT_THAT(UDMMaintenance(ann).Verify(), IsEmpty());
    Publish(ann, metals, "", true);
    ann->SetMaster(Newest(ann, metals), false);
    EXPECT_THAT(UDMMaintenance(ann).Verify(), IsEmpty());
    const UDMItemHandle first = ann->GetEntity(At(metals, 1));
    const auto reader = first.GetReader<ClassificationReader, UDMItemHandle>();
    EXPECT_TRUE(reader.IsMaster());
}

TEST_F(Classifications, OfTheShippedCatalogueAreFoundByTheirKind) {
    Library other;
    Parameters params = other.Params("ann", "desk");
    params["UDMConfigFile"] = KXUDMRT_SHIPPED_CATALOGUE;
    const ProfilePtr session = other.Keep(UDMProfileMgr::GetProfile(params));
    const UDMItemHandle master = session->CreateEntity("Categories", "Metals");
    static_cast<void>(session->CreateEntity("Categories", "Steels"));
    session->SetMaster(master, true);
    kxStlVector<UDMItemHandle> hits;
    session->RunQuery(hits, "attrib.smd_cattype == master", -1, 0, 0, {}, false, false);
    EXPECT_THAT(DisplayNames(hits), ElementsAre("Metals"));
    EXPECT_THROW(session->SetAttributeValue(master, "smd_cattype", "other"), UDMException);
}

TEST_F(Classifications, AreNothingElse) {
    EXPECT_THROW(ann->SetMaster(part, true), UDMException);
    EXPECT_THROW(ann->AddClassification(metals, part), UDMException);
    EXPECT_THROW((part.GetReader<ClassificationReader, UDMItemHandle>()), UDMInvalidArgException);
}

}  // namespace
}  // namespace kxudm::test
