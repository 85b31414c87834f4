#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "Support.h"
#include "vault/Vault.h"

namespace kxudm::vault {
namespace {

using testing::HasSubstr;

class RetrieveTest : public testing::Test {
  protected:
    Stored Add(const std::string& content) { return vault_.Add(folder_.Write("source", content)); }
    std::string RetrieveError(const std::string& hash,
                              const std::string& target,
                              const RetrieveOptions& options = {}) {
        return ErrorOf([&] { vault_.Retrieve(hash, target, options); });
    }

    Folder folder_;
    Folder out_;
    Vault vault_{folder_.File("vault")};
};

TEST_F(RetrieveTest, TheFileGetsTheTimeThatIsAskedFor) {
    const Stored stored = Add("content");
    for (const std::int64_t time : {1700000000123456LL, 0LL, -1LL, -1500000LL}) {
        ASSERT_TRUE(
            vault_.Retrieve(stored.hash, out_.File("back"), {.overwrite = true, .modified = time}));
        EXPECT_EQ(vault_.Add(out_.File("back")).modified, time);
    }
}

TEST_F(RetrieveTest, TheFileCanBeWrittenThoughTheVaultsCannot) {
    vault_.Retrieve(Add("content").hash, out_.File("back"));
    struct stat status {};
    ASSERT_EQ(stat(out_.File("back").c_str(), &status), 0);
    const mode_t mask = umask(0);
    umask(mask);
    EXPECT_EQ(status.st_mode & 0777U, 0666U & ~mask);
}

TEST_F(RetrieveTest, AnEqualFileIsLeftAlone) {
    const Stored stored = Add("content");
    const std::string target = out_.Write("back", "content");
    const auto before = std::filesystem::last_write_time(target);
    EXPECT_FALSE(vault_.Retrieve(stored.hash, target, {.modified = 0}));
    EXPECT_EQ(std::filesystem::last_write_time(target), before);
}

TEST_F(RetrieveTest, AFileThatDiffersIsAnErrorAndUntouched) {
    const Stored stored = Add("content");
    const std::string target = out_.Write("back", "Content");
    EXPECT_EQ(RetrieveError(stored.hash, target),
              "'" + target +
                  "' is there already and differs; allow to overwrite it or choose another place");
    EXPECT_EQ(ReadFile(target), "Content");
    EXPECT_EQ(CountFiles(out_.Path()), 1U);
}

TEST_F(RetrieveTest, AFileThatDiffersIsReplacedWhereThatIsAllowed) {
    const Stored stored = Add("content");
    const std::string target = out_.Write("back", "other");
    EXPECT_TRUE(vault_.Retrieve(stored.hash, target, {.overwrite = true, .flush = true}));
    EXPECT_EQ(ReadFile(target), "content");
    EXPECT_EQ(CountFiles(out_.Path()), 1U);
}

TEST_F(RetrieveTest, AFileThatAppearsMeanwhileIsNotReplaced) {
    const Stored stored = Add("content");
    const std::string target = out_.File("back");
    MeddlingLayer layer;
    Vault vault(folder_.File("vault"), layer);
    layer.before = [&](const std::string& call, const std::string&) {
        if (call == "Write") {
            out_.Write("back", "mine");
        }
    };
    EXPECT_THAT(ErrorOf([&] { vault.Retrieve(stored.hash, target); }),
                HasSubstr("'" + target + "' was not retrieved"));
    EXPECT_EQ(ReadFile(target), "mine");
    EXPECT_EQ(CountFiles(out_.Path()), 1U);
}

TEST_F(RetrieveTest, AFolderIsNeverReplaced) {
    const Stored stored = Add("content");
    const std::string target = out_.File("folder");
    std::filesystem::create_directory(target);
    for (const bool overwrite : {false, true}) {
        EXPECT_EQ(RetrieveError(stored.hash, target, {.overwrite = overwrite}),
                  "'" + target + "' is a folder; choose another place");
    }
}

TEST_F(RetrieveTest, APipeIsNeverReplacedNorWaitedFor) {
    const Stored stored = Add("content");
    const std::string target = out_.File("pipe");
    ASSERT_EQ(mkfifo(target.c_str(), 0600), 0);
    for (const bool overwrite : {false, true}) {
        EXPECT_EQ(RetrieveError(stored.hash, target, {.overwrite = overwrite}),
                  "'" + target + "' is no regular file; choose another place");
    }
}

TEST_F(RetrieveTest, ASymbolicLinkIsReplacedAndNotFollowed) {
    const Stored stored = Add("content");
    const std::string precious = out_.Write("precious", "precious");
    const std::string target = out_.File("link");
    std::filesystem::create_symlink(precious, target);
    EXPECT_THAT(RetrieveError(stored.hash, target), HasSubstr("is there already and differs"));
    EXPECT_TRUE(vault_.Retrieve(stored.hash, target, {.overwrite = true}));
    EXPECT_EQ(ReadFile(precious), "precious");
    EXPECT_EQ(ReadFile(target), "content");
    EXPECT_FALSE(std::filesystem::is_symlink(target));
}

TEST_F(RetrieveTest, ADanglingSymbolicLinkCountsAsAFileThatDiffers) {
    const Stored stored = Add("content");
    const std::string target = out_.File("link");
    std::filesystem::create_symlink(out_.File("nothing"), target);
    EXPECT_THAT(RetrieveError(stored.hash, target), HasSubstr("is there already and differs"));
    EXPECT_FALSE(Exists(out_.File("nothing")));
}

TEST_F(RetrieveTest, AMissingFolderIsAnError) {
    const Stored stored = Add("content");
    const std::string target = out_.File("nowhere/back");
    EXPECT_THAT(RetrieveError(stored.hash, target),
                testing::AllOf(HasSubstr("'" + target + "' was not retrieved"),
                               HasSubstr("No such file or directory")));
}

TEST_F(RetrieveTest, AMissingContentIsAnErrorThatNamesIt) {
    const std::string hash(64, 'a');
    EXPECT_EQ(RetrieveError(hash, out_.File("back")),
              "The vault '" + folder_.File("vault") + "' doesn't hold content " + hash +
                  "; restore its file from a backup, or add the file again");
    EXPECT_THROW(vault_.Retrieve(hash, out_.File("back")), MissingException);
    EXPECT_EQ(CountFiles(out_.Path()), 0U);
}

TEST_F(RetrieveTest, WhatIsNoHashNeverBecomesAPath) {
    std::vector<std::string> hashes(7, std::string(64, 'a'));
    hashes[0].clear();
    hashes[1].pop_back();
    hashes[2] += 'a';
    hashes[3].back() = '\0';
    hashes[4].back() = 'A';
    hashes[5].back() = '/';
    hashes[6] = "../../etc/passwd";
    for (const std::string& hash : hashes) {
        for (const auto& call :
             std::vector<std::function<void()>>{[&] { vault_.Retrieve(hash, out_.File("back")); },
                                                [&] { (void)vault_.Open(hash); },
                                                [&] { (void)vault_.Holds(hash); },
                                                [&] { (void)vault_.ReadText(hash, 1); },
                                                [&] { vault_.Verify(hash); },
                                                [&] { vault_.Remove(hash); }}) {
            EXPECT_THAT(ErrorOf(call), HasSubstr("names no content of a vault")) << hash;
        }
    }
}

TEST_F(RetrieveTest, ProgressHearsOfEveryByteAndMayStop) {
    const std::string content = Deck(3 * kBlock);
    const Stored stored = Add(content);
    const std::string target = out_.Write("back", "mine");
    std::uint64_t done = 0;
    const RetrieveOptions options{.overwrite = true, .progress = [&](std::uint64_t bytes) {
                                      return (done += bytes) < content.size();
                                  }};
    EXPECT_EQ(RetrieveError(stored.hash, target, options),
              "Retrieving '" + target + "' was stopped; it is as it was");
    EXPECT_EQ(done, content.size());
    EXPECT_EQ(ReadFile(target), "mine");
    EXPECT_EQ(CountFiles(out_.Path()), 1U);
}

TEST_F(RetrieveTest, AFetchedContentIsWholeUnderATemporaryNameUntilItIsMoved) {
    const Stored stored = Add("content");
    const std::string target = out_.File("back");
    {
        const auto fetched = vault_.Fetch(stored.hash, target);
        EXPECT_EQ(ReadFile(fetched->Path()), "content");
        EXPECT_EQ(std::filesystem::path(fetched->Path()).parent_path(), out_.Path());
        EXPECT_FALSE(Exists(target));
        fetched->MoveTo(target);
        EXPECT_EQ(ReadFile(target), "content");
        static_cast<void>(vault_.Fetch(stored.hash, target));
    }
    EXPECT_EQ(CountFiles(out_.Path()), 1U);
    EXPECT_THAT(ErrorOf([&] { static_cast<void>(vault_.Fetch("../x", target)); }),
                HasSubstr("names no content of a vault"));
}

TEST_F(RetrieveTest, AFileIsComparedWithAContent) {
    const Stored stored = Add("content");
    EXPECT_TRUE(vault_.IsContent(stored.hash, out_.Write("same", "content")));
    EXPECT_FALSE(vault_.IsContent(stored.hash, out_.Write("other", "contents")));
    EXPECT_FALSE(vault_.IsContent(stored.hash, out_.File("none")));
    EXPECT_FALSE(vault_.IsContent(stored.hash, out_.Path()));
    std::filesystem::create_symlink(out_.File("same"), out_.File("link"));
    EXPECT_TRUE(vault_.IsContent(stored.hash, out_.File("link")));
}

TEST_F(RetrieveTest, ThePathOfAContentIsThatOfItsFile) {
    const std::string plain = Add("content").hash;
    const std::string compressed = Add(Deck(5000)).hash;
    EXPECT_EQ(vault_.PathOf(plain), FileOf(vault_, plain));
    EXPECT_EQ(vault_.PathOf(compressed), FileOf(vault_, compressed));
    vault_.Remove(plain);
    EXPECT_EQ(vault_.PathOf(plain), vault_.Directory() + "/" + plain.substr(0, 2) + "/" + plain);
    EXPECT_THAT(ErrorOf([&] { static_cast<void>(vault_.PathOf("../x")); }),
                HasSubstr("names no content of a vault"));
}

TEST_F(RetrieveTest, ARelativeTargetLiesInTheCurrentFolder) {
    const std::string source = folder_.Write("source", "content");
    EXPECT_EQ(InChild([&]() -> std::string {
                  if (chdir(out_.Path().c_str()) != 0) {
                      return "no folder";
                  }
                  Vault vault("vault");
                  vault.Retrieve(vault.Add(source).hash, "back", {.flush = true});
                  return ReadFile(out_.File("back"));
              }),
              "content");
    EXPECT_TRUE(Exists(out_.File("vault")));
}

}  // namespace
}  // namespace kxudm::vault
