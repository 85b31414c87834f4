// Several processes on one library.
#include "ChildProcess.h"
#include "Library.h"
#include "core/Clock.h"
#include "providers/local/LocalProvider.h"

namespace kxudm::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class Processes : public testing::Test {
  protected:
    ~Processes() override { UDMProfileMgr::RegisterProvider("quick", nullptr); }

    Library library;
};

TEST_F(Processes, N20_AreToldOfEachOthersChangesAtTheirNextCall) {
    Child child([&](int) {
        ProfilePtr bob = UDMProfileMgr::GetProfile(library.Params("bob"));
        UDMItemHandle folder;
        bob->GetFolder(folder, "/Shared", false);
        bob->CreateAndAddChild("Note", "From the child", folder, "contents");
        bob->CreateAndAddChild("Part", "Private", folder, "contents");
        bob->SetDisplayName("Renamed", folder);
        UDMProfileMgr::DiscardProfile(bob);
    });
    const ProfilePtr ann = library.Open("ann");
    UDMItemHandle folder;
    ann->CreateFolder(folder, "/Shared");
    EXPECT_THAT(Children(ann, folder, "folder"), IsEmpty());
    const auto told = Listen(ann);
    child.Go();
    ASSERT_EQ(child.Wait(), 0);
    EXPECT_THAT(told->Take(), IsEmpty());
    ann->GetEntity(folder.GetUID());
    // Handles show what is: the name was changed before the first was told.
    EXPECT_THAT(told->Take(), ElementsAre("42 Renamed", "3 Renamed"));
    EXPECT_EQ(folder.GetDisplayName(), "Renamed");
    EXPECT_THAT(Children(ann, folder, "folder"), ElementsAre("From the child"));
    EXPECT_THAT(told->Take(), IsEmpty());
}

TEST_F(Processes, N20_AreToldByDispatchUpdatesWithoutACall) {
    Child child([&](int) {
        ProfilePtr bob = UDMProfileMgr::GetProfile(library.Params("bob"));
        UDMItemHandle folder;
        bob->GetFolder(folder, "/Shared/Inner", false);
        bob->DeleteEntity(folder, true, false);
        UDMProfileMgr::DiscardProfile(bob);
    });
    const ProfilePtr ann = library.Open("ann");
    UDMItemHandle folder;
    ann->GetOrCreateFolder(folder, "/Shared/Inner", true);
    const auto told = Listen(ann);
    UDMProfileMgr::DispatchUpdates();
    EXPECT_THAT(told->Take(), IsEmpty());
    child.Go();
    ASSERT_EQ(child.Wait(), 0);
    UDMProfileMgr::DispatchUpdates();
    EXPECT_THAT(told->Take(), ElementsAre("43 Shared Inner", "44 " + folder.GetUID()));
    EXPECT_FALSE(folder.IsEditable());
    UDMProfileMgr::DispatchUpdates();
    EXPECT_THAT(told->Take(), IsEmpty());
}

TEST_F(Processes, N20_SeeEachOthersChangesBeforeTheyChangeSomethingThemselves) {
    Child child([&](int) {
        ProfilePtr bob = UDMProfileMgr::GetProfile(library.Params("bob"));
        UDMItemHandle folder;
        bob->GetFolder(folder, "/Shared", false);
        bob->SetAttributeValue(folder, "description", "by bob");
        UDMProfileMgr::DiscardProfile(bob);
    });
    const ProfilePtr ann = library.Open("ann");
    UDMItemHandle folder;
    ann->CreateFolder(folder, "/Shared");
    EXPECT_TRUE(folder.GetAttributeValue("description").IsEmpty());
    const auto told = Listen(ann);
    child.Go();
    ASSERT_EQ(child.Wait(), 0);
    ann->SetAttributeValue(folder, "name", "Ours");
    EXPECT_EQ(folder.GetAttributeValue("description"), kxVariant("by bob"));
    EXPECT_THAT(told->Take(), ElementsAre("3 Shared", "3 Shared"));
}

TEST_F(Processes, B14_MakeOneLibraryWhenTheyOpenItAtTheSameTime) {
    const auto make = [&](const std::string& user) {
        return [this, user](int out) {
            ProfilePtr profile = UDMProfileMgr::GetProfile(library.Params(user));
            WriteLine(out, profile->CreateEntity("Note", user).GetUID());
            UDMProfileMgr::DiscardProfile(profile);
        };
    };
    Child bob(make("bob"));
    Child eve(make("eve"));
    bob.Go();
    eve.Go();
    const std::string first = bob.Line();
    const std::string second = eve.Line();
    ASSERT_EQ(bob.Wait(), 0);
    ASSERT_EQ(eve.Wait(), 0);
    const ProfilePtr ann = library.Open("ann");
    EXPECT_EQ(ann->GetEntity(first).GetDisplayName(), "bob");
    EXPECT_EQ(ann->GetEntity(second).GetDisplayName(), "eve");
    kxStlVector<kxString> ids;
    UDMProfileMgr::GetRepositoryIds(ids, library.Params(), 1);
    EXPECT_EQ(ids.size(), 1U);
}

