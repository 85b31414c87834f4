#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <utility>

#include "Support.h"
#include "vault/Vault.h"

namespace kxudm::vault {
namespace {

using testing::EndsWith;
using testing::HasSubstr;

constexpr char kEmptyHash[] = "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";

class VaultTest : public testing::Test {
  protected:
    // Adds the content and checks that it comes back.
    Stored RoundTrip(const std::string& content) {
        const Stored stored = vault_.Add(folder_.Write("source", content));
        vault_.Retrieve(stored.hash, folder_.File("back"), {.overwrite = true});
        EXPECT_TRUE(ReadFile(folder_.File("back")) == content) << content.size() << " bytes";
        EXPECT_EQ(stored.size, content.size());
        EXPECT_EQ(Problems(vault_), "");
        return stored;
    }

    Folder folder_;
    Vault vault_{folder_.File("vault")};
};

TEST_F(VaultTest, AFileOfNoBytesIsKept) {
    const Stored stored = RoundTrip("");
    EXPECT_EQ(stored.hash, kEmptyHash);
    EXPECT_EQ(stored.storedSize, 0U);
    EXPECT_FALSE(stored.compressed);
}

TEST_F(VaultTest, TheHashIsTheSha256OfTheFileAsItIs) {
    EXPECT_EQ(RoundTrip("abc").hash,
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(RoundTrip(std::string(1000000, 'a')).hash,
              "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST_F(VaultTest, ContentsOfEverySizeAroundABlockComeBack) {
    for (const std::size_t size :
         {std::size_t{1}, kBlock - 1, kBlock, kBlock + 1, 2 * kBlock, 3 * kBlock + 12345}) {
        const Stored deck = RoundTrip(Deck(size));
        EXPECT_EQ(deck.compressed, size > 1) << size;
        const Stored noise = RoundTrip(Noise(size));
        EXPECT_FALSE(noise.compressed) << size;
        EXPECT_EQ(noise.storedSize, size);
    }
}

// Several threads compress them.
TEST_F(VaultTest, LargeContentsComeBack) {
    for (const std::size_t size : {std::size_t{kLarge} - 1, std::size_t{kLarge}, 9 * kBlock + 1}) {
        const Stored first = RoundTrip(Deck(size));
        EXPECT_TRUE(first.compressed) << size;
        EXPECT_LT(first.storedSize, size / 2);
        Vault other(folder_.File("other"));
        EXPECT_EQ(other.Add(folder_.Write("again", Deck(size))).storedSize, first.storedSize);
    }
    EXPECT_EQ(Problems(vault_), "");
}

TEST_F(VaultTest, ALargeContentThatIsGivenUpLeavesNothing) {
    const std::string path = folder_.Write("deck", Deck(12 * kBlock));
    std::uint64_t done = 0;
    EXPECT_THROW(
        vault_.Add(path,
                   {.progress = [&](std::uint64_t bytes) { return (done += bytes) < 8 * kBlock; }}),
        StoppedException);
    EXPECT_EQ(CountFiles(folder_.File("vault")), 0U);
    EXPECT_TRUE(RoundTrip(Deck(12 * kBlock)).compressed);
}

TEST_F(VaultTest, WhatShrinksByATenthIsKeptCompressed) {
    const Stored stored = RoundTrip(Deck(100000));
    EXPECT_TRUE(stored.compressed);
    EXPECT_LT(stored.storedSize, 50000U);
    const std::string file = FileOf(vault_, stored.hash);
    EXPECT_THAT(file, EndsWith(stored.hash.substr(0, 2) + "/" + stored.hash + ".zst"));
    EXPECT_EQ(std::filesystem::file_size(file), stored.storedSize);
}

TEST_F(VaultTest, WhatShrinksByLessIsKeptAsItIs) {
    // A twentieth of it can be squeezed out.
    const Stored stored = RoundTrip(Noise(19000) + std::string(1000, 'x'));
    EXPECT_FALSE(stored.compressed);
    EXPECT_THAT(FileOf(vault_, stored.hash), EndsWith("/" + stored.hash));
}

TEST_F(VaultTest, CompressionCanBeForbidden) {
    const Stored stored =
        vault_.Add(folder_.Write("deck", Deck(3 * kBlock)), {.mayCompress = false});
    EXPECT_FALSE(stored.compressed);
    EXPECT_EQ(stored.storedSize, 3 * kBlock);
    EXPECT_EQ(Problems(vault_), "");
}

TEST_F(VaultTest, EqualContentsAreKeptOnce) {
    for (const std::string& content :
         {Deck(5000), Noise(5000), Deck(2 * kBlock), Noise(2 * kBlock)}) {
        const Stored first = vault_.Add(folder_.Write("first", content));
        EXPECT_FALSE(first.wasThere);
        const std::size_t files = CountFiles(folder_.File("vault"));
        const Stored second = vault_.Add(folder_.Write("second", content));
        EXPECT_TRUE(second.wasThere);
        EXPECT_EQ(second.hash, first.hash);
        EXPECT_EQ(second.storedSize, first.storedSize);
        EXPECT_EQ(second.compressed, first.compressed);
        EXPECT_EQ(CountFiles(folder_.File("vault")), files);
    }
}

TEST_F(VaultTest, TextIsToldFromOtherContents) {
    const auto isText = [this](const std::string& content) {
        return vault_.Add(folder_.Write("file", content)).isText;
    };
    EXPECT_TRUE(isText(""));
    EXPECT_TRUE(isText("GRID\t1\r\n\f\x1A"));
    EXPECT_TRUE(isText("T\xC3\xBCr T\xFCr\n"));
    EXPECT_TRUE(isText(Deck(2 * kBlock)));
    EXPECT_FALSE(isText(std::string("a\0b", 3)));
    EXPECT_FALSE(isText("\x01"));
    EXPECT_FALSE(isText("\x7F\x45LF\x02"));
    EXPECT_FALSE(isText(Noise(100)));
    EXPECT_FALSE(isText(Noise(2 * kBlock)));
}

TEST_F(VaultTest, TheTimeOfTheFileIsToldInMicroseconds) {
    const std::string path = folder_.Write("file", "x");
    for (const auto& [seconds, nanoseconds, expected] :
         {std::tuple{1700000000L, 123456789L, 1700000000123456LL},
          std::tuple{0L, 0L, 0LL},
          std::tuple{-1L, 999999999L, -1LL}}) {
        const timespec times[2] = {{0, UTIME_OMIT}, {seconds, nanoseconds}};
        ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
        EXPECT_EQ(vault_.Add(path).modified, expected);
    }
}

TEST_F(VaultTest, FilesOfTheVaultCannotBeWritten) {
    const Stored stored = RoundTrip("content");
    struct stat status {};
    ASSERT_EQ(stat(FileOf(vault_, stored.hash).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0222U, 0U);
}

TEST_F(VaultTest, TheDirectoryIsMadeWithItsParentsByTheFirstFile) {
    Vault nested(folder_.File("a/b/vault//"));
    EXPECT_FALSE(nested.Holds(kEmptyHash));
    EXPECT_FALSE(Exists(folder_.File("a")));
    const Stored stored = nested.Add(folder_.Write("file", "x"));
    EXPECT_TRUE(Exists(folder_.File("a/b/vault/" + stored.hash.substr(0, 2) + "/" + stored.hash)));
}

TEST_F(VaultTest, AVaultWithoutDirectoryIsRefused) {
    EXPECT_EQ(ErrorOf([] { Vault vault(""); }), "A vault needs a directory; its path is empty");
}

TEST_F(VaultTest, AVaultBelowAFileIsAnError) {
    Vault nowhere(folder_.Write("file", "") + "/vault");
    const std::string source = folder_.Write("source", "x");
    EXPECT_THAT(
        ErrorOf([&] { nowhere.Add(source); }),
        testing::AllOf(HasSubstr("'" + source + "' was not stored"), HasSubstr("Not a directory")));
}

TEST_F(VaultTest, ShortReadsAndWritesAreContinued) {
    MeddlingLayer layer;
    layer.mostBytes = 1013;
    Vault slow(folder_.File("slow"), layer);
    for (const std::string& content :
         {Deck(50000), Noise(50000), Deck(kBlock + 9), Noise(kBlock)}) {
        const Stored stored = slow.Add(folder_.Write("file", content));
        EXPECT_TRUE(slow.Retrieve(stored.hash, folder_.File("back"), {.overwrite = true}));
        EXPECT_TRUE(ReadFile(folder_.File("back")) == content);
    }
}

TEST_F(VaultTest, AddingFlushesTheContentBeforeItGetsItsNameAndTheNameAfterwards) {
    std::vector<std::string> calls;
    MeddlingLayer layer;
    const std::string directory = folder_.File("watched");
    Vault watched(directory, layer);
    const std::string path = folder_.Write("file", "abc");
    layer.before = [&](const std::string& call, const std::string& where) {
        if (call == "Write" || call == "Rename" || call.starts_with("Flush")) {
            calls.push_back(call + (call == "FlushFolder" ? " " + where : ""));
        }
    };
    const Stored stored = watched.Add(path);
    EXPECT_THAT(calls,
                testing::ElementsAre("FlushFolder " + folder_.Path(),
                                     "Write",
                                     "Flush",
                                     "Rename",
                                     "Rename",
                                     "FlushFolder " + directory + "/" + stored.hash.substr(0, 2),
                                     "FlushFolder " + directory));
    // Another process may have just given it its name.
    calls.clear();
    EXPECT_TRUE(watched.Add(path).wasThere);
    EXPECT_THAT(calls,
                testing::ElementsAre("FlushFolder " + directory + "/" + stored.hash.substr(0, 2)));
}

TEST_F(VaultTest, ProgressHearsOfEveryByteAndMayStop) {
    for (const std::string& content : {Deck(1000), Noise(3 * kBlock), Deck(3 * kBlock)}) {
        const std::string path = folder_.Write("file", content);
        std::uint64_t done = 0;
        const Progress stop = [&](std::uint64_t bytes) { return (done += bytes) < content.size(); };
        EXPECT_EQ(ErrorOf([&] { vault_.Add(path, {.progress = stop}); }),
                  "Storing '" + path + "' was stopped; nothing of it was stored");
        EXPECT_EQ(done, content.size());
        EXPECT_EQ(CountFiles(folder_.File("vault")), 0U);
    }
}

TEST_F(VaultTest, ADamagedFileOfTheVaultIsReplacedWhereItsSizeTells) {
    for (const std::string& content : {Deck(5000), Noise(5000), Deck(2 * kBlock)}) {
        const std::string path = folder_.Write("file", content);
        const Stored stored = vault_.Add(path);
        const std::string file = FileOf(vault_, stored.hash);
        std::filesystem::permissions(file, std::filesystem::perms::all);
        std::filesystem::resize_file(file, 0);
        EXPECT_FALSE(vault_.Add(path).wasThere);
        EXPECT_EQ(Problems(vault_), "");
    }
}

TEST_F(VaultTest, ADamagedFileInTheOtherFormIsReplacedToo) {
    const std::string path = folder_.Write("file", Deck(5000));
    const Stored stored = vault_.Add(path);
    const std::string file = FileOf(vault_, stored.hash);
    std::filesystem::permissions(file, std::filesystem::perms::all);
    std::filesystem::resize_file(file, 0);
    EXPECT_FALSE(vault_.Add(path, {.mayCompress = false}).wasThere);
    EXPECT_EQ(Problems(vault_), "");
    EXPECT_EQ(CountFiles(folder_.File("vault")), 1U);
}

// Makes a small file look as if zeros stood before its last byte, up to a size that no test would
// like to have on its disk.
class LongFileLayer final : public MeddlingLayer {
  public:
    LongFileLayer(std::string path, std::uint64_t size) : path_(std::move(path)), size_(size) {}

    FileStatus Status(const OpenFile& file) override {
        FileStatus status = MeddlingLayer::Status(file);
        if (file.path == path_) {
            status.size = size_;
        }
        return status;
    }
    std::size_t Read(const OpenFile& file, char* bytes, std::size_t size) override {
        if (file.path != path_ || read_ + 1 >= size_) {
            return MeddlingLayer::Read(file, bytes, size);
        }
        const std::size_t zeros = std::min<std::uint64_t>(size, size_ - 1 - read_);
        std::memset(bytes, 0, zeros);
        read_ += zeros;
        return zeros;
    }

  private:
    const std::string path_;
    const std::uint64_t size_;
    std::uint64_t read_ = 0;
};

TEST_F(VaultTest, AFileBeyond4GiBIsHeldWholeAndNeedsNoMoreMemoryThanASmallOne) {
    RoundTrip(Deck(3 * kBlock));
    // Its last byte stands where 32 bits end.
    constexpr std::uint64_t kSize = (std::uint64_t{4} << 30) + 1;
    const std::string path = folder_.Write("long", "x");
    LongFileLayer layer(path, kSize);
    Vault vault(folder_.File("vault"), layer);
    const std::ptrdiff_t before = PeakMemory();
    const Stored stored = vault.Add(path);
    EXPECT_EQ(stored.size, kSize);
    EXPECT_EQ(stored.hash, "07d357bda5c988a206bb478ade5af844c26eaf242e951e5ac4d4f85b417ed69f");
    EXPECT_TRUE(stored.compressed);
    EXPECT_LT(stored.storedSize, std::uint64_t{10} << 20);
    EXPECT_EQ(vault_.Verify(stored.hash).problem, "");
    EXPECT_LT(PeakMemory() - before, 64 << 20);
}

TEST_F(VaultTest, ATextIsReadUpToALimit) {
    const std::string content = Deck(3 * kBlock);
    const std::string hash = vault_.Add(folder_.Write("deck", content)).hash;
    EXPECT_EQ(vault_.ReadText(hash, 0), "");
    EXPECT_TRUE(vault_.ReadText(hash, 10) == content.substr(0, 10));
    EXPECT_TRUE(vault_.ReadText(hash, kBlock + 1) == content.substr(0, kBlock + 1));
    EXPECT_TRUE(vault_.ReadText(hash, content.size()) == content);
    EXPECT_TRUE(vault_.ReadText(hash, static_cast<std::size_t>(-1)) == content);
}

TEST_F(VaultTest, ATextIsNotCutWithinACharacter) {
    const std::string content = "a\xC3\xBC\xE2\x82\xAC\xF0\x9F\x9A\x97!";
    const std::string hash = vault_.Add(folder_.Write("text", content)).hash;
    const std::vector<std::size_t> lengths = {0, 1, 1, 3, 3, 3, 6, 6, 6, 6, 10, 11, 11};
    for (std::size_t limit = 0; limit < lengths.size(); ++limit) {
        EXPECT_EQ(vault_.ReadText(hash, limit), content.substr(0, lengths[limit])) << limit;
    }
}

TEST_F(VaultTest, WhatIsVerifiedGivesItsBeginningAsAText) {
    const std::string content = Deck(3 * kBlock) + "\xC3\xBC";
    const std::string hash = vault_.Add(folder_.Write("deck", content)).hash;
    std::string text = "of the one before";
    for (const std::size_t limit :
         {std::size_t{0}, kBlock + 1, content.size() - 1, content.size()}) {
        EXPECT_EQ(vault_.Verify(hash, {.text = &text, .limit = limit}).state,
                  Finding::State::Sound);
        EXPECT_TRUE(text == vault_.ReadText(hash, limit)) << limit;
    }
    EXPECT_TRUE(text == content);
}

TEST_F(VaultTest, VerifyingCanBeStopped) {
    const std::string hash = vault_.Add(folder_.Write("noise", Noise(4 * kBlock))).hash;
    std::uint64_t done = 0;
    const auto stop = [&](std::uint64_t bytes) { return (done += bytes) < 2 * kBlock; };
    EXPECT_THROW((void)vault_.Verify(hash, {.progress = stop}), StoppedException);
    EXPECT_EQ(done, 2 * kBlock);
    EXPECT_EQ(vault_.Verify(hash).state, Finding::State::Sound);
}

TEST_F(VaultTest, SeveralContentsAreReadAtTheSameTime) {
    const std::string deck = Deck(2 * kBlock);
    const std::string noise = Noise(2 * kBlock);
    const auto first = vault_.Open(vault_.Add(folder_.Write("deck", deck)).hash);
    const auto second = vault_.Open(vault_.Add(folder_.Write("noise", noise)).hash);
    std::string firstBack;
    std::string secondBack;
    std::vector<char> buffer(10007);
    bool more = true;
    while (more) {
        const std::size_t a = first->Read(buffer.data(), buffer.size());
        firstBack.append(buffer.data(), a);
        const std::size_t b = second->Read(buffer.data(), buffer.size());
        secondBack.append(buffer.data(), b);
        more = a + b > 0;
    }
    EXPECT_TRUE(firstBack == deck);
    EXPECT_TRUE(secondBack == noise);
    EXPECT_EQ(first->Read(buffer.data(), 1), 0U);
}

}  // namespace
}  // namespace kxudm::vault
