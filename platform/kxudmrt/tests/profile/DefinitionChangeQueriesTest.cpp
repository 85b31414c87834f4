// Queries over entities whose definitions have changed find what the entities themselves answer.
#include <random>

#include "ChangedDefinitions.h"
#include "Maintained.h"
#include "query/Evaluator.h"
#include "query/Parser.h"
#include "tests/support/Seed.h"

namespace kxudm::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class DefinitionChangeQueries : public ChangedDefinitions {
  protected:
    ProfilePtr ann = Open("ann");
    ProfilePtr bob = Open("bob");
};

TEST_F(DefinitionChangeQueries, D2_AnAddedAttributeIsFoundByItsDefault) {
    const UDMItemHandle published = Published(ann, "Published");
    const UDMItemHandle edited = CheckOut(ann, Published(ann, "Edited"));
    ann->CreateEntity("Part", "Draft");
    EXPECT_TRUE(Add(ann, "Part", Record("finish", "String", "raw")));
    EXPECT_THAT(Hits(ann, "attrib.finish == raw"), ElementsAre("Published", "Edited", "Draft"));
    EXPECT_THAT(Hits(bob, "attrib.finish like \"r*\""), ElementsAre("Published", "Edited"));
    EXPECT_THAT(Hits(bob, "type == Part && attrib.finish != raw"), IsEmpty());
    ann->SetAttributeValue(edited, "finish", "");
    EXPECT_THAT(Hits(ann, "attrib.finish == raw"), ElementsAre("Published", "Draft"));
    EXPECT_THAT(Hits(bob, "attrib.finish == raw"), ElementsAre("Published", "Edited"));
    Publish(ann, edited);
    EXPECT_THAT(Hits(bob, "attrib.finish == raw"), ElementsAre("Published"));
}

TEST_F(DefinitionChangeQueries, D3_FullTextSearchFollowsAttributesThatComeAndGo) {
    const auto find = [](const ProfilePtr& profile, const kxString& text) {
        kxStlVector<UDMItemHandle> hits;
        profile->RunQuery(hits, text, 0, 0, 0, {}, false, true);
        return DisplayNames(hits);
    };
    const UDMItemHandle wheel = CheckOut(ann, Published(ann, "Wheel"));
    ann->SetAttributeValue(wheel, "material", "steel");
    EXPECT_THAT(find(ann, "steel"), ElementsAre("Wheel"));
    EXPECT_TRUE(Add(ann, "Part", Record("finish", "String", "raw")));
    EXPECT_THAT(find(ann, "raw steel"), ElementsAre("Wheel"));
    EXPECT_THAT(find(bob, "raw"), ElementsAre("Wheel"));
    EXPECT_TRUE(Remove(ann, "Part", "material"));
    EXPECT_THAT(find(ann, "steel"), IsEmpty());
    EXPECT_THAT(find(ann, "raw"), ElementsAre("Wheel"));
    Publish(ann, wheel);
    EXPECT_THAT(find(bob, "steel"), IsEmpty());
    EXPECT_TRUE(Add(ann, "Part", Record("material", "String")));
    EXPECT_THAT(find(bob, "steel"), ElementsAre("Wheel"));
    EXPECT_THAT(Texts(UDMMaintenance(ann).Verify(AT_ONCE)), IsEmpty());
}

TEST_F(DefinitionChangeQueries, D2_ABranchOfAnOlderRevisionIsFoundByDefaultsAndNotByWhatIsHidden) {
    UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    ann->SetAttributeValue(part, "count", 4);
    const UDMItemHandle first = Publish(ann, part);
    part = Publish(ann, CheckOut(ann, first));
    EXPECT_TRUE(Add(ann, "Part", Record("finish", "String", "raw")));
    EXPECT_TRUE(Add(ann, "Drawing", Record("count", "Integer")));
    EXPECT_TRUE(Remove(ann, "Part", "count"));
    ann->Checkout(first, "");
    EXPECT_THAT(Hits(ann, "attrib.finish == raw"), ElementsAre("Wheel", "Wheel"));
    EXPECT_THAT(Hits(ann, "attrib.count == 4"), IsEmpty());
    EXPECT_THAT(Texts(UDMMaintenance(ann).Verify(AT_ONCE)), IsEmpty());
}