TEST_F(Processes, B15_LoseNothingThatWasReportedWhenTheyAreKilled) {
    Child child([&](int out) {
        ProfilePtr ann = UDMProfileMgr::GetProfile(library.Params("ann"));
        const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
        WriteLine(out, part.GetUID());
        for (int i = 0;; ++i) {
            const std::string name = "n" + std::to_string(i);
            ann->CreateAndAddChild("Note", name, part, "notes");
            ann->SetAttributeValue(part, "count", i);
            WriteLine(out, name);
        }
    });
    child.Go();
    const std::string uid = child.Line();
    Names reported;
    while (reported.size() < 50) {
        reported.push_back(child.Line());
    }
    child.Kill();
    for (std::string line = child.Line(); !line.empty(); line = child.Line()) {
        reported.push_back(line);
    }
    ASSERT_EQ(child.Wait(), -SIGKILL);
    const ProfilePtr ann = library.Open("ann");
    const UDMItemHandle part = ann->GetEntity(uid);
    const Names there = Children(ann, part, "notes");
    ASSERT_GE(there.size(), reported.size());
    EXPECT_EQ(Names(there.begin(), there.begin() + static_cast<int>(reported.size())), reported);
    // At most the one operation that was under way.
    EXPECT_LE(there.size(), reported.size() + 1);
    EXPECT_GE(part.GetAttributeValue("count").GetInteger(), static_cast<int>(reported.size()) - 1);
    ann->CreateAndAddChild("Note", "after", part, "notes");
}

TEST_F(Processes, B15_KilledWithinABulkEditLeaveNothingOfIt) {
    Child child([&](int out) {
        ProfilePtr ann = UDMProfileMgr::GetProfile(library.Params("ann"));
        const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
        UDMBulkEdit edit(ann);
        for (int i = 0; i < 100; ++i) {
            ann->CreateAndAddChild("Note", "n", part, "notes");
        }
        WriteLine(out, part.GetUID());
        pause();
    });
    child.Go();
    const std::string uid = child.Line();
    child.Kill();
    child.Wait();
    const ProfilePtr ann = library.Open("ann");
    EXPECT_THAT(Children(ann, ann->GetEntity(uid)), IsEmpty());
}

TEST_F(Processes, B16_GiveUpWaitingForABusyLibraryWithAnErrorThatNamesIt) {
    providers::LocalOptions options;
    options.busyTimeoutMilliseconds = 20;
    UDMProfileMgr::RegisterProvider("quick", boost::make_shared<providers::LocalProvider>(options));
    const ProfilePtr ann = library.Open("ann");
    const UDMItemHandle note = ann->CreateEntity("Note", "Note");
    Parameters params = library.Params("bob");
    params["DataSource"] = "quick";
    const ProfilePtr bob = library.Keep(UDMProfileMgr::GetProfile(params));
    const UDMItemHandle seen = bob->GetEntity(note.GetUID());
    UDMBulkEdit edit(ann);
    ann->SetAttributeValue(note, "text", "ann's");
    // Reading goes on.
    EXPECT_TRUE(bob->GetEntity(note.GetUID()).GetAttributeValue("text").IsEmpty());
    EXPECT_THAT(Refusal<UDMStoreException>([&] { bob->SetAttributeValue(seen, "text", "bob's"); }),
                HasSubstr(library.File()));
    edit.Commit();
    EXPECT_EQ(seen.GetAttributeValue("text"), kxVariant("ann's"));
    bob->SetAttributeValue(seen, "text", "bob's");
    EXPECT_EQ(note.GetAttributeValue("text"), kxVariant("bob's"));
}

class StoppedClock final : public core::Clock {
  public:
    std::int64_t NowMicroseconds() override { return now; }
    std::int64_t now = 0;
};

TEST_F(Processes, TimesAreWholeSecondsInUtc) {
    StoppedClock clock;
    clock.now = 1769860800'900000;
    providers::LocalOptions options;
    options.clock = &clock;
    UDMProfileMgr::RegisterProvider("quick", boost::make_shared<providers::LocalProvider>(options));
    Parameters params = library.Params("ann");
    params["DataSource"] = "quick";
    const ProfilePtr ann = library.Keep(UDMProfileMgr::GetProfile(params));
    const UDMItemHandle note = ann->CreateEntity("Note", "Note");
    EXPECT_EQ(note.GetCreationTime(), kxVariant("2026-01-31T12:00:00Z"));
    clock.now += 60'000000;
    ann->SetAttributeValue(note, "text", "later");
    EXPECT_EQ(note.GetCreationTime(), kxVariant("2026-01-31T12:00:00Z"));
    EXPECT_EQ(note.GetModifiedTime(), kxVariant("2026-01-31T12:01:00Z"));
    clock.now += 60'000000;
    ann->CreateAndAddChild("Note", "Answer", note, "answers");
    EXPECT_EQ(note.GetModifiedTime(), kxVariant("2026-01-31T12:02:00Z"));
}

}  // namespace
}  // namespace kxudm::test
