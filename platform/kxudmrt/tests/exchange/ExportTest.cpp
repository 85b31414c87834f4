// What an export takes along; rows X1 to X12 of docs/exchange-format.md.
#include "Exchange.h"
#include "catalogue/Catalogue.h"
#include "exchange/ArchiveReader.h"
#include "exchange/DocumentReader.h"

namespace kxudm::test {
namespace {

using exchange::EntityRecord;
using exchange::LinkRecord;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

// Reads what was exported without a library.
class Exporting : public Exchange, public exchange::DocumentHandler {
  protected:
    void Begin(exchange::Scope, std::string&& xml) override { definitionsXml = std::move(xml); }
    void Entity(EntityRecord&& entity) override { entities.push_back(std::move(entity)); }
    void Link(const std::string& first, LinkRecord&& link) override {
        links.emplace_back(first, std::move(link));
    }
    void End(const exchange::DocumentCounts&) override {}

    void Out(const Uids& uids = {}, int scope = 2) {
        entities.clear();
        links.clear();
        contents = 0;
        ann->Export(Archive(), uids, scope);
        exchange::ArchiveReader archive(vault::MachineFiles(), Archive());
        archive.Next();
        exchange::DocumentReader reader(*this, "library.xml");
        char block[4096];
        while (const std::size_t count = archive.Read(block, sizeof block)) {
            reader.Feed({block, count});
        }
        reader.Finish();
        while (archive.Next()) {
            ++contents;
        }
    }
    // "<name> <numbers of revisions>"
    [[nodiscard]] Names What() const {
        Names names;
        for (const EntityRecord& entity : entities) {
            std::string text = entity.name;
            for (const auto& revision : entity.revisions) {
                text += " " + std::to_string(revision.number);
            }
            names.push_back(text);
        }
        return names;
    }

