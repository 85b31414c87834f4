// The attributes that tell of a content's file.
#include <kxudm/UDMQuerySettings.h>

#include "ImportTree.h"
#include "Revisions.h"

namespace kxudm::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char OF_ABC[] = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";

class FileHash : public ImportFixture {
  protected:
    UDMItemHandle Content(const std::string& name) {
        Write(name, "abc");
        const UDMItemHandle content = ann->CreateEntity("Document", name);
        Add(content, name);
        return content;
    }
    void Add(const UDMItemHandle& content, const std::string& name, bool external = false) {
        ann->BeginAddFile(content).setFilePath(Path(name)).setIsExternal(external).go();
    }
    static kxVariant Of(const UDMItemHandle& content) {
        return content.GetAttributeValue("smd_filehash");
    }
    static Names With(const ProfilePtr& profile, const std::string& hash) {
        kxStlVector<UDMItemHandle> hits;
        profile->RunQuery(
            hits, "attrib.smd_filehash == \"" + hash + "\"", -1, 0, 0, {}, false, false);
        return DisplayNames(hits);
    }
};

TEST_F(FileHash, IsThatOfTheOneFile) {
    const UDMItemHandle content = Content("a.bin");
    EXPECT_EQ(Of(content), kxVariant(OF_ABC));
    EXPECT_THAT(With(ann, OF_ABC), ElementsAre("a.bin"));
    EXPECT_THROW(ann->SetAttributeValue(content, "smd_filehash", "0"), UDMException);
}

TEST_F(FileHash, IsEmptyWithoutAFileWithSeveralAndWithAnExternalOne) {
    const UDMItemHandle none = ann->CreateEntity("Document", "none");
    const UDMItemHandle two = Content("a.bin");
    Write("b.bin", "abc");
    Add(two, "b.bin");
    const UDMItemHandle external = ann->CreateEntity("Document", "external");
    Add(external, "a.bin", true);
    EXPECT_TRUE(Of(none).IsEmpty());
    EXPECT_TRUE(Of(two).IsEmpty());
    EXPECT_TRUE(Of(external).IsEmpty());
    EXPECT_THAT(With(ann, OF_ABC), IsEmpty());
    ann->RemoveFile(two, "b.bin");
    EXPECT_EQ(Of(two), kxVariant(OF_ABC));
}

TEST_F(FileHash, IsThatOfEachRevisionForThoseWhoSeeIt) {
    const ProfilePtr bob = Open("bob");
    const UDMItemHandle one = Publish(ann, Content("a.bin"));
    const UDMItemHandle two = CheckOut(ann, one);
    Write("a.bin", "abcd");
    ann->ReAddFile(two, Path("a.bin"), false, false);
    EXPECT_EQ(Of(one), kxVariant(OF_ABC));
    EXPECT_NE(Of(two), kxVariant(OF_ABC));
    EXPECT_THAT(With(ann, OF_ABC), IsEmpty());
    EXPECT_THAT(With(ann, Of(two).GetString()), ElementsAre("a.bin"));
    EXPECT_THAT(With(bob, OF_ABC), ElementsAre("a.bin"));
    Publish(ann, two);
    EXPECT_THAT(With(bob, OF_ABC), IsEmpty());
}

class ImportedFile : public ImportFixture {
  protected:
    ImportedFile() {
        Write("tree/a.bin", "abc");
        Import({{"publish", "true"}});
        content = CheckOut(ann, Find(ann, "/tree", "a.bin"));
    }
    static kxVariant Size(const UDMItemHandle& handle) {
        return handle.GetAttributeValue("filesize");
    }
    static kxVariant Modified(const UDMItemHandle& handle) {
        return handle.GetAttributeValue("filelastmodified");
    }
    // Another file of the name, of another day.
    std::string Changed() {
        std::string path = Write("tree/a.bin", "abcdef");
        std::filesystem::last_write_time(
            path, std::filesystem::last_write_time(path) + std::chrono::hours(24));
        return path;
    }
    UDMItemHandle content;
};

TEST_F(ImportedFile, F16_IsToldAnewOnceItIsReplaced) {
    const kxVariant before = Modified(content);
    const auto told = Listen(ann);
    ann->ReAddFile(content, Changed(), false, false);
    EXPECT_EQ(told->Take(), Names{"3 a.bin"});
    EXPECT_EQ(Size(content), kxVariant(6LL));
    EXPECT_NE(Modified(content), before);
    EXPECT_EQ(Size(Open("ann")->GetEntity(content.GetUID())), kxVariant(6LL));
    EXPECT_EQ(Size(ann->GetEntity(At(content, 1))), kxVariant(3LL));
    ann->UndoCheckout(content);
    EXPECT_EQ(Size(Newest(ann, content)), kxVariant(3LL));
    EXPECT_EQ(Modified(Newest(ann, content)), before);
}

TEST_F(ImportedFile, F16_IsToldAsBeforeWhereABulkEditIsTakenBack) {
    {
        UDMBulkEdit edit(ann);
        ann->ReAddFile(content, Changed(), false, false);
        EXPECT_EQ(Size(content), kxVariant(6LL));
    }
    EXPECT_EQ(Size(content), kxVariant(3LL));
}

TEST_F(ImportedFile, F16_IsToldNoMoreOnceItIsRemoved) {
    ann->RemoveFile(content, "a.bin");
    EXPECT_TRUE(Size(content).IsEmpty());
    EXPECT_TRUE(Modified(content).IsEmpty());
}

TEST_F(ImportedFile, F16_WhatSomebodyElseHasSetStays) {
    ann->SetAttributeValue(content, "filesize", 4711);
    ann->ReAddFile(content, Changed(), false, false);
    EXPECT_EQ(Size(content), kxVariant(4711LL));
    Write("b.bin", "xyz");
    ann->BeginAddFile(content).setFilePath(Path("b.bin")).go();
    ann->RemoveFile(content, "b.bin");
    EXPECT_EQ(Size(content), kxVariant(4711LL));
}

}  // namespace
}  // namespace kxudm::test