// An entity as a session shows it.
class Shown final : public query::EntityView {
  public:
    explicit Shown(UDMItemHandle handle) : _handle(std::move(handle)) {
        _definitions.push_back(_handle.GetCdef());
        if (_definitions.front() == "Bolt") {
            _definitions.emplace_back("Part");
        }
        _definitions.emplace_back("Item");
        _definitions.emplace_back("Content");
    }
    const std::vector<std::string>& Definitions() const override { return _definitions; }
    std::string BaseUid() const override { return Base(_handle); }
    int Revision() const override { return _handle.GetRevision(); }
    std::string Name() const override { return _handle.GetAttributeValue("name").GetString(); }
    kxVariant Attribute(const std::string& name) const override {
        try {
            return _handle.GetAttributeValue(name);
        } catch (const UDMNotFoundException&) {
            return {};
        }
    }

  private:
    UDMItemHandle _handle;
    std::vector<std::string> _definitions;
};

class Generated : public DefinitionChangeQueries {
  protected:
    static constexpr const char* NAMES[] = {"a", "b", "c"};

    void SetUp() override {
        Edit("<definition name=\"Drawing\" base=\"Item\"/>",
             "<definition name=\"Drawing\" base=\"Item\"/><definition name=\"Bolt\""
             " base=\"Part\"/>");
        ASSERT_TRUE(ann->ReloadContentDefinition("Bolt"));
    }

    unsigned Below(unsigned limit) { return random() % limit; }
    template <std::size_t N>
    const char* OneOf(const char* const (&list)[N]) {
        return list[Below(N)];
    }
    kxString Value() { return OneOf({"1", "0", "2", "02", "2.5", "true", "x", "X", "#00ff00"}); }
    kxString Definition() { return OneOf({"Item", "Part", "Bolt", "Drawing"}); }

    // What may be refused must then have changed nothing.
    void TryToChange() {
        const kxString definition = Definition();
        const kxString name = OneOf(NAMES);
        const ProfilePtr& session = Below(2) == 0 ? ann : bob;
        const std::string before = Description(session, definition);
        const UDMCdefMetaData record =
            Record(name,
                   OneOf({"Integer", "Double", "String", "StringList", "Boolean", "Color"}),
                   Below(3) == 0 ? "" : Value());
        try {
            const Names there = AttributesOf(session, definition);
            const bool known = std::find(there.begin(), there.end(), name) != there.end();
            const bool changed = !known          ? Add(session, definition, record)
                                 : Below(3) == 0 ? Remove(session, definition, name)
                                                 : Change(session, definition, record);
            ++(changed ? changes : refusals);
        } catch (const UDMException&) {
            ++refusals;
            ASSERT_EQ(Description(session, definition), before);
        }
    }

    void TryToEdit() {
        const ProfilePtr& session = Below(2) == 0 ? ann : bob;
        try {
            if (Below(4) == 0 || uids.empty()) {
                const char* name = OneOf({"n1", "n2", "n3"});
                uids.push_back(Base(
                    session->CreateEntity(OneOf({"Part", "Bolt", "Drawing"}), kxString(name))));
                return;
            }
            const kxString& uid = uids[Below(static_cast<unsigned>(uids.size()))];
            switch (Below(6)) {
                case 0:
                    Publish(session, session->GetEntity(uid), "", Below(3) == 0);
                    break;
                case 1:
                    session->Checkout(session->GetEntity(uid), "");
                    break;
                case 2:
                    session->UndoCheckout(session->GetEntity(uid));
                    break;
                default:
                    session->SetAttributeValue(session->GetEntity(uid),
                                               OneOf(NAMES),
                                               Below(5) == 0 ? kxVariant() : kxVariant(Value()));
                    break;
            }
        } catch (const UDMException&) {
            // Not every step is allowed everywhere.
        }
    }

