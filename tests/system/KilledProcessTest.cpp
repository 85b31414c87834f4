// A process that dies at any moment loses nothing that it was told is done.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kxctinterfaces/Item.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <iostream>
#include <random>
#include <thread>

#include "Host.h"
#include "tests/support/Seed.h"

using kxct::Controller;
using kxct::Item;

namespace {

constexpr int kKills = 100;
constexpr int kLongestLifeMicroseconds = 60000;

// Opens the library and makes contents for ever. Each content's UID goes to `report` after the
// library said that the content, its attribute and its folder are there.
[[noreturn]] void CreateForEver(const std::filesystem::path& home, int report) {
    Host host(home);
    Controller* controller = host.Open("Demo");
    Item* folder = controller->GetOrCreateFolder("/Killed", true);
    for (int i = 0;; ++i) {
        Item* item = controller->CreateContent("Document", "content " + std::to_string(i));
        kxVariant size(i);
        if (item == nullptr || !item->SetAttributeValue("filesize", size) ||
            !controller->MoveContent(item, folder)) {
            _exit(3);
        }
        const std::string line = item->GetUID() + " " + std::to_string(i) + "\n";
        if (write(report, line.data(), line.size()) < 0) {
            _exit(4);
        }
    }
}

std::vector<std::pair<kxString, int>> ReadReports(int pipe) {
    std::string text;
    char buffer[4096];
    for (ssize_t count = 0; (count = read(pipe, buffer, sizeof buffer)) > 0;) {
        text.append(buffer, static_cast<std::size_t>(count));
    }
    std::vector<std::pair<kxString, int>> reports;
    std::istringstream lines(text);
    std::string uid;
    int number = 0;
    while (lines >> uid >> number) {
        reports.emplace_back(uid, number);
    }
    return reports;
}

}  // namespace

TEST(KilledProcess, WhatWasReportedAsCreatedIsThereAfterAHundredKills) {
    std::mt19937 random(kxct_test::Seed());
    std::uniform_int_distribution<int> life(0, kLongestLifeMicroseconds);

    const TemporaryFolder home;
    { ASSERT_TRUE(Host(home.Path()).Create("Demo")->IsDBValid()); }

    std::size_t reported = 0;
    for (int kill = 0; kill < kKills; ++kill) {
        int ends[2];
        ASSERT_EQ(pipe(ends), 0);
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            close(ends[0]);
            CreateForEver(home.Path(), ends[1]);
        }
        close(ends[1]);
        std::this_thread::sleep_for(std::chrono::microseconds(life(random)));
        ::kill(child, SIGKILL);
        const auto reports = ReadReports(ends[0]);
        close(ends[0]);
        int status = 0;
        waitpid(child, &status, 0);
        ASSERT_TRUE(WIFSIGNALED(status)) << "the child ended by itself: " << WEXITSTATUS(status);

        Host host(home.Path());
        Controller* controller = host.Open("Demo");
        ASSERT_TRUE(controller->IsDBValid()) << host.OpenFailure("Demo");
        for (const auto& [uid, number] : reports) {
            Item* item = controller->GetItem(uid, false);
            ASSERT_NE(item, nullptr) << uid;
            EXPECT_EQ(item->GetAttributeValue("filesize").GetInteger(), number);
            kxStlVector<Item*> folders;
            EXPECT_EQ(item->GetParents(folders, "folder", false), 1u);
        }
        reported += reports.size();
    }
    std::cout << reported << " contents reported over " << kKills << " kills\n";
    EXPECT_GT(reported, 0u);
}
