#include <gtest/gtest.h>
#include <kxctinterfaces/Metadata.h>

#include "tests/db/OpenSession.h"
#include "tests/mock/FakeDefinitions.h"

namespace kxct {
namespace {

using kxudm::UDMCdefMetaData;
using kxudm::UDMProfileUtils;
using namespace mock;
using ::testing::_;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::NiceMock;
using ::testing::Return;
using ::testing::SetArgReferee;
using ::testing::StartsWith;
using ::testing::Throw;

using Records = kxStlVector<UDMCdefMetaData>;

constexpr char GET_HANDLE[] =
    "class kxudm::UDMContentDefinitionHandle __cdecl "
    "kxct::UDMDBCtrl::GetContentDefinitionHandle(const class kxString &) const";
constexpr char GET_DISPLAY_NAME[] =
    "class kxString __cdecl kxct::UDMDBCtrl::GetCdefDisplayName(const class kxString &) const";

// A session over definitions that a test adds.
struct DefinedSession : OpenSession {
    DefinedSession() {
        ON_CALL(*profile, GetProfileUtils).WillByDefault([this] {
            return UDMProfileUtils(definitions);
        });
    }
    boost::shared_ptr<FakeDefinitions> definitions = boost::make_shared<FakeDefinitions>();
};

// A session over definitions that prove their arguments.
struct AskedSession : OpenSession {
    AskedSession() {
        ON_CALL(*profile, GetProfileUtils).WillByDefault([this] {
            return UDMProfileUtils(definitions);
        });
    }
    boost::shared_ptr<NiceMock<MockDefinitions>> definitions =
        boost::make_shared<NiceMock<MockDefinitions>>();
};

TEST(UDMDBCtrl, TheHandleOfADefinitionComesFromTheRuntime) {
    DefinedSession open;
    open.definitions->Add("UDMPart").type = "Proto";
    EXPECT_EQ(open->GetContentDefinitionHandle("UDMPart").GetType(), "Proto");
}

TEST(UDMDBCtrl, TheHandleOfAnAttributeDefinitionComesFromTheRuntime) {
    DefinedSession open;
    open.definitions->Add("UDMPart").attributes.push_back({.name = "mass", .displayName = "Mass"});
    EXPECT_EQ(open->GetAttributeDefinitionHandle("UDMPart", "mass").GetDisplayName(), "Mass");
    EXPECT_THAT(FailureOf([&] { open->GetAttributeDefinitionHandle("UDMPart", "colour"); }),
                EndsWith(" no attribute colour"));
}

TEST(UDMDBCtrl, DefinitionsAndTheirNamesAreListed) {
    DefinedSession open;
    open.definitions->Add("UDMPart");
    open.definitions->Add("UDMFolder");
    EXPECT_THAT(open->GetContentDefinitionNames(), ElementsAre("UDMPart", "UDMFolder"));
    const auto list = open->GetRegisteredContentDefinitions();
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(list[1]->GetName(), "UDMFolder");
}

TEST(UDMDBCtrl, ClassNamesReplaceTheEarlierOnes) {
    DefinedSession open;
    open.definitions->Add("UDMPart");
    kxStlSet<kxString> out;
    out.insert("earlier");
    open->GetClassNames(out);
    EXPECT_THAT(out, ElementsAre("UDMPart"));
}

TEST(UDMDBCtrl, ClassNamesAreEmptiedEvenIfTheRuntimeFails) {
    AskedSession open;
    EXPECT_CALL(*open.definitions, ClassNames()).WillOnce(Throw(std::runtime_error("boom")));
    kxStlSet<kxString> out;
    out.insert("earlier");
    EXPECT_EQ(FailureOf([&] { open->GetClassNames(out); }),
              "void __cdecl kxct::UDMDBCtrl::GetClassNames(class kxStlSet<class kxString,struct "
              "std::less<class kxString>,class std::allocator<class kxString> > &) boom");
    EXPECT_TRUE(out.empty());
}

TEST(UDMDBCtrl, AllowedChildrenAreAskedForByDefinitionAndGroup) {
    AskedSession open;
    EXPECT_CALL(*open.definitions, AllowedChildren(kxString("UDMPart"), _, kxString("parts")))
        .WillOnce([](const auto&, Texts& names, const auto&) { names.push_back("UDMItem"); });
    Texts out{"earlier"};
    open->GetAllowedChildCdefNames("UDMPart", out, "parts");
    EXPECT_THAT(out, ElementsAre("earlier", "UDMItem"));
}

TEST(UDMDBCtrl, GroupNamesAreAskedForInEveryCategory) {
    AskedSession open;
    EXPECT_CALL(*open.definitions, GroupNames(kxString("UDMPart"), _, kxString("")))
        .WillOnce([](const auto&, Texts& names, const auto&) { names.push_back("parts"); });
    Texts out{"earlier"};
    open->GetGroupNames("UDMPart", out);
    EXPECT_THAT(out, ElementsAre("earlier", "parts"));
}

TEST(UDMDBCtrl, GroupNamesOfAnUnknownDefinitionFailAsTheRuntimeSays) {
    DefinedSession open;
    Texts out;
    EXPECT_EQ(FailureOf([&] { open->GetGroupNames("UDMPart", out); }),
              "void __cdecl kxct::UDMDBCtrl::GetGroupNames(const class kxString &,class "
              "kxStlVector<class kxString,class std::allocator<class kxString> > &) const no "
              "definition UDMPart");
}

TEST(UDMDBCtrl, TheDisplayNameOfADefinitionIsItsHandles) {
    DefinedSession open;
    open.definitions->Add("UDMPart").displayName = "Part";
    EXPECT_EQ(open->GetCdefDisplayName("UDMPart"), "Part");
}

TEST(UDMDBCtrl, AFailingDisplayNameNamesBothOperations) {
    DefinedSession open;
    EXPECT_EQ(FailureOf([&] { open->GetCdefDisplayName("UDMPart"); }),
              std::string(GET_DISPLAY_NAME) + " " + GET_HANDLE + " no definition UDMPart");
}

TEST(UDMDBCtrl, ADisplayNameWithoutASessionHoldsTheNullGuardOfTheHandle) {
    OpenSession open;
    const auto profile = UDMDBCtrlPeer::TakeProfile(*open);
    EXPECT_EQ(FailureOf([&] { open->GetCdefDisplayName("UDMPart"); }),
              std::string(GET_DISPLAY_NAME) + " " + GET_HANDLE +
                  ":: db/_private/UDMDBCtrl.cpp. The pointer _udmProfilePtr is null!");
}

UDMCdefMetaData NewRecord(const kxString& name, bool system, bool displayable, bool editable) {
    return {name,
            name + " display",
            name + " description",
            name + " default",
            name + " type",
            name + " category",
            system,
            displayable,
            editable,
            {name + " v1", name + " v2"}};
}

TEST(UDMDBCtrl, EachRecordOfADefinitionBecomesMetadata) {
    OpenSession open;
    EXPECT_CALL(*open.profile, GetContentDefinitionMetadata(kxString("UDMPart"), ElementsAre()))
        .WillOnce([](const auto&, Records& list) {
            list.push_back(NewRecord("mass", false, true, false));
            list.push_back(NewRecord("id", true, false, false));
        });
    kxStlVector<Metadata> out(1);
    EXPECT_EQ(open->GetContentDefinitionMetadata("UDMPart", out), 3U);
    ASSERT_EQ(out.size(), 3U);
    EXPECT_EQ(out[1].name, "mass");
    EXPECT_EQ(out[1].displayName, "mass display");
    EXPECT_EQ(out[1].description, "mass description");
    EXPECT_EQ(out[1].defaultValue, "mass default");
    EXPECT_EQ(out[1].type, "mass type");
    EXPECT_EQ(out[1].category, "mass category");
    EXPECT_THAT(out[1].validValues, ElementsAre("mass v1", "mass v2"));
    EXPECT_EQ(out[2].name, "id");
}

TEST(UDMDBCtrl, TheFlagsOfARecordAreCopiedInTheOrderInWhichItHoldsThem) {
    OpenSession open;
    ON_CALL(*open.profile, GetContentDefinitionMetadata)
        .WillByDefault([](const auto&, Records& list) {
            list.push_back(NewRecord("displayable", false, true, false));
            list.push_back(NewRecord("system", true, false, false));
            list.push_back(NewRecord("editable", false, false, true));
        });
    kxStlVector<Metadata> out;
    open->GetContentDefinitionMetadata("UDMPart", out);
    ASSERT_EQ(out.size(), 3U);
    const auto flags = [](const Metadata& m) {
        return std::vector<bool>{m.flagA, m.flagB, m.flagC};
    };
    EXPECT_THAT(flags(out[0]), ElementsAre(true, false, false));
    EXPECT_THAT(flags(out[1]), ElementsAre(false, true, false));
    EXPECT_THAT(flags(out[2]), ElementsAre(false, false, true));
}

TEST(UDMDBCtrl, MetadataThatIsReadAndWrittenBackIsTheSameInEveryField) {
    OpenSession open;
    Records read;
    for (int bits = 0; bits < 8; ++bits) {
        read.push_back(NewRecord("a" + std::to_string(bits), bits & 1, bits & 2, bits & 4));
    }
    ON_CALL(*open.profile, GetContentDefinitionMetadata)
        .WillByDefault([&](const auto&, Records& list) { list = read; });
    Records written;
    EXPECT_CALL(*open.profile, UpdateContentDefinition(kxString("UDMPart"), _, false))
        .WillOnce([&](const auto&, const Records& list, bool) {
            written = list;
            return true;
        });
    kxStlVector<Metadata> metadata;
    open->GetContentDefinitionMetadata("UDMPart", metadata);
    EXPECT_TRUE(open->UpdateContentDefinition("UDMPart", metadata));
    ASSERT_EQ(written.size(), read.size());
    for (std::size_t i = 0; i < read.size(); ++i) {
        EXPECT_EQ(written[i].Name(), read[i].Name());
        EXPECT_EQ(written[i].DisplayName(), read[i].DisplayName());
        EXPECT_EQ(written[i].Description(), read[i].Description());
        EXPECT_EQ(written[i].DefaultValue(), read[i].DefaultValue());
        EXPECT_EQ(written[i].Type(), read[i].Type());
        EXPECT_EQ(written[i].Category(), read[i].Category());
        EXPECT_EQ(written[i].isSystem, read[i].isSystem);
        EXPECT_EQ(written[i].isDisplayable, read[i].isDisplayable);
        EXPECT_EQ(written[i].isEditable, read[i].isEditable);
        EXPECT_EQ(written[i].ValidVal(), read[i].ValidVal());
    }
}

TEST(UDMDBCtrl, TheFlatListLeavesOutWhatTheFlagsSay) {
    DefinedSession open;
    auto& attributes = open.definitions->Add("UDMPart").attributes;
    attributes.push_back({.name = "sys", .displayName = "System", .isSystem = true});
    attributes.push_back({.name = "hidden", .displayName = "Hidden", .isDisplayable = false});
    attributes.push_back({.name = "mass", .displayName = "Mass"});
    EXPECT_THAT(open->GetContentDefinitionMetadata("UDMPart", true, true),
                ElementsAre("mass", "Mass"));
    EXPECT_THAT(open->GetContentDefinitionMetadata("UDMPart", true, false),
                ElementsAre("hidden", "Hidden", "mass", "Mass"));
    EXPECT_THAT(open->GetContentDefinitionMetadata("UDMPart", false, true),
                ElementsAre("sys", "System", "mass", "Mass"));
    EXPECT_THAT(open->GetContentDefinitionMetadata("UDMPart", false, false),
                ElementsAre("sys", "System", "hidden", "Hidden", "mass", "Mass"));
}

TEST(UDMDBCtrl, TheFlatListOfAnUnknownDefinitionFailsWithTheHandlesTextAlone) {
    DefinedSession open;
    EXPECT_EQ(FailureOf([&] { open->GetContentDefinitionMetadata("UDMPart", true, true); }),
              std::string(GET_HANDLE) + " no definition UDMPart");
}

TEST(UDMDBCtrl, UpdateByNameReloadsTheDefinition) {
    OpenSession open;
    EXPECT_CALL(*open.profile, ReloadContentDefinition(kxString("UDMPart")))
        .WillOnce(Return(true))
        .WillOnce(Return(false));
    EXPECT_TRUE(open->UpdateContentDefinition("UDMPart"));
    EXPECT_FALSE(open->UpdateContentDefinition("UDMPart"));
}

TEST(UDMDBCtrl, UpdateWithMetadataNeverForcesAndGivesTheRuntimesAnswer) {
    OpenSession open;
    EXPECT_CALL(*open.profile, UpdateContentDefinition(kxString("UDMPart"), ElementsAre(), false))
        .WillOnce(Return(false));
    kxStlVector<Metadata> none;
    EXPECT_FALSE(open->UpdateContentDefinition("UDMPart", none));
}

}  // namespace
}  // namespace kxct
