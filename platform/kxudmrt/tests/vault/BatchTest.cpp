#include <filesystem>
#include <future>
#include <set>

#include "Support.h"
#include "core/Crew.h"
#include "vault/Vault.h"

namespace kxudm::vault {
namespace {

using testing::HasSubstr;

class BatchTest : public testing::Test {
  protected:
    Folder folder_;
    const std::string directory_ = folder_.File("vault");
    Vault vault_{directory_};
};

TEST_F(BatchTest, ContentsAreInTheVaultOnceTheBatchIsCommitted) {
    Batch batch(vault_);
    std::vector<Stored> stored;
    for (int i = 0; i < 20; ++i) {
        stored.push_back(
            batch.Add(folder_.Write("file", i % 2 == 0 ? Deck(9000, i) : Noise(9000, i))));
        EXPECT_FALSE(vault_.Holds(stored.back().hash));
    }
    EXPECT_EQ(batch.Count(), 20U);
    batch.Commit();
    EXPECT_EQ(batch.Count(), 0U);
    for (const Stored& file : stored) {
        EXPECT_TRUE(vault_.Holds(file.hash));
        EXPECT_EQ(std::filesystem::file_size(FileOf(vault_, file.hash)), file.storedSize);
    }
    EXPECT_EQ(CountFiles(directory_), 20U);
    EXPECT_EQ(Problems(vault_), "");
}

TEST_F(BatchTest, WithoutCommitNothingRemains) {
    {
        Batch batch(vault_);
        batch.Add(folder_.Write("small", Deck(100)));
        batch.Add(folder_.Write("large", Noise(2 * kBlock)));
        EXPECT_EQ(Temporaries(directory_), 2U);
    }
    EXPECT_EQ(CountFiles(directory_), 0U);
}

TEST_F(BatchTest, EqualContentsAreWrittenOnce) {
    Batch batch(vault_);
    for (const std::string& content : {Deck(5000), Noise(2 * kBlock)}) {
        const Stored first = batch.Add(folder_.Write("first", content));
        const Stored second = batch.Add(folder_.Write("second", content));
        EXPECT_FALSE(first.wasThere);
        EXPECT_TRUE(second.wasThere);
        EXPECT_EQ(second.hash, first.hash);
        EXPECT_EQ(second.storedSize, first.storedSize);
        EXPECT_EQ(second.compressed, first.compressed);
    }
    EXPECT_EQ(batch.Count(), 2U);
    batch.Commit();
    EXPECT_EQ(CountFiles(directory_), 2U);
}

TEST_F(BatchTest, WhatTheVaultHasIsNotWrittenAgain) {
    const std::string path = folder_.Write("file", Deck(5000));
    vault_.Add(path);
    Batch batch(vault_);
    EXPECT_TRUE(batch.Add(path).wasThere);
    EXPECT_EQ(batch.Count(), 0U);
    batch.Commit();
}

TEST_F(BatchTest, AFileThatFailsConcernsNoOther) {
    Batch batch(vault_);
    const Stored first = batch.Add(folder_.Write("first", "first"));
    EXPECT_THAT(ErrorOf([&] { batch.Add(folder_.File("nothing")); }),
                HasSubstr("No such file or directory"));
    const Stored second = batch.Add(folder_.Write("second", "second"));
    batch.Commit();
    EXPECT_TRUE(vault_.Holds(first.hash));
    EXPECT_TRUE(vault_.Holds(second.hash));
}

TEST_F(BatchTest, ABatchGoesOnAfterACommit) {
    Batch batch(vault_);
    batch.Commit();
    batch.Add(folder_.Write("first", "first"));
    batch.Commit();
    EXPECT_TRUE(batch.Add(folder_.Write("first", "first")).wasThere);
    batch.Add(folder_.Write("second", "second"));
    batch.Commit();
    batch.Commit();
    EXPECT_EQ(CountFiles(directory_), 2U);
}

TEST_F(BatchTest, TwoBatchesMayHoldTheSameContent) {
    const std::string path = folder_.Write("file", Deck(5000));
    Batch first(vault_);
    Batch second(vault_);
    first.Add(path);
    second.Add(path);
    first.Commit();
    second.Commit();
    EXPECT_EQ(CountFiles(directory_), 1U);
    EXPECT_EQ(Problems(vault_), "");
}

TEST_F(BatchTest, SeveralThreadsMayPrepareFilesWhileTheBatchIsUsed) {
    constexpr int kFiles = 40;
    // Some twice, some in the vault already, some small and some not.
    const auto content = [](int i) {
        return i % 8 == 0 ? Noise(2 * kBlock + 1, i) : Deck(1000 + 500 * (i % 30), i % 30);
    };
    std::vector<std::string> paths;
    for (int i = 0; i < kFiles; ++i) {
        paths.push_back(folder_.Write("file" + std::to_string(i), content(i)));
    }
    vault_.Add(paths[5]);
    Batch batch(vault_);
    core::Crew crew(3);
    std::vector<std::future<Incoming>> prepared;
    for (const std::string& path : paths) {
        prepared.push_back(crew.Do([&batch, &path] { return batch.Prepare(path); }));
    }
    std::set<std::string> hashes;
    for (std::size_t i = 0; i < paths.size(); ++i) {
        const Stored stored = batch.Add(prepared[i].get());
        EXPECT_EQ(stored.size, std::filesystem::file_size(paths[i]));
        hashes.insert(stored.hash);
        if (i % 10 == 9) {
            // Others are being prepared meanwhile.
            batch.Commit();
            EXPECT_TRUE(vault_.Holds(stored.hash));
        }
    }
    EXPECT_EQ(CountFiles(directory_), hashes.size());
    EXPECT_EQ(Problems(vault_), "");
}

TEST_F(BatchTest, WhatWasPreparedAndDroppedIsRemoved) {
    Batch batch(vault_);
    {
        const Incoming dropped = batch.Prepare(folder_.Write("deck", Deck(5000)));
        EXPECT_EQ(Temporaries(directory_), 1U);
    }
    EXPECT_EQ(CountFiles(directory_), 0U);
    EXPECT_THAT(ErrorOf([&] { static_cast<void>(batch.Prepare(folder_.File("nothing"))); }),
                HasSubstr("nothing' was not stored"));
}

// A flush tells only of what failed since the folder was opened.
TEST_F(BatchTest, TheFolderIsOpenBeforeAFileIsPrepared) {
    std::string calls;
    MeddlingLayer layer;
    Vault watched(directory_, layer);
    layer.before = [&](const std::string& call, const std::string&) {
        calls += call == "OpenFolder" ? "o" : call == "Create" ? "c" : "";
    };
    Vault(directory_).Add(folder_.Write("other", "other"));
    Batch batch(watched);
    batch.Add(batch.Prepare(folder_.Write("file", "file")));
    batch.Commit();
    batch.Add(batch.Prepare(folder_.Write("next", "next")));
    EXPECT_EQ(calls, "occ");
    layer.before = nullptr;
}

TEST_F(BatchTest, TheFileSystemIsFlushedOnceBeforeTheNamesAndOnceAfterThem) {
    std::string calls;
    MeddlingLayer layer;
    Vault watched(directory_, layer);
    layer.before = [&](const std::string& call, const std::string&) {
        if (call == "Rename") {
            calls += "r";
        } else if (call == "FlushFileSystem") {
            calls += "F";
        } else if (call == "Flush") {
            calls += "f";
        } else if (call == "OpenFolder") {
            calls += "o";
        } else if (call == "Create") {
            calls += "c";
        }
    };
    Batch batch(watched);
    const std::string same = folder_.Write("same", "same");
    vault_.Add(same);
    for (int i = 0; i < 3; ++i) {
        batch.Add(folder_.Write("file", Noise(100, i)));
    }
    batch.Commit();
    // The folder is opened first: a flush reports what failed since then. Each name takes a second
    // attempt, after its folder is made.
    EXPECT_EQ(calls, "occcFrrrrrrF");
    // Another process may have just given it its name.
    calls.clear();
    batch.Add(same);
    batch.Commit();
    EXPECT_EQ(calls, "F");
}

TEST_F(BatchTest, AFailedFlushIsNeverTriedAgain) {
    MeddlingLayer layer;
    Vault failing(directory_, layer);
    bool fail = true;
    layer.before = [&](const std::string& call, const std::string& path) {
        if (fail && call == "FlushFileSystem") {
            throw FileError(EIO, "flushed to the disk with its file system", path);
        }
    };
    const std::string path = folder_.Write("file", "x");
    {
        Batch batch(failing);
        batch.Add(path);
        EXPECT_THAT(ErrorOf([&] { batch.Commit(); }), HasSubstr("Input/output error"));
        fail = false;
        for (const auto& call : std::vector<std::function<void()>>{[&] { batch.Commit(); },
                                                                   [&] { batch.Add(path); }}) {
            EXPECT_EQ(ErrorOf(call),
                      "A group of files for the vault '" + directory_ +
                          "' could not be stored before; add them to a new group");
        }
    }
    EXPECT_EQ(CountFiles(directory_), 0U);
    Batch batch(failing);
    batch.Add(path);
    batch.Commit();
    EXPECT_EQ(Problems(vault_), "");
    EXPECT_EQ(CountFiles(directory_), 1U);
}

}  // namespace
}  // namespace kxudm::vault
