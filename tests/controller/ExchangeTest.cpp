// Merge, export and import.
#include <kxudm/UDMUID.h>

#include "tests/controller/ControllerFixture.h"

namespace kxct::test {
namespace {

using kxudm::UDMUID;
using testing::_;
using testing::Eq;
using testing::Matcher;
using testing::Return;

using Groups = kxStlMap<UDMUID, kxStlVector<kxString>>;
using Texts = kxStlVector<kxString>;
using Uids = kxStlVector<UDMUID>;

class ControllerImplExchange : public ControllerTest {
  protected:
    ControllerImplExchange() {
        Entity("A:1");
        Entity("B:2");
        ON_CALL(*local, CreateMerge).WillByDefault(Return(engine));
    }

    boost::shared_ptr<testing::NiceMock<mock::MockMerge>> engine =
        boost::make_shared<testing::NiceMock<mock::MockMerge>>();
    Items out;
};

Matcher<const Groups&> AreGroups(const Groups& groups) {
    return Eq(groups);
}

Matcher<Uids> AreUids(const Uids& uids) {
    return Eq(uids);
}

TEST_F(ControllerImplExchange, AMergeOfAMapHandsGroupsAndFlagOn) {
    const kxStlMap<kxString, Texts> entitiesToMerge{{"B:2", {}}, {"A:1", {"parts", "files"}}};
    const Groups expected{{UDMUID("A:1"), {"parts", "files"}}, {UDMUID("B:2"), {}}};
    EXPECT_CALL(*local, CreateMerge(kxString("lib"), kxString("/folder"), _, kxString("why")))
        .Times(2)
        .WillRepeatedly(Return(engine));
    EXPECT_CALL(*engine, merge(AreGroups(expected), true)).WillOnce(Return(Handles()));
    EXPECT_TRUE(controller->Merge("lib", "/folder", "why", entitiesToMerge, out, true));
    EXPECT_CALL(*engine, merge(AreGroups(expected), false)).WillOnce(Return(Handles()));
    EXPECT_TRUE(controller->Merge("lib", "/folder", "why", entitiesToMerge, out, false));
}

TEST_F(ControllerImplExchange, AMergeOfAListKeepsItsOrderAndDoublesAndNeverPublishes) {
    EXPECT_CALL(*local, CreateMerge(kxString("lib"), kxString("/folder"), _, kxString("why")))
        .WillOnce(Return(engine));
    EXPECT_CALL(*engine, merge(AreUids({UDMUID("B:2"), UDMUID("A:1"), UDMUID("B:2")}), false))
        .WillOnce(Return(Handles()));
    EXPECT_TRUE(controller->Merge("lib", "/folder", "why", Texts{"B:2", "A:1", "B:2"}, out));
}

TEST_F(ControllerImplExchange, MergedEntitiesComeAsItems) {
    ON_CALL(*engine, merge(testing::An<Uids>(), _))
        .WillByDefault(Return(Handles{HandleOf("B:2"), HandleOf("A:1")}));
    ON_CALL(*engine, merge(testing::An<const Groups&>(), _))
        .WillByDefault(Return(Handles{HandleOf("A:1")}));
    EXPECT_TRUE(controller->Merge("l", "/", "", Texts{"A:1"}, out));
    EXPECT_THAT(UidsOf(out), testing::ElementsAre("B:2", "A:1"));
    EXPECT_EQ(out[1], ItemOf("A:1"));
    EXPECT_TRUE(controller->Merge("l", "/", "", kxStlMap<kxString, Texts>(), out, false));
    EXPECT_THAT(UidsOf(out), testing::ElementsAre("A:1"));
}

TEST_F(ControllerImplExchange, AMergeWithoutEntitiesIsTrueAndLeavesTheListAlone) {
    out = {ItemOf("A:1")};
    EXPECT_TRUE(controller->Merge("l", "/", "", Texts(), out));
    EXPECT_TRUE(controller->Merge("l", "/", "", kxStlMap<kxString, Texts>(), out, true));
    EXPECT_THAT(UidsOf(out), testing::ElementsAre("A:1"));
}

TEST_F(ControllerImplExchange, AFailingMergeIsFalseAndLeavesTheListAlone) {
    out = {ItemOf("A:1")};
    ON_CALL(*engine, merge(testing::An<Uids>(), _)).WillByDefault(Fail());
    ON_CALL(*engine, merge(testing::An<const Groups&>(), _)).WillByDefault(Fail());
    EXPECT_FALSE(controller->Merge("l", "/", "", Texts{"A:1"}, out));
    EXPECT_FALSE(controller->Merge("l", "/", "", kxStlMap<kxString, Texts>(), out, true));
    ON_CALL(*local, CreateMerge).WillByDefault(Fail());
    EXPECT_FALSE(controller->Merge("l", "/", "", Texts{"A:1"}, out));
    EXPECT_FALSE(controller->Merge("l", "/", "", kxStlMap<kxString, Texts>(), out, true));
    EXPECT_THAT(UidsOf(out), testing::ElementsAre("A:1"));
}

TEST_F(ControllerImplExchange, ExportHandsPathAndTextsOn) {
    EXPECT_CALL(*profile, Export(kxString("/out.zip"), Texts{"B:2", "A"}, _));
    EXPECT_TRUE(controller->Export("/out.zip", {"B:2", "A"}));
}

TEST_F(ControllerImplExchange, ImportHandsThePathOn) {
    EXPECT_CALL(*profile, Import(kxString("/in.zip")));
    EXPECT_TRUE(controller->Import("/in.zip"));
}

}  // namespace
}  // namespace kxct::test
