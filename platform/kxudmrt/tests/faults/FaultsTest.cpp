// Each call of an operation to the machine fails once, from the first to the last, of the database
// and of the file layer of vaults and documents. Each time the operation answers with an error,
// nothing is half done, the same session succeeds with a second try, and the library is sound.
#include <kxudm/UDMCdefMetaData.h>
#include <kxudm/UDMMaintenance.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <functional>
#include <memory>
#include <tuple>

#include "World.h"
#include "vault/FileError.h"

namespace kxudm::test {
namespace {

using testing::AnyOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

enum class Source { Database, Files };

struct Deed {
    const char* name;
    std::function<void(World&)> act;
    // Expectations on what has been done.
    std::function<void(World&)> check;
    // Whole parts of it may have been done before it fails.
    bool inParts = false;
    // It reads or writes vaults or documents.
    bool withFiles = false;
};

void PrintTo(const Deed& deed, std::ostream* out) {
    *out << deed.name;
}

std::string Deck(const char* source, World& world) {
    std::ifstream in(world.Source(source), std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

UDMItemHandle Exact(World& world, const std::string& name, int revision) {
    const std::string uid = world.Named(name).GetUID();
    return world.Profile().GetEntity(uid.substr(0, uid.find(':')) + ":" + std::to_string(revision));
}

void ExpectSpar(World& world, bool changed) {
    const UDMItemHandle spar = world.Named("Spar");
    EXPECT_EQ(spar.GetAttributeValue("description").GetString(), changed ? "stiffer" : "");
    if (changed) {
        EXPECT_THAT(world.Documents(spar), ElementsAre("spar.inp=", "spar.log=done\n"));
    } else {
        EXPECT_THAT(world.Documents(spar),
                    ElementsAre("spar.dat=" + Deck("spar.dat", world),
                                "spar.inp=" + Deck("spar.inp", world)));
    }
    EXPECT_THAT(
        world.Documents(Exact(world, "Spar", 1)),
        ElementsAre("spar.dat=" + Deck("spar.dat", world), "spar.inp=" + Deck("spar.inp", world)));
}

// A count is a text from then on, and a part has a finish.
void UpdateDefinition(World& world) {
    kxStlVector<UDMCdefMetaData> records;
    world.Profile().GetContentDefinitionMetadata("Part", records);
    std::erase_if(records, [](const auto& record) { return record.Name() == "count"; });
    for (const char* name : {"count", "finish"}) {
        const kxString text(name);
        records.push_back({text,
                           text,
                           "",
                           text == "finish" ? "raw" : "",
                           "String",
                           "",
                           false,
                           true,
                           true,
                           kxStlVector<kxString>()});
    }
    EXPECT_TRUE(world.Profile().UpdateContentDefinition("Part", records, false));
}

void ReloadDefinition(World& world) {
    std::string text = vault::ReadFile(world.Definitions());
    const std::string from = "<attribute name=\"count\" type=\"Integer\"/>";
    if (const std::size_t place = text.find(from); place != std::string::npos) {
        text.replace(place,
                     from.size(),
                     "<attribute name=\"count\" type=\"String\"/>"
                     "<attribute name=\"finish\" type=\"String\" default=\"raw\"/>");
        std::ofstream(world.Definitions()) << text;
    }
    EXPECT_TRUE(world.Profile().ReloadContentDefinition("Part"));
}

void ExpectNewDefinition(World& world) {
    EXPECT_EQ(world.Named("Rib").GetAttributeValue("count"), kxVariant("3"));
    EXPECT_EQ(world.Named("Wing").GetAttributeValue("finish"), kxVariant("raw"));
    kxStlVector<UDMItemHandle> raw;
    world.Profile().RunQuery(raw,
                             "attrib.finish == raw && attrib.count == \"3\"",
                             -1,
                             0,
                             0,
                             UDMQuerySettingHandle(),
                             false,
                             false);
    EXPECT_THAT(DisplayNames(raw), ElementsAre("Rib"));
}

// What can still be brought back is brought back, as the first try may have done.
void Undelete(World& world) {
    UDMMaintenance care(world.Session());
    const auto deleted = care.DeletedEntities();
    ASSERT_EQ(deleted.size(), 1U);
    EXPECT_TRUE(care.Undelete(deleted[0].uid));
}

void Purge(World& world) {
    UDMPurgeOptions options;
    options.minimumAge = std::chrono::seconds(0);
    options.deletedEntities = true;
    static_cast<void>(UDMMaintenance(world.Session()).Purge(options));
}

// By full text search, as the only hit.
void ExpectFound(World& world, const kxString& text, int mode, const kxString& name) {
    kxStlVector<UDMItemHandle> hits;
    world.Profile().RunQuery(hits, text, mode, 0, 0, UDMQuerySettingHandle(), false, true);
    EXPECT_EQ(DisplayNames(hits), Names{name}) << text;
}

std::vector<Deed> Deeds() {
    return {
        {"check_out",
         [](World& world) { world.Profile().Checkout(world.Named("Wing"), "again"); },
         [](World& world) {
             EXPECT_EQ(world.Named("Wing").GetRevision(), 3);
             EXPECT_TRUE(world.Named("Wing").IsEditable());
             EXPECT_THAT(world.Documents(world.Named("Wing")),
                         ElementsAre("wing.inp=" + Deck("new/wing.inp", world)));
         }},
        {"branch",
         [](World& world) { world.Profile().Checkout(Exact(world, "Wing", 1), "a branch"); },
         [](World& world) {
             kxStlVector<UDMItemHandle> wings;
             world.Profile().RunQuery(
                 wings, "name == \"Wing\"", -1, 0, 0, UDMQuerySettingHandle(), false, false);
             ASSERT_EQ(wings.size(), 2U);
             EXPECT_THAT(world.Documents(wings[1]),
                         ElementsAre("wing.inp=" + Deck("wing.inp", world)));
         }},
        {"save",
         [](World& world) { world.Profile().SaveEntity(world.Named("Spar"), "so far", true); },
         [](World& world) {
             EXPECT_EQ(world.Named("Spar").GetAttributeValue("smd_comment").GetString(), "so far");
             ExpectSpar(world, true);
         }},
        {"publish",
         [](World& world) {
             world.Profile().PersistEntity(world.Named("Spar"), "done", false, true, true);
         },
         [](World& world) {
             EXPECT_FALSE(world.Named("Spar").IsEditable());
             EXPECT_EQ(world.Named("Spar").GetRevision(), 2);
             ExpectSpar(world, true);
         }},
        {"first_publish",
         [](World& world) {
             world.Profile().PersistEntity(world.Named("Rib"), "first", true, true, true);
         },
         [](World& world) {
             EXPECT_EQ(world.Named("Rib").GetRevision(), 2);
             EXPECT_THAT(world.Documents(Exact(world, "Rib", 1)),
                         ElementsAre("rib.inp=" + Deck("rib.inp", world)));
         }},
        {"search_after_an_edit",
         [](World& world) {
             world.Profile().SetAttributeValue(world.Named("Rib"), "description", "riveted");
             ExpectFound(world, "riveted", 0, "Rib");
         },
         [](World& world) {
             ExpectFound(world, "riveted rib", 0, "Rib");
             ExpectFound(world, "done stiffer", 0, "Spar");
         },
         true},
        {"search_after_a_publish",
         [](World& world) {
             const UDMItemHandle spar = world.Named("Spar");
             if (spar.IsEditable()) {
                 world.Profile().PersistEntity(spar, "done", false, true, true);
             }
             ExpectFound(world, "stiffer", 2, "Spar");
         },
         [](World& world) { ExpectFound(world, "stiffer done", 0, "Spar"); },
         true},
        {"undo",
         [](World& world) { world.Profile().UndoCheckout(world.Named("Spar")); },
         [](World& world) {
             EXPECT_EQ(world.Named("Spar").GetRevision(), 1);
             ExpectSpar(world, false);
         }},
        {"add_a_file",
         [](World& world) {
             world.Profile()
                 .BeginAddFile(world.Named("Rib"))
                 .setFilePath(world.Source("rib.dat"))
                 .go();
         },
         [](World& world) {
             EXPECT_THAT(world.Documents(world.Named("Rib")),
                         ElementsAre("rib.dat=" + Deck("rib.dat", world),
                                     "rib.inp=" + Deck("rib.inp", world)));
         },
         false,
         true},
        {"replace_a_file",
         [](World& world) {
             std::filesystem::copy_file(world.Source("rib.dat"),
                                        world.Out() + "/rib.inp",
                                        std::filesystem::copy_options::overwrite_existing);
             world.Profile().ReAddFile(world.Named("Rib"), world.Out() + "/rib.inp", false, false);
         },
         [](World& world) {
             EXPECT_THAT(world.Documents(world.Named("Rib")),
                         ElementsAre("rib.inp=" + Deck("rib.dat", world)));
         },
         false,
         true},
        {"remove_a_file",
         [](World& world) { world.Profile().RemoveFile(world.Named("Rib"), "rib.inp"); },
         [](World& world) { EXPECT_THAT(world.Documents(world.Named("Rib")), IsEmpty()); }},
        {"retrieve",
         [](World& world) {
             kxStlVector<kxString> paths;
             world.Profile().RetrieveFilesToFolder(
                 world.Named("Spar"), world.Out(), true, true, paths);
             EXPECT_EQ(paths.size(), 2U);
         },
         [](World& world) {
             EXPECT_EQ(vault::ReadFile(world.Out() + "/spar.inp"), "");
             EXPECT_EQ(vault::ReadFile(world.Out() + "/spar.log"), "done\n");
             EXPECT_EQ(vault::CountFiles(world.Out()), 2U);
         },
         true,
         true},
        {"import",
         [](World& world) {
             kxStlVector<kxString> folders;
             folders.push_back(world.Source("tree"));
             world.Profile().AddFoldersAndFiles(
                 folders, {}, "/In", {{"strict", "true"}, {"definition", "Part"}});
         },
         [](World& world) {
             UDMItemHandle folder;
             world.Profile().GetFolder(folder, "/In/tree", false);
             kxStlVector<UDMItemHandle> contents;
             world.Profile().GetChildren(contents, folder, "contents", "");
             EXPECT_THAT(DisplayNames(contents), testing::UnorderedElementsAre("a.inp", "b.inp"));
             for (const UDMItemHandle& content : contents) {
                 const std::string name = content.GetDisplayName();
                 EXPECT_THAT(world.Documents(content),
                             ElementsAre(name + "=" + Deck(("tree/" + name).c_str(), world)));
             }
             world.Profile().GetFolder(folder, "/In/tree/sub", false);
             contents.clear();
             world.Profile().GetChildren(contents, folder, "contents", "");
             EXPECT_THAT(DisplayNames(contents), testing::UnorderedElementsAre("a.inp", "c.dat"));
         },
         false,
         true},
        {"edit_files_in_bulk",
         [](World& world) {
             std::filesystem::copy_file(world.Source("rib.dat"),
                                        world.Out() + "/rib.inp",
                                        std::filesystem::copy_options::overwrite_existing);
             UDMBulkEdit edit(world.Session());
             world.Profile().ReAddFile(world.Named("Rib"), world.Out() + "/rib.inp", false, false);
             world.Profile()
                 .BeginAddFile(world.Named("Rib"))
                 .setFilePath(world.Source("spar.dat"))
                 .go();
             world.Profile().PersistEntity(world.Named("Rib"), "first", false, true, true);
             edit.Commit();
         },
         [](World& world) {
             EXPECT_FALSE(world.Named("Rib").IsEditable());
             EXPECT_THAT(world.Documents(world.Named("Rib")),
                         ElementsAre("rib.inp=" + Deck("rib.dat", world),
                                     "spar.dat=" + Deck("spar.dat", world)));
         },
         false,
         true},
        {"set_a_vault",
         [](World& world) {
             world.Profile().SetVault(world.Named("Rib"), world.Base() + "/other");
         },
         [](World& world) {
             world.Profile()
                 .BeginAddFile(world.Named("Rib"))
                 .setFilePath(world.Source("rib.dat"))
                 .go();
             EXPECT_EQ(vault::CountFiles(world.Base() + "/other"), 1U);
         }},
        {"update_a_definition", UpdateDefinition, ExpectNewDefinition},
        {"reload_a_definition", ReloadDefinition, ExpectNewDefinition},
        {"undelete",
         Undelete,
         [](World& world) {
             EXPECT_EQ(world.Named("Old").GetRevision(), 1);
             EXPECT_THAT(world.Documents(world.Named("Old")),
                         ElementsAre("old.inp=" + Deck("old.inp", world)));
         }},
        {"purge",
         Purge,
         [](World& world) {
             UDMMaintenance care(world.Session());
             EXPECT_THAT(care.DeletedEntities(), IsEmpty());
             UDMVerifyOptions options;
             options.minimumAge = std::chrono::seconds(0);
             EXPECT_THAT(care.Verify(options), IsEmpty());
             ExpectSpar(world, true);
         },
         true,
         true},
        {"export",
         [](World& world) { world.Profile().Export(world.Out() + "/out.kxa", {}, 2); },
         [](World& world) {
             EXPECT_EQ(vault::CountFiles(world.Out()), 1U);
             EXPECT_EQ(vault::ReadFile(world.Out() + "/out.kxa"), vault::ReadFile(world.Archive()));
         },
         false,
         true},
        {"import_an_archive",
         [](World& world) { world.Profile().Import(world.Other()); },
         [](World& world) {
             EXPECT_THAT(world.Documents(world.Named("Strut")),
                         ElementsAre("strut.inp=" + Deck("rib.dat", world)));
             EXPECT_EQ(world.Named("Wing").GetRevision(), 3);
             EXPECT_EQ(world.Named("Wing").GetAttributeValue("description").GetString(), "third");
         },
         false,
         true},
        {"delete",
         [](World& world) { world.Profile().DeleteEntity(world.Named("Wing"), true, false); },
         [](World& world) { EXPECT_THROW(world.Named("Wing"), std::runtime_error); }},
    };
}

std::vector<Deed> DeedsWithFiles() {
    std::vector<Deed> deeds = Deeds();
    deeds.erase(std::remove_if(
                    deeds.begin(), deeds.end(), [](const Deed& deed) { return !deed.withFiles; }),
                deeds.end());
    return deeds;
}

class FaultsTest : public testing::TestWithParam<std::tuple<Source, Deed>> {
  protected:
    static void SetUpTestSuite() { _world = std::make_unique<World>(); }
    static void TearDownTestSuite() { _world.reset(); }

    void Arm(long number) {
        _failed.clear();
        if (std::get<0>(GetParam()) == Source::Database) {
            FailingVfs::Install().Arm(number);
            return;
        }
        long calls = 0;
        _world->files.before = [this, number, calls](const std::string& call,
                                                     const std::string& path) mutable {
            if (++calls == number) {
                _failed = call;
                throw vault::FileError(number % 2 == 0 ? EIO : ENOSPC, "used for " + call, path);
            }
        };
    }
    // What failed; empty if nothing did.
    std::string Disarm() {
        FailingVfs& disk = FailingVfs::Install();
        disk.Disarm();
        _world->files.before = nullptr;
        return std::get<0>(GetParam()) == Source::Database ? disk.Failed() : _failed;
    }

    static std::unique_ptr<World> _world;
    std::string _failed;
};
std::unique_ptr<World> FaultsTest::_world;

TEST_P(FaultsTest, LeaveNothingHalfDone) {
    const Deed& deed = std::get<1>(GetParam());
    int errors = 0;
    std::string survived;  // failures that the operation could do without
    for (long number = 1;; ++number) {
        _world->Restore();
        const std::string before = _world->Rows();
        std::string error;
        Arm(number);
        try {
            deed.act(*_world);
        } catch (const std::exception& failure) {
            error = failure.what();
        }
        const std::string failed = Disarm();
        SCOPED_TRACE(deed.name + (" with call " + std::to_string(number)) + " failing, a " +
                     failed + ": " + error);
        if (failed.empty()) {
            EXPECT_EQ(error, "");
            deed.check(*_world);
            EXPECT_EQ(_world->Problems(), "");
            break;
        }
        if (!error.empty()) {
            ++errors;
            if (!deed.inParts) {
                ASSERT_EQ(_world->Rows(), before);
            }
            deed.act(*_world);
        } else {
            survived += failed + " ";
        }
        deed.check(*_world);
        ASSERT_EQ(_world->Problems(), "");
        if (HasFailure()) {
            break;
        }
    }
    RecordProperty("errors", errors);
    RecordProperty("survived", survived);
    EXPECT_GT(errors, 0);
}

std::string NameOf(const testing::TestParamInfo<std::tuple<Source, Deed>>& info) {
    return std::string(std::get<1>(info.param).name) + "_" +
           (std::get<0>(info.param) == Source::Database ? "on_the_database" : "on_files");
}

INSTANTIATE_TEST_SUITE_P(Database,
                         FaultsTest,
                         testing::Combine(testing::Values(Source::Database),
                                          testing::ValuesIn(Deeds())),
                         NameOf);
INSTANTIATE_TEST_SUITE_P(Files,
                         FaultsTest,
                         testing::Combine(testing::Values(Source::Files),
                                          testing::ValuesIn(DeedsWithFiles())),
                         NameOf);

}  // namespace
}  // namespace kxudm::test
