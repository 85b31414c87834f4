// Contents of an archive on their way into a vault, several at a time.
#include <algorithm>
#include <cerrno>

#include "Archives.h"
#include "profile/ArchiveContents.h"
#include "vault/Compression.h"

namespace kxudm::profile {
namespace {

using exchange::Entries;
using exchange::EntriesOf;
using testing::HasSubstr;
using vault::Deck;
using vault::Noise;

// Ends the import at its n-th call.
class Listener final : public IUDMProgressListener {
  public:
    bool Advance(const UDMProgress& progress) override {
        if (!progress.name.empty() && (names.empty() || names.back() != progress.name)) {
            names.push_back(progress.name);
        }
        last = progress;
        if (meanwhile) {
            meanwhile();
        }
        return ++calls != end;
    }

    std::function<void()> meanwhile;
    std::vector<std::string> names;
    UDMProgress last;
    int calls = 0;
    int end = 0;
};

// More than are on their way at a time; some that no thread but the caller's takes.
Entries MixedEntries() {
    std::vector<std::string> contents{"", Noise(vault::kLarge + 7), Deck(vault::kLarge * 2)};
    for (int i = 0; i < 300; ++i) {
        contents.push_back(i % 7 == 0 ? Noise(20'000, i) : Deck(3000 + 100 * (i % 90), i));
    }
    for (int i = 0; i < 6; ++i) {
        contents.push_back(Noise((std::size_t{1} << 20) - 6 + i * 100'000, 1000 + i));
    }
    Entries entries = EntriesOf("<library/>", contents);
    for (exchange::Entry& entry : entries) {
        entry.store = entry.content.size() > 100'000;
    }
    return entries;
}

Entries EqualEntries(int count, std::size_t size) {
    std::vector<std::string> contents;
    for (int i = 0; i < count; ++i) {
        contents.push_back(std::to_string(i));
        contents.back().resize(size, '.');
    }
    Entries entries = EntriesOf("<library/>", contents);
    for (std::size_t i = 1; i < entries.size(); ++i) {
        entries[i].store = true;
    }
    return entries;
}

class ArchiveContentsTest : public testing::Test {
  protected:
    // As an import does it; the document's records are not met.
    void Take(const Entries& entries, vault::Delivery& delivery) {
        const std::string path =
            folder_.Write("plates.kxa", exchange::Sealed(exchange::ZipOf(entries)));
        exchange::ArchiveReader archive(vault::MachineFiles(), path);
        ASSERT_TRUE(archive.Next());
        ExchangeProgress progress(&listener_, "The import");
        ArchiveContents contents(archive, path, delivery, progress, entries.size() - 1);
        while (archive.Next()) {
            contents.Take();
        }
        contents.Finish();
        progress.Finish();
    }
    // The text of the failure, after a look at the vault.
    std::string Failure(const Entries& entries) {
        std::string text;
        {
            vault::Delivery delivery(vault_);
            text = vault::ErrorOf([&] { Take(entries, delivery); });
        }
        layer_.before = nullptr;
        EXPECT_EQ(vault::CountFiles(directory_), 0U);
        return text;
    }

    vault::Folder folder_;
    const std::string directory_ = folder_.File("vault");
    vault::MeddlingLayer layer_;
    vault::Vault vault_{directory_, layer_};
    Listener listener_;
};

TEST_F(ArchiveContentsTest, AreAllInTheVaultInTheEnd) {
    const Entries entries = MixedEntries();
    {
        vault::Delivery delivery(vault_);
        Take(entries, delivery);
        delivery.Commit();
    }
    std::uint64_t bytes = 0;
    for (std::size_t i = 1; i < entries.size(); ++i) {
        EXPECT_TRUE(vault_.Holds(exchange::HashOf(entries[i].content)));
        bytes += entries[i].content.size();
    }
    EXPECT_EQ(vault::CountFiles(directory_), entries.size() - 1);
    EXPECT_EQ(vault::Problems(vault_), "");
    EXPECT_EQ(listener_.last.done, entries.size() - 1);
    EXPECT_EQ(listener_.last.doneBytes, bytes);
}

TEST_F(ArchiveContentsTest, AreAnnouncedInTheOrderOfTheArchive) {
    const Entries entries = MixedEntries();
    vault::Delivery delivery(vault_);
    Take(entries, delivery);
    ASSERT_EQ(listener_.names.size(), entries.size() - 1);
    EXPECT_TRUE(std::is_sorted(listener_.names.begin(), listener_.names.end()));
}

TEST_F(ArchiveContentsTest, OfEachSizeAtWhichTheirWayChangesAreWhole) {
    constexpr std::size_t kGroup = std::size_t{256} << 10;
    std::vector<std::string> contents{""};
    for (const std::size_t limit : {std::size_t{vault::kLarge}, kGroup, kGroup / 16}) {
        for (std::size_t i = 0; i < 17; ++i) {
            const std::size_t size = limit - 1 + i % 3;
            contents.push_back(i % 2 == 0 ? Noise(size, i) : Deck(size, i));
        }
    }
    const Entries entries = EntriesOf("<library/>", contents);
    vault::Delivery delivery(vault_);
    Take(entries, delivery);
    delivery.Commit();
    for (const std::string& content : contents) {
        EXPECT_TRUE(vault_.Holds(exchange::HashOf(content))) << content.size();
    }
    EXPECT_EQ(vault::Problems(vault_), "");
    EXPECT_EQ(listener_.last.done, entries.size() - 1);
}

TEST_F(ArchiveContentsTest, AreNotWrittenWhereTheVaultHasThem) {
    const Entries entries = EqualEntries(100, 500);
    for (std::size_t i = 1; i < entries.size(); i += 3) {
        vault_.Add(folder_.Write("file", entries[i].content));
    }
    const std::size_t before = vault::CountFiles(directory_);
    vault::Delivery delivery(vault_);
    Take(entries, delivery);
    // And the list of what waits.
    EXPECT_EQ(vault::Temporaries(directory_), entries.size() - 1 - before + 1);
    delivery.Commit();
    EXPECT_EQ(vault::Problems(vault_), "");
}

TEST_F(ArchiveContentsTest, TheFirstThatIsNotWhatItsNameSaysIsTold) {
    const Entries sound = MixedEntries();
    for (const std::size_t wrong : {1U, 17U, 150U, 308U}) {
        Entries entries = sound;
        for (const std::size_t i : {wrong, wrong + 1}) {
            ASSERT_FALSE(entries[i].content.empty());
            entries[i].content.front() = static_cast<char>(entries[i].content.front() ^ 1);
        }
        EXPECT_THAT(Failure(entries),
                    AllOf(HasSubstr(entries[wrong].name + "' has the content "),
                          HasSubstr("expected the one that it is named by")));
    }
}

TEST_F(ArchiveContentsTest, AreGivenUpWhereTheDiskIsFull) {
    const Entries entries = EqualEntries(100, 500);
    for (const int full : {1, 2, 15, 16, 17, 50, 100}) {
        int writes = 0;
        layer_.before = [&](const std::string& call, const std::string& path) {
            if (call == "Write" && ++writes >= full) {
                throw vault::FileError(ENOSPC, "written", path);
            }
        };
        EXPECT_THAT(Failure(entries),
                    AllOf(HasSubstr("files/"),
                          HasSubstr("' was not stored"),
                          HasSubstr("No space left on device")))
            << full;
    }
}

TEST_F(ArchiveContentsTest, CanBeCancelledAtEachCall) {
    const Entries entries = EqualEntries(100, 500);
    // Each is announced, and told when it is done.
    constexpr int kCalls = 200;
    for (int end = 1; end <= kCalls; end += 7) {
        listener_.calls = 0;
        listener_.end = end;
        EXPECT_EQ(Failure(entries), "The import was cancelled; everything is as it was") << end;
        EXPECT_EQ(listener_.calls, end);
    }
}

TEST_F(ArchiveContentsTest, WaitForTheirTurnInBoundedMemory) {
    constexpr std::size_t kInFlight = std::size_t{16} << 20;
    // Each of at most four threads has one.
    constexpr std::size_t kIntakes = std::size_t{16} << 20;
    for (const auto& [count, size] : {std::pair(4000, std::size_t{500}),
                                      std::pair(40, std::size_t{1} << 20),
                                      std::pair(15, std::size_t{vault::kLarge - 1})}) {
        const Entries entries = EqualEntries(count, size);
        vault::Delivery delivery(vault_);
        std::size_t least = static_cast<std::size_t>(-1);
        std::size_t most = 0;
        listener_.meanwhile = [&] {
            const std::size_t now = vault::HeapInUse();
            least = std::min(least, now);
            most = std::max(most, now);
        };
        Take(entries, delivery);
        EXPECT_LT(most, least + kInFlight + kIntakes) << size;
    }
}

}  // namespace
}  // namespace kxudm::profile
