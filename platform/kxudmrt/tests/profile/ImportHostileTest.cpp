// Archives that are damaged, or were made to do damage, given to Import: each is refused with a
// text, and the library with its vault is afterwards what it was, to the last row and file.
#include <kxudm/UDMMaintenance.h>
#include <sqlite3.h>

#include "../exchange/Archives.h"
#include "Files.h"
#include "Maintained.h"
#include "exchange/ArchiveFormat.h"

namespace kxudm::test {
namespace {

using exchange::Entries;
using exchange::Entry;
using exchange::Resealed;
using exchange::Sealed;
using exchange::ZipOf;
using testing::HasSubstr;
using testing::IsEmpty;

// Every row of every table, as text.
std::string Rows(const std::string& file) {
    sqlite3* database = nullptr;
    sqlite3_open_v2(file.c_str(), &database, SQLITE_OPEN_READONLY, nullptr);
    std::vector<std::string> tables;
    const auto collect = [](void* list, int, char** values, char**) {
        static_cast<std::vector<std::string>*>(list)->emplace_back(values[0]);
        return 0;
    };
    sqlite3_exec(database,
                 "SELECT name FROM sqlite_master WHERE type = 'table' ORDER BY name",
                 collect,
                 &tables,
                 nullptr);
    std::string rows;
    const auto append = [](void* text, int count, char** values, char**) {
        for (int i = 0; i < count; ++i) {
            *static_cast<std::string*>(text) += values[i] == nullptr ? "-" : values[i];
            *static_cast<std::string*>(text) += '|';
        }
        return 0;
    };
    for (const std::string& table : tables) {
        rows += "\n" + table + ": ";
        sqlite3_exec(database, ("SELECT * FROM \"" + table + "\"").c_str(), append, &rows, nullptr);
    }
    sqlite3_close(database);
    return rows;
}

// Every file below a folder with its size.
std::string FilesBelow(const std::string& folder) {
    Names files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file()) {
            files.push_back(entry.path().string() + " " + std::to_string(entry.file_size()));
        }
    }
    std::sort(files.begin(), files.end());
    std::string text;
    for (const std::string& file : files) {
        text += file + "\n";
    }
    return text;
}

// How much memory a refused import takes at its peak beyond what an honest one has taken.
std::string PeakGrowth(const ProfilePtr& profile,
                       const std::string& honest,
                       const std::string& bomb) {
    vault::PeakMemory();
    profile->Import(honest);
    const std::ptrdiff_t before = vault::PeakMemory();
    if (ErrorOf([&] { profile->Import(bomb); }).empty()) {
        return "was imported";
    }
    const std::ptrdiff_t growth = vault::PeakMemory() - before;
    return growth < 24 << 20 ? "little" : std::to_string(growth);
}

class HostileImport : public Files {
  protected:
    HostileImport() {
        // Known here in an older revision, so that an import would append to it, and unknown ones.
        const UDMItemHandle wheel = Part("Wheel");
        Put(wheel, "wheel.inp", Deck(3000));
        Publish(ann, wheel);
        Export("known.kxa");
        Parameters params = library.Params("eve");
        params["RepositoryName"] = "Other";
        params["RepositoryBaseDir"] = library.Folder().File("other");
        const ProfilePtr eve = library.Keep(UDMProfileMgr::GetProfile(params));
        eve->Import(Path("known.kxa"));
        eve->SetAttributeValue(CheckOut(eve, wheel), "mass", 9.0);
        Publish(eve, wheel);
        for (const char* name : {"Nut", "Bolt"}) {
            const UDMItemHandle part = eve->CreateEntity("Part", name);
            AddFile(eve, part, Write(std::string(name) + ".inp", vault::Noise(9000, name[0])));
            Publish(eve, part);
        }
        eve->Export(Path("honest.kxa"), {}, 2);
        honest = ReadFile(Path("honest.kxa"));
        entries = exchange::ReadArchive(vault::MachineFiles(), Path("honest.kxa"));
        rows = Rows(library.File());
        files = FilesBelow(library.BaseDirectory() + "/vault");
    }

