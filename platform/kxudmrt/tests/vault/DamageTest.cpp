// Every byte of a stored file counts.
#include <filesystem>

#include "Support.h"
#include "vault/Vault.h"

namespace kxudm::vault {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

class DamageTest : public testing::TestWithParam<bool> {
  protected:
    DamageTest() {
        const std::string content = GetParam() ? Deck(400) : "A deck that is too short to shrink";
        stored_ = vault_.Add(folder_.Write("source", content));
        file_ = FileOf(vault_, stored_.hash);
        bytes_ = ReadFile(file_);
        std::filesystem::permissions(file_, std::filesystem::perms::all);
        folder_.Write("target", "mine");
    }

    void Put(const std::string& bytes) const {
        folder_.Write("damaged", bytes);
        std::filesystem::rename(folder_.File("damaged"), file_);
    }

    // Both that verify and that retrieval notice, and that the target stays.
    void ExpectNoticed(const std::string& bytes, const std::string& what) {
        Put(bytes);
        const Finding finding = vault_.Verify(stored_.hash);
        EXPECT_EQ(finding.state, Finding::State::Damaged) << what;
        EXPECT_THAT(finding.problem,
                    AllOf(StartsWith("The stored file '" + file_ +
                                     "' is damaged and doesn't hold content " + stored_.hash),
                          HasSubstr("; restore it from a backup, or remove it and add the file "
                                    "again")))
            << what;
        const std::string target = folder_.File("target");
        EXPECT_THROW(vault_.Retrieve(stored_.hash, target, {.overwrite = true}), DamagedException)
            << what;
        EXPECT_EQ(ReadFile(target), "mine") << what;
        folder_.Write("target", "mine");
        EXPECT_FALSE(ErrorOf([&] { (void)vault_.ReadText(stored_.hash, 1 << 20); }).empty())
            << what;
    }

    Folder folder_;
    Vault vault_{folder_.File("vault")};
    Stored stored_;
    std::string file_;
    std::string bytes_;
};

INSTANTIATE_TEST_SUITE_P(PlainAndCompressed, DamageTest, testing::Bool());

TEST_P(DamageTest, EveryBitThatIsAlteredIsNoticed) {
    ASSERT_EQ(stored_.compressed, GetParam());
    for (std::size_t i = 0; i < bytes_.size(); ++i) {
        for (unsigned bit = 0; bit < 8; ++bit) {
            std::string altered = bytes_;
            altered[i] = static_cast<char>(static_cast<unsigned char>(altered[i]) ^ (1U << bit));
            ExpectNoticed(altered, "bit " + std::to_string(bit) + " of byte " + std::to_string(i));
        }
    }
    Put(bytes_);
    EXPECT_EQ(Problems(vault_), "");
}

TEST_P(DamageTest, EveryByteThatIsAlteredIsNoticed) {
    for (std::size_t i = 0; i < bytes_.size(); ++i) {
        std::string altered = bytes_;
        altered[i] = static_cast<char>(~altered[i]);
        ExpectNoticed(altered, "byte " + std::to_string(i));
    }
}

TEST_P(DamageTest, EveryTruncationIsNoticed) {
    for (std::size_t length = 0; length < bytes_.size(); ++length) {
        ExpectNoticed(bytes_.substr(0, length), "length " + std::to_string(length));
    }
}

TEST_P(DamageTest, BytesBehindTheEndAreNoticed) {
    ExpectNoticed(bytes_ + '\0', "a byte");
    ExpectNoticed(bytes_ + bytes_, "itself");
    // A frame that decompressors skip: further bytes of no content.
    ExpectNoticed(bytes_ + std::string("\x50\x2A\x4D\x18\0\0\0\0", 8), "a skippable frame");
}

TEST_P(DamageTest, ADamageOfOnlyItsEndLeavesTheTargetUntouched) {
    // Larger than the reader's memory, so that much is written before the damage shows.
    const std::string content = GetParam() ? Deck(5 * kBlock) : Noise(5 * kBlock);
    const Stored large = vault_.Add(folder_.Write("large", content));
    const std::string file = FileOf(vault_, large.hash);
    std::string altered = ReadFile(file);
    altered.back() = static_cast<char>(~altered.back());
    folder_.Write("damaged", altered);
    std::filesystem::rename(folder_.File("damaged"), file);
    const std::size_t files = CountFiles(folder_.Path());
    EXPECT_THROW(vault_.Retrieve(large.hash, folder_.File("target"), {.overwrite = true}),
                 DamagedException);
    EXPECT_EQ(ReadFile(folder_.File("target")), "mine");
    EXPECT_EQ(CountFiles(folder_.Path()), files);
}

TEST_P(DamageTest, AMissingFileIsToldApartFromADamagedOne) {
    std::filesystem::remove(file_);
    EXPECT_EQ(vault_.Verify(stored_.hash).state, Finding::State::Missing);
    std::filesystem::create_directory(file_);
    EXPECT_EQ(vault_.Verify(stored_.hash).state, Finding::State::Unreadable);
}

}  // namespace
}  // namespace kxudm::vault
