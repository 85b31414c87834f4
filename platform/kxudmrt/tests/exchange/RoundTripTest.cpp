// What was exported, imported into an empty library and exported again is the same archive.
#include <random>

#include "Exchange.h"
#include "tests/support/Seed.h"

namespace kxudm::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

// Some of everything that a library can hold.
class RichLibrary : public Exchange {
  protected:
    RichLibrary() {
        folder = Folder(ann, "/Model/Wheels");
        metals = Published(ann, "Metals", "Categories");
        steel = ann->CreateEntity("Categories", "Steel");
        ann->AddClassification(steel, metals);
        ann->SetMaster(steel, true);
        steel = Publish(ann, steel);
        MakeWheel();
        MakeBranch();
        MakeNotes();
        MakeWhatStays();
        ChangeDefinitions();
    }

    void MakeWheel() {
        hub = Published(ann, "Hub");
        wheel = ann->CreateEntity("Part", "Wheel");
        ann->MoveContent(wheel, folder);
        ann->AddClassification(wheel, steel);
        ann->AddChild(wheel, hub, "parts");
        ann->AddReference(wheel, hub, "uses");
        ann->CreateRelation(wheel, hub, "made of", true);
        ann->CreateRelation(wheel, hub, "next to", false);
        front = ann->CreateAndAddChild("Drawing", "Front", wheel, "drawings");
        Put(wheel, "wheel.inp", Deck(5000, 1));
        Put(wheel, "wheel.log", "done\n");
        AddFile(ann, wheel, sources.Write("wheel.big", "outside"), true);
        ann->SetAttributeValue(wheel, "count", 3);
        ann->SetAttributeValue(wheel, "material", "steel");
        ann->SaveEntity(wheel, "so far", true);
        Publish(ann, front);
        wheel = Publish(ann, wheel, "first");
        CheckOut(ann, wheel, "next");
        ann->ReAddFile(Newest(ann, wheel), sources.Write("wheel.inp", Deck(9000, 2)), false, false);
        ann->RemoveFile(Newest(ann, wheel), "wheel.log");
        ann->RemoveChild(Newest(ann, wheel), hub);
        ann->MoveContent(Newest(ann, wheel), Folder(ann, "/Model"));
        kxStlVector<kxString> tags;
        tags.push_back("\x01 \\ <&>");
        tags.push_back("");
        ann->SetAttributeValue(Newest(ann, wheel), "tags", kxVariant(tags));
        ann->SetAttributeValue(Newest(ann, wheel), "spare", true);
        ann->SetAttributeValue(Newest(ann, wheel), "mass", 0.1);
        ann->SetAttributeValue(Newest(ann, wheel), "material", kxVariant());
        ann->SetDisplayName("\xc3\x84 wheel", Newest(ann, wheel));
        wheel = Publish(ann, wheel, "second\nline");
        CheckOut(ann, wheel);
        ann->AddChild(Newest(ann, wheel), hub, "parts");
        wheel = Publish(ann, wheel, "third");
    }
    void MakeBranch() {
        ann->Checkout(ann->GetEntity(At(wheel, 1)), "another way");
        kxStlVector<UDMItemHandle> found;
        ann->RunQuery(found, "name == \"Wheel\"", -1, 0, 0, UDMQuerySettingHandle(), false, false);
        branch = Publish(ann, found.back());
    }
    void MakeNotes() {
        note = ann->CreateEntity("Note", "Note");
        ann->SetAttributeValue(note, "text", "plain");
        const UDMItemHandle answer = ann->CreateAndAddChild("Note", "Answer", note, "answers");
        ann->AddReference(answer, note, "see");
        Put(note, "note.txt", "seen\n");
        ann->MoveContent(note, folder);
    }
    // What is nobody else's business, or gone.
    void MakeWhatStays() {
        ann->CreateEntity("Part", "Draft");
        const UDMItemHandle gone = Published(ann, "Gone");
        ann->CreateRelation(CheckOut(ann, hub), gone, "near", false);
        hub = Publish(ann, hub);
        ann->DeleteEntity(gone, true, false);
        ann->SetAttributeValue(CheckOut(ann, hub), "description", "in work");
        ann->AddReference(Newest(ann, hub), wheel, "uses");
    }
    void ChangeDefinitions() {
        kxStlVector<UDMCdefMetaData> metadata;
        ann->GetContentDefinitionMetadata("Part", metadata);
        std::erase_if(metadata, [](const auto& each) { return each.Name() == "count"; });
        metadata.push_back({"colour", "Colour", "", "#102030", "Color", "", false, true, true, {}});
        ASSERT_TRUE(ann->UpdateContentDefinition("Part", metadata, false));
    }

