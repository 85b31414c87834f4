// Listing, purging, and what dead writers leave.
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "Support.h"
#include "vault/TemporaryName.h"
#include "vault/Vault.h"

namespace kxudm::vault {
namespace {

class CareTest : public testing::Test {
  protected:
    std::vector<Entry> Entries() {
        std::vector<Entry> entries;
        vault_.List([&](const Entry& entry) { entries.push_back(entry); });
        return entries;
    }

    void SetTime(const std::string& path, std::time_t seconds) const {
        const timespec times[2] = {{seconds, 0}, {seconds, 0}};
        ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
    }

    // Of a process that has ended.
    static std::string DeadName() {
        return InChild([] { return NewTemporaryName(); });
    }

    // A temporary name with one of its fields, counted from 0, replaced.
    static std::string WithField(std::string name, int field, const std::string& value) {
        std::size_t start = 0;
        for (int i = 0; i < field; ++i) {
            start = name.find('-', start) + 1;
        }
        return name.replace(start, name.find('-', start) - start, value);
    }

    std::string WriteTemporary(const std::string& name) const {
        std::filesystem::create_directories(directory_ + "/tmp");
        return folder_.Write("vault/tmp/" + name, "half");
    }

    Folder folder_;
    const std::string directory_ = folder_.File("vault");
    Vault vault_{directory_};
};

class FixedClock final : public core::Clock {
  public:
    explicit FixedClock(std::int64_t now) : now_(now) {}
    std::int64_t NowMicroseconds() override { return now_; }