    std::string Path(const std::string& name) { return sources.File(name); }
    void Export(const std::string& name) { ann->Export(Path(name), {}, 2); }

    // The text of the refusal, after a look at the library.
    std::string Refused(const std::string& bytes) {
        const std::string path = Write("hostile.kxa", bytes);
        const std::string text = ErrorOf([&] { ann->Import(path); });
        EXPECT_NE(text, "") << "was imported";
        EXPECT_EQ(text.find('\n'), std::string::npos) << text;
        ExpectUntouched();
        return text;
    }
    void ExpectUntouched() {
        EXPECT_TRUE(Rows(library.File()) == rows);
        EXPECT_EQ(FilesBelow(library.BaseDirectory() + "/vault"), files);
    }
    // In a process of its own, whose peak begins low.
    std::string PeakGrowthOf(const std::string& name) {
        return vault::InChild([&] {
            const ProfilePtr profile = UDMProfileMgr::GetProfile(library.Params("child"));
            return PeakGrowth(profile, Path("honest.kxa"), Path(name));
        });
    }
    // The archive with its document changed.
    std::string WithDocument(const std::string& from, const std::string& to) {
        Entries changed = entries;
        const std::size_t at = changed[0].content.find(from);
        if (at == std::string::npos) {
            throw std::runtime_error("the document has no " + from);
        }
        changed[0].content.replace(at, from.size(), to);
        return Sealed(ZipOf(changed));
    }

    std::string honest;
    Entries entries;
    std::string rows;
    std::string files;
};

TEST_F(HostileImport, TheHonestArchiveIsTaken) {
    ann->Import(Write("honest.kxa", Sealed(ZipOf(entries))));
    EXPECT_FALSE(Rows(library.File()) == rows);
    EXPECT_THAT(Texts(UDMMaintenance(ann).Verify(AT_ONCE)), IsEmpty());
}