    UDMItemHandle folder, metals, steel, hub, wheel, front, branch, note;
};

TEST_F(RichLibrary, IsTheSameArchiveAgain) {
    const std::string first = Exported(ann);
    Export();
    const UDMImportReport report = Import();
    EXPECT_THAT(report.leftOut, IsEmpty());
    EXPECT_EQ(report.Count(UDMImportOutcome::New), report.entities.size());
    EXPECT_GT(report.definitions, 0U);
    EXPECT_THAT(Problems(tom, true), IsEmpty());
    EXPECT_TRUE(Exported(tom) == first);
}

TEST_F(RichLibrary, IsTheSameForWhoReadsIt) {
    Carry();
    EXPECT_EQ(There(wheel).GetRevision(), 3);
    EXPECT_EQ(There(wheel).GetDisplayName(), "\xc3\x84 wheel");
    EXPECT_EQ(Attribute(There(wheel), "smd_folder"), "/Model");
    EXPECT_EQ(Attribute(There(wheel, 1), "smd_folder"), "/Model/Wheels");
    EXPECT_EQ(Attribute(There(wheel, 2), "smd_comment"), "second\nline");
    EXPECT_EQ(Attribute(There(wheel), "smd_createduser"), "ann");
    EXPECT_EQ(Attribute(There(wheel), "smd_creatime"), Attribute(wheel, "smd_creatime"));
    EXPECT_EQ(Attribute(There(wheel), "colour"), "#102030");
    EXPECT_EQ(Attribute(There(wheel, 1), "material"), "steel");
    EXPECT_EQ(Attribute(There(wheel), "material"), "");
    EXPECT_THAT(Children(tom, There(wheel, 1)), ElementsAre("Front", "Hub"));
    EXPECT_THAT(Children(tom, There(wheel, 2)), ElementsAre("Front"));
    EXPECT_THAT(Children(tom, There(wheel)), ElementsAre("Front", "Hub"));
    EXPECT_THAT(References(tom, There(wheel, 1)), ElementsAre("Hub"));
    EXPECT_THAT(References(tom, There(wheel)), IsEmpty());
    EXPECT_THAT(Parents(tom, There(hub), "next to"), UnorderedElementsAre("\xc3\x84 wheel"));
    EXPECT_THAT(Parents(tom, There(hub, 1), "made of"), IsEmpty());
    EXPECT_THAT(Parents(tom, There(wheel), "category"), ElementsAre("Steel"));
    EXPECT_THAT(Parents(tom, There(steel), "category"), ElementsAre("Metals"));
    EXPECT_THAT(Versions(tom, There(wheel)), ElementsAre(1, 2, 3));
    const auto history = tom->GetHistory(There(wheel));
    EXPECT_EQ(history->GetVersionList().front()->GetBranchList().size(), 1U);
    EXPECT_THAT(DocumentNames(tom, There(wheel)), ElementsAre("wheel.big", "wheel.inp"));
    EXPECT_THAT(DocumentNames(tom, There(wheel, 1)),
                ElementsAre("wheel.big", "wheel.inp", "wheel.log"));
    EXPECT_THAT(Contents(tom, There(branch)),
                ElementsAre("wheel.big=outside", "wheel.inp=" + Deck(5000, 1), "wheel.log=done\n"));
    EXPECT_THAT(Children(tom, There(note)), ElementsAre("Answer"));
    EXPECT_THAT(Contents(tom, There(note)), ElementsAre("note.txt=seen\n"));
    EXPECT_FALSE(There(hub).IsEditable());
}

