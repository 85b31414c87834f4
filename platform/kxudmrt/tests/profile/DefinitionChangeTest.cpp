// Content definitions changed by records of their attributes.
#include "ChangedDefinitions.h"

namespace kxudm::test {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class DefinitionChange : public ChangedDefinitions {
  protected:
    ProfilePtr ann = Open("ann");
};

TEST_F(DefinitionChange, D1_RecordsThatWereReadChangeNothingWhenTheyAreGivenBack) {
    Edit("<attribute name=\"tags\" type=\"StringList\"/>",
         "<attribute name=\"tags\" type=\"StringList\"><default>a b</default>"
         "<default>c</default></attribute><attribute name=\"note\" type=\"String\" default=\"\""
         " displayable=\"false\" editable=\"false\"/>");
    EXPECT_TRUE(ann->ReloadContentDefinition("Part"));
    const auto told = Listen(ann);
    for (const kxString& name : ann->GetProfileUtils().GetRegisteredContentDefinitionNames()) {
        const std::string before = Description(ann, name);
        EXPECT_FALSE(ann->UpdateContentDefinition(name, RecordsOf(ann, name), false)) << name;
        EXPECT_EQ(Description(ann, name), before);
    }
    EXPECT_THAT(told->Take(), IsEmpty());
    EXPECT_FALSE(ann->ReloadContentDefinition("Part"));
}

TEST_F(DefinitionChange, D1_EachFlagKeepsItsPlace) {
    for (const int flags : {0, 1, 2, 4, 7}) {
        const kxString name = "flag" + std::to_string(flags);
        const UDMCdefMetaData record(name,
                                     "Shown",
                                     "Described",
                                     "x",
                                     "String",
                                     "Heading",
                                     (flags & 1) != 0,
                                     (flags & 2) != 0,
                                     (flags & 4) != 0,
                                     {"x", "y"});
        EXPECT_TRUE(Add(ann, "Part", record));
        const UDMCdefMetaData read = RecordsOf(ann, "Part").back();
        EXPECT_EQ(read.isSystem, (flags & 1) != 0);
        EXPECT_EQ(read.isDisplayable, (flags & 2) != 0);
        EXPECT_EQ(read.isEditable, (flags & 4) != 0);
        EXPECT_EQ(read.Name(), name);
        EXPECT_EQ(read.DisplayName(), "Shown");
        EXPECT_EQ(read.Description(), "Described");
        EXPECT_EQ(read.DefaultValue(), "x");
        EXPECT_EQ(read.Type(), "String");
        EXPECT_EQ(read.Category(), "Heading");
        EXPECT_THAT(read.ValidVal(), ElementsAre("x", "y"));
    }
}

TEST_F(DefinitionChange, D2_AnAddedAttributeAnswersItsDefaultInEveryRevision) {
    const UDMItemHandle first = Published(ann, "Wheel");
    const UDMItemHandle second = CheckOut(ann, first);
    const kxVariant modified = first.GetModifiedTime();
    EXPECT_TRUE(Add(ann, "Part", Record("finish", "String", "raw")));
    for (const UDMItemHandle& handle : {first, second}) {
        EXPECT_EQ(handle.GetAttributeValue("finish"), kxVariant("raw"));
        EXPECT_THAT(handle.GetFilteredAttributeNameList(true), Contains("finish"));
    }
    EXPECT_EQ(first.GetModifiedTime(), modified);
    ann->SetAttributeValue(second, "finish", "zinc");
    EXPECT_EQ(second.GetAttributeValue("finish"), kxVariant("zinc"));
    EXPECT_EQ(first.GetAttributeValue("finish"), kxVariant("raw"));
    EXPECT_EQ(ann->CreateEntity("Part", "New").GetAttributeValue("finish"), kxVariant("raw"));
    EXPECT_THAT(Hits(ann, "attrib.finish == raw"), ElementsAre("New"));
}

TEST_F(DefinitionChange, D2_AnAddedAttributeWithoutDefaultIsEmpty) {
    const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    EXPECT_TRUE(Add(ann, "Part", Record("finish", "String")));
    EXPECT_TRUE(part.GetAttributeValue("finish").IsEmpty());
    EXPECT_THAT(Hits(ann, "attrib.finish == \"\" && type == Part"), ElementsAre("Wheel"));
    ann->SetAttributeValue(part, "finish", "zinc");
    EXPECT_EQ(part.GetAttributeValue("finish"), kxVariant("zinc"));
}

TEST_F(DefinitionChange, D3_ARemovedAttributeIsHiddenAndItsValuesAreBackWhenItIs) {
    const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    const UDMItemHandle other = ann->CreateEntity("Part", "Rim");
    ann->SetAttributeValue(part, "count", 4);
    const Records before = RecordsOf(ann, "Part");
    EXPECT_TRUE(Remove(ann, "Part", "count"));
    EXPECT_THAT(AttributesOf(ann, "Part"), Not(Contains("count")));
    EXPECT_THAT(part.GetFilteredAttributeNameList(false), Not(Contains("count")));
    EXPECT_THAT(Refusal<UDMNotFoundException>([&] { part.GetAttributeValue("count"); }),
                HasSubstr("count"));
    EXPECT_THROW(ann->SetAttributeValue(part, "count", 5), UDMNotFoundException);
    EXPECT_THAT(Refusal([&] { Hits(ann, "attrib.count == 4"); }), HasSubstr("count"));
    // Other changes leave what is hidden alone.
    ann->SetAttributeValue(part, "mass", 2);
    EXPECT_TRUE(ann->UpdateContentDefinition("Part", before, false));
    EXPECT_EQ(part.GetAttributeValue("count"), kxVariant(4));
    EXPECT_TRUE(other.GetAttributeValue("count").IsEmpty());
    EXPECT_THAT(Hits(ann, "attrib.count == 4"), ElementsAre("Wheel"));
}

TEST_F(DefinitionChange, D3_AnAttributeThatWasEmptiedIsEmptyWhenItComesBack) {
    const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    ann->SetAttributeValue(part, "mass", {});
    const Records before = RecordsOf(ann, "Part");
    EXPECT_TRUE(Remove(ann, "Part", "mass"));
    EXPECT_TRUE(ann->UpdateContentDefinition("Part", before, false));
    EXPECT_TRUE(part.GetAttributeValue("mass").IsEmpty());
    EXPECT_THAT(Hits(ann, "attrib.mass > 0"), IsEmpty());
}

TEST_F(DefinitionChange, D3_AHiddenValueIsFoundByNoQueryForAnAttributeOfThatName) {
    ann->SetAttributeValue(ann->CreateEntity("Part", "Wheel"), "count", 4);
    EXPECT_TRUE(Add(ann, "Drawing", Record("count", "Integer", "4")));
    ann->CreateEntity("Drawing", "Sketch");
    EXPECT_THAT(Hits(ann, "attrib.count == 4"), ElementsAre("Wheel", "Sketch"));
    EXPECT_TRUE(Remove(ann, "Part", "count"));
    EXPECT_THAT(Hits(ann, "attrib.count == 4"), ElementsAre("Sketch"));
}

TEST_F(DefinitionChange, D4_AChangedDefaultIsForNewEntitiesAndThoseThatNeverHadAValue) {
    const UDMItemHandle old = ann->CreateEntity("Part", "Old");
    EXPECT_TRUE(Add(ann, "Part", Record("finish", "String", "raw")));
    const UDMItemHandle later = ann->CreateEntity("Part", "Later");
    EXPECT_TRUE(Change(ann, "Part", Record("finish", "String", "zinc")));
    EXPECT_EQ(old.GetAttributeValue("finish"), kxVariant("zinc"));
    EXPECT_EQ(later.GetAttributeValue("finish"), kxVariant("raw"));
    EXPECT_THAT(Hits(ann, "attrib.finish == zinc"), ElementsAre("Old"));
    EXPECT_TRUE(Change(ann, "Part", Record("finish", "String", "")));
    EXPECT_TRUE(old.GetAttributeValue("finish").IsEmpty());
    EXPECT_THAT(Hits(ann, "attrib.finish like \"*\""), ElementsAre("Later"));
}

TEST_F(DefinitionChange, D5_NarrowedValidValuesCountForWhatIsSetFromThenOn) {
    const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    ann->SetAttributeValue(part, "material", "steel");
    EXPECT_TRUE(Change(ann, "Part", Record("material", "String", "", {"aluminium", "wood"})));
    EXPECT_EQ(part.GetAttributeValue("material"), kxVariant("steel"));
    ann->SetAttributeValue(part, "mass", 3);
    EXPECT_THAT(Refusal([&] { ann->SetAttributeValue(part, "material", "iron"); }),
                HasSubstr("wood"));
    ann->SetAttributeValue(part, "material", "wood");
    EXPECT_THROW(ann->SetAttributeValue(part, "material", "steel"), UDMException);
}

TEST_F(DefinitionChange, D6_WhatABaseGetsDerivedDefinitionsHave) {
    const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    const UDMItemHandle drawing = ann->CreateEntity("Drawing", "Sketch");
    const UDMItemHandle note = ann->CreateEntity("Note", "Note");
    EXPECT_TRUE(Add(ann, "Item", Record("owner", "String", "nobody")));
    EXPECT_EQ(part.GetAttributeValue("owner"), kxVariant("nobody"));
    EXPECT_EQ(drawing.GetAttributeValue("owner"), kxVariant("nobody"));
    EXPECT_THROW(note.GetAttributeValue("owner"), UDMNotFoundException);
    EXPECT_THAT(Hits(ann, "attrib.owner == nobody"), ElementsAre("Wheel", "Sketch"));
}

TEST_F(DefinitionChange, D6_AnInheritedAttributeThatIsChangedIsOverriddenHereAlone) {
    const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    const UDMItemHandle drawing = ann->CreateEntity("Drawing", "Sketch");
    EXPECT_TRUE(Change(ann, "Part", Record("description", "String", "none yet")));
    EXPECT_EQ(part.GetAttributeValue("description"), kxVariant("none yet"));
    EXPECT_TRUE(drawing.GetAttributeValue("description").IsEmpty());
    EXPECT_THAT(Hits(ann, "attrib.description == \"none yet\""), ElementsAre("Wheel"));
    // In its place, and mandatory or not as it was.
    EXPECT_EQ(AttributesOf(ann, "Part")[2], "description");
    EXPECT_TRUE(Change(ann, "Part", Record("name", "String", "")));
    EXPECT_THROW(ann->CreateEntity("Part", ""), UDMException);
}

TEST_F(DefinitionChange, D6_WhatIsInheritedOrKeptByTheLibraryCannotBeLeftOutOrGetAnotherType) {
    const std::string before = Description(ann, "Part");
    EXPECT_THAT(Refusal([&] { Remove(ann, "Part", "description"); }),
                AllOf(HasSubstr("description"), HasSubstr("inherited")));
    EXPECT_THAT(Refusal([&] { Remove(ann, "Content", "smd_id"); }), HasSubstr("smd_id"));
    EXPECT_THAT(Refusal([&] { Change(ann, "Part", Record("description", "Integer")); }),
                AllOf(HasSubstr("description"), HasSubstr("inherited")));
    EXPECT_THAT(Refusal([&] { Change(ann, "Content", Record("displayname", "StringList")); }),
                AllOf(HasSubstr("displayname"), HasSubstr("String")));
    EXPECT_THAT(Refusal([&] { Change(ann, "Content", Record("smd_contentrevision", "String")); }),
                HasSubstr("smd_contentrevision"));
    EXPECT_THAT(Refusal([&] { Add(ann, "Content", Record("mass", "String")); }),
                AllOf(HasSubstr("mass"), HasSubstr("Part")));
    EXPECT_EQ(Description(ann, "Part"), before);
}

TEST_F(DefinitionChange, D7_WhatIsWrongWithTheRecordsIsSaidAndNothingIsChanged) {
    const std::string before = Description(ann, "Part");
    const auto refusal = [&](const UDMCdefMetaData& record) {
        return Refusal([&] { Add(ann, "Part", record); });
    };
    EXPECT_THAT(refusal(Record("mass", "Double")), AllOf(HasSubstr("mass"), HasSubstr("twice")));
    EXPECT_THAT(refusal(Record("size", "Length")), AllOf(HasSubstr("size"), HasSubstr("Length")));
    EXPECT_THAT(refusal(Record("size", "")), HasSubstr("size"));
    EXPECT_THAT(refusal(Record("", "String")), HasSubstr("not a name"));
    EXPECT_THAT(refusal(Record("size", "Integer", "much")), HasSubstr("much"));
    EXPECT_THAT(refusal(Record("size", "StringList", "{a")), HasSubstr("no list"));
    EXPECT_THAT(refusal(Record("size", "Integer", "1", {"2"})), HasSubstr("size"));
    EXPECT_THAT(
        Refusal<UDMNotFoundException>([&] { ann->UpdateContentDefinition("Nothing", {}, false); }),
        HasSubstr("Nothing"));
    EXPECT_EQ(Description(ann, "Part"), before);
}

TEST_F(DefinitionChange, D7_AListForADefaultIsReadAsAList) {
    EXPECT_TRUE(Add(ann, "Part", Record("colours", "StringList", "{light blue} red")));
    EXPECT_THAT(ann->CreateEntity("Part", "Wheel").GetAttributeValue("colours").GetStringList(),
                ElementsAre("light blue", "red"));
}

TEST_F(DefinitionChange, D8_OrderAndTextsOfAttributesAreChangesToo) {
    Records records = RecordsOf(ann, "Part");
    std::swap(records[records.size() - 1], records[records.size() - 2]);
    EXPECT_TRUE(ann->UpdateContentDefinition("Part", records, false));
    EXPECT_EQ(RecordsOf(ann, "Part").back().Name(), "tags");
    const UDMCdefMetaData shown("tags", "Labels", "", "", "StringList", "", false, true, true, {});
    EXPECT_TRUE(Change(ann, "Part", shown));
    EXPECT_EQ(RecordsOf(ann, "Part").back().DisplayName(), "Labels");
    EXPECT_FALSE(Change(ann, "Part", shown));
}

TEST_F(DefinitionChange, D9_HandlesOfADefinitionStayAsTheyWereAndNewOnesAnswerAnew) {
    const UDMProfileUtils utils = ann->GetProfileUtils();
    const auto before = utils.GetContentDefinitionHandle("Part");
    const auto mass = utils.GetAttributeDefinitionHandle("Part", "mass");
    EXPECT_TRUE(Remove(ann, "Part", "mass"));
    EXPECT_TRUE(Add(ann, "Part", Record("finish", "String")));
    kxStlVector<kxString> names;
    before.GetAttributeNames(names);
    EXPECT_THAT(names, AllOf(Contains("mass"), Not(Contains("finish"))));
    EXPECT_EQ(mass.GetDataType(), "Double");
    names.clear();
    utils.GetContentDefinitionHandle("Part").GetAttributeNames(names);
    EXPECT_THAT(names, AllOf(Contains("finish"), Not(Contains("mass"))));
    EXPECT_THROW(utils.GetAttributeDefinitionHandle("Part", "mass"), UDMNotFoundException);
}

TEST_F(DefinitionChange, D9_HandlesOfWhatIsDeletedOutliveChangesToo) {
    const UDMItemHandle parent = ann->CreateEntity("Part", "Car");
    const auto told = Listen(ann);
    std::vector<UDMItemHandle> kept;
    told->react = [&](const UDMProfileUpdate& update) { kept.push_back(update.GetChild()); };
    kxString uid;
    {
        const UDMItemHandle note = ann->CreateAndAddChild("Note", "Gone", parent, "notes");
        uid = note.GetUID();
    }
    ann->DeleteEntity(ann->GetEntity(uid), true, false);
    told->react = nullptr;
    EXPECT_TRUE(Add(ann, "Content", Record("finish", "String", "raw")));
    EXPECT_TRUE(Add(ann, "Content", Record("colour", "Color", "#ffffff")));
    const auto gone = std::find_if(
        kept.begin(), kept.end(), [](const UDMItemHandle& handle) { return !handle.IsEmpty(); });
    ASSERT_NE(gone, kept.end());
    EXPECT_EQ(gone->GetCdef(), "Note");
    EXPECT_THROW(gone->GetAttributeValue("finish"), UDMNotFoundException);
    EXPECT_EQ(parent.GetAttributeValue("colour"), kxVariant("#ffffff"));
}

TEST_F(DefinitionChange, D10_IsRefusedWithinABulkEditAndInAClosedSession) {
    const Records records = RecordsOf(ann, "Part");
    {
        UDMBulkEdit edit(ann);
        EXPECT_THAT(Refusal([&] { ann->UpdateContentDefinition("Part", records, false); }),
                    HasSubstr("bulk edit"));
        EXPECT_THAT(Refusal([&] { ann->ReloadContentDefinition("Part"); }), HasSubstr("bulk edit"));
        edit.Commit();
    }
    ProfilePtr closing = ann;
    UDMProfileMgr::DiscardProfile(closing);
    EXPECT_THAT(Refusal([&] { ann->UpdateContentDefinition("Part", records, false); }),
                HasSubstr("closed"));
    EXPECT_THAT(Refusal([&] { ann->ReloadContentDefinition("Part"); }), HasSubstr("closed"));
}

}  // namespace
}  // namespace kxudm::test
