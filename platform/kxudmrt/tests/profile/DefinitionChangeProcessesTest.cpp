// Changes of content definitions as other sessions see them, in this process and in others.
#include "ChangedDefinitions.h"
#include "ChildProcess.h"

namespace kxudm::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class DefinitionChangeElsewhere : public ChangedDefinitions {};

TEST_F(DefinitionChangeElsewhere, D23_TellsEachSessionOfTheEntitiesThatItHolds) {
    const ProfilePtr ann = Open("ann");
    const ProfilePtr bob = Open("bob");
    const UDMItemHandle wheel = Published(ann, "Wheel");
    const UDMItemHandle rim = Published(ann, "Rim");
    const UDMItemHandle note = ann->CreateEntity("Note", "Note");
    const UDMItemHandle seen = bob->GetEntity(wheel.GetUID());
    const auto annIsTold = Listen(ann);
    const auto bobIsTold = Listen(bob);
    kxVariant inSlot;
    bobIsTold->react = [&](const UDMProfileUpdate& update) {
        inSlot = update.GetUDMHandle().GetAttributeValue("finish");
    };
    EXPECT_TRUE(Add(ann, "Part", Record("finish", "String", "raw")));
    EXPECT_THAT(annIsTold->Take(), ElementsAre("3 Wheel", "3 Rim"));
    EXPECT_THAT(bobIsTold->Take(), ElementsAre("3 Wheel"));
    EXPECT_EQ(inSlot, kxVariant("raw"));
    bobIsTold->react = nullptr;
    EXPECT_THAT(AttributesOf(bob, "Part"), Contains("finish"));
    EXPECT_EQ(bob->GetEntity(rim.GetUID()).GetAttributeValue("finish"), kxVariant("raw"));
    // Only what reads otherwise now.
    EXPECT_TRUE(Add(bob, "Drawing", Record("scale", "Double")));
    EXPECT_THAT(annIsTold->Take(), IsEmpty());
    EXPECT_TRUE(Add(bob, "Content", Record("topic", "String")));
    EXPECT_THAT(annIsTold->Take(), ElementsAre("3 Wheel", "3 Rim", "3 Note"));
    EXPECT_THAT(bobIsTold->Take(), ElementsAre("3 Wheel"));
}

TEST_F(DefinitionChangeElsewhere, D23_ASlotMayReadAndChangeWhatItIsToldOf) {
    const ProfilePtr ann = Open("ann");
    const ProfilePtr bob = Open("bob");
    const UDMItemHandle note = ann->CreateEntity("Note", "Note");
    const UDMItemHandle seen = bob->GetEntity(note.GetUID());
    const auto told = Listen(bob);
    bool first = true;
    told->react = [&](const UDMProfileUpdate& update) {
        if (!std::exchange(first, false)) {
            return;
        }
        bob->SetAttributeValue(update.GetUDMHandle(), "topic", "by bob");
        EXPECT_TRUE(Add(bob, "Note", Record("rank", "Integer", "3")));
    };
    EXPECT_TRUE(Add(ann, "Note", Record("topic", "String")));
    EXPECT_EQ(note.GetAttributeValue("topic"), kxVariant("by bob"));
    EXPECT_EQ(note.GetAttributeValue("rank"), kxVariant(3));
    told->react = nullptr;
}

TEST_F(DefinitionChangeElsewhere, D24_IsSeenByOtherProcessesAtTheirNextCall) {
    Child child([&](int) {
        ProfilePtr bob = UDMProfileMgr::GetProfile(Params("bob"));
        Add(bob, "Part", Record("finish", "String", "raw"));
        Change(bob, "Part", Record("count", "String"));
        Edit("<definition name=\"Drawing\" base=\"Item\"/>",
             "<definition name=\"Drawing\" base=\"Item\"/><definition name=\"Bolt\""
             " base=\"Part\"/>");
        bob->ReloadContentDefinition("Bolt");
        bob->PersistEntity(bob->CreateEntity("Bolt", "M8"), "", false, true, true);
        UDMProfileMgr::DiscardProfile(bob);
    });
    const ProfilePtr ann = Open("ann");
    const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    ann->SetAttributeValue(part, "count", 4);
    const auto told = Listen(ann);
    child.Go();
    ASSERT_EQ(child.Wait(), 0);
    // A write is made on top of it: this one would have been right before.
    EXPECT_THAT(Refusal([&] { ann->SetAttributeValue(part, "count", kxStlVector<kxString>{"a"}); }),
                HasSubstr("count"));
    EXPECT_EQ(part.GetAttributeValue("count"), kxVariant("4"));
    EXPECT_EQ(part.GetAttributeValue("finish"), kxVariant("raw"));
    EXPECT_THAT(Hits(ann, "type == Bolt"), ElementsAre("M8"));
    EXPECT_THAT(told->Take(), ElementsAre("3 Wheel", "5 M8"));
}

