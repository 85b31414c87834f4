// The numbered rows once more, each as one step of a session that works beside two listening ones:
// "here" belongs to the same user and workspace, "elsewhere" to another user. The step is made by a
// session of this process and by another process; the two must be told and see the same.
#include <kxudm/UDMMaintenance.h>

#include <memory>

#include "ChildProcess.h"
#include "Revisions.h"

namespace kxudm::test {
namespace {

using Action = std::function<void(const ProfilePtr&)>;

struct Row {
    const char* name;
    // Done before, by the session here.
    Action prepare;
    Action step;
    Names here;
    Names elsewhere;
    // What "Wheel" is afterwards: newest revision, "*" if it is editable, all revisions.
    std::string seenHere = {};
    std::string seenElsewhere = {};
};

void PrintTo(const Row& row, std::ostream* out) {
    *out << row.name;
}

UDMItemHandle Named(const ProfilePtr& profile, const kxString& name) {
    kxStlVector<UDMItemHandle> hits;
    profile->RunQuery(hits, "name == \"" + name + "\"", -1, 0, 0, {}, false, false);
    if (hits.empty()) {
        throw std::runtime_error("no " + name);
    }
    return hits.at(0);
}

std::string Seen(const ProfilePtr& profile) {
    kxStlVector<UDMItemHandle> hits;
    profile->RunQuery(hits, "name == \"Wheel\"", -1, 0, 0, {}, false, false);
    std::string text;
    for (const UDMItemHandle& hit : hits) {
        text += (text.empty() ? "" : "; ") + std::to_string(hit.GetRevision()) +
                (hit.IsEditable() ? "* of" : " of");
        for (const int version : Versions(profile, hit)) {
            text += " " + std::to_string(version);
        }
    }
    return text;
}

// Steps that begin from nothing but their session.
namespace step {

UDMItemHandle Wheel(const ProfilePtr& profile) {
    return Named(profile, "Wheel");
}
void Draft(const ProfilePtr& profile) {
    profile->CreateEntity("Part", "Wheel");
}
void Published(const ProfilePtr& profile) {
    test::Published(profile, "Wheel");
}
void CheckedOut(const ProfilePtr& profile) {
    CheckOut(profile, test::Published(profile, "Wheel"));
}
void Note(const ProfilePtr& profile) {
    profile->CreateEntity("Note", "Wheel");
}
void NoteInFolders(const ProfilePtr& profile) {
    UDMItemHandle folder;
    profile->CreateFolder(folder, "/F");
    profile->CreateFolder(folder, "/G");
    Note(profile);
    profile->MoveContent(Wheel(profile), Named(profile, "F"));
}
void NoteWithAnswer(const ProfilePtr& profile) {
    Note(profile);
    profile->CreateAndAddChild("Note", "Answer", Wheel(profile), "answers");
}
void NoteThatRefers(const ProfilePtr& profile) {
    Note(profile);
    profile->AddChild(Wheel(profile), profile->CreateEntity("Note", "Source"), "see");
}
// In a folder, under a classification, owned by one that is published.
void Placed(const ProfilePtr& profile) {
    UDMItemHandle folder;
    profile->CreateFolder(folder, "/F");
    profile->CreateFolder(folder, "/G");
    test::Published(profile, "Metals", "Categories");
    profile->CreateEntity("Part", "Owner");
    Draft(profile);
    profile->MoveContent(Wheel(profile), Named(profile, "F"));
    profile->AddClassification(Wheel(profile), Named(profile, "Metals"));
    profile->AddChild(Named(profile, "Owner"), Wheel(profile), "parts");
    Publish(profile, Named(profile, "Owner"));
}
void PlacedAndPublished(const ProfilePtr& profile) {
    Placed(profile);
    Publish(profile, Wheel(profile));
}
void PlacedAndMoved(const ProfilePtr& profile) {
    PlacedAndPublished(profile);
    profile->MoveContent(CheckOut(profile, Wheel(profile)), Named(profile, "G"));
}

constexpr const char* FILE = KXUDMRT_TEST_CATALOGUE;

void AddFile(const ProfilePtr& profile) {
    profile->BeginAddFile(Wheel(profile)).setFilePath(FILE).setIsExternal(false).go();
}

void Fail(const Action& action, const ProfilePtr& profile) {
    try {
        action(profile);
    } catch (const UDMException&) {
        return;
    }
    throw std::runtime_error("nothing was refused");
}

}  // namespace step

std::vector<Row> Rows() {
    using P = const ProfilePtr&;
    return {
        {"S1", [](P) {}, step::Draft, {}, {}, "0* of 0", ""},
        {"S2", [](P) {}, step::Note, {}, {}, "0* of 0", "0* of 0"},
        {"S3_N1_N15",
         step::Draft,
         [](P p) { p->SetAttributeValue(step::Wheel(p), "mass", 7.0); },
         {"3 Wheel:0"},
         {},
         "0* of 0",
         ""},
        {"S3_N1",
         step::Note,
         [](P p) { p->SetAttributeValue(step::Wheel(p), "text", "x"); },
         {"3 Wheel:0"},
         {"3 Wheel:0"},
         "0* of 0",
         "0* of 0"},
        {"N2",
         step::Note,
         [](P p) { p->SetDisplayName("Rim", step::Wheel(p)); },
         {"3 Rim:0"},
         {"3 Rim:0"},
         "0* of 0",
         "0* of 0"},
        {"N3",
         step::CheckedOut,
         [](P p) { p->SetAttributeValue(step::Wheel(p), "name", "Rim"); },
         {"3 Wheel:2"},
         {"3 Wheel:1"},
         "",
         ""},
        {"N4",
         step::Note,
         [](P p) { p->CreateAndAddChild("Note", "Answer", step::Wheel(p), "answers"); },
         {"35 Wheel:0"},
         {"35 Wheel:0"},
         "0* of 0",
         "0* of 0"},
        {"N5",
         [](P p) {
             step::Note(p);
             p->CreateEntity("Note", "Source");
         },
         [](P p) { p->AddChild(step::Wheel(p), Named(p, "Source"), "see"); },
         {"40 Wheel:0"},
         {"40 Wheel:0"},
         "0* of 0",
         "0* of 0"},
        {"N6",
         step::NoteInFolders,
         [](P p) { p->MoveContent(step::Wheel(p), Named(p, "G")); },
         {"43 F:0 Wheel:0", "42 G:0"},
         {"43 F:0 Wheel:0", "42 G:0"},
         "0* of 0",
         "0* of 0"},
        {"N7_N15",
         step::PlacedAndMoved,
         [](P p) { p->RemoveClassification(step::Wheel(p), Named(p, "Metals")); },
         {"43 Metals:1 Wheel:2"},
         {},
         "2* of 1 2",
         "1 of 1"},
        {"N8",
         step::NoteWithAnswer,
         [](P p) { p->RemoveChild(step::Wheel(p), Named(p, "Answer")); },
         {"36 Wheel:0 Answer:0"},
         {"36 Wheel:0 Answer:0"},
         "0* of 0",
         "0* of 0"},
        {"N9",
         step::NoteThatRefers,
         [](P p) { p->RemoveChild(step::Wheel(p), Named(p, "Source")); },
         {"41 Wheel:0 Source:0"},
         {"41 Wheel:0 Source:0"},
         "0* of 0",
         "0* of 0"},
        {"S12_N10_N11",
         step::PlacedAndMoved,
         [](P p) { p->DeleteEntity(step::Wheel(p), true, false); },
         {"43 G:0 Wheel:2", "43 Metals:1 Wheel:2", "12 Owner:1 Wheel:2", "44 ~:2"},
         {"43 F:0 Wheel:1", "43 Metals:1 Wheel:1", "12 Owner:1 Wheel:1", "44 ~:1"},
         "",
         ""},
        {"S4_N23_N27",
         step::Placed,
         [](P p) { Publish(p, step::Wheel(p)); },
         {"5 Wheel:1"},
         {"5 Wheel:1", "42 F:0", "42 Metals:1", "35 Owner:1"},
         "1 of 1",
         "1 of 1"},
        {"S5_N21",
         step::Published,
         [](P p) { CheckOut(p, step::Wheel(p)); },
         {"5 Wheel:2"},
         {"10 Wheel:1"},
         "2* of 1 2",
         "1 of 1"},
        {"S6_N22",
         step::CheckedOut,
         [](P p) { p->SaveEntity(step::Wheel(p), "x", true); },
         {"3 Wheel:2"},
         {},
         "2* of 1 2",
         "1 of 1"},
        {"S7_N24",
         step::CheckedOut,
         [](P p) { Publish(p, step::Wheel(p)); },
         {"10 Wheel:2"},
         {"5 Wheel:2"},
         "2 of 1 2",
         "2 of 1 2"},
        {"S8_N25",
         step::CheckedOut,
         [](P p) { Publish(p, step::Wheel(p), "", true); },
         {"10 Wheel:2", "5 Wheel:3"},
         {"5 Wheel:2"},
         "3* of 1 2 3",
         "2 of 1 2"},
        {"S9_N26_N28",
         step::PlacedAndMoved,
         [](P p) { p->UndoCheckout(step::Wheel(p)); },
         {"43 G:0 Wheel:1", "39 Wheel:1 ~:2", "42 F:0"},
         {"10 Wheel:1"},
         "1 of 1",
         "1 of 1"},
        {"N27",
         step::PlacedAndMoved,
         [](P p) { Publish(p, step::Wheel(p)); },
         {"10 Wheel:2"},
         {"5 Wheel:2", "43 F:0 Wheel:2", "42 G:0"},
         "2 of 1 2",
         "2 of 1 2"},
        {"S10_N29",
         [](P p) {
             step::PlacedAndPublished(p);
             Publish(p, CheckOut(p, step::Wheel(p)));
         },
         [](P p) { p->Checkout(p->GetEntity(At(step::Wheel(p), 1)), ""); },
         {"42 F:0", "42 Metals:1"},
         {},
         "2 of 1 2; 0* of 0",
         "2 of 1 2"},
        {"S11_N13",
         step::Note,
         [](P p) {
             const UDMItemHandle note = step::Wheel(p);
             p->Checkout(note, "");
             p->SaveEntity(note, "", true);
             p->PersistEntity(note, "", true, true, true);
             p->UndoCheckout(note);
         },
         {},
         {},
         "0* of 0",
         "0* of 0"},
        {"S13_N13",
         [](P p) {
             step::NoteWithAnswer(p);
             UDMItemHandle folder;
             p->CreateFolder(folder, "/F");
         },
         [](P p) {
             step::Fail([](P q) { q->DeleteEntity(step::Wheel(q), false, false); }, p);
             step::Fail([](P q) { q->CreateEntity("Foldertype", "F"); }, p);
         },
         {},
         {},
         "0* of 0",
         "0* of 0"},
        {"N30_N15",
         step::CheckedOut,
         [](P p) {
             step::AddFile(p);
             p->ReAddFile(step::Wheel(p), step::FILE, false, true);
             p->RemoveFile(step::Wheel(p), "catalogue.xml");
         },
         {"3 Wheel:2", "3 Wheel:2", "3 Wheel:2"},
         {},
         "2* of 1 2",
         "1 of 1"},
        {"N30", step::Note, step::AddFile, {"3 Wheel:0"}, {"3 Wheel:0"}, "0* of 0", "0* of 0"},
        {"N31",
         [](P p) {
             step::PlacedAndMoved(p);
             p->DeleteEntity(step::Wheel(p), true, false);
         },
         [](P p) {
             UDMMaintenance care(p);
             care.Undelete(care.DeletedEntities().at(0).uid);
         },
         {"5 Wheel:2", "42 G:0", "42 Metals:1", "35 Owner:1"},
         {"5 Wheel:1", "42 F:0", "42 Metals:1", "35 Owner:1"},
         "2* of 1 2",
         "1 of 1"},
        {"N16",
         step::Published,
         [](P p) {
             UDMBulkEdit bulk(p);
             CheckOut(p, step::Wheel(p));
             p->SetAttributeValue(step::Wheel(p), "mass", 2.0);
             p->SetAttributeValue(step::Wheel(p), "mass", 3.0);
             Publish(p, step::Wheel(p));
             bulk.Commit();
         },
         {"5 Wheel:2", "3 Wheel:2", "10 Wheel:2"},
         {"10 Wheel:1", "5 Wheel:2"},
         "2 of 1 2",
         "2 of 1 2"},
    };
}

class RowsBetweenSessions : public testing::TestWithParam<std::tuple<Row, bool>> {
  protected:
    static const Row& Tested() { return std::get<0>(GetParam()); }
    static bool InAnotherProcess() { return std::get<1>(GetParam()); }

