// Relations, references and queries of a session on a real library.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kxct/MasterDBManagerImpl.h>
#include <kxct/UDMDBCtrl.h>
#include <kxudm/UDMQuerySettings.h>
#include <kxudm/UDMRelationHandle.h>

#include "Host.h"

using kxudm::UDMItemHandle;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

using Handles = kxStlVector<UDMItemHandle>;
using Texts = kxStlVector<kxString>;

std::vector<std::string> Names(const Handles& handles) {
    std::vector<std::string> names;
    for (const UDMItemHandle& handle : handles) {
        names.push_back(handle.GetDisplayName());
    }
    return names;
}

// Text of what `call` throws; empty if nothing.
template <class Call>
std::string FailureOf(Call&& call) {
    try {
        call();
        return {};
    } catch (const std::exception& failure) {
        return failure.what();
    }
}

class SessionLinks : public testing::Test {
  protected:
    SessionLinks() {
        host.Create("Demo");
        session = host.Impl().Open("Demo", "ws", "anna", "", kxct::CONN_TYPE_LIBRARY);
        wheel = session->CreateEntity("UDMPart", "Wheel");
        tyre = session->CreateEntity("UDMPart", "Tyre");
    }
    ~SessionLinks() override { host.Impl().Close(session); }

    std::vector<std::string> Parents(const UDMItemHandle& handle,
                                     const kxString& relation,
                                     bool flag = false) {
        Handles parents;
        session->GetParents(parents, handle, relation, flag);
        return Names(parents);
    }
    std::vector<std::string> References(const UDMItemHandle& handle, const kxString& type) {
        Handles out;
        session->GetReferences(out, type, handle);
        return Names(out);
    }
    // The published revision.
    UDMItemHandle Publish(UDMItemHandle handle, bool keep = false) {
        session->Persist(handle, "", keep);
        UDMItemHandle newest;
        EXPECT_TRUE(session->FindEntityById(newest, handle.GetUID(), true));
        return newest;
    }

    TemporaryFolder home;
    Host host{home.Path()};
    kxct::UDMDBCtrl* session = nullptr;
    UDMItemHandle wheel;
    UDMItemHandle tyre;
};

}  // namespace

TEST_F(SessionLinks, ARelationJoinsTwoContentsByItsType) {
    const kxudm::UDMRelationHandle relation = session->CreateRelation("fits", wheel, tyre);
    EXPECT_EQ(relation.GetType(), "fits");
    EXPECT_EQ(relation.GetFirst().GetUID(), wheel.GetUID());
    EXPECT_EQ(relation.GetSecond().GetUID(), tyre.GetUID());
    EXPECT_THAT(Parents(tyre, "fits"), ElementsAre("Wheel"));
    EXPECT_THAT(Parents(wheel, "fits"), IsEmpty());
    EXPECT_TRUE(session->RemoveRelation(wheel, tyre));
    EXPECT_FALSE(session->RemoveRelation(wheel, tyre));
    EXPECT_THAT(Parents(tyre, "fits"), IsEmpty());
}

TEST_F(SessionLinks, TheFlagOfARelationKeepsItOnTheTwoRevisions) {
    session->CreateRelation("follows", wheel, tyre);
    session->CreateRelation("stays", wheel, tyre, true);
    wheel = Publish(wheel, true);
    tyre = Publish(tyre, true);
    ASSERT_EQ(wheel.GetRevision(), 2);
    EXPECT_THAT(Parents(tyre, "follows"), ElementsAre("Wheel"));
    EXPECT_THAT(Parents(tyre, "stays"), IsEmpty());
    EXPECT_THAT(Parents(tyre, "stays", true), IsEmpty());
    const kxString base = tyre.GetUID().substr(0, tyre.GetUID().find(':'));
    const UDMItemHandle first = session->GetUDMItemHandle(base + ":1");
    EXPECT_THAT(Parents(first, "stays"), IsEmpty());
    EXPECT_THAT(Parents(first, "stays", true), ElementsAre("Wheel"));
}

TEST_F(SessionLinks, AReferenceGoesByAGroupOfTheDefinition) {
    session->AddReference(wheel, tyre, "references");
    EXPECT_THAT(References(wheel, "references"), ElementsAre("Tyre"));
    EXPECT_THAT(References(wheel, ""), ElementsAre("Tyre"));
    EXPECT_THAT(Parents(tyre, "reference"), ElementsAre("Wheel"));
    EXPECT_TRUE(tyre.IsRootEntity());
}

TEST_F(SessionLinks, ATypeThatTheDefinitionDoesNotListFindsNothingWithoutAWord) {
    session->AddReference(wheel, tyre, "references");
    Handles out{tyre};
    // Files are a group, but not one of references.
    for (const char* type : {"nothing", "files", "References"}) {
        EXPECT_EQ(FailureOf([&] { session->GetReferences(out, type, wheel); }), "") << type;
    }
    EXPECT_THAT(Names(out), ElementsAre("Tyre"));
}