TEST_F(RichLibrary, OffersAgainWhatAnybodyElseCanDoWithIt) {
    Carry();
    CheckOut(tom, There(wheel));
    tom->RemoveChild(There(wheel), There(hub));
    Publish(tom, There(wheel));
    EXPECT_THAT(Children(tom, There(wheel)), ElementsAre("Front"));
    kxStlVector<UDMItemHandle> hits;
    tom->RunQuery(hits,
                  "attrib.colour == \"#102030\" && attrib.mass == 0.1",
                  -1,
                  0,
                  0,
                  UDMQuerySettingHandle(),
                  false,
                  false);
    EXPECT_THAT(DisplayNames(hits), ElementsAre("\xc3\x84 wheel"));
    EXPECT_THAT(Problems(tom, true), IsEmpty());
}

TEST_F(RichLibrary, ComesTwiceWithoutDoublingAnything) {
    Carry();
    const std::string first = Exported(tom);
    const UDMImportReport again = Import();
    EXPECT_EQ(again.Count(UDMImportOutcome::Equal), again.entities.size());
    EXPECT_THAT(again.leftOut, IsEmpty());
    EXPECT_EQ(again.definitions, 0U);
    EXPECT_TRUE(Exported(tom) == first);
    EXPECT_THAT(Problems(tom, true), IsEmpty());
}

TEST_F(RichLibrary, IsEqualToItself) {
    Export();
    const Names before = Problems(ann);
    const UDMImportReport own = Import(ann);
    EXPECT_EQ(own.Count(UDMImportOutcome::Equal), own.entities.size());
    EXPECT_EQ(Problems(ann), before);
}

TEST_F(RichLibrary, IsTheSameArchiveInEachScopeAgain) {
    for (const int scope : {0, 1}) {
        Library third;
        const ProfilePtr eve = third.Open("eve");
        Export({}, scope);
        const std::string first = ReadFile(Archive());
        EXPECT_THAT(Import(eve).leftOut, IsEmpty());
        EXPECT_THAT(Problems(eve), IsEmpty());
        EXPECT_TRUE(Exported(eve, {}, scope) == first) << scope;
    }
}

// --- Generated libraries ---

class GeneratedLibrary : public Exchange {
  protected:
    unsigned Below(std::size_t count) { return static_cast<unsigned>(random() % count); }

    // Refusals are part of the game.
    template <typename Deed>
    static void Try(Deed&& deed) {
        try {
            deed();
        } catch (const UDMException&) {
        }
    }
    UDMItemHandle Any(const ProfilePtr& profile) {
        return profile->GetEntity(uids[Below(uids.size())]);
    }
    void Step(const ProfilePtr& profile) {
        const kxString group = std::array{"kits", "mates", "uses", "sees"}[Below(4)];
        switch (Below(14)) {
            case 0:
            case 1:
                uids.push_back(Base(profile->CreateEntity("Node", "n" + std::to_string(Below(5)))));
                break;
            case 2:
            case 3:
                profile->Checkout(Any(profile), "");
                break;
            case 4:
            case 5:
            case 6:
                Publish(profile, Any(profile), "", Below(4) == 0);
                break;
            case 7:
                profile->AddChild(Any(profile), Any(profile), group);
                break;
            case 8:
                profile->RemoveChild(Any(profile), Any(profile));
                break;
            case 9:
                profile->SetAttributeValue(Any(profile), "load", static_cast<int>(Below(100)));
                break;
            case 10:
                profile->MoveContent(Any(profile),
                                     Folder(profile, "/f" + std::to_string(Below(3))));
                break;
            case 11:
                profile->CreateRelation(Any(profile), Any(profile), "rel", Below(2) == 0);
                break;
            case 12:
                AddFile(profile,
                        Any(profile),
                        sources.Write("f" + std::to_string(Below(3)), std::to_string(Below(6))));
                break;
            default:
                if (Below(6) == 0) {
                    profile->DeleteEntity(Any(profile), true, false);
                } else {
                    profile->UndoCheckout(Any(profile));
                }
        }
    }
    void Grow(const ProfilePtr& profile, int steps) {
        while (uids.size() < 4) {
            uids.push_back(Base(profile->CreateEntity("Node", "n")));
        }
        for (int i = 0; i < steps; ++i) {
            Try([&] { Step(profile); });
        }
    }