    std::string definitionsXml;
    std::vector<EntityRecord> entities;
    std::vector<std::pair<std::string, LinkRecord>> links;
    std::size_t contents = 0;
};

TEST_F(Exporting, X1_TakesPublishedRevisionsOnly) {
    const UDMItemHandle wheel = Describe(ann, Make(ann, "Wheel"), "second");
    ann->SetAttributeValue(CheckOut(ann, wheel), "description", "in work");
    const UDMItemHandle hub = Make(ann, "Hub");
    ann->AddReference(Newest(ann, wheel), hub, "uses");
    Out();
    EXPECT_THAT(What(), ElementsAre("Wheel 1 2", "Hub 1"));
    EXPECT_THAT(links, IsEmpty());
    for (const int scope : {0, 1}) {
        Out(UidsOf({wheel}), scope);
        EXPECT_THAT(What(), ElementsAre("Wheel 2"));
        EXPECT_EQ(entities[0].revisions[0].attributes.front().second.GetString(), "second");
    }
}

TEST_F(Exporting, X2_OfWhatWasNeverPublishedIsAnError) {
    const UDMItemHandle draft = ann->CreateEntity("Part", "Draft");
    const UDMItemHandle gone = Make(ann, "Gone");
    ann->DeleteEntity(gone, true, false);
    EXPECT_THAT(Refusal([&] { Export(UidsOf({draft})); }),
                HasSubstr(Base(draft) + ":0 was never published, so that it can't be exported"));
    EXPECT_THAT(Refusal<UDMNotFoundException>([&] { Export(UidsOf({gone})); }),
                HasSubstr(Base(gone)));
    Uids unknown;
    unknown.push_back("01HZX0000000000000000000AB");
    EXPECT_THAT(Refusal<UDMNotFoundException>([&] { Export(unknown); }),
                HasSubstr("01HZX0000000000000000000AB"));
    EXPECT_THAT(FilesIn(outside.Path()), IsEmpty());
    Out();
    EXPECT_THAT(What(), IsEmpty());
}

TEST_F(Exporting, X3_OfScope0HasNoFilesAndOfScope1ThoseOfTheNewestRevision) {
    UDMItemHandle wheel = ann->CreateEntity("Part", "Wheel");
    Put(wheel, "wheel.inp", "one");
    wheel = Revise(ann, Publish(ann, wheel), [&](const UDMItemHandle& working) {
        ann->ReAddFile(working, sources.Write("wheel.inp", "two"), false, false);
    });
    Out(UidsOf({wheel}), 0);
    EXPECT_THAT(entities[0].files, IsEmpty());
    EXPECT_EQ(contents, 0U);
    Out(UidsOf({wheel}), 1);
    ASSERT_EQ(entities[0].files.size(), 1U);
    EXPECT_EQ(entities[0].files[0].from, 2);
    EXPECT_EQ(contents, 1U);
    Out(UidsOf({wheel}), 2);
    ASSERT_EQ(entities[0].files.size(), 2U);
    EXPECT_EQ(entities[0].files[0].to, 2);
    EXPECT_EQ(contents, 2U);
    EXPECT_THAT(Refusal([&] { ann->Export(Archive(), UidsOf({wheel}), 3); }),
                HasSubstr("can't be of scope 3"));
}

TEST_F(Exporting, X4_OfScope2TakesWhateverAnyPublishedRevisionOwns) {
    UDMItemHandle wheel = ann->CreateEntity("Part", "Wheel");
    const UDMItemHandle hub = Make(ann, "Hub");
    const UDMItemHandle bolt = Make(ann, "Bolt");
    const UDMItemHandle nut = Make(ann, "Nut");
    const UDMItemHandle seen = Make(ann, "Seen");
    Revise(ann, hub, [&](const UDMItemHandle& working) { ann->AddChild(working, bolt, "parts"); });
    ann->AddChild(wheel, hub, "parts");
    ann->AddReference(wheel, seen, "uses");
    ann->CreateAndAddChild("Drawing", "Draft", wheel, "drawings");
    wheel = Publish(ann, wheel);
    Revise(ann, wheel, [&](const UDMItemHandle& working) { ann->RemoveChild(working, hub); });
    ann->AddChild(CheckOut(ann, wheel), nut, "parts");
    Out(UidsOf({wheel}));
    EXPECT_THAT(What(), ElementsAre("Wheel 1 2", "Hub 1 2", "Bolt 1"));
    Out(UidsOf({wheel}), 1);
    EXPECT_THAT(What(), ElementsAre("Wheel 2"));
}

TEST_F(Exporting, X5_TakesFoldersAndClassificationsAlong) {
    UDMItemHandle wheel = ann->CreateEntity("Part", "Wheel");
    const UDMItemHandle metals = Published(ann, "Metals", "Categories");
    UDMItemHandle steel = ann->CreateEntity("Categories", "Steel");
    ann->AddClassification(steel, metals);
    steel = Publish(ann, steel);
    ann->MoveContent(wheel, Folder(ann, "/A/B"));
    ann->AddClassification(wheel, steel);
    wheel = Publish(ann, wheel);
    Folder(ann, "/Empty");
    for (const int scope : {0, 1, 2}) {
        Out(UidsOf({wheel}), scope);
        EXPECT_THAT(What(), UnorderedElementsAre("Wheel 1", "A 0", "B 0", "Metals 1", "Steel 1"));
    }
    // What lies in a place is not taken by it.
    Out(UidsOf({Folder(ann, "/A")}));
    EXPECT_THAT(What(), ElementsAre("A 0"));
    // Places of older revisions belong to these.
    Revise(ann, wheel, [&](const UDMItemHandle& working) {
        ann->MoveContent(working, Folder(ann, "/Empty"));
        ann->RemoveClassification(working, Newest(ann, steel));
    });
    Out(UidsOf({wheel}), 1);
    EXPECT_THAT(What(), UnorderedElementsAre("Wheel 2", "Empty 0"));
    Out(UidsOf({wheel}), 2);
    EXPECT_EQ(entities.size(), 6U);
}

TEST_F(Exporting, X6_OfNoUidsIsOfTheWholeLibrary) {
    Make(ann, "Wheel");
    Make(ann, "Hub");
    ann->CreateEntity("Note", "Note");
    for (const int scope : {0, 1, 2}) {
        Out({}, scope);
        EXPECT_THAT(What(), ElementsAre("Wheel 1", "Hub 1", "Note 0"));
    }
}

TEST_F(Exporting, X7_TakesAnEntityOnceWhateverItsUidSays) {
    const UDMItemHandle wheel = Describe(ann, Make(ann, "Wheel"), "second");
    Uids uids;
    uids.push_back(At(wheel, 1));
    uids.push_back(Base(wheel));
    uids.push_back(At(wheel, 2));
    Out(uids, 1);
    EXPECT_THAT(What(), ElementsAre("Wheel 2"));
}

TEST_F(Exporting, X8_KeepsLinksThatLeadOutsideByUid) {
    UDMItemHandle wheel = ann->CreateEntity("Part", "Wheel");
    const UDMItemHandle hub = Make(ann, "Hub");
    const UDMItemHandle gone = Make(ann, "Gone");
    const UDMItemHandle draft = ann->CreateEntity("Part", "Draft");
    for (const UDMItemHandle& other : {hub, gone, draft}) {
        ann->AddReference(wheel, other, "uses");
    }
    wheel = Publish(ann, wheel);
    ann->DeleteEntity(gone, true, false);
    Out(UidsOf({wheel}));
    EXPECT_THAT(What(), ElementsAre("Wheel 1"));
    ASSERT_EQ(links.size(), 1U);
    EXPECT_EQ(links[0].first, Base(wheel));
    EXPECT_EQ(links[0].second.other, Base(hub));
}

TEST_F(Exporting, X9_KnowsExternalFilesByPathSizeAndTime) {
    UDMItemHandle wheel = ann->CreateEntity("Part", "Wheel");
    const std::string path = sources.Write("big.odb", "results");
    AddFile(ann, wheel, path, true);
    wheel = Publish(ann, wheel);
    std::filesystem::remove(path);
    Out(UidsOf({wheel}));
    ASSERT_EQ(entities[0].files.size(), 1U);
    EXPECT_EQ(entities[0].files[0].externalPath, path);
    EXPECT_EQ(entities[0].files[0].size, 7U);
    EXPECT_EQ(contents, 0U);
}

TEST_F(Exporting, X10_TakesDefinitionsThatItsEntitiesNeed) {
    Out(UidsOf({ann->CreateEntity("Note", "Note")}));
    const auto definitions = catalogue::Catalogue::ReadText(definitionsXml, "library.xml");
    EXPECT_NE(definitions->Find("Content"), nullptr);
    EXPECT_NE(definitions->Find("Drawing"), nullptr);
    EXPECT_EQ(definitions->Find("Part"), nullptr);
}

TEST_F(Exporting, X11_ReplacesAnArchiveOnlyByAWholeOne) {
    const UDMItemHandle wheel = ann->CreateEntity("Note", "Wheel");
    Put(wheel, "wheel.inp", Deck(3000, 1));
    Export();
    const std::string before = ReadFile(Archive());
    std::filesystem::remove(StoredIn(source));
    EXPECT_THAT(Refusal([&] { Export(); }), HasSubstr("doesn't hold content"));
    EXPECT_EQ(ReadFile(Archive()), before);
    EXPECT_THAT(FilesIn(outside.Path()), ElementsAre("a.kxa"));
    EXPECT_THAT(Refusal([&] { ann->Export(outside.File("none/a.kxa"), {}, 2); }),
                HasSubstr("none"));
    EXPECT_THAT(Refusal([&] { ann->Export("", {}, 2); }), HasSubstr("path is empty"));
}

TEST_F(Exporting, X12_IsCancelledWithoutATrace) {
    const UDMItemHandle wheel = ann->CreateEntity("Note", "Wheel");
    Put(wheel, "wheel.inp", Deck(3000, 1));
    std::size_t calls = 0;
    {
        Steps all;
        UDMProgressScope scope(ann, all);
        Export();
        calls = all.heard.size();
        EXPECT_EQ(all.heard.back().done, all.heard.back().total);
        EXPECT_EQ(all.heard.back().total, 2U);
        EXPECT_EQ(all.heard.back().doneBytes, all.heard.back().totalBytes);
        EXPECT_EQ(all.heard.front().name, "Wheel");
    }
    std::filesystem::remove(Archive());
    for (std::size_t n = 1; n <= calls; ++n) {
        Steps some(n);
        UDMProgressScope scope(ann, some);
        EXPECT_THAT(Refusal<UDMCancelledException>([&] { Export(); }), HasSubstr("was cancelled"));
        ASSERT_THAT(FilesIn(outside.Path()), IsEmpty()) << n;
    }
}

TEST_F(Exporting, IsNoPartOfABulkEditAndNeedsAnOpenSession) {
    {
        UDMBulkEdit bulk(ann);
        EXPECT_THAT(Refusal([&] { Export(); }), HasSubstr("in a bulk edit"));
    }
    ProfilePtr closed = source.Open("ann");
    const ProfilePtr kept = closed;
    UDMProfileMgr::DiscardProfile(closed);
    EXPECT_THAT(Refusal([&] { kept->Export(Archive(), {}, 2); }), HasSubstr("is closed"));
}

TEST_F(Exporting, GivesOfAVaultOfItsOwnTheContents) {
    const UDMItemHandle wheel = ann->CreateEntity("Note", "Wheel");
    ann->SetVault(wheel, source.BaseDirectory() + "/own");
    Put(wheel, "wheel.inp", "in another vault");
    Carry();
    EXPECT_THAT(Contents(tom, There(wheel)), ElementsAre("wheel.inp=in another vault"));
}

}  // namespace
}  // namespace kxudm::test
