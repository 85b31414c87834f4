// Reading sound archives, and archives that were damaged on their way.
#include <unistd.h>

#include <cerrno>

#include "Archives.h"
#include "exchange/ArchiveFormat.h"
#include "exchange/ArchiveReader.h"
#include "exchange/ArchiveWriter.h"

namespace kxudm::exchange {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;
using vault::MachineFiles;
using vault::ReadFile;

class ArchiveReaderTest : public testing::Test {
  protected:
    void SetUp() override { WriteArchive(MachineFiles(), path_, entries_); }

    vault::Folder folder_;
    std::string path_ = folder_.File("plates.kxa");
    Entries entries_ = SampleEntries();
};

TEST_F(ArchiveReaderTest, TellsOfEachEntryWhatItIs) {
    ArchiveReader archive(MachineFiles(), path_);
    for (const Entry& entry : entries_) {
        ASSERT_TRUE(archive.Next());
        EXPECT_EQ(archive.Name(), entry.name);
        EXPECT_EQ(archive.IsDocument(), entry.name == kDocumentEntry);
        EXPECT_EQ(archive.Hash(), archive.IsDocument() ? "" : HashOf(entry.content));
        if (!archive.IsDocument()) {
            EXPECT_EQ(archive.Size(), entry.content.size());
        }
    }
    EXPECT_FALSE(archive.Next());
    EXPECT_FALSE(archive.Next());
}

TEST_F(ArchiveReaderTest, AnEntryIsReadInAnyPiecesOrNotAtAll) {
    EXPECT_TRUE(ReadArchive(MachineFiles(), path_, {}, 77) == entries_);
    ArchiveReader archive(MachineFiles(), path_);
    char byte = 0;
    while (archive.Next()) {
        archive.Read(&byte, 1);
    }
    EXPECT_EQ(archive.Read(&byte, 1), 0U);
}

TEST_F(ArchiveReaderTest, AMissingFileIsAnErrorOfTheFile) {
    try {
        const ArchiveReader archive(MachineFiles(), folder_.File("missing"));
        FAIL() << "was found";
    } catch (const vault::FileError& error) {
        EXPECT_EQ(error.Code(), ENOENT);
    }
}

TEST_F(ArchiveReaderTest, WhatIsNoFileIsRefused) {
    EXPECT_EQ(RefusalOf(folder_.Path()),
              "The archive '" + folder_.Path() +
                  "' can't be read: it is no file; name one that was exported");
}

TEST_F(ArchiveReaderTest, WhatHasNoSealIsRefused) {
    for (const std::string& bytes :
         {std::string(), std::string("PK\3\4"), vault::Noise(5000), ZipOf(entries_)}) {
        EXPECT_THAT(RefusalOfBytes(bytes), HasSubstr("it has no seal at its end"));
    }
}

TEST_F(ArchiveReaderTest, ASealAloneIsNoArchive) {
    const std::string start(kSealStart);
    EXPECT_THAT(RefusalOfBytes(start + HashOf(start)), HasSubstr("not those that were sealed"));
    const std::string padded = std::string(1000, 'x') + start;
    EXPECT_THAT(RefusalOfBytes(padded + HashOf(padded)), HasSubstr("not the comment of a ZIP"));
}

TEST_F(ArchiveReaderTest, CutShortAnywhereItIsRefused) {
    WriteArchive(MachineFiles(), path_, EntriesOf("<library/>", {vault::Noise(300'000), "a"}));
    const std::string whole = ReadFile(path_);
    ASSERT_EQ(RefusalOf(path_), "");
    for (std::size_t size = whole.size() - 1; size > whole.size() - 300; --size) {
        ASSERT_EQ(truncate(path_.c_str(), static_cast<off_t>(size)), 0);
        ASSERT_NE(RefusalOf(path_), "") << size;
    }
    for (std::size_t size = whole.size() / 1024 * 1024;; size -= 1024) {
        ASSERT_EQ(truncate(path_.c_str(), static_cast<off_t>(size)), 0);
        ASSERT_THAT(RefusalOf(path_), HasSubstr("it has no seal at its end")) << size;
        if (size == 0) {
            break;
        }
    }
}

TEST_F(ArchiveReaderTest, WithAnyByteChangedItIsRefused) {
    WriteArchive(MachineFiles(), path_, EntriesOf("<library/>", {"a", vault::Deck(800)}));
    const std::string whole = ReadFile(path_);
    ASSERT_EQ(RefusalOf(path_), "");
    for (std::size_t at = 0; at < whole.size(); ++at) {
        std::string changed = whole;
        changed[at] = static_cast<char>(changed[at] ^ 1 << at % 8);
        ASSERT_THAT(RefusalOf(folder_.Write("changed", changed)),
                    StartsWith("The archive '" + folder_.File("changed") + "' can't be read: "))
            << at;
    }
}

TEST_F(ArchiveReaderTest, WithAChangedByteInALargeOneItIsRefused) {
    const std::string whole = ReadFile(path_);
    for (std::size_t at = 0; at < whole.size(); at += whole.size() / 40) {
        std::string changed = whole;
        changed[at] = static_cast<char>(changed[at] ^ 0x10);
        ASSERT_THAT(RefusalOf(folder_.Write("changed", changed)),
                    HasSubstr("its bytes are not those that were sealed"))
            << at;
    }
}

TEST_F(ArchiveReaderTest, WithBytesAroundItItIsRefused) {
    const std::string whole = ReadFile(path_);
    for (const std::string& more : {std::string("\n"), std::string(1, '\0'), whole}) {
        EXPECT_NE(RefusalOfBytes(whole + more), "");
        EXPECT_NE(RefusalOfBytes(more + whole), "");
        // Also with a seal over them.
        EXPECT_NE(RefusalOfBytes(Resealed(more + whole)), "");
    }
}

TEST_F(ArchiveReaderTest, ALaterVersionIsToldAsSuch) {
    std::string later = ReadFile(path_);
    later.replace(later.size() - kSealSize, kSealStart.size(), "kxudm-archive 12 other ");
    EXPECT_THAT(RefusalOfBytes(later),
                HasSubstr("it is of version 12 of the format and this program reads up to version "
                          "1; use a newer program or export for this one"));
}

// Answers the size of a file that another process changes at the n-th question.
class ChangingLayer : public vault::MeddlingLayer {
  public:
    vault::FileStatus Status(const vault::OpenFile& file) override {
        vault::FileStatus status = MeddlingLayer::Status(file);
        if (++questions_ >= changedFrom) {
            ++status.changed;
        }
        return status;
    }

    int changedFrom = 0;

  private:
    int questions_ = 0;
};

TEST_F(ArchiveReaderTest, AnArchiveThatChangesMeanwhileIsRefused) {
    for (const int question : {2, 3}) {
        ChangingLayer files;
        files.changedFrom = question;
        EXPECT_THAT(vault::ErrorOf([&] { ReadArchive(files, path_); }),
                    HasSubstr("it was changed while it was read"))
            << question;
    }
    ChangingLayer files;
    files.changedFrom = 4;
    EXPECT_TRUE(ReadArchive(files, path_) == entries_);
}

TEST_F(ArchiveReaderTest, AnArchiveThatIsCutMeanwhileIsRefused) {
    for (const int reads : {1, 3, 6, 9}) {
        vault::MeddlingLayer files;
        WriteArchive(MachineFiles(), path_, entries_);
        int count = 0;
        files.before = [&](const std::string& call, const std::string&) {
            if (call == "Read" && ++count == reads) {
                ASSERT_EQ(truncate(path_.c_str(), 1000), 0);
            }
        };
        EXPECT_THAT(vault::ErrorOf([&] { ReadArchive(files, path_); }),
                    AllOf(HasSubstr(path_), HasSubstr("while it was read")))
            << reads;
    }
}

}  // namespace
}  // namespace kxudm::exchange
