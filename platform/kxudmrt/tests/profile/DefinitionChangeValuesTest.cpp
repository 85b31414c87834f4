// Attributes that get another data type: the values of all revisions go with them, or nothing does.
#include "ChangedDefinitions.h"

namespace kxudm::test {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class ChangedDataType : public ChangedDefinitions {
  protected:
    ProfilePtr ann = Open("ann");
    ProfilePtr bob = Open("bob");
};

TEST_F(ChangedDataType, D11_ConvertsTheValuesOfAllRevisions) {
    UDMItemHandle first = ann->CreateEntity("Part", "Wheel");
    ann->SetAttributeValue(first, "count", 4);
    first = Publish(ann, first);
    const UDMItemHandle second = CheckOut(ann, first);
    ann->SetAttributeValue(second, "count", 6);
    const kxVariant modified = first.GetModifiedTime();
    const UDMItemHandle seen = bob->GetEntity(first.GetUID());
    EXPECT_TRUE(Change(ann, "Part", Record("count", "String")));
    EXPECT_EQ(first.GetAttributeValue("count"), kxVariant("4"));
    EXPECT_EQ(second.GetAttributeValue("count"), kxVariant("6"));
    EXPECT_EQ(seen.GetAttributeValue("count"), kxVariant("4"));
    EXPECT_EQ(first.GetModifiedTime(), modified);
    EXPECT_THAT(Hits(ann, "attrib.count == \"6\""), ElementsAre("Wheel"));
    EXPECT_THAT(Hits(ann, "attrib.count == \"4\""), IsEmpty());
    EXPECT_THAT(Hits(bob, "attrib.count == \"4\""), ElementsAre("Wheel"));
    // As texts now: "6" is not less than "10".
    EXPECT_THAT(Hits(ann, "attrib.count < \"10\""), IsEmpty());
    ann->UndoCheckout(second);
    EXPECT_THAT(Hits(ann, "attrib.count == \"4\""), ElementsAre("Wheel"));
    EXPECT_TRUE(Change(ann, "Part", Record("count", "Double")));
    EXPECT_THAT(Hits(ann, "attrib.count < 10"), ElementsAre("Wheel"));
}

TEST_F(ChangedDataType, D11_KeepsWhatQueriesFindWithoutCaseAndAccents) {
    UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    ann->SetAttributeValue(part, "tags", kxStlVector<kxString>{"\xC3\x84ra"});
    EXPECT_TRUE(Change(ann, "Part", Record("tags", "String")));
    UDMQuerySettingHandle ignoring;
    ignoring.GetSettings().SetIgnoreCase(true);
    kxStlVector<UDMItemHandle> hits;
    EXPECT_EQ(ann->RunQuery(hits, "attrib.tags == ara", -1, 0, 0, ignoring, false, false), 1U);
}

TEST_F(ChangedDataType, D12_IsRefusedWhereAValueWouldBeLostAndNamesAttributeRevisionAndValue) {
    const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    const UDMItemHandle fine = ann->CreateEntity("Part", "Rim");
    ann->SetAttributeValue(part, "mass", 2.5);
    ann->SetAttributeValue(fine, "mass", 3);
    const auto told = Listen(bob);
    const std::string before = Description(ann, "Part");
    EXPECT_THAT(Refusal([&] { Change(ann, "Part", Record("mass", "Integer")); }),
                AllOf(HasSubstr("\"Part\""),
                      HasSubstr("\"2.5\" of \"mass\" in " + part.GetUID()),
                      HasSubstr("is no Integer"),
                      testing::Not(HasSubstr(fine.GetUID()))));
    EXPECT_EQ(Description(ann, "Part"), before);
    EXPECT_EQ(Description(bob, "Part"), before);
    EXPECT_EQ(fine.GetAttributeValue("mass"), kxVariant(3.0));
    EXPECT_EQ(fine.GetAttributeValue("mass").GetKind(), kxVariant::DOUBLE);
    EXPECT_THAT(Hits(ann, "attrib.mass == 2.5"), ElementsAre("Wheel"));
    EXPECT_THAT(told->Take(), IsEmpty());
}

TEST_F(ChangedDataType, D12_CountsTheValuesThatItDoesNotName) {
    for (int i = 0; i < 7; ++i) {
        ann->SetAttributeValue(ann->CreateEntity("Part", "Wheel"), "mass", i + 0.5);
    }
    EXPECT_THAT(
        Refusal([&] { Change(ann, "Part", Record("mass", "Integer")); }),
        AllOf(HasSubstr("\"4.5\""), testing::Not(HasSubstr("\"5.5\"")), HasSubstr("and 2 more")));
}

TEST_F(ChangedDataType, D12_LooksAtOlderRevisionsAndThoseOfOthers) {
    UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    ann->SetAttributeValue(part, "mass", 2.5);
    part = CheckOut(ann, Publish(ann, part));
    ann->SetAttributeValue(part, "mass", 3);
    Publish(ann, part);
    EXPECT_THAT(Refusal([&] { Change(ann, "Part", Record("mass", "Integer")); }),
                HasSubstr(At(part, 1)));
    const UDMItemHandle draft = bob->CreateEntity("Part", "Draft");
    bob->SetAttributeValue(draft, "count", 2);
    EXPECT_THAT(Refusal([&] { Change(ann, "Part", Record("count", "Boolean")); }),
                HasSubstr("\"2\" of \"count\" in " + draft.GetUID()));
}

TEST_F(ChangedDataType, D12_LooksAtWhatIsDeletedAndMayComeBack) {
    const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    const kxString uid = part.GetUID();
    ann->SetAttributeValue(part, "mass", 2.5);
    ann->DeleteEntity(part, true, false);
    EXPECT_THAT(Refusal([&] { Change(ann, "Part", Record("mass", "Integer")); }), HasSubstr(uid));
}

TEST_F(ChangedDataType, D12_LooksAtHiddenValuesOfAnAttributeThatComesBack) {
    const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    const UDMItemHandle other = ann->CreateEntity("Part", "Rim");
    ann->SetAttributeValue(part, "tags", kxStlVector<kxString>{"a", "b"});
    ann->SetAttributeValue(other, "tags", kxStlVector<kxString>{"c"});
    EXPECT_TRUE(Remove(ann, "Part", "tags"));
    EXPECT_THAT(Refusal([&] { Add(ann, "Part", Record("tags", "String")); }),
                AllOf(HasSubstr("\"a b\" of \"tags\" in " + part.GetUID())));
    // Still hidden, and still what it was.
    EXPECT_TRUE(Add(ann, "Part", Record("tags", "StringList")));
    EXPECT_THAT(part.GetAttributeValue("tags").GetStringList(), ElementsAre("a", "b"));
    ann->SetAttributeValue(part, "tags", kxStlVector<kxString>{"d"});
    EXPECT_TRUE(Remove(ann, "Part", "tags"));
    EXPECT_TRUE(Add(ann, "Part", Record("tags", "String")));
    EXPECT_EQ(part.GetAttributeValue("tags"), kxVariant("d"));
    EXPECT_EQ(other.GetAttributeValue("tags"), kxVariant("c"));
}

TEST_F(ChangedDataType, D12_OfABaseLooksAtEntitiesOfDerivedDefinitions) {
    EXPECT_TRUE(Add(ann, "Item", Record("code", "String")));
    const UDMItemHandle drawing = ann->CreateEntity("Drawing", "Sketch");
    ann->SetAttributeValue(drawing, "code", "x1");
    EXPECT_THAT(Refusal([&] { Change(ann, "Item", Record("code", "Integer")); }),
                AllOf(HasSubstr("\"Drawing\""), HasSubstr(drawing.GetUID())));
    ann->SetAttributeValue(drawing, "code", "1");
    EXPECT_TRUE(Change(ann, "Item", Record("code", "Integer")));
    EXPECT_EQ(drawing.GetAttributeValue("code"), kxVariant(1));
}

TEST_F(ChangedDataType, D13_IsForcedOnlyWhereTheTypeTakesTheValue) {
    const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    EXPECT_TRUE(Add(ann, "Part", Record("code", "String")));
    ann->SetAttributeValue(part, "code", "007");
    EXPECT_THAT(Refusal([&] { Change(ann, "Part", Record("code", "Integer")); }),
                HasSubstr("\"007\" of \"code\" in " + part.GetUID() + " would become \"7\""));
    EXPECT_EQ(part.GetAttributeValue("code"), kxVariant("007"));
    EXPECT_TRUE(Change(ann, "Part", Record("code", "Integer"), true));
    EXPECT_EQ(part.GetAttributeValue("code"), kxVariant(7));
    EXPECT_TRUE(Change(ann, "Part", Record("code", "String")));
    ann->SetAttributeValue(part, "code", "seven");
    EXPECT_THAT(Refusal([&] { Change(ann, "Part", Record("code", "Integer"), true); }),
                HasSubstr("seven"));
}

TEST_F(ChangedDataType, D14_GoesThroughMoreRevisionsThanAreReadAtOnce) {
    UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    {
        UDMBulkEdit edit(ann);
        for (int i = 0; i < 300; ++i) {
            ann->SetAttributeValue(ann->CreateEntity("Part", "P" + std::to_string(i)), "count", i);
        }
        edit.Commit();
    }
    for (int i = 1; i <= 300; ++i) {
        ann->SetAttributeValue(part, "count", i);
        part = CheckOut(ann, Publish(ann, part));
    }
    ann->CreateEntity("Part", "Last");
    EXPECT_TRUE(Change(ann, "Part", Record("count", "String", "none")));
    for (const int i : {1, 2, 150, 255, 256, 257, 300}) {
        EXPECT_EQ(ann->GetEntity(At(part, i)).GetAttributeValue("count"),
                  kxVariant(std::to_string(i)));
    }
    EXPECT_THAT(Hits(ann, "attrib.count == \"299\""), ElementsAre("P299"));
    EXPECT_THAT(Hits(ann, "attrib.count == \"300\""), ElementsAre("Wheel"));
    EXPECT_THAT(Hits(ann, "attrib.count == none"), ElementsAre("Last"));
}

}  // namespace
}  // namespace kxudm::test