  private:
    std::int64_t now_;
};

TEST_F(CareTest, AVaultThatWasNeverUsedIsEmpty) {
    EXPECT_TRUE(Entries().empty());
    EXPECT_EQ(vault_.RemoveStaleTemporaries(), 0U);
    EXPECT_FALSE(vault_.Remove(std::string(64, '0')));
}

TEST_F(CareTest, EveryFileIsListed) {
    std::vector<std::string> hashes;
    Batch batch(vault_);
    for (int i = 0; i < 300; ++i) {
        hashes.push_back(
            batch.Add(folder_.Write("file", i % 2 == 0 ? Deck(900, i) : Noise(900, i))).hash);
    }
    batch.Commit();
    std::vector<std::string> listed;
    for (const Entry& entry : Entries()) {
        listed.push_back(entry.hash);
        EXPECT_EQ(entry.storedSize, std::filesystem::file_size(entry.path));
        EXPECT_EQ(entry.compressed, entry.path.ends_with(".zst"));
    }
    EXPECT_THAT(listed, testing::UnorderedElementsAreArray(hashes));
}

TEST_F(CareTest, StrangersAreListedWithoutHash) {
    const std::string hash = vault_.Add(folder_.Write("file", "x")).hash;
    const std::string place = "vault/" + hash.substr(0, 2) + "/";
    std::filesystem::create_directory(folder_.File(place + std::string(64, 'f')));
    folder_.Write(place + "notes.txt", "");
    // In the folder of others.
    folder_.Write(place + (hash.starts_with("00") ? "11" : "00") + hash.substr(2), "");
    std::size_t strangers = 0;
    for (const Entry& entry : Entries()) {
        strangers += entry.hash.empty() ? 1 : 0;
    }
    EXPECT_EQ(strangers, 3U);
    EXPECT_EQ(Entries().size(), 4U);
}

TEST_F(CareTest, RemovalTakesTheContentInEitherForm) {
    const std::string path = folder_.Write("file", Deck(5000));
    const std::string hash = vault_.Add(path).hash;
    EXPECT_TRUE(vault_.Remove(hash));
    EXPECT_FALSE(vault_.Holds(hash));
    EXPECT_FALSE(vault_.Remove(hash));
    vault_.Add(path, {.mayCompress = false});
    EXPECT_TRUE(vault_.Remove(hash));
    EXPECT_FALSE(vault_.Holds(hash));
    EXPECT_EQ(CountFiles(directory_), 0U);
}

TEST_F(CareTest, AContentThatIsAddedAgainIsYoungAgain) {
    for (const bool inBatch : {false, true}) {
        const std::string path = folder_.Write("file", "x");
        vault_.Add(path);
        SetTime(Entries()[0].path, 1000);
        EXPECT_EQ(Entries()[0].modified, 1000 * 1000000LL);
        if (inBatch) {
            Batch batch(vault_);
            batch.Add(path);
        } else {
            vault_.Add(path);
        }
        EXPECT_GT(Entries()[0].modified, 1700000000 * 1000000LL);
    }
}

TEST_F(CareTest, AContentOfAnotherUserIsUsedThoughItCannotBeTouched) {
    const std::string path = folder_.Write("file", "x");
    vault_.Add(path);
    std::filesystem::permissions(path, std::filesystem::perms::all);
    EXPECT_EQ(AsNobody([&] { return std::string(vault_.Add(path).wasThere ? "used" : "new"); }),
              "used");
}

TEST_F(CareTest, AContentThatAPurgeTakesWhileItIsAddedIsStoredAfresh) {
    MeddlingLayer layer;
    Vault vault(directory_, layer);
    for (const std::string& content : {Deck(500), Deck(2 * kBlock)}) {
        const std::string path = folder_.Write("file", content);
        const std::string hash = vault_.Add(path).hash;
        layer.before = [&](const std::string& call, const std::string&) {
            if (call == "Touch") {
                vault_.Remove(hash);
            }
        };
        EXPECT_FALSE(vault.Add(path).wasThere);
        EXPECT_TRUE(vault_.Holds(hash));
    }
    EXPECT_EQ(Problems(vault_), "");
}

TEST_F(CareTest, OnlyWhatIsOlderIsRemoved) {
    const Stored stored = vault_.Add(folder_.Write("a", Noise(1000)));
    ASSERT_EQ(Entries().size(), 1U);
    const Entry entry = Entries().front();
    EXPECT_EQ(vault_.RemoveOlder(entry, entry.modified), std::nullopt);
    EXPECT_TRUE(vault_.Holds(stored.hash));
    EXPECT_EQ(vault_.RemoveOlder(entry, entry.modified + 1), entry.storedSize);
    EXPECT_FALSE(vault_.Holds(stored.hash));
    EXPECT_EQ(vault_.RemoveOlder(entry, entry.modified + 1), std::nullopt);
    EXPECT_EQ(Temporaries(directory_), 0U);
}

// Another process adds it between any two steps of the removal: it is there afterwards.
TEST_F(CareTest, WhatIsAddedAgainDuringItsRemovalIsThereAfterwards) {
    const std::string source = folder_.Write("a", Noise(1000));
    for (int step = 1;; ++step) {
        const Stored stored = vault_.Add(source);
        const std::string path = FileOf(vault_, stored.hash);
        SetTime(path, 1000);
        const Entry entry = Entries().front();
        MeddlingLayer files;
        Vault other(directory_, files);
        int calls = 0;
        bool added = false;
        files.before = [&](const std::string&, const std::string&) {
            if (++calls == step) {
                vault_.Add(source);
                added = true;
            }
        };
        static_cast<void>(other.RemoveOlder(entry, std::int64_t{2000} * 1'000'000));
        if (!added) {
            EXPECT_GT(step, 3);
            EXPECT_FALSE(vault_.Holds(stored.hash));
            return;
        }
        EXPECT_EQ(vault_.Verify(stored.hash).problem, "") << "step " << step;
        EXPECT_EQ(Temporaries(directory_), 0U) << "step " << step;
        ASSERT_TRUE(vault_.Remove(stored.hash));
    }
}

TEST_F(CareTest, TemporariesOfDeadProcessesAreRemoved) {
    WriteTemporary(DeadName());
    WriteTemporary(DeadName());
    EXPECT_EQ(vault_.RemoveStaleTemporaries(), 2U);
    EXPECT_EQ(Temporaries(directory_), 0U);
}

TEST_F(CareTest, TemporariesOfThisProcessStay) {
    Batch batch(vault_);
    batch.Add(folder_.Write("file", "x"));
    FixedClock farFuture(INT64_MAX);
    EXPECT_EQ(vault_.RemoveStaleTemporaries(farFuture), 0U);
    batch.Commit();
    EXPECT_EQ(Problems(vault_), "");
}

TEST_F(CareTest, TemporariesOfAnotherLivingProcessStay) {
    int ready[2];
    int done[2];
    ASSERT_EQ(pipe(ready), 0);
    ASSERT_EQ(pipe(done), 0);
    const std::string path = folder_.Write("file", Deck(1000));
    const pid_t writer = fork();
    if (writer == 0) {
        close(done[1]);
        Vault vault(directory_);
        Batch batch(vault);
        batch.Add(path);
        char byte = 'r';
        bool fine = write(ready[1], &byte, 1) == 1;
        // Ends with the test, should that fail.
        fine = read(done[0], &byte, 1) == 1 && fine;
        batch.Commit();
        _exit(fine ? 0 : 1);
    }
    char byte = 0;
    ASSERT_EQ(read(ready[0], &byte, 1), 1);
    EXPECT_EQ(vault_.RemoveStaleTemporaries(), 0U);
    EXPECT_EQ(Temporaries(directory_), 1U);
    ASSERT_EQ(write(done[1], &byte, 1), 1);
    int status = -1;
    waitpid(writer, &status, 0);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(Problems(vault_), "");
    EXPECT_EQ(CountFiles(directory_), 1U);
    for (const int descriptor : {ready[0], ready[1], done[0], done[1]}) {
        close(descriptor);
    }
}

TEST_F(CareTest, AProcessNumberThatWasGivenAgainDoesNotDeceive) {
    // This process' number, of one that began at another time.
    const std::string name = WithField(NewTemporaryName(), 3, "1");
    EXPECT_EQ(WriterOf(name), WriterState::Gone);
    WriteTemporary(name);
    EXPECT_EQ(vault_.RemoveStaleTemporaries(), 1U);
}

TEST_F(CareTest, TemporariesOfOtherMachinesAreRemovedAfterADay) {
    const std::string name = WithField(DeadName(), 1, "0123456789ab");
    EXPECT_EQ(WriterOf(name), WriterState::Elsewhere);
    SetTime(WriteTemporary(name), 1'000'000);
    constexpr std::int64_t kSecond = 1'000'000;
    FixedClock soon((1'000'000 + 24 * 3600) * kSecond);
    EXPECT_EQ(vault_.RemoveStaleTemporaries(soon), 0U);
    FixedClock later((1'000'000 + 24 * 3600 + 1) * kSecond);
    EXPECT_EQ(vault_.RemoveStaleTemporaries(later), 1U);
}

TEST_F(CareTest, FilesThatAreNoTemporariesStay) {
    const std::string good = DeadName();
    for (const std::string& name : {std::string("notes.txt"),
                                    good + "x",
                                    good.substr(1),
                                    WithField(good, 2, "0"),
                                    WithField(good, 2, "-1"),
                                    WithField(good, 2, "99999999999999999999"),
                                    WithField(good, 2, "4294967297"),
                                    WithField(good, 3, ""),
                                    std::string(".part-"),
                                    std::string(".part---")}) {
        EXPECT_EQ(WriterOf(name), WriterState::None) << name;
        WriteTemporary(name);
    }
    FixedClock farFuture(INT64_MAX);
    EXPECT_EQ(vault_.RemoveStaleTemporaries(farFuture), 0U);
    EXPECT_EQ(Temporaries(directory_), 10U);
}

TEST_F(CareTest, NamesOfTemporariesAreNeverGivenTwice) {
    const std::string first = NewTemporaryName();
    const std::string second = NewTemporaryName();
    const std::string inChild = InChild([] { return NewTemporaryName(); });
    EXPECT_NE(first, second);
    EXPECT_NE(inChild, NewTemporaryName());
    EXPECT_EQ(WriterOf(first), WriterState::Alive);
    EXPECT_EQ(WriterOf(inChild), WriterState::Gone);
}

}  // namespace
}  // namespace kxudm::vault
