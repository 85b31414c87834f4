// The files of many entities at once.
#include <kxudm/UDMBulkRetrieval.h>
#include <kxudm/UDMProgress.h>

#include <cerrno>
#include <thread>

#include "Files.h"

namespace kxudm::test {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace fs = std::filesystem;

// Enough for several threads.
constexpr int PARTS = 36;

class Listener : public IUDMProgressListener {
  public:
    bool Advance(const UDMProgress& progress) override {
        EXPECT_EQ(std::this_thread::get_id(), thread);
        EXPECT_LE(last.done, progress.done);
        EXPECT_LE(last.doneBytes, progress.doneBytes);
        last = progress;
        return goOn;
    }

    const std::thread::id thread = std::this_thread::get_id();
    UDMProgress last;
    bool goOn = true;
};

class BulkRetrieval : public Files {
  protected:
    ~BulkRetrieval() override { layer.before = nullptr; }

    // The parts have the documents "deck" and their own number.
    void Fill(int count = PARTS) {
        for (int i = 0; i < count; ++i) {
            const UDMItemHandle part = layered->CreateEntity("Part", "P" + std::to_string(i));
            AddFile(layered, part, Write("deck", TextOf(i)));
            AddFile(layered, part, Write(std::to_string(i), std::to_string(i)), i % 5 == 0);
            parts.push_back(part);
        }
    }
    static std::string TextOf(int number) {
        return number % 2 == 0 ? Deck(2000, number) : vault::Noise(1000, number);
    }
    std::string FolderOf(std::size_t number) const {
        return out + "/" + std::to_string(number % 4) + "/f" + std::to_string(number);
    }
    kxStlVector<kxString> RetrieveAll(bool overwrite = false) {
        UDMBulkRetrieval retrieval(layered);
        for (std::size_t i = 0; i < parts.size(); ++i) {
            retrieval.Add(parts[i], FolderOf(i));
        }
        kxStlVector<kxString> paths;
        retrieval.Run(paths, overwrite);
        return paths;
    }
    void ExpectAll() {
        for (std::size_t i = 0; i < parts.size(); ++i) {
            const std::string number = std::to_string(i);
            ASSERT_THAT(FilesIn(FolderOf(i)), testing::UnorderedElementsAre("deck", number));
            ASSERT_EQ(ReadFile(FolderOf(i) + "/deck"), TextOf(static_cast<int>(i)));
            ASSERT_EQ(ReadFile(FolderOf(i) + "/" + number), number);
        }
    }

