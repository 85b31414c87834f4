// What becomes of the content definitions of an archive; rows X50 to X53 of
// docs/exchange-format.md. And what failures leave, X70 to X72.
#include "Exchange.h"
#include "catalogue/Catalogue.h"
#include "profile/ImportDefinitions.h"

namespace kxudm::test {
namespace {

using catalogue::Catalogue;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::shared_ptr<const Catalogue> Read(const std::string& definitions) {
    return Catalogue::ReadText("<catalogue version=\"1\">" + definitions + "</catalogue>", "test");
}

std::shared_ptr<const Catalogue> Merged(const std::string& ours,
                                        const std::string& theirs,
                                        bool isEmpty = false) {
    return profile::MergedCatalogue(Read(ours), *Read(theirs), isEmpty);
}

std::string RefusalOf(const std::string& ours, const std::string& theirs) {
    return Refusal([&] { static_cast<void>(Merged(ours, theirs)); });
}

const std::string kPart =
    "<definition name=\"Part\" extensions=\"inp\"><attribute name=\"mass\" type=\"Double\" "
    "default=\"1\"/><group name=\"parts\"><child definition=\"Part\"/></group></definition>";
const std::string kOther =
    "<definition name=\"Part\" extensions=\"inp\"><attribute name=\"mass\" type=\"Double\" "
    "default=\"2\"/><attribute name=\"size\" type=\"Integer\"/><group name=\"parts\">"
    "<child definition=\"Bolt\"/></group><group name=\"uses\" category=\"reference\">"
    "<child definition=\"Part\"/></group></definition><definition name=\"Bolt\" base=\"Part\" "
    "extensions=\"nut\"/>";

TEST(ImportDefinitions, X50_AreTakenByALibraryWithoutEntities) {
    const auto merged =
        Merged(kPart + "<definition name=\"Own\" extensions=\"nut own\"/>", kOther, true);
    EXPECT_EQ(merged->Get("Part").FindAttribute("mass")->defaultValue, kxVariant(2.0));
    EXPECT_EQ(merged->ForExtension("nut")->Name(), "Bolt");
    EXPECT_EQ(merged->ForExtension("own")->Name(), "Own");
}

TEST(ImportDefinitions, X51_AreAddedWhereTheyAreMissing) {
    const auto merged = Merged("<definition name=\"Own\" extensions=\"nut\"/>", kOther);
    EXPECT_THAT(merged->Names(), ElementsAre("Own", "Part", "Bolt"));
    EXPECT_EQ(merged->ForExtension("nut")->Name(), "Own");
    EXPECT_EQ(merged->ForExtension("inp")->Name(), "Part");
}

TEST(ImportDefinitions, X52_AddWhatALibrarysOwnLack) {
    const auto ours = Read(kPart);
    const auto merged = Merged(kPart, kOther);
    EXPECT_EQ(merged->Get("Part").FindAttribute("mass")->defaultValue, kxVariant(1.0));
    EXPECT_NE(merged->Get("Part").FindAttribute("size"), nullptr);
    EXPECT_NE(merged->Get("Part").FindGroup("uses"), nullptr);
    EXPECT_THAT(merged->Get("Part").FindGroup("parts")->allowedChildren,
                ElementsAre("Part", "Bolt"));
    EXPECT_EQ(profile::MergedCatalogue(ours, *ours, false), ours);
    EXPECT_EQ(profile::MergedCatalogue(ours, *Read(""), true), ours);
}

TEST(ImportDefinitions, X53_OfAnotherNatureAreRefused) {
    const std::string begin =
        "The content definition \"Part\" of the archive doesn't fit that of "
        "the library: ";
    const std::string end = "; bring one of them in line with the other";
    EXPECT_EQ(RefusalOf(kPart,
                        "<definition name=\"Part\"><attribute name=\"mass\" type=\"Integer\"/>"
                        "</definition>"),
              begin + "its attribute \"mass\" is a Integer there and a Double here" + end);
    EXPECT_EQ(RefusalOf(kPart, "<definition name=\"Part\" versioned=\"false\"/>"),
              begin + "it is not versioned there and versioned here" + end);
    EXPECT_EQ(RefusalOf(kPart, "<definition name=\"Part\" abstract=\"true\"/>"),
              begin + "it is abstract there and not abstract here" + end);
    EXPECT_EQ(RefusalOf(kPart, "<definition name=\"Part\" type=\"Other\"/>"),
              begin + "its type is \"Other\" there and \"Part\" here" + end);
    EXPECT_EQ(RefusalOf(kPart,
                        "<definition name=\"Root\"/>"
                        "<definition name=\"Part\" type=\"Part\" base=\"Root\"/>"),
              begin + "its base is \"Root\" there and \"\" here" + end);
    EXPECT_EQ(RefusalOf(kPart,
                        "<definition name=\"Part\"><group name=\"parts\" category=\"reference\">"
                        "<child definition=\"Part\"/></group></definition>"),
              begin +
                  "its group \"parts\" is of the category \"reference\" there and \"owner\" "
                  "here" +
                  end);
    EXPECT_EQ(RefusalOf(kPart,
                        "<definition name=\"Part\"><group name=\"parts\" composition=\"true\">"
                        "<child definition=\"Part\"/></group></definition>"),
              begin +
                  "its group \"parts\" holds its children by composition there and not by "
                  "composition here" +
                  end);
}

// --- What failures leave ---

class FailedImport : public Exchange {
  protected:
    static kxStlVector<UDMCdefMetaData> With(const ProfilePtr& profile,
                                             const UDMCdefMetaData& more) {
        kxStlVector<UDMCdefMetaData> metadata;
        profile->GetContentDefinitionMetadata("Part", metadata);
        metadata.push_back(more);
        return metadata;
    }
    static UDMCdefMetaData Record(const kxString& name, const kxString& type) {
        return {name, name, "", "", type, "", false, true, true, {}};
    }
};

TEST_F(FailedImport, X52_BringsAttributesIntoALibraryWithEntities) {
    const UDMItemHandle here = Make(tom, "Here");
    ASSERT_TRUE(ann->UpdateContentDefinition("Part", With(ann, Record("grade", "String")), false));
    const UDMItemHandle wheel = Revise(ann, Make(ann, "Wheel"), [&](const UDMItemHandle& working) {
        ann->SetAttributeValue(working, "grade", "A");
    });
    const ProfilePtr eve = target.Open("eve");
    EXPECT_EQ(Carry().definitions, 1U);
    EXPECT_EQ(Attribute(There(wheel), "grade"), "A");
    EXPECT_EQ(Attribute(eve->GetEntity(Base(wheel)), "grade"), "A");
    EXPECT_EQ(Attribute(tom->GetEntity(Base(here)), "grade"), "");
    EXPECT_THAT(Problems(tom), IsEmpty());
}

TEST_F(FailedImport, X53_LeavesTheLibraryAsItWas) {
    const UDMItemHandle here = Make(tom, "Here");
    ASSERT_TRUE(tom->UpdateContentDefinition("Part", With(tom, Record("grade", "Integer")), false));
    ASSERT_TRUE(ann->UpdateContentDefinition("Part", With(ann, Record("grade", "String")), false));
    const UDMItemHandle wheel = ann->CreateEntity("Part", "Wheel");
    Put(wheel, "wheel.inp", "one");
    Publish(ann, wheel);
    const std::string before = Exported(tom);
    EXPECT_THAT(Refusal([&] { Carry(); }),
                HasSubstr("its attribute \"grade\" is a String there and a Integer here"));
    EXPECT_TRUE(Exported(tom) == before);
    EXPECT_THAT(Tree(target.BaseDirectory() + "/vault"), IsEmpty());
}

TEST_F(FailedImport, X70_LeavesNothingWhereverItIsCancelled) {
    UDMItemHandle wheel = ann->CreateEntity("Part", "Wheel");
    Put(wheel, "wheel.inp", Deck(3000, 1));
    ann->MoveContent(wheel, Folder(ann, "/A"));
    wheel = Publish(ann, wheel);
    Carry();
    wheel = Revise(
        ann, wheel, [&](const UDMItemHandle& working) { Put(working, "more.inp", Deck(4000, 2)); });
    Make(ann, "Hub");
    Export();
    const std::string before = Exported(tom);
    const Names vault = Tree(target.BaseDirectory() + "/vault");
    const UDMItemHandle held = There(wheel);
    std::size_t n = 1;
    for (bool cancelled = true; cancelled; ++n) {
        Steps some(n);
        UDMProgressScope scope(tom, some);
        try {
            static_cast<void>(Import());
            cancelled = false;
            EXPECT_EQ(some.heard.back().done, some.heard.back().total);
            EXPECT_EQ(some.heard.back().doneBytes, some.heard.back().totalBytes);
        } catch (const UDMCancelledException& stop) {
            EXPECT_THAT(stop.what(), HasSubstr("was cancelled; everything is as it was"));
            ASSERT_TRUE(Exported(tom) == before) << n;
            ASSERT_EQ(Tree(target.BaseDirectory() + "/vault"), vault) << n;
            ASSERT_EQ(There(wheel).GetRevision(), 1) << n;
            ASSERT_FALSE(held.IsEditable());
        }
    }
    EXPECT_GT(n, 6U);
    EXPECT_EQ(There(wheel).GetRevision(), 2);
    EXPECT_THAT(Problems(tom, true), IsEmpty());
}

// Throws at the n-th call.
class Thrower : public IUDMProgressListener {
  public:
    explicit Thrower(std::size_t last) : _last(last) {}
    bool Advance(const UDMProgress& /*progress*/) override {
        if (++_calls == _last) {
            throw std::logic_error("the listener's own");
        }
        return true;
    }