TEST_F(HostileImport, CutShortAnywhere) {
    ASSERT_GT(honest.size(), 18'000U);
    for (std::size_t size = 0; size < honest.size(); size += 1024) {
        ASSERT_THAT(Refused(honest.substr(0, size)), HasSubstr("seal")) << size;
    }
}

TEST_F(HostileImport, WithAByteChangedAnywhere) {
    for (std::size_t at = 0; at < honest.size(); at += 479) {
        std::string changed = honest;
        changed[at] = static_cast<char>(changed[at] ^ 0x20);
        ASSERT_THAT(Refused(changed), HasSubstr("hostile.kxa")) << at;
    }
}

// The same in what the seal was made for.
TEST_F(HostileImport, WithAByteChangedAnywhereUnderARightSeal) {
    const std::size_t end = honest.size() - exchange::kSealSize;
    for (std::size_t at = 0; at < end; at += 997) {
        std::string changed = honest;
        changed[at] = static_cast<char>(changed[at] ^ 0x20);
        const std::string path = Write("hostile.kxa", Resealed(changed));
        if (!ErrorOf([&] { ann->Import(path); }).empty()) {
            ExpectUntouched();
            continue;
        }
        // A byte that says nothing, such as one of a time: then it is the honest one.
        EXPECT_THAT(Texts(UDMMaintenance(ann).Verify(AT_ONCE)), IsEmpty()) << at;
        rows = Rows(library.File());
        files = FilesBelow(library.BaseDirectory() + "/vault");
    }
}

TEST_F(HostileImport, NamesThatLeadElsewhere) {
    for (const char* name : {"../../evil", "/tmp/evil", "files/../../evil", "evil"}) {
        Entries more = entries;
        more.push_back({name, "evil"});
        EXPECT_THAT(Refused(Sealed(ZipOf(more))), HasSubstr("has a name that is not"));
    }
}

TEST_F(HostileImport, AContentThatIsNotWhatItsNameSays) {
    Entries changed = entries;
    changed[1].content.back() ^= 1;
    EXPECT_THAT(Refused(Sealed(ZipOf(changed))), HasSubstr(changed[1].name.substr(6, 64)));
    changed[1].content = "short";
    EXPECT_NE(Refused(Sealed(ZipOf(changed))), "");
}

TEST_F(HostileImport, OfTwoFaultsTheFirstIsTold) {
    ASSERT_GT(entries.size(), 3U);
    Entries changed = entries;
    changed[1].content.back() ^= 1;
    changed.push_back({"files/" + std::string(64, 'f'), "unasked"});
    EXPECT_THAT(Refused(Sealed(ZipOf(changed))), HasSubstr(changed[1].name + "' has the content"));
}

TEST_F(HostileImport, AContentThatIsMissing) {
    // Not of one that the library has.
    for (std::size_t i = 1; i < entries.size(); ++i) {
        if (entries[i].content.size() != 9000) {
            continue;
        }
        Entries fewer = entries;
        fewer.erase(fewer.begin() + static_cast<std::ptrdiff_t>(i));
        EXPECT_THAT(Refused(Sealed(ZipOf(fewer))), HasSubstr(entries[i].name.substr(6, 64)));
    }
}

TEST_F(HostileImport, AContentThatNothingAsksFor) {
    Entries more = entries;
    more.push_back({"files/" + std::string(64, 'f'), "unasked"});
    EXPECT_NE(Refused(Sealed(ZipOf(more))), "");
    more.back() = {"files/" + exchange::HashOf("unasked"), "unasked"};
    std::sort(more.begin() + 1, more.end(), [](const Entry& one, const Entry& other) {
        return one.name < other.name;
    });
    EXPECT_NE(Refused(Sealed(ZipOf(more))), "");
}

TEST_F(HostileImport, NoDocumentOrOnlyOne) {
    EXPECT_NE(Refused(Sealed(ZipOf({}))), "");
    EXPECT_NE(Refused(Sealed(ZipOf({entries.begin() + 1, entries.end()}))), "");
    EXPECT_NE(Refused(Sealed(ZipOf({entries[0]}))), "");
    EXPECT_NE(Refused(Sealed(ZipOf({{"library.xml", ""}}))), "");
    EXPECT_NE(Refused(Sealed(ZipOf({{"library.xml", "<library/>"}}))), "");
    EXPECT_NE(Refused(ZipOf(entries)), "");
    EXPECT_NE(Refused(""), "");
}

TEST_F(HostileImport, ADocumentThatIsCutOrGoesOn) {
    Entries changed = entries;
    const std::string& whole = entries[0].content;
    for (std::size_t size = 0; size < whole.size() - 2; size += whole.size() / 40) {
        changed[0].content = whole.substr(0, size);
        EXPECT_NE(Refused(Sealed(ZipOf(changed))), "") << size;
    }
    changed[0].content = whole + whole;
    EXPECT_NE(Refused(Sealed(ZipOf(changed))), "");
    changed[0].content = whole + std::string(1, '\0');
    EXPECT_NE(Refused(Sealed(ZipOf(changed))), "");
}

TEST_F(HostileImport, EntitiesThatExpand) {
    const std::string type =
        "<!DOCTYPE x [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;\">"
        "<!ENTITY c SYSTEM \"file:///etc/passwd\">]>";
    const std::string& whole = entries[0].content;
    const std::size_t root = whole.find("?>") + 2;
    Entries changed = entries;
    changed[0].content = whole.substr(0, root) + type + whole.substr(root);
    EXPECT_NE(Refused(Sealed(ZipOf(changed))), "");
    EXPECT_NE(Refused(WithDocument("Nut", "&c;")), "");
}

TEST_F(HostileImport, LaterVersions) {
    std::string later = honest;
    later.replace(
        later.size() - exchange::kSealSize, exchange::kSealStart.size(), "kxudm-archive 2 sha256 ");
    EXPECT_THAT(Refused(Resealed(later)), HasSubstr("version 2"));
    EXPECT_THAT(Refused(WithDocument("version=\"1\"", "version=\"2\"")), HasSubstr("version"));
}

TEST_F(HostileImport, ABombTakesNoMemory) {
    Entries contents = entries;
    Entries texts = entries;
    const std::string level = "zip:compression-level=9";
    {
        const std::string zeros(std::size_t{200} << 20, '\0');
        contents.back().content = zeros;
        Write("content.kxa", Sealed(ZipOf(contents, level)));
        contents.clear();
        texts[0].content.replace(texts[0].content.find("Nut"), 3, zeros.size(), 'a');
        Write("text.kxa", Sealed(ZipOf(texts, level)));
        texts.clear();
    }
    EXPECT_NE(ErrorOf([&] { ann->Import(Path("content.kxa")); }), "");
    EXPECT_NE(ErrorOf([&] { ann->Import(Path("text.kxa")); }), "");
    ExpectUntouched();
    for (const char* name : {"content.kxa", "text.kxa"}) {
        EXPECT_EQ(PeakGrowthOf(name), "little") << name;
    }
}

std::size_t CountOf(const std::string& text, std::string_view part) {
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

// The document with one of its entities in many copies of many files each, whose contents are
// nowhere.
std::string Multiplied(std::string document, int copies, int files) {
    const std::size_t begin = document.rfind("<entity ", document.find("<file "));
    const std::size_t end = document.find("</entity>\n", begin) + 10;
    const std::string entity = document.substr(begin, end - begin);
    const std::size_t file = entity.find("<file ");
    const std::string line = entity.substr(file, entity.find('\n', file) + 1 - file);
    std::string text;
    for (int i = 100; i < 100 + copies; ++i) {
        std::string lines;
        for (int j = 100'000; j < 100'000 + files; ++j) {
            std::string further = line;
            further.replace(line.find("sha256=\"") + 8, 9, std::to_string(j) + std::to_string(i));
            further.insert(line.find("\" sha256"), std::to_string(j));
            lines += further;
        }
        std::string copy = entity;
        copy.replace(file, line.size(), lines);
        copy.replace(copy.find("uid=\"") + 5 + 23, 3, std::to_string(i));
        text += copy;
    }
    document.insert(end, text);
    document.erase(document.find("<end "));
    std::string ending = "<end";
    for (const auto& [name, start] : {std::pair("entities", "<entity "),
                                      std::pair("revisions", "<revision "),
                                      std::pair("files", "<file "),
                                      std::pair("links", "<link ")}) {
        ending += " " + std::string(name) + "=\"" + std::to_string(CountOf(document, start)) + "\"";
    }
    return document + ending + "/>\n</library>\n";
}

TEST_F(HostileImport, AnyNumberOfContentsTakesNoMemory) {
    {
        Entries many = entries;
        many[0].content = Multiplied(many[0].content, 200, 1000);
        Write("many.kxa", Sealed(ZipOf(many)));
    }
    EXPECT_THAT(ErrorOf([&] { ann->Import(Path("many.kxa")); }),
                HasSubstr("has no entry \"files/"));
    ExpectUntouched();
    EXPECT_EQ(PeakGrowthOf("many.kxa"), "little");
}

TEST_F(HostileImport, AnyNumberOfFoldersTakesNoMemory) {
    {
        UDMItemHandle folder;
        ann->GetOrCreateFolder(folder, "/A", false);
        rows = Rows(library.File());
        ann->Export(Path("folder.kxa"), {Base(folder)}, 0);
        Entries many = exchange::ReadArchive(vault::MachineFiles(), Path("folder.kxa"));
        std::string& document = many[0].content;
        const std::size_t begin = document.find("<entity ");
        const std::size_t end = document.find("</entity>\n", begin) + 10;
        std::string entity = document.substr(begin, end - begin);
        std::string copies;
        for (int i = 100'000; i < 220'000; ++i) {
            entity.replace(entity.find("uid=\"") + 5 + 20, 6, std::to_string(i));
            copies += entity;
        }
        document.insert(end, copies);
        Write("many.kxa", Sealed(ZipOf(many)));
    }
    EXPECT_THAT(ErrorOf([&] { ann->Import(Path("many.kxa")); }), HasSubstr("counts"));
    ExpectUntouched();
    EXPECT_EQ(PeakGrowthOf("many.kxa"), "little");
}

}  // namespace
}  // namespace kxudm::test