    // About an attribute that some definition has; empty if none has any.
    kxString Query() {
        kxStlVector<kxString> known;
        for (const char* definition : {"Bolt", "Drawing"}) {
            for (const std::string& name : AttributesOf(ann, definition)) {
                if (name.size() == 1) {
                    known.push_back(name);
                }
            }
        }
        if (known.empty()) {
            return {};
        }
        kxString text;
        for (unsigned more = Below(3) + 1; more > 0; --more) {
            const kxString comparison = "attrib." +
                                        known[Below(static_cast<unsigned>(known.size()))] +
                                        OneOf({" == ", " == ", " != ", " < ", " >= ", " like "});
            text += (text.empty()    ? ""
                     : Below(2) == 0 ? " && "
                                     : " || ") +
                    (Below(5) == 0 ? "!(" + comparison + "\"" + Value() + "\")"
                                   : comparison + "\"" + (Below(4) == 0 ? "" : Value()) + "\"");
        }
        return text;
    }

    // What the entities answer, for the message of a failure.
    static std::string Values(const ProfilePtr& session, const Names& uids) {
        std::string text;
        for (const std::string& uid : uids) {
            const Shown shown(session->GetEntity(uid));
            text += "\n" + uid + " " + shown.Definitions().front();
            for (const char* name : NAMES) {
                const kxVariant value = shown.Attribute(name);
                text += std::string(" ") + name + "=" + std::to_string(value.GetKind()) + ":" +
                        value.GetString();
            }
        }
        return text;
    }

    void Compare(const ProfilePtr& session, const kxString& query, bool folded) {
        const query::Evaluator evaluator(query::Parse(query),
                                         folded ? query::Letters::Folded : query::Letters::Exact);
        UDMQuerySettingHandle settings;
        settings.GetSettings().SetIgnoreCase(folded);
        Names expected;
        for (const kxString& uid : uids) {
            if (Sees(session, uid) && evaluator.Matches(Shown(session->GetEntity(uid)))) {
                expected.push_back(uid);
            }
        }
        kxStlVector<UDMItemHandle> hits;
        session->RunQuery(hits, query + " && class == Item", -1, 0, 0, settings, false, false);
        Names found;
        for (const UDMItemHandle& hit : hits) {
            found.push_back(Base(hit));
        }
        // Branches are hits, too, but were never written down here.
        std::erase_if(found, [&](const std::string& uid) {
            return std::find(uids.begin(), uids.end(), uid) == uids.end();
        });
        comparisons += expected.empty() ? 0 : 1;
        ASSERT_EQ(found, expected) << query << Values(session, expected);
    }

    std::mt19937 random;
    kxStlVector<kxString> uids;
    int changes = 0;
    int refusals = 0;
    int comparisons = 0;
};

TEST_F(Generated, D26_QueriesFindWhatTheEntitiesAnswerAfterAnyChangesOfDefinitions) {
    const unsigned seed = kxct_test::Seed();
    random.seed(seed);
    for (int round = 0; round < 60; ++round) {
        for (int i = 0; i < 12; ++i) {
            TryToEdit();
        }
        ASSERT_NO_FATAL_FAILURE(TryToChange()) << "seed " << seed;
        for (int i = 0; i < 6; ++i) {
            const kxString query = Query();
            if (query.empty()) {
                continue;
            }
            ASSERT_NO_FATAL_FAILURE(Compare(ann, "(" + query + ")", i % 2 == 0)) << "seed " << seed;
            ASSERT_NO_FATAL_FAILURE(Compare(bob, "(" + query + ")", i % 2 == 0)) << "seed " << seed;
        }
    }
    EXPECT_THAT(Texts(UDMMaintenance(ann).Verify(AT_ONCE)), IsEmpty()) << "seed " << seed;
    // Otherwise it would say nothing.
    EXPECT_GT(changes, 10) << "seed " << seed;
    EXPECT_GT(refusals, 0) << "seed " << seed;
    EXPECT_GT(comparisons, 50) << "seed " << seed;
}

}  // namespace
}  // namespace kxudm::test
