// Documents that are added and replaced within a bulk edit.
#include <cerrno>

#include "Files.h"

namespace kxudm::test {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class FilesInABulkEdit : public Files {
  protected:
    ~FilesInABulkEdit() override { layer.before = nullptr; }

    // Publishes one part more with the document "deck" of this content.
    UDMItemHandle Published(const std::string& content) {
        const UDMItemHandle part = layered->CreateEntity("Part", "Wheel");
        AddFile(layered, part, Write("deck", content));
        layered->PersistEntity(part, "first", false, true, true);
        return Newest(part);
    }
    UDMItemHandle Newest(const UDMItemHandle& handle) {
        const kxString uid = handle.GetUID();
        return layered->GetEntity(uid.substr(0, uid.find(':')));
    }
    void CheckOutAndReplace(const UDMItemHandle& handle, const std::string& content) {
        layered->Checkout(handle, "next");
        layered->ReAddFile(Newest(handle), Write("deck", content), false, false);
    }
    std::string VaultFolder() { return library.BaseDirectory() + "/vault"; }

    vault::MeddlingLayer layer;
    ProfilePtr layered = OpenOver(layer);
};

TEST_F(FilesInABulkEdit, AreFlushedTogetherBeforeTheirRows) {
    std::vector<UDMItemHandle> parts;
    for (int i = 0; i < 20; ++i) {
        parts.push_back(Published("old " + std::to_string(i)));
    }
    std::vector<std::string> flushes;
    std::vector<std::size_t> renamedBefore;
    std::size_t renamed = 0;  // tries, too, that find no folder yet
    layer.before = [&](const std::string& call, const std::string& /*path*/) {
        if (call.rfind("Flush", 0) == 0) {
            flushes.push_back(call);
            renamedBefore.push_back(renamed);
        }
        renamed += call == "Rename" ? 1 : 0;
    };
    UDMBulkEdit edit(layered);
    for (std::size_t i = 0; i < parts.size(); ++i) {
        CheckOutAndReplace(parts[i], "new " + std::to_string(i));
        AddFile(layered, Newest(parts[i]), Write("more", "more " + std::to_string(i)));
        layered->PersistEntity(Newest(parts[i]), "second", false, true, true);
    }
    EXPECT_THAT(flushes, IsEmpty());
    edit.Commit();
    layer.before = nullptr;
    EXPECT_THAT(flushes, ElementsAre("FlushFileSystem", "FlushFileSystem"));
    EXPECT_THAT(renamedBefore, ElementsAre(0U, testing::Ge(40U)));
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const std::string number = std::to_string(i);
        EXPECT_THAT(Contents(layered, Newest(parts[i])),
                    ElementsAre("deck=new " + number, "more=more " + number));
    }
}

TEST_F(FilesInABulkEdit, AreThereForItsSession) {
    const UDMItemHandle part = Published("old");
    UDMBulkEdit edit(layered);
    CheckOutAndReplace(part, "new");
    EXPECT_THAT(Contents(layered, Newest(part)), ElementsAre("deck=new"));
    CheckOutAndReplace(Published("another"), "newer");
    const auto documents = Documents(layered, Newest(part));
    ASSERT_EQ(documents.size(), 1U);
    EXPECT_TRUE(Exists(documents.front().GetPath()));
    edit.Commit();
    EXPECT_THAT(Contents(layered, Newest(part)), ElementsAre("deck=new"));
}

TEST_F(FilesInABulkEdit, OfOneContentAreStoredOnce) {
    const UDMItemHandle first = Published("1");
    const UDMItemHandle second = Published("2");
    const std::size_t before = vault::CountFiles(VaultFolder());
    UDMBulkEdit edit(layered);
    CheckOutAndReplace(first, "same");
    CheckOutAndReplace(second, "same");
    edit.Commit();
    EXPECT_EQ(vault::CountFiles(VaultFolder()), before + 1);
    EXPECT_THAT(Contents(layered, Newest(second)), ElementsAre("deck=same"));
}

TEST_F(FilesInABulkEdit, LeaveNothingWithoutCommit) {
    const UDMItemHandle part = Published("old");
    const std::size_t before = vault::CountFiles(VaultFolder());
    {
        UDMBulkEdit edit(layered);
        CheckOutAndReplace(part, "new");
    }
    EXPECT_EQ(vault::CountFiles(VaultFolder()), before);
    EXPECT_EQ(vault::Temporaries(VaultFolder()), 0U);
    EXPECT_THAT(Contents(layered, Newest(part)), ElementsAre("deck=old"));
    EXPECT_EQ(Newest(part).GetRevision(), 1);
}

TEST_F(FilesInABulkEdit, ThatCannotBeFlushedTakeAllOfItBack) {
    const UDMItemHandle part = Published("old");
    for (const bool read : {false, true}) {
        UDMBulkEdit edit(layered);
        CheckOutAndReplace(part, "new");
        layer.before = [](const std::string& call, const std::string& path) {
            if (call == "FlushFileSystem") {
                throw vault::FileError(EIO, "flushed", path);
            }
        };
        if (read) {
            // Who looks at the content meets the failure first, and it stays one.
            EXPECT_THROW(Contents(layered, Newest(part)), UDMStoreException);
            layer.before = nullptr;
            EXPECT_THROW(Contents(layered, Newest(part)), UDMStoreException);
        }
        EXPECT_THROW(edit.Commit(), UDMStoreException);
        layer.before = nullptr;
        EXPECT_THAT(Contents(layered, Newest(part)), ElementsAre("deck=old"));
        EXPECT_EQ(Newest(part).GetRevision(), 1);
        EXPECT_EQ(vault::Temporaries(VaultFolder()), 0U);
    }
    UDMBulkEdit edit(layered);
    CheckOutAndReplace(part, "new");
    edit.Commit();
    EXPECT_THAT(Contents(layered, Newest(part)), ElementsAre("deck=new"));
}

TEST_F(FilesInABulkEdit, GoIntoTheVaultsOfTheirEntities) {
    const UDMItemHandle first = Published("1");
    const UDMItemHandle second = Published("2");
    UDMBulkEdit edit(layered);
    CheckOutAndReplace(first, "common");
    layered->Checkout(second, "next");
    layered->SetVault(Newest(second), library.BaseDirectory() + "/other");
    layered->ReAddFile(Newest(second), Write("deck", "other"), false, false);
    edit.Commit();
    EXPECT_EQ(vault::CountFiles(library.BaseDirectory() + "/other"), 1U);
    EXPECT_THAT(Contents(layered, Newest(first)), ElementsAre("deck=common"));
    EXPECT_THAT(Contents(layered, Newest(second)), ElementsAre("deck=other"));
}

}  // namespace
}  // namespace kxudm::test