    vault::MeddlingLayer layer;
    ProfilePtr layered = OpenOver(layer);
    std::vector<UDMItemHandle> parts;
    const std::string out = sources.File("out");
};

TEST_F(BulkRetrieval, F14_BringsEachEntitysFilesIntoItsFolder) {
    Fill();
    const kxStlVector<kxString> paths = RetrieveAll();
    ExpectAll();
    ASSERT_EQ(paths.size(), 2U * PARTS);
    EXPECT_EQ(paths[0], FolderOf(0) + "/0");
    EXPECT_EQ(paths[1], FolderOf(0) + "/deck");
    EXPECT_EQ(paths.back(), FolderOf(PARTS - 1) + "/deck");
}

TEST_F(BulkRetrieval, OfFewFilesIsTheSame) {
    Fill(2);
    EXPECT_EQ(RetrieveAll().size(), 4U);
    ExpectAll();
}

TEST_F(BulkRetrieval, TakesOwnedChildrenAlongWhereAsked) {
    const UDMItemHandle owner = Part("Owner");
    const UDMItemHandle child = ann->CreateAndAddChild("Part", "Child", owner, "parts");
    Put(owner, "a", "1");
    Put(child, "b", "2");
    UDMBulkRetrieval retrieval(ann);
    retrieval.Add(owner, out + "/with", true);
    retrieval.Add(owner, out + "/without");
    EXPECT_EQ(retrieval.Count(), 2U);
    kxStlVector<kxString> paths{"before"};
    retrieval.Run(paths);
    EXPECT_THAT(paths, ElementsAre("before", out + "/with/a", out + "/with/b", out + "/without/a"));
    EXPECT_EQ(retrieval.Count(), 0U);
}

TEST_F(BulkRetrieval, LeavesEqualFilesAloneAndReplacesOthersOnlyIfAllowed) {
    Fill();
    RetrieveAll();
    const std::string changed = FolderOf(7) + "/deck";
    sources.Write(changed.substr(sources.Path().size() + 1), "mine");
    fs::remove(FolderOf(8) + "/deck");
    EXPECT_THAT(Refusal<UDMStoreException>([&] { RetrieveAll(); }),
                AllOf(HasSubstr(changed), HasSubstr("differs")));
    EXPECT_EQ(ReadFile(changed), "mine");
    EXPECT_FALSE(Exists(FolderOf(8) + "/deck"));
    RetrieveAll(true);
    ExpectAll();
}

TEST_F(BulkRetrieval, DifferentDocumentsUnderOnePathAreRefused) {
    Fill(3);
    UDMBulkRetrieval retrieval(layered);
    retrieval.Add(parts[0], out);
    retrieval.Add(parts[1], out + "/sub/..");
    kxStlVector<kxString> paths;
    EXPECT_THAT(Refusal([&] { retrieval.Run(paths); }), HasSubstr("would meet"));
    EXPECT_FALSE(Exists(out));
    EXPECT_EQ(retrieval.Count(), 2U);
}

TEST_F(BulkRetrieval, OfNothingIsNothing) {
    UDMBulkRetrieval retrieval(ann);
    kxStlVector<kxString> paths;
    retrieval.Run(paths);
    EXPECT_THAT(paths, IsEmpty());
    retrieval.Add(UDMItemHandle(), out);
    EXPECT_THROW(retrieval.Run(paths), UDMException);
    EXPECT_THROW(UDMBulkRetrieval{ProfilePtr()}, UDMException);
}

TEST_F(BulkRetrieval, ThatFailsAtAnyCallLeavesTheFoldersAsTheyWere) {
    Fill();
    int errors = 0;
    bool failed = true;
    for (int number = 1; failed; number += 17) {
        int calls = 0;
        layer.before = [&](const std::string& call, const std::string& path) {
            if (++calls == number) {
                throw vault::FileError(call == "Write" ? ENOSPC : EIO, "used", path);
            }
        };
        const std::string error = ErrorOf([&] { RetrieveAll(); });
        failed = calls >= number;
        layer.before = nullptr;
        if (error.empty()) {
            // Closing what was only read may fail unheard.
            ExpectAll();
            fs::remove_all(out);
        } else {
            ++errors;
            ASSERT_FALSE(Exists(out)) << number << " " << error;
        }
    }
    EXPECT_GT(errors, PARTS / 2);
}

TEST_F(BulkRetrieval, NamesTheDamagedContentAndWritesNothing) {
    Fill();
    const auto documents = Documents(layered, parts[20]);
    const std::string stored = documents.back().GetPath();
    const fs::perms mode = fs::status(stored).permissions();
    fs::permissions(stored, fs::perms::owner_all);
    std::string bytes = ReadFile(stored);
    bytes[bytes.size() / 2] ^= 1;
    std::ofstream(stored, std::ios::binary) << bytes;
    fs::permissions(stored, mode);
    EXPECT_THAT(Refusal<UDMStoreException>([&] { RetrieveAll(); }),
                AllOf(HasSubstr(stored), HasSubstr("damaged")));
    EXPECT_FALSE(Exists(out));
}

TEST_F(BulkRetrieval, TellsItsProgressOnTheCallingThread) {
    Fill();
    Listener listener;
    const UDMProgressScope scope(layered, listener);
    RetrieveAll();
    EXPECT_EQ(listener.last.done, 2U * PARTS);
    EXPECT_EQ(listener.last.total, 2U * PARTS);
    EXPECT_EQ(listener.last.doneBytes, listener.last.totalBytes);
    EXPECT_EQ(listener.last.name, "");
}

TEST_F(BulkRetrieval, ThatIsCancelledLeavesTheFoldersAsTheyWere) {
    Fill();
    Listener listener;
    listener.goOn = false;
    const UDMProgressScope scope(layered, listener);
    EXPECT_THROW(RetrieveAll(), UDMCancelledException);
    EXPECT_TRUE(scope.WasCancelled());
    EXPECT_FALSE(Exists(out));
}

TEST_F(BulkRetrieval, OfLargeFilesIsVerifiedToo) {
    const UDMItemHandle part = Part();
    const std::string noise = vault::Noise(9'000'000);
    const std::string deck = Deck(9'500'000);
    Put(part, "noise", noise);
    Put(part, "deck", deck);
    UDMBulkRetrieval retrieval(ann);
    retrieval.Add(part, out);
    kxStlVector<kxString> paths;
    retrieval.Run(paths);
    EXPECT_TRUE(ReadFile(out + "/noise") == noise);
    EXPECT_TRUE(ReadFile(out + "/deck") == deck);
    const auto documents = Documents(ann, part);
    const std::string stored = documents.back().GetPath();
    fs::permissions(stored, fs::perms::owner_all);
    std::fstream file(stored, std::ios::binary | std::ios::in | std::ios::out);
    file.seekp(8'000'000);
    file.put(static_cast<char>(noise[8'000'000] ^ 1));
    file.close();
    retrieval.Add(part, out + "/again");
    EXPECT_THAT(Refusal<UDMStoreException>([&] { retrieval.Run(paths); }), HasSubstr("damaged"));
    EXPECT_FALSE(Exists(out + "/again"));
}

}  // namespace
}  // namespace kxudm::test
