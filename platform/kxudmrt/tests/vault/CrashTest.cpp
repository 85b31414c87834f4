// A process that is killed while it adds files: what it reported as done is there, what has a final
// name is whole, and the rest is removed as stale.
#include <signal.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <random>

#include "Support.h"
#include "tests/support/Seed.h"
#include "vault/Vault.h"

namespace kxudm::vault {
namespace {

constexpr std::size_t kHash = 64;

class CrashTest : public testing::Test {
  protected:
    CrashTest() {
        for (int i = 0; i < 12; ++i) {
            const std::size_t size = 1000 + 4000 * static_cast<std::size_t>(i);
            const std::string name = "file" + std::to_string(i);
            paths_.push_back(folder_.Write(name, i % 2 == 0 ? Deck(size, i) : Noise(size, i)));
        }
        paths_.push_back(folder_.Write("large deck", Deck(3 * kBlock)));
        paths_.push_back(folder_.Write("large noise", Noise(2 * kBlock)));
    }

    // Adds the files in batches and one by one, and reports each hash once it is durable.
    void Work(FileLayer& layer, const std::string& directory, int report) const {
        Vault vault(directory, layer);
        Batch batch(vault);
        std::string done;
        for (std::size_t i = 0; i < paths_.size(); ++i) {
            if (i % 5 == 4) {
                Report(report, vault.Add(paths_[i]).hash);
                continue;
            }
            done += batch.Add(paths_[i]).hash;
            if (i % 4 == 3) {
                batch.Commit();
                Report(report, done);
                done.clear();
            }
        }
        batch.Commit();
        Report(report, done);
    }

    static void Report(int channel, const std::string& hashes) {
        if (write(channel, hashes.data(), hashes.size()) != static_cast<ssize_t>(hashes.size())) {
            _exit(2);
        }
    }

    // Forks a writer, lets `killing` decide when it dies, and checks what it left. Answers whether
    // it was killed.
    bool Round(const std::string& directory,
               const std::function<void(FileLayer&, int report)>& work,
               const std::function<void(pid_t)>& killing) {
        int channel[2];
        EXPECT_EQ(pipe(channel), 0);
        const pid_t writer = fork();
        if (writer == 0) {
            MeddlingLayer layer;
            work(layer, channel[1]);
            _exit(0);
        }
        close(channel[1]);
        killing(writer);
        int status = 0;
        waitpid(writer, &status, 0);
        std::string done;
        char buffer[4096];
        for (ssize_t count = 0; (count = read(channel[0], buffer, sizeof buffer)) > 0;) {
            done.append(buffer, static_cast<std::size_t>(count));
        }
        close(channel[0]);
        CheckLeft(directory, done);
        EXPECT_TRUE(WIFSIGNALED(status) || (WIFEXITED(status) && WEXITSTATUS(status) == 0));
        return WIFSIGNALED(status);
    }

    static void CheckLeft(const std::string& directory, const std::string& done) {
        Vault vault(directory);
        EXPECT_EQ(Problems(vault), "");
        EXPECT_EQ(done.size() % kHash, 0U);
        for (std::size_t i = 0; i + kHash <= done.size(); i += kHash) {
            EXPECT_EQ(vault.Verify(done.substr(i, kHash)).problem, "");
        }
        const std::size_t left = Temporaries(directory);
        EXPECT_EQ(vault.RemoveStaleTemporaries(), left);
        EXPECT_EQ(Temporaries(directory), 0U);
    }

    Folder folder_;
    std::vector<std::string> paths_;
};

TEST_F(CrashTest, AKillAtEachCallLeavesNoWrongFile) {
    bool killed = true;
    int number = 0;
    while (killed && !HasFailure()) {
        const Folder place;
        const std::string directory = place.File("vault");
        ++number;
        SCOPED_TRACE("call " + std::to_string(number));
        killed = Round(
            directory,
            [&](FileLayer& layer, int report) {
                int calls = 0;
                static_cast<MeddlingLayer&>(layer).before = [&calls, number](const std::string&,
                                                                             const std::string&) {
                    if (++calls == number) {
                        raise(SIGKILL);
                    }
                };
                Work(layer, directory, report);
            },
            [](pid_t) {});
    }
    EXPECT_GT(number, 100);
}

TEST_F(CrashTest, AKillAtAnyMomentLeavesNoWrongFile) {
    std::mt19937 random(kxct_test::Seed());
    const std::string directory = folder_.File("vault");
    for (int round = 0; round < 50 && !HasFailure(); ++round) {
        // Half of the rounds go on with what the last one left.
        if (round % 2 == 0) {
            Vault vault(directory);
            vault.List([&](const Entry& entry) { vault.Remove(entry.hash); });
        }
        Round(
            directory,
            [&](FileLayer& layer, int report) {
                while (true) {
                    Work(layer, directory, report);
                }
            },
            [&](pid_t writer) {
                const timespec wait{0, static_cast<long>(random() % 40'000'000)};
                nanosleep(&wait, nullptr);
                kill(writer, SIGKILL);
            });
    }
}

}  // namespace
}  // namespace kxudm::vault
