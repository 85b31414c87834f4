// What becomes of each entity of an archive; rows X20 to X36 of docs/exchange-format.md.
#include "Exchange.h"
#include "profile/EntityImport.h"
#include "store/LibraryStore.h"

namespace kxudm::test {
namespace {

using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class Importing : public Exchange {
  protected:
    // Changes the target's, or another's, tables behind everybody's back.
    void Tamper(const std::string& sql) { Tamper(target, sql); }
    static void Tamper(const Library& library, const std::string& sql) {
        providers::OpenLibraryFile(library.File(), 1000)->Connection().Execute(sql);
    }
    static kxString TextOf(const UDMImportReport& report, std::size_t index = 0) {
        return report.entities.at(index).text;
    }
    UDMItemHandle BranchOf(const UDMImportReport& report, std::size_t index = 0) {
        return tom->GetEntity(report.entities.at(index).target);
    }
};

TEST_F(Importing, X20_KeepsUidsHistoryUsersAndTimesOfNewEntities) {
    UDMItemHandle wheel = ann->CreateEntity("Part", "Wheel");
    ann->SaveEntity(wheel, "so far", false);
    wheel = Publish(ann, wheel, "first");
    wheel = Describe(ann, wheel, "second");
    EXPECT_THAT(Outcomes(Carry()), ElementsAre("Wheel new 2"));
    for (const int revision : {1, 2}) {
        const UDMItemHandle was = ann->GetEntity(At(wheel, revision));
        for (const char* name : {"name",
                                 "displayname",
                                 "description",
                                 "mass",
                                 "smd_createduser",
                                 "smd_creatime",
                                 "smd_user",
                                 "smd_ctime",
                                 "smd_comment"}) {
            EXPECT_EQ(There(wheel, revision).GetAttributeValue(name), was.GetAttributeValue(name))
                << name;
        }
    }
    EXPECT_THAT(Versions(tom, There(wheel)), ElementsAre(1, 2));
    EXPECT_FALSE(There(wheel).IsEditable());
}

TEST_F(Importing, X21_LeavesEqualEntitiesAlone) {
    const UDMItemHandle wheel = Describe(ann, Make(ann, "Wheel"), "second");
    Carry();
    const Listening listening(tom);
    EXPECT_THAT(Outcomes(Import()), ElementsAre("Wheel equal 0"));
    Describe(tom, There(wheel), "third");
    EXPECT_THAT(Outcomes(Import()), ElementsAre("Wheel equal 0"));
    EXPECT_EQ(There(wheel).GetRevision(), 3);
}

TEST_F(Importing, X22_AppendsNewerRevisions) {
    UDMItemHandle wheel = ann->CreateEntity("Part", "Wheel");
    const UDMItemHandle hub = Make(ann, "Hub");
    const UDMItemHandle bolt = Make(ann, "Bolt");
    Put(wheel, "kept.inp", "kept");
    Put(wheel, "gone.inp", "gone");
    Put(wheel, "changed.inp", "one");
    ann->AddChild(wheel, hub, "parts");
    ann->AddReference(wheel, bolt, "uses");
    ann->MoveContent(wheel, Folder(ann, "/A"));
    wheel = Publish(ann, wheel);
    Carry();
    wheel = Revise(ann, wheel, [&](const UDMItemHandle& working) {
        ann->RemoveFile(working, "gone.inp");
        ann->ReAddFile(working, sources.Write("changed.inp", "two"), false, false);
        Put(working, "new.inp", "new");
        ann->RemoveChild(working, hub);
        ann->AddChild(working, bolt, "parts");
        ann->MoveContent(working, Folder(ann, "/B"));
    });
    wheel = Describe(ann, wheel, "third");
    EXPECT_THAT(
        Outcomes(Carry()),
        ElementsAre("Wheel appended 2", "Hub equal 0", "Bolt equal 0", "A equal 0", "B new 1"));
    EXPECT_THAT(Contents(tom, There(wheel)),
                ElementsAre("changed.inp=two", "kept.inp=kept", "new.inp=new"));
    EXPECT_THAT(Contents(tom, There(wheel, 1)),
                ElementsAre("changed.inp=one", "gone.inp=gone", "kept.inp=kept"));
    EXPECT_THAT(Children(tom, There(wheel)), ElementsAre("Bolt"));
    EXPECT_THAT(Children(tom, There(wheel, 2)), ElementsAre("Bolt"));
    EXPECT_THAT(Children(tom, There(wheel, 1)), ElementsAre("Hub"));
    EXPECT_THAT(References(tom, There(wheel)), ElementsAre("Bolt"));
    EXPECT_EQ(Attribute(There(wheel), "smd_folder"), "/B");
    EXPECT_EQ(Attribute(There(wheel, 1), "smd_folder"), "/A");
    EXPECT_EQ(Attribute(There(wheel), "description"), "third");
    kxStlVector<UDMItemHandle> hits;
    tom->RunQuery(
        hits, "attrib.description == \"third\"", -1, 0, 0, UDMQuerySettingHandle(), false, false);
    EXPECT_EQ(hits.size(), 1U);
    EXPECT_THAT(Problems(tom, true), IsEmpty());
    EXPECT_TRUE(Exported(tom) == Exported(ann));
}

TEST_F(Importing, X23_AppendsBehindAGapAndLeavesOlderRevisionsOut) {
    UDMItemHandle wheel = ann->CreateEntity("Part", "Wheel");
    const UDMItemHandle hub = Make(ann, "Hub");
    Put(wheel, "wheel.inp", "one");
    ann->AddReference(wheel, hub, "uses");
    wheel = Publish(ann, wheel);
    Carry({}, 1);
    wheel = Describe(ann, wheel, "second");
    wheel = Revise(
        ann, wheel, [&](const UDMItemHandle& working) { ann->RemoveReference(working, hub); });
    EXPECT_THAT(Outcomes(Carry(UidsOf({wheel}), 1)), ElementsAre("Wheel appended 1"));
    EXPECT_THAT(Versions(tom, There(wheel)), ElementsAre(1, 3));
    EXPECT_THAT(References(tom, There(wheel)), IsEmpty());
    EXPECT_THAT(References(tom, There(wheel, 1)), ElementsAre("Hub"));
    EXPECT_THAT(Contents(tom, There(wheel)), ElementsAre("wheel.inp=one"));
    EXPECT_THAT(Outcomes(Carry(UidsOf({wheel}))), ElementsAre("Wheel equal 0"));
    EXPECT_THAT(Versions(tom, There(wheel)), ElementsAre(1, 3));
    EXPECT_THAT(Problems(tom, true), IsEmpty());
    CheckOut(tom, There(wheel));
    EXPECT_EQ(Publish(tom, There(wheel)).GetRevision(), 4);
}

TEST_F(Importing, X24_MakesABranchOfALineThatWentAnotherWay) {
    UDMItemHandle wheel = ann->CreateEntity("Part", "Wheel");
    Put(wheel, "wheel.inp", "one");
    ann->MoveContent(wheel, Folder(ann, "/A"));
    ann->CreateAndAddChild("Drawing", "Front", wheel, "drawings");
    wheel = Publish(ann, wheel);
    wheel = Describe(ann, wheel, "second");
    Carry();
    Describe(tom, There(wheel), "tom's third");
    wheel = Revise(ann, wheel, [&](const UDMItemHandle& working) {
        ann->SetAttributeValue(working, "description", "ann's third");
        ann->ReAddFile(working, sources.Write("wheel.inp", "three"), false, false);
    });
    wheel = Describe(ann, wheel, "ann's fourth");
    const UDMImportReport report = Carry();
    EXPECT_THAT(Outcomes(report), ElementsAre("Wheel branched 2", "A equal 0"));
    EXPECT_EQ(TextOf(report), "revision 3 is another here");
    EXPECT_EQ(Attribute(There(wheel), "description"), "tom's third");
    EXPECT_EQ(There(wheel).GetRevision(), 3);
    const UDMItemHandle branch = BranchOf(report);
    EXPECT_EQ(branch.GetRevision(), 2);
    EXPECT_EQ(Attribute(branch, "description"), "ann's fourth");
    EXPECT_EQ(Attribute(tom->GetEntity(At(branch, 1)), "description"), "ann's third");
    EXPECT_EQ(Attribute(branch, "smd_createduser"), "ann");
    EXPECT_EQ(Attribute(branch, "smd_folder"), "/A");
    EXPECT_THAT(Contents(tom, branch), ElementsAre("wheel.inp=three"));
    EXPECT_THAT(Contents(tom, There(wheel)), ElementsAre("wheel.inp=one"));
    bool found = false;
    const auto history = tom->GetHistory(There(wheel));
    for (const auto& node : history->GetVersionList()) {
        found = found || (node->GetVersion() == 2 && node->GetBranchList().size() == 1);
    }
    EXPECT_TRUE(found) << "the branch doesn't leave revision 2";
    EXPECT_THAT(Problems(tom, true), IsEmpty());
}

TEST_F(Importing, X25_KnowsABranchThatItMadeAndGoesOnWithIt) {
    UDMItemHandle wheel = Make(ann, "Wheel");
    Carry();
    Describe(tom, There(wheel), "tom's");
    wheel = Describe(ann, wheel, "ann's second");
    const UDMImportReport first = Carry();
    const UDMImportReport again = Import();
    EXPECT_THAT(Outcomes(again), ElementsAre("Wheel equal 0"));
    EXPECT_EQ(again.entities[0].target, first.entities[0].target);
    wheel = Describe(ann, wheel, "ann's third");
    const UDMImportReport further = Carry();
    EXPECT_THAT(Outcomes(further), ElementsAre("Wheel appended 1"));
    EXPECT_EQ(further.entities[0].target, first.entities[0].target);
    EXPECT_EQ(Attribute(BranchOf(further), "description"), "ann's third");
    EXPECT_THAT(Problems(tom), IsEmpty());
    // A branch of the branch, where that went on, too.
    Describe(tom, BranchOf(further), "tom's, of the branch");
    Describe(ann, wheel, "ann's fourth");
    const UDMImportReport apart = Carry();
    EXPECT_THAT(Outcomes(apart), ElementsAre("Wheel branched 1"));
    EXPECT_EQ(Attribute(BranchOf(apart), "description"), "ann's fourth");
    EXPECT_EQ(Attribute(BranchOf(apart), "smd_branchfrom"), first.entities[0].target);
    EXPECT_THAT(Outcomes(Import()), ElementsAre("Wheel equal 0"));
    EXPECT_THAT(Problems(tom), IsEmpty());
}

TEST_F(Importing, X26_MakesTheSameBranchInEveryLibrary) {
    UDMItemHandle wheel = Make(ann, "Wheel");
    Carry();
    Library third;
    const ProfilePtr eve = third.Open("eve");
    Import(eve);
    Describe(tom, There(wheel), "tom's");
    Describe(eve, eve->GetEntity(Base(wheel)), "eve's");
    wheel = Describe(ann, wheel, "ann's");
    const kxString here = Carry().entities[0].target;
    const kxString there = Import(eve).entities[0].target;
    EXPECT_EQ(here, there);
    tom->Export(Archive(), {}, 2);
    const UDMImportReport met = Import(eve);
    EXPECT_THAT(Outcomes(met), ElementsAre("Wheel branched 1", "Wheel equal 0"));
    EXPECT_THAT(Problems(eve), IsEmpty());
}

TEST_F(Importing, X27_RefusesALineThatMayNotBranch) {
    const UDMItemHandle bolt = Make(ann, "Bolt");
    UDMItemHandle order = ann->CreateEntity("Order", "Order");
    ann->SetAttributeValue(order, "number", "7");
    kxStlVector<kxString> receivers;
    receivers.push_back("bob");
    ann->SetAttributeValue(order, "receivers", kxVariant(receivers));
    ann->AddChild(order, bolt, "lines");
    ann->AddChild(order, Make(ann, "Nut"), "lines");
    ann->AddReference(order, bolt, "annexes");
    order = Publish(ann, order);
    Carry();
    Describe(tom, There(order), "tom's");
    Describe(ann, order, "ann's");
    const UDMImportReport report = Carry(UidsOf({order}));
    EXPECT_EQ(Outcomes(report).front(), "Bolt equal 0");
    EXPECT_EQ(Outcomes(report).back(), "Nut equal 0");
    EXPECT_THAT(Outcomes(report), testing::Contains("Order refused 0"));
    EXPECT_EQ(Attribute(There(order), "description"), "tom's");
    EXPECT_THAT(Problems(tom, true), IsEmpty());
}

TEST_F(Importing, X28_RefusesNewerRevisionsOfWhatSomebodyHasCheckedOut) {
    UDMItemHandle wheel = ann->CreateEntity("Part", "Wheel");
    const UDMItemHandle hub = Make(ann, "Hub");
    wheel = Publish(ann, wheel);
    Carry();
    const ProfilePtr eve = target.Open("eve", "corner");
    CheckOut(eve, eve->GetEntity(Base(wheel)));
    EXPECT_THAT(Outcomes(Import()), ElementsAre("Wheel equal 0", "Hub equal 0"));
    Revise(
        ann, wheel, [&](const UDMItemHandle& working) { Put(working, "wheel.inp", "of nobody"); });
    Describe(ann, hub, "goes on");
    const UDMImportReport report = Carry();
    EXPECT_THAT(Outcomes(report), ElementsAre("Wheel refused 0", "Hub appended 1"));
    EXPECT_THAT(TextOf(report),
                AllOf(HasSubstr("eve has it checked out in workspace \"corner\" since 20"),
                      HasSubstr("then import again")));
    EXPECT_THAT(Problems(tom, true), IsEmpty());
    eve->UndoCheckout(eve->GetEntity(Base(wheel)));
    EXPECT_THAT(Outcomes(Import()), ElementsAre("Wheel appended 1", "Hub equal 0"));
    EXPECT_THAT(Contents(tom, There(wheel)), ElementsAre("wheel.inp=of nobody"));
}

TEST_F(Importing, X29_MakesABranchBesideACheckOut) {
    UDMItemHandle wheel = Make(ann, "Wheel");
    Carry();
    Describe(tom, There(wheel), "tom's");
    CheckOut(tom, There(wheel));
    Describe(ann, wheel, "ann's");
    EXPECT_THAT(Outcomes(Carry()), ElementsAre("Wheel branched 1"));
    EXPECT_TRUE(There(wheel).IsEditable());
    EXPECT_THAT(Problems(tom), IsEmpty());
}

TEST_F(Importing, X30_RefusesWhatWasNeverPublishedHere) {
    const UDMItemHandle wheel = Make(ann, "Wheel");
    Export();
    CheckOut(tom, [&] {
        Import();
        return There(wheel);
    }());
    Tamper(
        "DELETE FROM revision WHERE state = 1; UPDATE revision SET id = id - 2;"
        "UPDATE entity SET published = NULL, working = 0");
    const ProfilePtr eve = target.Open("eve");
    const UDMImportReport report = Import(eve);
    EXPECT_THAT(Outcomes(report), ElementsAre("Wheel refused 0"));
    EXPECT_THAT(TextOf(report),
                HasSubstr("never published here: tom has it checked out in workspace \"bench\""));
}

TEST_F(Importing, X31_RefusesWhatWasDeletedHereAndLeavesOutItsLinks) {
    UDMItemHandle wheel = ann->CreateEntity("Part", "Wheel");
    const UDMItemHandle hub = Make(ann, "Hub");
    ann->AddChild(wheel, hub, "parts");
    wheel = Publish(ann, wheel);
    Carry(UidsOf({hub}));
    tom->DeleteEntity(There(hub), true, false);
    const UDMImportReport report = Carry();
    EXPECT_THAT(Outcomes(report), ElementsAre("Wheel new 1", "Hub refused 0"));
    EXPECT_THAT(TextOf(report, 1), HasSubstr("it was deleted here"));
    EXPECT_THAT(Children(tom, There(wheel)), IsEmpty());
    EXPECT_THAT(Problems(tom), IsEmpty());
    ASSERT_TRUE(UDMMaintenance(tom).Undelete(Base(hub)));
    EXPECT_THAT(Outcomes(Import()), ElementsAre("Wheel equal 0", "Hub equal 0"));
    EXPECT_THAT(Children(tom, There(wheel)), ElementsAre("Hub"));
}

TEST_F(Importing, X32_RefusesWhatIsOfAnotherDefinitionHere) {
    const UDMItemHandle wheel = Make(ann, "Wheel");
    Carry();
    tom.reset();
    Tamper("UPDATE entity SET definition = 'Drawing'");
    const ProfilePtr eve = target.Open("eve");
    const UDMImportReport report = Import(eve);
    EXPECT_THAT(Outcomes(report), ElementsAre("Wheel refused 0"));
    EXPECT_EQ(TextOf(report), "it is a \"Drawing\" here and a \"Part\" in the archive");
}

TEST_F(Importing, X33_KeepsWhatHasNoRevisionsAsItIs) {
    const UDMItemHandle note = ann->CreateEntity("Note", "Note");
    const UDMItemHandle other = ann->CreateEntity("Note", "Other");
    ann->AddReference(note, other, "see");
    Carry();
    tom->RemoveReference(There(note), There(other));
    tom->SetAttributeValue(There(other), "text", "tom's");
    const UDMImportReport report = Import();
    EXPECT_THAT(Outcomes(report), ElementsAre("Note kept 0", "Other kept 0"));
    EXPECT_EQ(TextOf(report, 1), "it has no revisions and stays as it is here");
    EXPECT_EQ(Attribute(There(other), "text"), "tom's");
    EXPECT_THAT(References(tom, There(note)), IsEmpty());
}

TEST_F(Importing, X34_PutsContentsIntoTheFolderOfTheSamePath) {
    UDMItemHandle wheel = ann->CreateEntity("Part", "Wheel");
    ann->MoveContent(wheel, Folder(ann, "/A/B/C"));
    wheel = Publish(ann, wheel);
    const UDMItemHandle there = Folder(tom, "/A/B");
    const UDMImportReport report = Carry();
    EXPECT_THAT(Outcomes(report),
                UnorderedElementsAre("Wheel new 1", "A same place 0", "B same place 0", "C new 1"));
    for (const UDMImportedEntity& each : report.entities) {
        if (each.name == "B") {
            EXPECT_EQ(each.target, Base(there));
        }
    }
    EXPECT_EQ(Attribute(There(wheel), "smd_folder"), "/A/B/C");
    EXPECT_THAT(
        Outcomes(Import()),
        UnorderedElementsAre("Wheel equal 0", "A same place 0", "B same place 0", "C equal 0"));
    EXPECT_THAT(Problems(tom), IsEmpty());
}

TEST_F(Importing, X35_RefusesFoldersThatWouldMeetInOnePlace) {
    const UDMItemHandle above = Folder(ann, "/A");
    Carry();
    tom->DeleteEntity(There(above), true, false);
    Folder(ann, "/A/C");
    const std::string before = Exported(tom);
    Folder(ann, "/C");
    EXPECT_THAT(Refusal([&] { Carry(); }), HasSubstr("both named \"C\""));
    EXPECT_TRUE(Exported(tom) == before);
    ASSERT_TRUE(UDMMaintenance(tom).Undelete(Base(above)));
    EXPECT_THAT(Outcomes(Import()), ElementsAre("A equal 0", "C new 1", "C new 1"));
}

// As no operation leaves them, so that a library that has come to it can still be carried.
TEST_F(Importing, X35_LeavesFoldersBesideEachOtherThatLieSoInTheArchive) {
    for (const char* name : {"A", "B"}) {
        const UDMItemHandle part = ann->CreateEntity("Part", name);
        ann->MoveContent(part, Folder(ann, "/" + std::string(name) + "/C"));
        Publish(ann, part);
    }
    Tamper(source, "DELETE FROM link WHERE first IN (SELECT id FROM entity WHERE name = 'C')");
    EXPECT_THAT(
        Outcomes(Carry()),
        UnorderedElementsAre("A new 1", "A new 1", "B new 1", "B new 1", "C new 1", "C new 1"));
    EXPECT_TRUE(Exported(tom) == Exported(ann));
    EXPECT_THAT(Outcomes(Import()), Each(HasSubstr("equal")));
}

TEST_F(Importing, X36_KeepsTheNameThatAnEntityHasHere) {
    const UDMItemHandle wheel = Make(ann, "Wheel");
    Carry();
    Revise(ann, wheel, [&](const UDMItemHandle& working) {
        ann->SetAttributeValue(working, "name", "Rim");
    });
    EXPECT_THAT(Outcomes(Carry()), ElementsAre("Rim appended 1"));
    EXPECT_EQ(Attribute(There(wheel), "name"), "Wheel");
}

TEST_F(Importing, X37_GivesFilesToWhatCameWithoutThem) {
    UDMItemHandle wheel = ann->CreateEntity("Part", "Wheel");
    Put(wheel, "wheel.inp", "one");
    wheel = Publish(ann, wheel);
    wheel = Revise(ann, wheel, [&](const UDMItemHandle& working) {
        ann->ReAddFile(working, sources.Write("wheel.inp", "two"), false, false);
    });
    Carry({}, 0);
    EXPECT_THAT(DocumentNames(tom, There(wheel)), IsEmpty());
    EXPECT_THAT(Outcomes(Carry()), ElementsAre("Wheel equal 0"));
    EXPECT_THAT(Contents(tom, There(wheel)), ElementsAre("wheel.inp=two"));
    EXPECT_THAT(Problems(tom, true), IsEmpty());
    Carry({}, 0);
    EXPECT_THAT(Contents(tom, There(wheel)), ElementsAre("wheel.inp=two"));
    wheel = Describe(ann, wheel, "without files");
    Carry({}, 0);
    EXPECT_THAT(DocumentNames(tom, There(wheel)), IsEmpty());
    EXPECT_THAT(Contents(tom, There(wheel, 2)), ElementsAre("wheel.inp=two"));
    EXPECT_THAT(Problems(tom, true), IsEmpty());
}

TEST_F(Importing, NamesABranchByTheLineThatItBeginsWith) {
    exchange::RevisionRecord revision;
    revision.number = 3;
    revision.displayName = "Wheel";
    const std::string origin = "01HZX0000000000000000000AB";
    const std::string uid = profile::BranchUid(origin, revision);
    EXPECT_EQ(uid.substr(0, 10), origin.substr(0, 10));
    EXPECT_EQ(uid.size(), 26U);
    EXPECT_NE(uid, origin);
    EXPECT_EQ(profile::BranchUid(origin, revision), uid);
    revision.savePoints.push_back({1, "ann", "a note"});
    EXPECT_EQ(profile::BranchUid(origin, revision), uid);
    revision.comment = "another";
    EXPECT_NE(profile::BranchUid(origin, revision), uid);
    // Names of branches stay what they are: libraries know them by that.
    exchange::RevisionRecord plain;
    plain.number = 1;
    EXPECT_EQ(profile::BranchUid(origin, plain), "01HZX00000JPZ5DTRXC53XWQ2Y");
}

}  // namespace
}  // namespace kxudm::test