TEST_F(DefinitionChangeElsewhere, D24_IsSeenByQuestionsAboutDefinitions) {
    Child child([&](int) {
        ProfilePtr bob = UDMProfileMgr::GetProfile(Params("bob"));
        Add(bob, "Part", Record("finish", "String", "raw"));
        UDMProfileMgr::DiscardProfile(bob);
    });
    const ProfilePtr ann = Open("ann");
    const UDMProfileUtils utils = ann->GetProfileUtils();
    EXPECT_THROW(utils.GetAttributeDefinitionHandle("Part", "finish"), UDMNotFoundException);
    child.Go();
    ASSERT_EQ(child.Wait(), 0);
    EXPECT_EQ(utils.GetAttributeDefinitionHandle("Part", "finish").GetDataType(), "String");
}

TEST_F(DefinitionChangeElsewhere, D24_IsSeenByTheFirstReadOfAnEntityOfANewDefinition) {
    Child child([&](int out) {
        ProfilePtr bob = UDMProfileMgr::GetProfile(Params("bob"));
        Edit("<definition name=\"Drawing\" base=\"Item\"/>",
             "<definition name=\"Drawing\" base=\"Item\"/><definition name=\"Remark\""
             " base=\"Note\"/>");
        bob->ReloadContentDefinition("Remark");
        WriteLine(out, bob->CreateEntity("Remark", "New").GetUID());
        UDMProfileMgr::DiscardProfile(bob);
    });
    const ProfilePtr ann = Open("ann");
    child.Go();
    const std::string uid = child.Line();
    ASSERT_EQ(child.Wait(), 0);
    EXPECT_EQ(ann->GetEntity(uid).GetCdef(), "Remark");
}

TEST_F(DefinitionChangeElsewhere, D25_IsWholeOrNotAtAllWhenItsProcessIsKilled) {
    Child child([&](int out) {
        ProfilePtr bob = UDMProfileMgr::GetProfile(Params("bob"));
        WriteLine(out, "open");
        for (int i = 0;; ++i) {
            Change(bob, "Note", Record("text", i % 2 == 0 ? "Integer" : "String"));
            WriteLine(out, "changed");
        }
    });
    const ProfilePtr ann = Open("ann");
    kxStlVector<UDMItemHandle> notes;
    {
        UDMBulkEdit edit(ann);
        for (int i = 0; i < 500; ++i) {
            notes.push_back(ann->CreateEntity("Note", "N"));
            ann->SetAttributeValue(notes.back(), "text", std::to_string(i));
        }
        edit.Commit();
    }
    child.Go();
    ASSERT_EQ(child.Line(), "open");
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ(child.Line(), "changed");
    }
    child.Kill();
    child.Wait();
    UDMProfileMgr::DispatchUpdates();
    const kxString type =
        ann->GetProfileUtils().GetAttributeDefinitionHandle("Note", "text").GetDataType();
    for (int i = 0; i < 500; ++i) {
        const kxVariant value = notes[static_cast<std::size_t>(i)].GetAttributeValue("text");
        ASSERT_EQ(value.GetString(), std::to_string(i));
        ASSERT_EQ(value.GetKind(), type == "Integer" ? kxVariant::INTEGER : kxVariant::STRING);
    }
    EXPECT_EQ(Hits(ann,
                   type == "Integer" ? "attrib.text < 10"
                                     : "attrib.text like \"?\" &&"
                                       " attrib.text <= \"9\"")
                  .size(),
              type == "Integer" ? 10U : 500U);
}

}  // namespace
}  // namespace kxudm::test
