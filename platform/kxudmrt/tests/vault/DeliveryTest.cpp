#include <algorithm>
#include <cerrno>
#include <deque>
#include <filesystem>
#include <fstream>
#include <future>

#include "Support.h"
#include "core/Crew.h"
#include "vault/BytesSource.h"
#include "vault/Delivery.h"

namespace kxudm::vault {
namespace {

using testing::HasSubstr;

// More than the list of a delivery keeps in memory.
constexpr int kMany = 1500;

class DeliveryTest : public testing::Test {
  protected:
    static Stored Add(Delivery& delivery, const std::string& content) {
        BytesSource source(content);
        return delivery.Add(source, "content");
    }
    static void AddMany(Delivery& delivery) {
        for (int i = 0; i < kMany; ++i) {
            Add(delivery, "content " + std::to_string(i));
        }
    }
    static bool NothingIsUsed(const std::string& /*hash*/) { return false; }

    Folder folder_;
    const std::string directory_ = folder_.File("vault");
    MeddlingLayer layer_;
    Vault vault_{directory_, layer_};
};

TEST_F(DeliveryTest, ContentsAreInTheVaultOnceItIsCommitted) {
    std::vector<Stored> stored;
    {
        Delivery delivery(vault_);
        for (int i = 0; i < 20; ++i) {
            stored.push_back(Add(delivery, i % 2 == 0 ? Deck(9000, i) : Noise(9000, i)));
            EXPECT_FALSE(vault_.Holds(stored.back().hash));
        }
        delivery.Flush();
        delivery.Commit();
    }
    for (const Stored& file : stored) {
        EXPECT_TRUE(vault_.Holds(file.hash));
        EXPECT_EQ(file.compressed, FileOf(vault_, file.hash).ends_with(".zst"));
    }
    EXPECT_EQ(CountFiles(directory_), 20U);
    EXPECT_EQ(Problems(vault_), "");
}

TEST_F(DeliveryTest, OfMoreContentsThanItsListHoldsIsWhole) {
    {
        Delivery delivery(vault_);
        AddMany(delivery);
        delivery.Commit();
    }
    EXPECT_EQ(CountFiles(directory_), static_cast<std::size_t>(kMany));
    EXPECT_EQ(Problems(vault_), "");
}

TEST_F(DeliveryTest, WithoutCommitNothingRemains) {
    {
        Delivery delivery(vault_);
        AddMany(delivery);
        Add(delivery, Noise(2 * kBlock));
    }
    EXPECT_EQ(CountFiles(directory_), 0U);
}

TEST_F(DeliveryTest, NothingRemainsWhereItsListCanNotBeWritten) {
    int made = 0;
    std::string list;
    layer_.before = [&](const std::string& call, const std::string& path) {
        // Behind the first content, for which a folder has to be made.
        if (call == "Create" && ++made == 3) {
            list = path;
        } else if (call == "Write" && path == list) {
            throw FileError(ENOSPC, "written", path);
        }
    };
    {
        Delivery delivery(vault_);
        EXPECT_THAT(ErrorOf([&] { AddMany(delivery); }), HasSubstr("No space left"));
        EXPECT_THAT(ErrorOf([&] { delivery.Commit(); }), HasSubstr("new delivery"));
    }
    EXPECT_EQ(CountFiles(directory_), 0U);
}

TEST_F(DeliveryTest, WhatTheVaultHasIsNotWrittenAgain) {
    vault_.Add(folder_.Write("file", Deck(5000)));
    Delivery delivery(vault_);
    EXPECT_TRUE(Add(delivery, Deck(5000)).wasThere);
    delivery.Commit();
    EXPECT_EQ(CountFiles(directory_), 1U);
}

TEST_F(DeliveryTest, AFileThatBearsTheNameOfAContentWronglyIsReplaced) {
    for (const std::string& content : {Deck(5000), Noise(5000)}) {
        const Stored stored = vault_.Add(folder_.Write("file", content));
        const std::string path = FileOf(vault_, stored.hash);
        std::filesystem::remove(path);
        // The other form of it, of a size that it can't have.
        const std::string plain = path.substr(0, path.rfind('/') + 65);
        std::ofstream(stored.compressed ? plain : plain + ".zst") << (stored.compressed ? "x" : "");
        Delivery delivery(vault_);
        EXPECT_FALSE(Add(delivery, content).wasThere);
        delivery.Commit();
        EXPECT_EQ(FileOf(vault_, stored.hash), path);
        EXPECT_EQ(Problems(vault_), "");
    }
    EXPECT_EQ(CountFiles(directory_), 2U);
}

TEST_F(DeliveryTest, TakesBackWhatIsNotUsed) {
    vault_.Add(folder_.Write("before", "was there"));
    Delivery delivery(vault_);
    AddMany(delivery);
    const Stored used = Add(delivery, "used");
    Add(delivery, "was there");
    delivery.Commit();
    delivery.TakeBack([&](const std::string& hash) { return hash == used.hash; });
    EXPECT_TRUE(vault_.Holds(used.hash));
    // That, what was there, and the list.
    EXPECT_EQ(CountFiles(directory_), 3U);
}

TEST_F(DeliveryTest, LeavesWhatSomebodyHasAddedSince) {
    Delivery delivery(vault_);
    const Stored mine = Add(delivery, "mine");
    const Stored shared = Add(delivery, "shared");
    delivery.Commit();
    Vault other(directory_);
    EXPECT_TRUE(other.Add(folder_.Write("file", "shared")).wasThere);
    delivery.TakeBack(NothingIsUsed);
    EXPECT_FALSE(vault_.Holds(mine.hash));
    EXPECT_TRUE(vault_.Holds(shared.hash));
}

TEST_F(DeliveryTest, TakesBackWhatHasItsNameWhereCommitFails) {
    int renames = 0;
    layer_.before = [&](const std::string& call, const std::string& path) {
        if (call == "Rename" && ++renames > 900) {
            throw FileError(EIO, "renamed", path);
        }
    };
    {
        Delivery delivery(vault_);
        AddMany(delivery);
        EXPECT_THAT(ErrorOf([&] { delivery.Commit(); }), HasSubstr("Input/output error"));
        layer_.before = nullptr;
        EXPECT_GT(CountFiles(directory_ + "/00"), 0U);
        delivery.TakeBack(NothingIsUsed);
    }
    EXPECT_EQ(CountFiles(directory_), 0U);
}

TEST_F(DeliveryTest, SeveralThreadsMayPrepareContentsWhileItIsUsed) {
    constexpr int kContents = 200;
    vault_.Add(folder_.Write("file", Deck(5000, 7)));
    std::vector<std::string> hashes;
    {
        Delivery delivery(vault_);
        core::Crew crew(3);
        std::deque<std::future<Incoming>> prepared;
        for (int i = 0; i < kContents; ++i) {
            prepared.push_back(crew.Do([&delivery, i] {
                const std::string content =
                    i % 50 == 0 ? Noise(2 * kBlock + 1, i) : Deck(5000 - (i == 7 ? 0 : i), i);
                BytesSource source(content);
                return delivery.Prepare(source, "content");
            }));
        }
        for (std::future<Incoming>& each : prepared) {
            hashes.push_back(delivery.Add(each.get()).hash);
        }
        EXPECT_EQ(CountFiles(directory_), static_cast<std::size_t>(kContents) + 1);
        delivery.Commit();
    }
    for (const std::string& hash : hashes) {
        EXPECT_TRUE(vault_.Holds(hash));
    }
    EXPECT_EQ(CountFiles(directory_), static_cast<std::size_t>(kContents));
    EXPECT_EQ(Problems(vault_), "");
}

TEST_F(DeliveryTest, WhatWasPreparedAndDroppedIsRemoved) {
    Delivery delivery(vault_);
    {
        const std::string content = Deck(5000);
        BytesSource source(content);
        const Incoming dropped = delivery.Prepare(source, "content");
        EXPECT_EQ(Temporaries(directory_), 1U);
    }
    EXPECT_EQ(CountFiles(directory_), 0U);
}

TEST_F(DeliveryTest, MemoryDoesNotGrowWithTheNumberOfContents) {
    Delivery delivery(vault_);
    AddMany(delivery);
    const std::size_t before = HeapInUse();
    for (int i = 0; i < 6'000; ++i) {
        Add(delivery, "further content " + std::to_string(i));
    }
    EXPECT_LT(HeapInUse(), before + (std::size_t{512} << 10));
}

}  // namespace
}  // namespace kxudm::vault