    // What was published and is there, in any order.
    Uids Exportable(const ProfilePtr& profile) {
        Uids found;
        for (const kxString& uid : uids) {
            Try([&] {
                static_cast<void>(profile->GetEntity(uid));
                found.push_back(uid);
            });
        }
        std::shuffle(found.begin(), found.end(), random);
        return found;
    }
    // Whether a text names an entity that its own library has deleted. Archives don't tell of that:
    // the other library still has it, as the owner of what got another one here.
    bool NamesWhatIsGone(const std::string& text) {
        return std::any_of(uids.begin(), uids.end(), [&](const kxString& uid) {
            return text.find(uid) != std::string::npos && !Sees(ann, uid);
        });
    }
    // What every revision of an entity leads to, line by line.
    static Names Links(const ProfilePtr& profile, const kxString& uid) {
        Names lines;
        for (const int revision : Versions(profile, profile->GetEntity(uid))) {
            const UDMItemHandle handle = profile->GetEntity(uid + ":" + std::to_string(revision));
            for (const kxString group : {"kits", "mates", "uses", "sees"}) {
                for (const std::string& name : Children(profile, handle, group)) {
                    lines.push_back(std::to_string(revision) + " " + group + " " + name);
                }
            }
            kxStlVector<UDMItemHandle> targets;
            profile->GetReferences(targets, handle, "");
            for (const UDMItemHandle& target : targets) {
                lines.push_back(std::to_string(revision) + " refers to " + Base(target));
            }
            for (const std::string& name : Parents(profile, handle, "rel")) {
                lines.push_back(std::to_string(revision) + " is related by " + name);
            }
        }
        std::sort(lines.begin(), lines.end());
        return lines;
    }

    const unsigned seed = kxct_test::Seed();
    std::mt19937 random{seed};
    Uids uids;
};

TEST_F(GeneratedLibrary, IsTheSameArchiveAgain) {
    Grow(ann, 600);
    const std::string first = Exported(ann);
    Export();
    const UDMImportReport report = Import();
    ASSERT_THAT(report.leftOut, IsEmpty());
    EXPECT_GT(report.entities.size(), 10U);
    EXPECT_THAT(Problems(tom, true), IsEmpty());
    EXPECT_TRUE(Exported(tom) == first);
}

// Links lead out of a part: to what the next library doesn't have.
TEST_F(GeneratedLibrary, IsTheSameArchiveAgainInEveryPart) {
    Grow(ann, 400);
    const ProfilePtr reader = source.Open("reader");
    for (int round = 0; round < 12; ++round) {
        Uids part = Exportable(reader);
        part.resize(1 + Below(part.size()));
        const int scope = round % 3;
        Export(part, scope);
        Library third;
        const ProfilePtr eve = third.Open("eve");
        ASSERT_THAT(Import(eve).leftOut, IsEmpty());
        ASSERT_THAT(Problems(eve, true), IsEmpty()) << "round " << round;
        ASSERT_TRUE(Exported(eve, {}, scope) == ReadFile(Archive())) << "round " << round;
    }
}

TEST_F(GeneratedLibrary, IsWholeAfterItsPartsInAnyOrder) {
    Grow(ann, 500);
    const ProfilePtr reader = source.Open("reader");
    const Uids parts = Exportable(reader);
    ASSERT_GT(parts.size(), 5U);
    for (const kxString& uid : parts) {
        const UDMImportReport report = Carry({uid});
        ASSERT_THAT(report.leftOut, IsEmpty()) << report.leftOut.front().text;
        ASSERT_THAT(Problems(tom, true), IsEmpty());
    }
    std::size_t links = 0;
    for (const kxString& uid : parts) {
        EXPECT_EQ(Links(tom, uid), Links(reader, uid)) << uid;
        links += Links(reader, uid).size();
    }
    EXPECT_GT(links, 0U);
}

// The second archive brings only what came behind the first one.
TEST_F(GeneratedLibrary, FollowsItsOriginArchiveByArchive) {
    for (int round = 0; round < 6; ++round) {
        Grow(ann, 100);
        Export();
        const UDMImportReport report = Import();
        for (const UDMImportedEntity& each : report.entities) {
            ASSERT_THAT(each.outcome,
                        testing::AnyOf(UDMImportOutcome::New,
                                       UDMImportOutcome::Equal,
                                       UDMImportOutcome::Kept,
                                       UDMImportOutcome::Appended))
                << each.uid << " " << each.text;
        }
        for (const auto& each : report.leftOut) {
            ASSERT_TRUE(NamesWhatIsGone(each.text)) << each.text;
        }
        ASSERT_THAT(Problems(tom, true), IsEmpty()) << "round " << round;
        const UDMImportReport again = Import();
        ASSERT_EQ(again.Count(UDMImportOutcome::Equal) + again.Count(UDMImportOutcome::Kept),
                  again.entities.size());
    }
}

