// Two processes on one library, side by side.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kxct/MasterDBManagerImpl.h>
#include <kxct/SignalHandler.h>
#include <kxctinterfaces/Item.h>
#include <kxsigslot/kxListener.h>
#include <kxsigslot/kxSignal.h>
#include <kxudm/UDMProfileMgr.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>

#include "Host.h"

using kxct::Controller;
using kxct::Item;

namespace {

// Runs `work` in a process of its own; its result is the process's exit code.
class Process {
  public:
    explicit Process(const std::function<int()>& work) : _child(fork()) {
        if (_child == 0) {
            _exit(work());
        }
    }
    int ExitCode() {
        int status = 0;
        waitpid(_child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

  private:
    pid_t _child;
};

class Counter : public kxListener<single_threaded> {
  public:
    void OnStructure(Item* item) { structures.push_back(item); }
    void OnUpdated(Item* item) { updated.push_back(item); }
    std::vector<Item*> structures;
    std::vector<Item*> updated;
};

int CreateMany(const std::filesystem::path& home, const kxString& folder, int count) {
    Host host(home);
    Controller* controller = host.Open("Demo");
    Item* target = controller->GetOrCreateFolder(folder, true);
    for (int i = 0; i < count; ++i) {
        Item* item = controller->CreateContent("Document", "d" + std::to_string(i));
        if (item == nullptr || !controller->MoveContent(item, target)) {
            return 1;
        }
    }
    return 0;
}

}  // namespace

TEST(TwoProcesses, BothWriteAtOnceAndNothingIsLost) {
    constexpr int kEach = 200;
    const TemporaryFolder home;
    { ASSERT_TRUE(Host(home.Path()).Create("Demo")->IsDBValid()); }
    Process one([&] { return CreateMany(home.Path(), "/One", kEach); });
    Process two([&] { return CreateMany(home.Path(), "/Two", kEach); });
    EXPECT_EQ(one.ExitCode(), 0);
    EXPECT_EQ(two.ExitCode(), 0);

    Host host(home.Path());
    Controller* controller = host.Open("Demo");
    for (const char* path : {"/One", "/Two"}) {
        Item* folder = controller->GetFolder(path, false);
        ASSERT_NE(folder, nullptr);
        EXPECT_EQ(folder->GetNumChildren("folder"), static_cast<size_t>(kEach));
    }
}

TEST(TwoProcesses, BothCreateTheLibraryAtOnceAndShareIt) {
    constexpr int kRounds = 20;
    for (int round = 0; round < kRounds; ++round) {
        const TemporaryFolder home;
        { Host settings(home.Path()); }
        const auto create = [&] {
            Host host(home.Path());
            Controller* controller = host.Create("Demo");
            return controller->IsDBValid() && controller->GetOrCreateFolder("/Shared", true) ? 0
                                                                                             : 1;
        };
        Process one(create);
        Process two(create);
        ASSERT_EQ(one.ExitCode(), 0);
        ASSERT_EQ(two.ExitCode(), 0);
        Host host(home.Path());
        ASSERT_NE(host.Open("Demo")->GetFolder("/Shared", false), nullptr);
    }
}

TEST(TwoProcesses, AChangeOfTheOtherProcessArrivesWithDispatchUpdates) {
    const TemporaryFolder home;
    { ASSERT_TRUE(Host(home.Path()).Create("Demo")->CreateFolder("/Shared") != nullptr); }
    // The other process has to begin before this one opens the library, and waits for a sign.
    int sign[2];
    ASSERT_EQ(pipe(sign), 0);
    Process other([&] {
        char go = 0;
        if (read(sign[0], &go, 1) != 1) {
            return 2;
        }
        Host host(home.Path());
        Controller* controller = host.Open("Demo");
        kxVariant text("by the other process");
        return controller->GetFolder("/Shared", false)->SetAttributeValue("description", text) &&
                       controller->CreateFolder("/Shared/New") != nullptr
                   ? 0
                   : 1;
    });

    Host host(home.Path());
    Controller* controller = host.Open("Demo");
    Item* folder = controller->GetFolder("/Shared", false);
    Counter counter;
    kxct::SignalHandler* signals = controller->GetSignalHandler(kxct::MANAGER_DEFAULT);
    signals->ItemUpdated.connect(&counter, &Counter::OnUpdated);
    signals->ItemStructureUpdated.connect(&counter, &Counter::OnStructure);
    ASSERT_EQ(write(sign[1], "g", 1), 1);
    ASSERT_EQ(other.ExitCode(), 0);

    EXPECT_TRUE(counter.updated.empty());
    kxudm::UDMProfileMgr::DispatchUpdates();
    EXPECT_THAT(counter.updated, testing::Contains(folder));
    EXPECT_THAT(counter.structures, testing::Contains(folder));
    EXPECT_EQ(folder->GetAttributeValue("description").GetString(), "by the other process");
    close(sign[0]);
    close(sign[1]);
}