  private:
    std::size_t _calls = 0;
    const std::size_t _last;
};

TEST_F(FailedImport, X70_LeavesNothingWhereverItsListenerThrows) {
    const UDMItemHandle hub = Make(ann, "Hub");
    UDMItemHandle wheel = ann->CreateEntity("Part", "Wheel");
    ann->AddReference(wheel, hub, "uses");
    wheel = Publish(ann, wheel);
    Carry(UidsOf({wheel}), 1);
    Put(CheckOut(ann, hub), "hub.inp", Deck(3000, 1));
    Publish(ann, hub);
    Export(UidsOf({hub}));
    const std::string before = Exported(tom);
    std::size_t n = 1;
    for (bool thrown = true; thrown; ++n) {
        Thrower thrower(n);
        const UDMProgressScope scope(tom, thrower);
        try {
            static_cast<void>(Import());
            thrown = false;
        } catch (const std::logic_error&) {
            ASSERT_TRUE(Exported(tom) == before) << n;
            ASSERT_THAT(Tree(target.BaseDirectory() + "/vault"), IsEmpty()) << n;
            ASSERT_THAT(References(tom, There(wheel)), IsEmpty()) << n;
        }
    }
    EXPECT_GT(n, 4U);
    EXPECT_THAT(References(tom, There(wheel)), ElementsAre("Hub"));
    EXPECT_THAT(Problems(tom, true), IsEmpty());
}

TEST_F(FailedImport, X70_OfNoArchiveSaysSo) {
    EXPECT_THAT(Refusal<UDMStoreException>([&] { tom->Import(outside.File("none.kxa")); }),
                HasSubstr("none.kxa"));
    sources.Write("text.kxa", "no archive");
    EXPECT_THAT(Refusal<UDMStoreException>([&] { tom->Import(sources.File("text.kxa")); }),
                HasSubstr("text.kxa"));
}

TEST_F(FailedImport, X72_IsNoPartOfABulkEdit) {
    Export();
    UDMBulkEdit bulk(tom);
    EXPECT_THAT(Refusal([&] { Import(); }), HasSubstr("in a bulk edit"));
}

TEST_F(FailedImport, NeedsASessionThatHasArchives) {
    EXPECT_THAT(Refusal([] { UDMExchange none{ProfilePtr()}; }), HasSubstr("the profile is null"));
}

TEST_F(FailedImport, NamesEveryOutcome) {
    Names names;
    for (const UDMImportOutcome outcome : {UDMImportOutcome::New,
                                           UDMImportOutcome::Equal,
                                           UDMImportOutcome::Appended,
                                           UDMImportOutcome::Branched,
                                           UDMImportOutcome::Kept,
                                           UDMImportOutcome::SamePlace,
                                           UDMImportOutcome::Refused}) {
        names.emplace_back(UDMExchange::Name(outcome));
    }
    EXPECT_THAT(
        names,
        ElementsAre("new", "equal", "appended", "branched", "kept", "same place", "refused"));
}

}  // namespace
}  // namespace kxudm::test