// Two libraries that go their own ways and tell each other of it, again and again.
TEST_F(GeneratedLibrary, AndAnotherGrowApartWithoutHarm) {
    for (int round = 0; round < 5; ++round) {
        Grow(ann, 60);
        Export();
        static_cast<void>(Import());
        ASSERT_THAT(Problems(tom), IsEmpty()) << "round " << round;
        Grow(tom, 60);
        tom->Export(Archive(), {}, 2);
        static_cast<void>(Import(ann));
        ASSERT_THAT(Problems(ann), IsEmpty()) << "round " << round;
    }
}

// Three libraries that give each other parts of what they have, while links wait for what others
// have not given, things are deleted, brought back and purged, and imports are ended midway.
class GeneratedLibraries : public GeneratedLibrary {
  protected:
    struct Site {
        Library& library;
        ProfilePtr writer;
        ProfilePtr reader;  // holds on to what it has seen
    };
    static Site SiteOf(Library& library, const ProfilePtr& writer) {
        return {library, writer, library.Open("reader")};
    }

    void Meddle(const Site& site) {
        Grow(site.writer, 10);
        Try([&] { site.writer->DeleteEntity(Any(site.writer), true, false); });
        if (Below(2) == 0) {
            Try([&] { UDMMaintenance(site.writer).Undelete(uids[Below(uids.size())]); });
        } else if (Below(3) == 0) {
            UDMPurgeOptions options;
            options.minimumAge = std::chrono::seconds(0);
            options.deletedEntities = true;
            UDMMaintenance(site.writer).Purge(options);
        }
    }
    void ReadAll(const Site& site) {
        for (const kxString& uid : Exportable(site.reader)) {
            static_cast<void>(Links(site.reader, uid));
        }
    }
    // Is it ended, nothing of it has been.
    void ImportMidway(const Site& site) {
        const std::string before = Exported(site.reader);
        Steps steps(1 + Below(20));
        try {
            const UDMProgressScope scope(site.writer, steps);
            static_cast<void>(Import(site.writer));
        } catch (const UDMCancelledException&) {
            ASSERT_TRUE(Exported(site.reader) == before);
        }
    }
    void ExpectSound(const Site& site) {
        ASSERT_THAT(Problems(site.writer), IsEmpty());
        const ProfilePtr fresh = site.library.Open("fresh", std::to_string(++_opened));
        for (const kxString& uid : Exportable(fresh)) {
            ASSERT_EQ(Links(site.reader, uid), Links(fresh, uid)) << uid;
        }
        const int scope = static_cast<int>(Below(3));
        site.reader->Export(Archive(), {}, scope);
        Library copy;
        const ProfilePtr bob = copy.Open("bob");
        ASSERT_THAT(Import(bob).leftOut, IsEmpty());
        ASSERT_THAT(Problems(bob), IsEmpty());
        ASSERT_TRUE(Exported(bob, {}, scope) == ReadFile(Archive()));
    }

  private:
    int _opened = 0;
};

TEST_F(GeneratedLibraries, GiveEachOtherPartsWithoutHarm) {
    Library third;
    const std::array sites{
        SiteOf(source, ann), SiteOf(target, tom), SiteOf(third, third.Open("eve"))};
    for (int round = 0; round < 20; ++round) {
        const unsigned number = Below(3);
        const Site& from = sites[number];
        const Site& to = sites[(number + 1 + Below(2)) % 3];
        Grow(from.writer, 15);
        Meddle(to);
        Uids part = Exportable(from.reader);
        part.resize(Below(part.size() + 1));
        from.reader->Export(Archive(), part, static_cast<int>(Below(3)));
        ReadAll(to);
        ASSERT_NO_FATAL_FAILURE(ImportMidway(to)) << "round " << round;
        Try([&] { static_cast<void>(Import(to.writer)); });
        ASSERT_NO_FATAL_FAILURE(ExpectSound(to)) << "round " << round;
    }
}

}  // namespace
}  // namespace kxudm::test