TEST_F(SessionLinks, ResultsAreAppended) {
    session->AddReference(wheel, tyre, "references");
    Handles out{wheel};
    session->GetReferences(out, "", wheel);
    EXPECT_THAT(Names(out), ElementsAre("Wheel", "Tyre"));
    Texts types;
    session->GetReferredBy(out, types, tyre);
    EXPECT_THAT(Names(out), ElementsAre("Wheel", "Tyre", "Wheel"));
    EXPECT_THAT(types, ElementsAre("references"));
}

TEST_F(SessionLinks, RemovingAReferenceNamesTheReferredOneFirst) {
    session->AddReference(wheel, tyre, "references");
    // The order of AddReference is wrong here.
    EXPECT_THAT(FailureOf([&] { session->RemoveReference(wheel, tyre); }),
                HasSubstr("does not refer"));
    EXPECT_THAT(References(wheel, ""), ElementsAre("Tyre"));
    session->RemoveReference(tyre, wheel);
    EXPECT_THAT(References(wheel, ""), IsEmpty());
}

TEST_F(SessionLinks, WhoRefersIsToldWithTheTypeAndSiftedByTypes) {
    UDMItemHandle mesh = session->CreateEntity("UDMRepPartMesh", "Mesh");
    UDMItemHandle cad = session->CreateEntity("UDMRepPartCad", "Cad");
    session->AddReference(mesh, cad, "currentrep");
    session->AddReference(wheel, cad, "references");
    const auto referring = [&](Texts types) {
        Handles out;
        session->GetReferredBy(out, types, cad);
        std::vector<std::string> found = Names(out);
        for (std::size_t i = 0; i < found.size(); ++i) {
            found[i] += " " + types.at(i);
        }
        return found;
    };
    EXPECT_THAT(referring({}), ElementsAre("Wheel references", "Mesh currentrep"));
    EXPECT_THAT(referring({"currentrep"}), ElementsAre("Mesh currentrep"));
    EXPECT_THAT(referring({"nothing"}), IsEmpty());
}

TEST_F(SessionLinks, FailuresOfTheLibraryNameTheOperationAndTheReason) {
    EXPECT_THAT(FailureOf([&] { session->CreateRelation("", wheel, tyre); }),
                AllOf(HasSubstr("class kxudm::UDMRelationHandle __cdecl "
                                "kxct::UDMDBCtrl::CreateRelation("),
                      HasSubstr("is empty")));
    EXPECT_THAT(
        FailureOf([&] { session->AddReference(wheel, tyre, "files"); }),
        AllOf(HasSubstr("void __cdecl kxct::UDMDBCtrl::AddReference("), HasSubstr("references")));
    wheel = Publish(wheel);
    EXPECT_THAT(
        FailureOf([&] { session->CreateRelation("fits", wheel, tyre); }),
        AllOf(HasSubstr("kxct::UDMDBCtrl::CreateRelation("), HasSubstr("check it out first")));
    EXPECT_THAT(FailureOf([&] { session->AddReference(wheel, tyre, "references"); }),
                HasSubstr("check it out first"));
}

TEST_F(SessionLinks, AQueryIsCutToTheRangeAndCountsAll) {
    for (const char* name : {"w1", "w2", "w3"}) {
        session->CreateAndAdd("UDMRepPartCad", name, wheel, "representations");
    }
    kxudm::UDMQuerySettingHandle settings;
    const auto query = [&](const kxString& text, long a, long b, bool roots) {
        Handles out;
        const std::size_t count = session->ExecQuery(text, settings, out, a, b, roots);
        std::vector<std::string> found = Names(out);
        found.push_back("of " + std::to_string(count));
        return found;
    };
    EXPECT_THAT(query("name like w", 0, 0, false), ElementsAre("Wheel", "w1", "w2", "w3", "of 4"));
    EXPECT_THAT(query("name like w", 1, 3, false), ElementsAre("w1", "w2", "of 4"));
    EXPECT_THAT(query("name like w", 0, 0, true), ElementsAre("Wheel", "of 1"));
    EXPECT_THAT(query("", 0, 0, false), ElementsAre("Wheel", "Tyre", "of 2"));
    settings.GetSettings().SetIgnoreCase(false);
    EXPECT_THAT(query("name like w", 0, 0, false), ElementsAre("w1", "w2", "w3", "of 3"));
    EXPECT_THAT(FailureOf([&] { query("name ==", 0, 0, false); }),
                HasSubstr("unsigned __int64 __cdecl kxct::UDMDBCtrl::ExecQuery("));
}
