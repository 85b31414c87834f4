// Archives that were made to do damage: their seal is right, their content is not what it seems.
#include "Archives.h"
#include "exchange/ArchiveFormat.h"
#include "exchange/ArchiveReader.h"
#include "exchange/ArchiveWriter.h"

namespace kxudm::exchange {
namespace {

using testing::AllOf;
using testing::HasSubstr;

const std::string kHash(64, 'a');
const std::string kLocal(kLocalSignature);
const std::string kRecord(kDirectorySignature);
const std::string kDescriptor(kDescriptorSignature);

Entry Document() {
    return {"library.xml", "<library/>"};
}

Entry File(const std::string& content = "content") {
    return {"files/" + kHash, content};
}

std::string Sound() {
    return Sealed(ZipOf({Document(), File()}));
}

TEST(HostileArchive, ASoundOneOfAnotherAuthorIsRead) {
    EXPECT_EQ(RefusalOfBytes(Sound()), "");
    EXPECT_EQ(RefusalOfBytes(Sealed(ZipOf({Document()}))), "");
}

TEST(HostileArchive, OnlyTheNamesOfTheFormatAreTaken) {
    for (const std::string& name : {std::string("../library.xml"),
                                    std::string("/etc/passwd"),
                                    "files/../" + kHash,
                                    "files/" + kHash + "/",
                                    "files/" + std::string(64, 'A'),
                                    "files/" + kHash + "a",
                                    "files/" + kHash.substr(1),
                                    "Files/" + kHash,
                                    "./files/" + kHash,
                                    std::string("files/"),
                                    std::string("x\n\x1b[2J"),
                                    std::string("library.xml"),
                                    std::string("C:\\x"),
                                    std::string(60'000, 'x')}) {
        const std::string error = RefusalOfBytes(Sealed(ZipOf({Document(), {name, "x"}})));
        EXPECT_THAT(error, HasSubstr("has a name that is not 'files/' and 64 hexadecimal digits"));
        EXPECT_EQ(error.find_first_of("\n\x1b"), std::string::npos);
        EXPECT_LT(error.size(), 2000U);
    }
    // The ZIP library takes it for a '/', other programs do not.
    EXPECT_NE(RefusalOfBytes(Sealed(ZipOf({Document(), {"files\\" + kHash, "x"}}))), "");
}

TEST(HostileArchive, TheDocumentComesFirst) {
    EXPECT_THAT(RefusalOfBytes(Sealed(ZipOf({File(), Document()}))),
                HasSubstr("the entry 'files/" + kHash + "' comes first, where 'library.xml'"));
    EXPECT_THAT(RefusalOfBytes(Sealed(ZipOf({}))), HasSubstr("it holds no 'library.xml'"));
}

TEST(HostileArchive, NoNameComesTwiceOrOutOfOrder) {
    EXPECT_THAT(RefusalOfBytes(Sealed(ZipOf({Document(), File(), File()}))),
                HasSubstr("none comes twice"));
    const Entry lower{"files/" + std::string(64, '0'), ""};
    EXPECT_THAT(RefusalOfBytes(Sealed(ZipOf({Document(), File(), lower}))),
                HasSubstr("names ascend"));
}

TEST(HostileArchive, LinksAndFoldersAreRefused) {
    const Entry link{"files/" + kHash, "", false, "/etc/passwd"};
    const Entry folder{"files/" + kHash, "", false, {}, true};
    EXPECT_NE(RefusalOfBytes(Sealed(ZipOf({Document(), link}))), "");
    EXPECT_NE(RefusalOfBytes(Sealed(ZipOf({Document(), link}, "zip:experimental"))), "");
    EXPECT_NE(RefusalOfBytes(Sealed(ZipOf({Document(), folder}))), "");
    // Told so only by the directory.
    const std::string sound = Sound();
    const std::size_t record = RecordAt(sound, kRecord, 2);
    for (const unsigned type : {0120000U, 0040000U, 0060000U}) {
        EXPECT_THAT(RefusalOfBytes(Resealed(Patched(sound, record + 40, Little(type | 0644, 2)))),
                    HasSubstr("is a link, folder or device"));
    }
}

TEST(HostileArchive, EncryptedEntriesAreRefused) {
    EXPECT_THAT(RefusalOfBytes(Sealed(ZipOf({Document(), File()}, "zip:encryption=zipcrypt"))),
                HasSubstr("is encrypted"));
    const std::string sound = Sound();
    const std::size_t record = RecordAt(sound, kRecord, 2);
    EXPECT_THAT(RefusalOfBytes(Resealed(Patched(sound, record + 8, Little(9, 2)))),
                HasSubstr("is encrypted"));
}

TEST(HostileArchive, ForeignCompressionIsRefused) {
    const std::string sound = Sound();
    for (const unsigned method : {1U, 6U, 9U, 12U, 14U, 93U, 95U, 98U, 99U, 0xFFFFU}) {
        const std::string foreign =
            Patched(Patched(sound, RecordAt(sound, kLocal, 2) + 8, Little(method, 2)),
                    RecordAt(sound, kRecord, 2) + 10,
                    Little(method, 2));
        EXPECT_NE(RefusalOfBytes(Resealed(foreign)), "") << method;
    }
}

TEST(HostileArchive, TheDirectoryMustTellOfTheSameEntries) {
    const std::string sound = Sound();
    const std::size_t record = RecordAt(sound, kRecord, 2);
    struct Change {
        std::size_t at;
        std::string bytes;
    };
    for (const Change& change : {Change{10, Little(0, 2)},           // method
                                 Change{20, Little(500, 4)},         // compressed size
                                 Change{24, Little(500, 4)},         // size
                                 Change{24, Little(0xFFFFFFFF, 4)},  // in a field that is not
                                 Change{28, Little(500, 2)},         // length of the name
                                 Change{30, Little(0xFFFF, 2)},      // of further fields
                                 Change{32, Little(1, 2)},           // of the comment
                                 Change{34, Little(1, 2)},           // disk
                                 Change{42, Little(0, 4)},           // place
                                 Change{42, Little(0xFFFFFFF0, 4)},  // place
                                 Change{0, "XX"},                    // signature
                                 Change{46, "other"}}) {             // name
        EXPECT_NE(RefusalOfBytes(Resealed(Patched(sound, record + change.at, change.bytes))), "")
            << change.at;
    }
}

TEST(HostileArchive, TheEndMustTellWhereTheDirectoryIs) {
    const std::string sound = Sound();
    const std::size_t end = RecordAt(sound, std::string(kEndSignature));
    for (const std::size_t at : {10U, 12U, 16U}) {
        for (const unsigned number : {0U, 1U, 100U, 0xFFFFU}) {
            EXPECT_NE(RefusalOfBytes(Resealed(Patched(sound, end + at, Little(number, 2)))), "")
                << at << " " << number;
        }
    }
}

TEST(HostileArchive, NothingStandsBetweenEntries) {
    const std::string zip = ZipOf({Document(), File()});
    const std::size_t directory = RecordAt(zip, kRecord);
    const std::size_t end = zip.size() - kEndSize;
    std::string gap = zip;
    gap.insert(directory, 1000, 'x');
    gap = Patched(gap, end + 1000 + 16, Little(directory + 1000, 4));
    EXPECT_THAT(RefusalOfBytes(Sealed(gap)), HasSubstr("does not take the room"));
    // An entry that the directory hides.
    std::string hidden = ZipOf({Document(), File(), {"files/" + std::string(64, 'b'), "x"}});
    const std::size_t last = RecordAt(hidden, kRecord, 3);
    const std::size_t hiddenEnd = hidden.size() - kEndSize;
    hidden = Patched(hidden, hiddenEnd + 8, Little(2, 2) + Little(2, 2));
    hidden = Patched(hidden, hiddenEnd + 12, Little(last - RecordAt(hidden, kRecord), 4));
    hidden.erase(last, hiddenEnd - last);
    EXPECT_NE(RefusalOfBytes(Sealed(hidden)), "");
}

TEST(HostileArchive, TheSumOfAContentIsChecked) {
    const std::string sound = Sound();
    const std::size_t descriptor = RecordAt(sound, kDescriptor, 2);
    EXPECT_NE(RefusalOfBytes(Resealed(Patched(sound, descriptor + 4, "abcd"))), "");
}

TEST(HostileArchive, AnEntryGivesWhatItAnnounces) {
    const std::string sound = Sound();
    const std::size_t local = RecordAt(sound, kLocal, 2);
    ASSERT_EQ(NumberAt(sound, local + 22, 4), 7U);
    EXPECT_THAT(RefusalOfBytes(Resealed(Patched(sound, local + 22, Little(6, 4)))),
                HasSubstr("announces 6 bytes and holds more"));
    EXPECT_THAT(RefusalOfBytes(Resealed(Patched(sound, local + 22, Little(8, 4)))),
                HasSubstr("announces 8 bytes and holds 7"));
    EXPECT_NE(RefusalOfBytes(Resealed(Patched(sound, local + 22, Little(0, 4)))), "");
}

TEST(HostileArchive, CompressedBytesThatAreNoneAreRefused) {
    const std::string sound = Sealed(ZipOf({Document(), File(vault::Deck(5000))}));
    const std::size_t content = RecordAt(sound, kLocal, 2) + 120;
    for (std::size_t at = content; at < content + 200; at += 10) {
        EXPECT_NE(RefusalOfBytes(Resealed(Patched(sound, at, "\xFF\xFF\xFF"))), "") << at;
    }
}

TEST(HostileArchive, ABombIsRefusedBeforeItGoesOff) {
    const std::string zeros(std::size_t{64} << 20, '\0');
    const std::string bomb = Sealed(ZipOf({Document(), File(zeros)}, "zip:compression-level=9"));
    ASSERT_LT(bomb.size() * 1000, zeros.size());
    EXPECT_THAT(RefusalOfBytes(bomb), HasSubstr("expands to more than 500 times"));
    const std::string document = Sealed(ZipOf({{"library.xml", zeros}}, "zip:compression-level=9"));
    EXPECT_THAT(RefusalOfBytes(document), HasSubstr("expands to more than 500 times"));
}

TEST(HostileArchive, EachLimitHolds) {
    const std::string archive =
        Sealed(ZipOf({Document(), File(), {"files/" + std::string(64, 'b'), "1234567890"}}));
    const auto refusal = [&](const auto& set) {
        ArchiveLimits limits;
        set(limits);
        return RefusalOfBytes(archive, limits);
    };
    EXPECT_EQ(refusal([](ArchiveLimits& limits) {
                  limits.entries = 3;
                  limits.document = 10;
                  limits.file = 10;
                  limits.total = 27;
              }),
              "");
    EXPECT_THAT(refusal([](ArchiveLimits& limits) { limits.entries = 2; }),
                AllOf(HasSubstr(std::string(64, 'b')), HasSubstr("one too many")));
    EXPECT_THAT(refusal([](ArchiveLimits& limits) { limits.document = 9; }),
                HasSubstr("the entry 'library.xml' is larger than the limit of 9 bytes"));
    EXPECT_THAT(refusal([](ArchiveLimits& limits) { limits.file = 9; }),
                HasSubstr("is larger than the limit of 9 bytes"));
    EXPECT_THAT(refusal([](ArchiveLimits& limits) { limits.total = 26; }),
                HasSubstr("exceeds the limit for all entries, 26 bytes"));
}

TEST(HostileArchive, MemoryDoesNotGrowWithWhatItClaimsOrHolds) {
    const vault::Folder folder;
    const std::string path = folder.File("large");
    // Written and read in a process whose peak is not yet that of the other tests.
    const std::string growth = vault::InChild([&] {
        {
            ArchiveWriter archive(vault::MachineFiles(), path);
            archive.Begin(kDocumentEntry);
            const std::string piece(std::size_t{1} << 20, ' ');
            for (int i = 0; i < 200; ++i) {
                archive.Write(piece);
            }
            archive.End();
            archive.Finish();
        }
        const std::ptrdiff_t before = vault::PeakMemory();
        if (!RefusalOf(path).empty()) {
            throw std::runtime_error("was refused");
        }
        const std::ptrdiff_t grown = vault::PeakMemory() - before;
        return grown < 16 << 20 ? std::string("little") : std::to_string(grown);
    });
    EXPECT_EQ(growth, "little");
}

}  // namespace
}  // namespace kxudm::exchange
