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

}  // namespace
}  // namespace kxudm::test
