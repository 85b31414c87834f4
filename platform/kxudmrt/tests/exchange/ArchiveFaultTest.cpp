// Each call to the machine fails once, for the first up to the last that writing or reading an
// archive makes.
#include <cerrno>

#include "Archives.h"
#include "exchange/ArchiveReader.h"

namespace kxudm::exchange {
namespace {

using testing::HasSubstr;
using vault::FileError;
using vault::MachineFiles;
using vault::ReadFile;

class ArchiveFaultTest : public testing::TestWithParam<int> {
  protected:
    // Lets the call of this number fail; answers the error.
    std::string Run(int number, const std::function<void()>& operation) {
        int calls = 0;
        failed_.clear();
        files_.before = [&](const std::string& call, const std::string& path) {
            if (++calls == number) {
                failed_ = call;
                throw FileError(GetParam(), "used for " + call, path);
            }
        };
        const std::string error = vault::ErrorOf(operation);
        files_.before = nullptr;
        return error;
    }

    vault::Folder folder_;
    std::string path_ = folder_.File("plates.kxa");
    vault::MeddlingLayer files_;
    std::string failed_;
    Entries entries_ = SampleEntries();
};

INSTANTIATE_TEST_SUITE_P(Codes, ArchiveFaultTest, testing::Values(EIO, ENOSPC));

TEST_P(ArchiveFaultTest, WritingLeavesTheTargetAndNoTemporaryFile) {
    for (int number = 1; number < 200; ++number) {
        folder_.Write("plates.kxa", "before");
        const std::string error = Run(number, [&] { WriteArchive(files_, path_, entries_); });
        SCOPED_TRACE("call " + std::to_string(number) + " " + failed_ + ": " + error);
        if (failed_.empty()) {
            EXPECT_EQ(error, "");
            EXPECT_GT(number, 10);
            EXPECT_EQ(RefusalOf(path_), "");
            return;
        }
        EXPECT_THAT(error, HasSubstr("can't be used for " + failed_));
        // The one call behind the rename: the archive has its name, but might lose it.
        if (failed_ == "FlushFolder") {
            EXPECT_EQ(RefusalOf(path_), "");
        } else {
            EXPECT_EQ(ReadFile(path_), "before");
        }
        EXPECT_EQ(vault::CountFiles(folder_.Path()), 1U);
    }
    FAIL() << "no run was clean";
}

TEST_P(ArchiveFaultTest, ShortWritesAndReadsGoOn) {
    files_.mostBytes = 1009;
    WriteArchive(files_, path_, entries_);
    EXPECT_TRUE(ReadArchive(files_, path_) == entries_);
}

TEST_P(ArchiveFaultTest, ReadingTellsTheFailure) {
    WriteArchive(MachineFiles(), path_, entries_);
    for (int number = 1; number < 200; ++number) {
        Entries read;
        const std::string error = Run(number, [&] { read = ReadArchive(files_, path_); });
        SCOPED_TRACE("call " + std::to_string(number) + " " + failed_ + ": " + error);
        if (failed_.empty()) {
            EXPECT_EQ(error, "");
            EXPECT_GT(number, 10);
            EXPECT_TRUE(read == entries_);
            return;
        }
        // What was read to its end is not undone by a failure to close it.
        if (!error.empty() || failed_ != "Close") {
            EXPECT_THAT(error, HasSubstr("can't be used for " + failed_));
        }
    }
    FAIL() << "no run was clean";
}

}  // namespace
}  // namespace kxudm::exchange
