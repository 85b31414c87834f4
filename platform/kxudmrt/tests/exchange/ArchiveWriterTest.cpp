// What the writer makes of entries, for us and for other programs.
#include <boost/crc.hpp>
#include <cerrno>
#include <cstdlib>
#include <ctime>

#include "Archives.h"
#include "exchange/ArchiveFormat.h"
#include "exchange/ArchiveWriter.h"

namespace kxudm::exchange {
namespace {

using testing::HasSubstr;
using vault::ErrorOf;
using vault::MachineFiles;
using vault::ReadFile;

class ArchiveWriterTest : public testing::Test {
  protected:
    std::string Write(const Entries& entries, std::size_t piece = 100'000) {
        WriteArchive(MachineFiles(), target_, entries, piece);
        return ReadFile(target_);
    }

    vault::Folder folder_;
    std::string target_ = folder_.File("plates.kxa");
};

TEST_F(ArchiveWriterTest, WhatWasWrittenIsReadAgain) {
    const Entries entries = SampleEntries();
    Write(entries);
    EXPECT_TRUE(ReadArchive(MachineFiles(), target_) == entries);
}

TEST_F(ArchiveWriterTest, PiecesOfAnySizeGiveTheSameBytes) {
    const Entries entries = SampleEntries();
    const std::string whole = Write(entries, std::size_t{1} << 30);
    EXPECT_TRUE(Write(entries, 4099) == whole);
    EXPECT_TRUE(Write(entries, std::size_t{1} << 20) == whole);
}

TEST_F(ArchiveWriterTest, NothingOfTheMachineIsInTheBytes) {
    const Entries entries = SampleEntries();
    const std::string here = Write(entries);
    const std::string there = vault::InChild([&] {
        setenv("TZ", "Asia/Tokyo", 1);
        tzset();
        umask(0077);
        return Write(entries) == here ? "same" : "other";
    });
    EXPECT_EQ(there, "same");
}

TEST_F(ArchiveWriterTest, ProgramsForZipFilesReadItToo) {
    const Entries entries = SampleEntries();
    Write(entries);
    EXPECT_EQ(std::system(("unzip -tqq " + target_).c_str()), 0);
    const std::string unpacked = folder_.File("unpacked");
    ASSERT_EQ(std::system(("unzip -qq " + target_ + " -d " + unpacked).c_str()), 0);
    for (const Entry& entry : entries) {
        EXPECT_TRUE(ReadFile(unpacked + "/" + entry.name) == entry.content) << entry.name;
    }
}

TEST_F(ArchiveWriterTest, MoreEntriesThanTheEndRecordCounts) {
    Entries entries(70'000);
    entries[0] = {std::string(kDocumentEntry), "<library/>"};
    for (std::size_t i = 1; i < entries.size(); ++i) {
        std::string number = std::to_string(i);
        entries[i].name = FileEntry(std::string(64 - number.size(), '0') + number);
        entries[i].content = number;
    }
    Write(entries);
    EXPECT_TRUE(ReadArchive(MachineFiles(), target_) == entries);
    EXPECT_EQ(std::system(("unzip -tqq " + target_).c_str()), 0);
}

TEST_F(ArchiveWriterTest, CompressesWhatShrinksAndOnlyThat) {
    const std::size_t empty = Write(EntriesOf("", {})).size();
    EXPECT_LT(Write(EntriesOf("", {vault::Deck(500'000)})).size(), empty + 250'000);
    const std::string noise = vault::Noise(500'000);
    EXPECT_NE(Write(EntriesOf("", {noise})).find(noise), std::string::npos);
}

// A content that was stored plain and holds the record that tells its own end.
TEST_F(ArchiveWriterTest, AContentThatImitatesTheEndOfAnEntryIsReadWhole) {
    const std::string part = vault::Noise(5000);
    boost::crc_32_type crc;
    crc.process_bytes(part.data(), part.size());
    const std::string content = part + std::string(kDescriptorSignature) +
                                Little(crc.checksum(), 4) + Little(part.size(), 4) +
                                Little(part.size(), 4) + vault::Noise(5000, 2);
    const Entries entries = EntriesOf("", {content});
    Write(entries);
    EXPECT_TRUE(ReadArchive(MachineFiles(), target_) == entries);
}

TEST_F(ArchiveWriterTest, AnArchiveIsAContentLikeAnyOther) {
    Write(EntriesOf("<inner/>", {vault::Noise(3000), vault::Deck(3000)}));
    const Entries entries = EntriesOf("<outer/>", {ReadFile(target_)});
    Write(entries);
    EXPECT_TRUE(ReadArchive(MachineFiles(), target_) == entries);
}

TEST_F(ArchiveWriterTest, ReplacesTheTargetOnlyAtItsEnd) {
    folder_.Write("plates.kxa", "before");
    {
        ArchiveWriter archive(MachineFiles(), target_);
        archive.Begin(kDocumentEntry);
        archive.Write(vault::Noise(3'000'000));
        archive.End();
        EXPECT_EQ(ReadFile(target_), "before");
        EXPECT_EQ(vault::CountFiles(folder_.Path()), 2U);
        archive.Finish();
        EXPECT_NE(ReadFile(target_), "before");
    }
    EXPECT_EQ(vault::CountFiles(folder_.Path()), 1U);
}

TEST_F(ArchiveWriterTest, LeavesNothingWithoutFinish) {
    folder_.Write("plates.kxa", "before");
    {
        ArchiveWriter archive(MachineFiles(), target_);
        archive.Begin(kDocumentEntry);
        archive.Write(vault::Noise(3'000'000));
    }
    EXPECT_EQ(ReadFile(target_), "before");
    EXPECT_EQ(vault::CountFiles(folder_.Path()), 1U);
}

TEST_F(ArchiveWriterTest, ATargetInAMissingFolderIsAnErrorOfTheFile) {
    try {
        ArchiveWriter archive(MachineFiles(), folder_.File("missing/plates.kxa"));
        FAIL() << "was taken";
    } catch (const vault::FileError& error) {
        EXPECT_EQ(error.Code(), ENOENT);
    }
}

TEST_F(ArchiveWriterTest, TheDocumentComesFirst) {
    ArchiveWriter archive(MachineFiles(), target_);
    EXPECT_EQ(ErrorOf([&] { archive.Begin(FileEntry(HashOf("")), 0); }),
              "The entry '" + FileEntry(HashOf("")) + "' of '" + target_ +
                  "' can't be written: the first entry is 'library.xml'");
    EXPECT_THAT(ErrorOf([&] { archive.Finish(); }), HasSubstr("write the document first"));
}

TEST_F(ArchiveWriterTest, FilesAreNamedByTheirHashInAscendingOrder) {
    ArchiveWriter archive(MachineFiles(), target_);
    archive.Begin(kDocumentEntry);
    archive.End();
    const std::string low(64, '0');
    const std::string high(64, 'f');
    for (const std::string& name :
         {std::string("other"), std::string("files/../x"), "files/" + std::string(64, 'A')}) {
        EXPECT_THAT(ErrorOf([&] { archive.Begin(name, 1); }),
                    HasSubstr("named 'files/' and a SHA-256"));
    }
    EXPECT_THAT(ErrorOf([&] { archive.Begin(FileEntry(low)); }), HasSubstr("size"));
    archive.Begin(FileEntry(high), 0);
    archive.End();
    EXPECT_THAT(ErrorOf([&] { archive.Begin(FileEntry(high), 0); }), HasSubstr("names ascend"));
    EXPECT_THAT(ErrorOf([&] { archive.Begin(FileEntry(low), 0); }), HasSubstr("names ascend"));
    archive.Finish();
    EXPECT_EQ(ReadArchive(MachineFiles(), target_).size(), 2U);
}

TEST_F(ArchiveWriterTest, AsManyBytesComeAsWereAnnounced) {
    for (const std::size_t count : {0U, 9U, 11U, 2'000'000U}) {
        ArchiveWriter archive(MachineFiles(), target_);
        archive.Begin(kDocumentEntry, 10);
        const std::string error = ErrorOf([&] {
            archive.Write(vault::Noise(count));
            archive.End();
        });
        EXPECT_THAT(error,
                    HasSubstr("10 bytes were announced and " + std::to_string(count) + " came"));
    }
}

TEST_F(ArchiveWriterTest, EntriesDontOverlap) {
    ArchiveWriter archive(MachineFiles(), target_);
    EXPECT_THAT(ErrorOf([&] { archive.Write("x"); }), HasSubstr("begin one first"));
    EXPECT_THAT(ErrorOf([&] { archive.End(); }), HasSubstr("begin one first"));
    archive.Begin(kDocumentEntry);
    EXPECT_THAT(ErrorOf([&] { archive.Begin(kDocumentEntry); }), HasSubstr("end it first"));
    EXPECT_THAT(ErrorOf([&] { archive.Finish(); }), HasSubstr("write the document first"));
}

}  // namespace
}  // namespace kxudm::exchange
