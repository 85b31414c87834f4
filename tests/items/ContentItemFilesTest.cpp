#include <kxudm/UDMGenericDocument.h>

#include "tests/items/Fixture.h"

namespace kxct::test {
namespace {

using kxudm::AddFileBuilder;
using kxudm::UDMGenericDocument;
using mock::IsHandle;
using ::testing::_;
using ::testing::ElementsAre;
using ::testing::InSequence;
using ::testing::Return;
using ::testing::Throw;

class ContentItemFiles : public ContentTest {
  protected:
    ContentItemFiles() {
        child = Content(boost::make_shared<mock::FakeItemState>("B:1", "UDMPart", "Child"));
        ON_CALL(*profile, GetWorkingHandle).WillByDefault([](const kxudm::UDMItemHandle& handle) {
            return handle;
        });
    }

    Item* child = nullptr;
    Names names;
};

TEST_F(ContentItemFiles, ChecksOutAndUndoes) {
    EXPECT_CALL(*profile, Checkout(IsHandle("A:1"), kxString("why")))
        .WillOnce(Return())
        .WillOnce(Throw(std::runtime_error("held by ben")));
    EXPECT_CALL(*profile, UndoCheckout(IsHandle("A:1")))
        .WillOnce(Return())
        .WillOnce(Throw(std::runtime_error("never published")));
    EXPECT_TRUE(content->Checkout("why"));
    EXPECT_FALSE(content->Checkout("why"));
    EXPECT_TRUE(content->UndoCheckout());
    EXPECT_FALSE(content->UndoCheckout());
}

TEST_F(ContentItemFiles, SavesAndPublishes) {
    EXPECT_CALL(*profile, SaveEntity(IsHandle("A:1"), kxString("c"), true));
    EXPECT_CALL(*profile, PersistEntity(IsHandle("A:1"), kxString("d"), true, true, true));
    EXPECT_TRUE(content->Save("c"));
    EXPECT_TRUE(content->Persist("d", true));
    EXPECT_CALL(*profile, GetWorkingHandle).WillRepeatedly(Throw(std::runtime_error("none")));
    EXPECT_FALSE(content->Save("c"));
    EXPECT_FALSE(content->Persist("d", false));
}

TEST_F(ContentItemFiles, AddsAndRemovesChildren) {
    EXPECT_CALL(*profile, AddChild(IsHandle("A:1"), IsHandle("B:1"), kxString("reps")))
        .WillOnce(Return())
        .WillOnce(Throw(std::runtime_error("cycle")));
    EXPECT_CALL(*profile, RemoveChild(IsHandle("A:1"), IsHandle("B:1")))
        .WillOnce(Return())
        .WillOnce(Throw(std::runtime_error("no link")));
    EXPECT_TRUE(content->Add(child, "reps"));
    EXPECT_FALSE(content->Add(child, "reps"));
    EXPECT_TRUE(content->Remove(child));
    EXPECT_FALSE(content->Remove(child));
}

TEST_F(ContentItemFiles, ANullChildIsRefused) {
    EXPECT_CALL(*profile, AddChild).Times(0);
    EXPECT_FALSE(content->Add(nullptr, "reps"));
    EXPECT_FALSE(content->Remove(nullptr));
}

TEST_F(ContentItemFiles, ReplacesAndRemovesFiles) {
    EXPECT_CALL(*profile, ReAddFile(IsHandle("A:1"), kxString("/a/b.inp"), true, false))
        .WillOnce(Return())
        .WillOnce(Throw(std::runtime_error("no such document")));
    EXPECT_CALL(*profile, RemoveFile(IsHandle("A:1"), kxString("b.inp")))
        .WillOnce(Return())
        .WillOnce(Throw(std::runtime_error("no such document")));
    EXPECT_TRUE(content->ReAddFile("/a/b.inp", true, false));
    EXPECT_FALSE(content->ReAddFile("/a/b.inp", true, false));
    EXPECT_TRUE(content->RemoveFile("b.inp"));
    EXPECT_FALSE(content->RemoveFile("b.inp"));
}

TEST_F(ContentItemFiles, RetrievesAllFilesIntoAFolder) {
    EXPECT_CALL(*profile, RetrieveFilesToFolder(IsHandle("A:1"), kxString("/f"), true, false, _))
        .WillOnce([](auto&&, auto&&, auto&&, auto&&, Names& paths) { paths.push_back("/f/x"); })
        .WillOnce(Throw(std::runtime_error("differs")));
    EXPECT_TRUE(content->RetrieveFilesIntoFolder("/f", names, true, false));
    EXPECT_THAT(names, ElementsAre("/f/x"));
    EXPECT_FALSE(content->RetrieveFilesIntoFolder("/f", names, true, false));
    EXPECT_CALL(*profile, RetrieveFilesToFolder(IsHandle("A:1"), kxString("/g"), false, false, _));
    EXPECT_TRUE(content->RetrieveFilesIntoFolder("/g"));
}

TEST_F(ContentItemFiles, RetrievesOneFileIntoAFolder) {
    EXPECT_CALL(*profile,
                RetrieveFilesToPath(IsHandle("A:1"), kxString("/f"), _, kxString("x.inp")))
        .WillOnce([](auto&&, auto&&, Names& paths, auto&&) { paths.push_back("/f/x.inp"); })
        .WillOnce(Throw(std::runtime_error("no such document")));
    EXPECT_TRUE(content->RetrieveFilesIntoFolder("/f", "x.inp", names));
    EXPECT_THAT(names, ElementsAre("/f/x.inp"));
    EXPECT_FALSE(content->RetrieveFilesIntoFolder("/f", "x.inp", names));
}

TEST_F(ContentItemFiles, RetrievesIntoTheWorkspace) {
    EXPECT_CALL(*profile, RetrieveFilesIntoWorkspace(IsHandle("A:1"), false, true, _));
    EXPECT_CALL(*profile, RetrieveFilesIntoWorkspace(IsHandle("A:1"), false, false, _))
        .WillOnce(Return())
        .WillOnce(Throw(std::runtime_error("full")));
    EXPECT_TRUE(content->RetrieveFilesIntoWorkspace(names, false, true));
    EXPECT_TRUE(content->RetrieveFilesIntoWorkspace());
    EXPECT_FALSE(content->RetrieveFilesIntoWorkspace());
}

TEST_F(ContentItemFiles, ListsItsDocuments) {
    ON_CALL(*profile, GetDocuments(IsHandle("A:1"), _, true))
        .WillByDefault([](auto&&, kxStlVector<UDMGenericDocument>& out, bool) {
            out.push_back(UDMGenericDocument("a.inp", "/v/1", "deck", "2026", 12, true));
            out.push_back(UDMGenericDocument("b.frd", "/v/2", "result", "2025", 34, false));
        });
    Names paths({"before"});
    EXPECT_TRUE(content->GetDocuments(paths));
    EXPECT_THAT(paths, ElementsAre("before", "/v/1", "/v/2"));
    EXPECT_TRUE(content->GetDocumentNames(names));
    EXPECT_THAT(names, ElementsAre("a.inp", "b.frd"));
    kxStlVector<DocumentInfo> info;
    EXPECT_TRUE(content->GetDocumentInfo(info));
    ASSERT_EQ(info.size(), 2u);
    EXPECT_EQ(info[0].name, "a.inp");
    EXPECT_EQ(info[0].lastModified, "2026");
    EXPECT_EQ(info[0].type, "deck");
    EXPECT_EQ(info[0].path, "/v/1");
    EXPECT_EQ(info[0].size, 12);
    EXPECT_TRUE(info[0].isText);
    EXPECT_FALSE(info[1].isText);
}

TEST_F(ContentItemFiles, AContentWithoutFilesListsNoneAndAnswersTrue) {
    EXPECT_TRUE(content->GetDocuments(names));
    EXPECT_TRUE(content->GetDocumentNames(names));
    EXPECT_TRUE(names.empty());
}

TEST_F(ContentItemFiles, AFailingListAnswersFalse) {
    EXPECT_CALL(*profile, GetDocuments).WillRepeatedly(Throw(std::runtime_error("no")));
    EXPECT_FALSE(content->GetDocuments(names));
    ContentItem empty(manager.get(), session.get(), kxudm::UDMItemHandle());
    EXPECT_FALSE(empty.GetDocumentNames(names));
    EXPECT_TRUE(names.empty());
}

TEST_F(ContentItemFiles, AddFileNamesTheContentAfterItsFile) {
    const InSequence order;
    EXPECT_CALL(
        *profile,
        SetAttributeValue(IsHandle("A:1"), kxString("displayname"), kxVariant("Brücke 1.inp")));
    EXPECT_CALL(*profile,
                SetAttributeValue(IsHandle("A:1"), kxString("filetype"), kxVariant("deck")));
    EXPECT_CALL(*profile, BeginAddFile(IsHandle("A:1"))).WillOnce([&](auto&&) {
        return AddFileBuilder([&](const kxString& path, bool external) {
            names.push_back(path);
            names.push_back(external ? "external" : "kept");
        });
    });
    EXPECT_TRUE(content->AddFile("deck", "/a/b/Brücke 1.inp", true));
    EXPECT_THAT(names, ElementsAre("/a/b/Brücke 1.inp", "external"));
}

TEST_F(ContentItemFiles, AddFileOfAPathThatEndsInASeparatorIsNamedAsTheLibraryNamesIt) {
    EXPECT_CALL(*profile, SetAttributeValue(_, kxString("displayname"), kxVariant(".")));
    EXPECT_CALL(*profile, SetAttributeValue(_, kxString("filetype"), _));
    EXPECT_TRUE(content->AddFile("deck", "/a/b/", false));
}

TEST_F(ContentItemFiles, AddFileEndsAtTheFirstFailure) {
    EXPECT_CALL(*profile, SetAttributeValue(_, kxString("displayname"), _))
        .WillOnce(Return())
        .WillOnce(Throw(std::runtime_error("read-only")));
    EXPECT_CALL(*profile, SetAttributeValue(_, kxString("filetype"), _))
        .WillOnce(Throw(std::runtime_error("no such type")));
    EXPECT_CALL(*profile, BeginAddFile).Times(0);
    EXPECT_FALSE(content->AddFile("deck", "/a/b", false));
    EXPECT_FALSE(content->AddFile("deck", "/a/b", false));
}

TEST_F(ContentItemFiles, AddFileAnswersFalseWhenTheFileCannotBeAdded) {
    EXPECT_CALL(*profile, BeginAddFile).WillOnce(Throw(std::runtime_error("no such file")));
    EXPECT_FALSE(content->AddFile("deck", "/a/b", false));
}

struct NameCase {
    const char* displayName;
    std::vector<const char*> siblings;
    const char* expected;
};

void PrintTo(const NameCase& name, std::ostream* out) {
    *out << name.displayName << " beside " << name.siblings.size();
}

class ContentItemAddItem : public ContentTest, public ::testing::WithParamInterface<NameCase> {};

TEST_P(ContentItemAddItem, FindsAFreeName) {
    definitions->Add("Model").displayName = GetParam().displayName;
    Handles siblings;
    for (const char* name : GetParam().siblings) {
        siblings.push_back(mock::NewHandle("S:1", "Model", name));
    }
    const kxString expected(GetParam().expected);
    const InSequence order;
    EXPECT_CALL(*profile, GetChildren(_, IsHandle("A:1"), kxString("reps"), kxString()))
        .WillOnce(Give(siblings));
    EXPECT_CALL(*profile,
                CreateAndAddChild(kxString("Model"), expected, IsHandle("A:1"), kxString("reps")))
        .WillOnce(Return(mock::NewHandle("N:0")));
    EXPECT_CALL(*profile,
                SetAttributeValue(IsHandle("N:0"), kxString("displayname"), kxVariant(expected)));
    kxudm::UDMItemHandle handle;
    EXPECT_TRUE(content->AddItem(handle, "reps", "Model"));
    EXPECT_EQ(handle.GetUID(), "N:0");
}

INSTANTIATE_TEST_SUITE_P(AmongSiblings,
                         ContentItemAddItem,
                         ::testing::Values(NameCase{"Model", {}, "Model"},
                                           NameCase{"Model", {"Model", "Model1"}, "Model2"},
                                           NameCase{"Model", {"Model1"}, "Model"},
                                           NameCase{"Model", {"model"}, "Model"},
                                           NameCase{
                                               "Model", {"Model2", "Model", "Model"}, "Model1"},
                                           NameCase{"", {}, "new_item"},
                                           NameCase{"", {"new_item"}, "new_item1"}));

TEST_F(ContentItemFiles, AddItemAnswersFalseAtAnyFailure) {
    kxudm::UDMItemHandle handle;
    EXPECT_FALSE(content->AddItem(handle, "reps", "Unknown"));
    definitions->Add("Model");
    EXPECT_CALL(*profile, CreateAndAddChild).WillOnce(Throw(std::runtime_error("not allowed")));
    EXPECT_FALSE(content->AddItem(handle, "reps", "Model"));
    EXPECT_TRUE(handle.IsEmpty());
}

TEST_F(ContentItemFiles, NothingReachesTheRuntimeWithoutASession) {
    ContentItem alone(manager.get(), nullptr, mock::HandleOf(state));
    kxudm::UDMItemHandle handle;
    kxStlVector<DocumentInfo> info;
    EXPECT_FALSE(alone.Checkout("c"));
    EXPECT_FALSE(alone.UndoCheckout());
    EXPECT_FALSE(alone.Save("c"));
    EXPECT_FALSE(alone.Persist("c", true));
    EXPECT_FALSE(alone.Add(child, "reps"));
    EXPECT_FALSE(alone.Remove(child));
    EXPECT_FALSE(alone.ReAddFile("p", true, true));
    EXPECT_FALSE(alone.RemoveFile("p"));
    EXPECT_FALSE(alone.RetrieveFilesIntoFolder("f", names, true, true));
    EXPECT_FALSE(alone.RetrieveFilesIntoFolder("f", "d", names));
    EXPECT_FALSE(alone.RetrieveFilesIntoFolder("f"));
    EXPECT_FALSE(alone.RetrieveFilesIntoWorkspace(names, true, true));
    EXPECT_FALSE(alone.RetrieveFilesIntoWorkspace());
    EXPECT_FALSE(alone.GetDocuments(names));
    EXPECT_FALSE(alone.GetDocumentNames(names));
    EXPECT_FALSE(alone.GetDocumentInfo(info));
    EXPECT_FALSE(alone.AddFile("t", "p", true));
    EXPECT_FALSE(alone.AddItem(handle, "g", "d"));
}

TEST_F(ContentItemFiles, WhatIsNoStandardExceptionTravelsOn) {
    EXPECT_CALL(*profile, Checkout).WillOnce(Throw(42));
    EXPECT_THROW(content->Checkout("c"), int);
}

}  // namespace
}  // namespace kxct::test