    // A process is forked before this one opens the library.
    void BeReady() {
        if (InAnotherProcess()) {
            child = std::make_unique<Child>([this](int) {
                ProfilePtr profile = UDMProfileMgr::GetProfile(library.Params("ann"));
                Tested().step(profile);
                UDMProfileMgr::DiscardProfile(profile);
            });
        }
    }
    void Act() {
        if (!InAnotherProcess()) {
            Tested().step(library.Open("ann"));
            return;
        }
        child->Go();
        ASSERT_EQ(child->Wait(), 0);
        UDMProfileMgr::DispatchUpdates();
    }

    Library library;
    std::unique_ptr<Child> child;
};

TEST_P(RowsBetweenSessions, EachIsToldAndSeesWhatTheTablesSay) {
    BeReady();
    const ProfilePtr here = library.Open("ann");
    const ProfilePtr elsewhere = library.Open("bob");
    Tested().prepare(here);
    Listening heardHere(here);
    Listening heardElsewhere(elsewhere);
    Act();
    EXPECT_EQ(heardHere.Take(), Tested().here);
    EXPECT_EQ(heardElsewhere.Take(), Tested().elsewhere);
    EXPECT_EQ(Seen(here), Tested().seenHere);
    EXPECT_EQ(Seen(elsewhere), Tested().seenElsewhere);
}

INSTANTIATE_TEST_SUITE_P(Tables,
                         RowsBetweenSessions,
                         testing::Combine(testing::ValuesIn(Rows()), testing::Bool()),
                         [](const auto& test) {
                             return std::string(std::get<0>(test.param).name) +
                                    (std::get<1>(test.param) ? "_InAnotherProcess"
                                                             : "_InAnotherSession");
                         });

}  // namespace
}  // namespace kxudm::test
