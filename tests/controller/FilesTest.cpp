// Files of contents, alone and as contents of their own; folders and files in bulk.
#include "tests/controller/ControllerFixture.h"

namespace kxct::test {
namespace {

using mock::IsHandle;
using testing::_;
using testing::ElementsAre;
using testing::InSequence;
using testing::Return;

class ControllerImplFiles : public ControllerTest {
  protected:
    ControllerImplFiles() {
        Entity("A:1", "UDMPart", "Bracket");
        Entity("N:0", "UDMFile", "new");
        item = ItemOf("A:1");
        ON_CALL(*profile, CreateEntity).WillByDefault([this](const kxString&, const kxString&) {
            return HandleOf("N:0");
        });
        ON_CALL(*profile, BeginAddFile).WillByDefault([this](const kxudm::UDMItemHandle& handle) {
            return kxudm::AddFileBuilder(
                [this, uid = handle.GetUID()](const kxString& path, bool external) {
                    added.push_back(uid + " " + path + (external ? " external" : ""));
                });
        });
    }

    bool AddLong(const kxString& path, bool flag = false) {
        return controller->AddFile(item, "UDMFile", "deck", path, flag, "files");
    }

    Item* item = nullptr;
    std::vector<std::string> added;
};

TEST_F(ControllerImplFiles, AFileIsAddedWithItsFlag) {
    EXPECT_TRUE(controller->AddFile(item, "/data/a.inp", false));
    EXPECT_TRUE(controller->AddFile(item, "/data/b.inp", true));
    EXPECT_THAT(added, ElementsAre("A:1 /data/a.inp", "A:1 /data/b.inp external"));
}

TEST_F(ControllerImplFiles, OnlyAContentTakesAFile) {
    EXPECT_CALL(*profile, CreateEntity).Times(0);
    for (Item* other :
         {static_cast<Item*>(nullptr), GroupNodeOf("A:1"), ItemOf("A:1", MANAGER_HISTORY)}) {
        EXPECT_FALSE(controller->AddFile(other, "/a", false));
        EXPECT_FALSE(controller->AddFile(other, "UDMFile", "deck", "/a", false, "files"));
    }
    EXPECT_THAT(added, testing::IsEmpty());
}

TEST_F(ControllerImplFiles, TheLongFormMakesLinksNamesAndFillsAContent) {
    InSequence order;
    EXPECT_CALL(*profile, CreateEntity(kxString("UDMFile"), kxString("lc 1.inp")));
    EXPECT_CALL(*profile, AddChild(IsHandle("A:1"), IsHandle("N:0"), kxString("files")));
    EXPECT_CALL(*profile,
                SetAttributeValue(IsHandle("N:0"), kxString("displayname"), kxVariant("lc 1.inp")));
    EXPECT_CALL(*profile,
                SetAttributeValue(IsHandle("N:0"), kxString("filetype"), kxVariant("deck")));
    EXPECT_CALL(*profile, BeginAddFile(IsHandle("N:0")));
    EXPECT_TRUE(AddLong("/data/run.d/lc 1.inp", true));
    EXPECT_THAT(added, ElementsAre("N:0 /data/run.d/lc 1.inp external"));
}

TEST_F(ControllerImplFiles, TheLongFormTakesTheNameWithoutItsFolders) {
    const struct {
        const char* path;
        const char* name;
    } table[] = {{"deck.inp", "deck.inp"},
                 {"/a/b.c/noextension", "noextension"},
                 {"/a/.hidden", ".hidden"},
                 {"/a/gr\xC3\xBC\xC3\x9F.inp", "gr\xC3\xBC\xC3\x9F.inp"}};
    for (const auto& [path, name] : table) {
        EXPECT_CALL(*profile, CreateEntity(_, kxString(name)));
        EXPECT_TRUE(AddLong(path)) << path;
    }
}

TEST_F(ControllerImplFiles, TheLongFormUsesTheNameAlsoWhereItExists) {
    EXPECT_CALL(*profile, GetChildren).Times(0);
    EXPECT_TRUE(AddLong("/a.inp"));
}

TEST_F(ControllerImplFiles, WithoutANewContentTheItemIsLeftAlone) {
    ON_CALL(*profile, CreateEntity).WillByDefault(Fail());
    EXPECT_CALL(*profile, AddChild).Times(0);
    EXPECT_CALL(*profile, SetAttributeValue).Times(0);
    EXPECT_CALL(*profile, BeginAddFile).Times(0);
    EXPECT_FALSE(AddLong("/a.inp"));
}

// The answers of linking and of setting attributes are not looked at.
TEST_F(ControllerImplFiles, AFailingLinkOrAttributeDoesNotKeepTheFileOut) {
    ON_CALL(*profile, AddChild).WillByDefault(Fail());
    ON_CALL(*profile, SetAttributeValue).WillByDefault(Fail());
    EXPECT_TRUE(AddLong("/a.inp"));
    EXPECT_THAT(added, ElementsAre("N:0 /a.inp"));
}

TEST_F(ControllerImplFiles, AFailingFileLeavesTheNewContent) {
    ON_CALL(*profile, BeginAddFile).WillByDefault(Fail());
    EXPECT_CALL(*profile, AddChild);
    EXPECT_CALL(*profile, DeleteEntity).Times(0);
    EXPECT_FALSE(AddLong("/a.inp"));
}

// A subclass that hears of attributes.
class HearingController : public ControllerProbe {
  public:
    using ControllerProbe::ControllerProbe;
    using ControllerProbe::SetAttributeValue;
    bool SetAttributeValue(Item*, const kxString& attribute, kxVariant& value) override {
        heard.push_back(attribute + "=" + value.GetString());
        return false;
    }
    std::vector<std::string> heard;
};

TEST_F(ControllerImplFiles, TheLongFormSetsAttributesThroughTheController) {
    HearingController hearing(&Manager(), "Demo", "Work", "anna", "secret");
    EXPECT_CALL(*profile, SetAttributeValue).Times(0);
    EXPECT_TRUE(hearing.AddFile(
        hearing.GetItem("A:1", false), "UDMFile", "deck", "/d/a.inp", false, "files"));
    EXPECT_THAT(hearing.heard, ElementsAre("displayname=a.inp", "filetype=deck"));
}

TEST_F(ControllerImplFiles, BulkFoldersAndFilesPassUnchangedAndAnswerTheRuntimesNumber) {
    const kxStlVector<kxString> folders{"/a", "/b"};
    const kxStlVector<kxString> files{"/c.inp"};
    const kxStlMap<kxString, kxString> options{{"type", "UDMFile"}};
    EXPECT_CALL(*profile, AddFoldersAndFiles(folders, files, kxString("/root"), options))
        .WillOnce(Return(17));
    EXPECT_EQ(controller->AddFoldersAndFiles(folders, files, "/root", options), 17);
}

TEST_F(ControllerImplFiles, AFailureOfBulkFilesPassesWithItsText) {
    ON_CALL(*profile, AddFoldersAndFiles).WillByDefault(Fail());
    try {
        controller->AddFoldersAndFiles({}, {}, "/", {});
        FAIL() << "no exception";
    } catch (const KXCTException& failure) {
        EXPECT_THAT(failure.what(),
                    testing::StartsWith("int __cdecl kxct::UDMDBCtrl::AddFoldersAndFiles("));
        EXPECT_THAT(failure.what(), testing::EndsWith(") the runtime says no"));
    }
}

}  // namespace
}  // namespace kxct::test
