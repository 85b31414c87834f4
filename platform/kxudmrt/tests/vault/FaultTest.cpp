// Each call to the machine fails once, for the first up to the last that an operation makes: each
// time there is an error, nothing is half done, and the operation succeeds on retry.
#include <cerrno>

#include "Support.h"
#include "vault/Delivery.h"

namespace kxudm::vault {
namespace {

using testing::HasSubstr;

struct Fault {
    int number = 0;      // which call fails; 0 none
    bool lasts = false;  // and all behind it
    int code = EIO;
};

void PrintTo(const Fault& fault, std::ostream* out) {
    *out << "call " << fault.number << (fault.lasts ? " and on" : "") << ", error " << fault.code;
}

class FaultTest : public testing::TestWithParam<Fault> {
  protected:
    // Files that take every way in: small and large, plain and compressed, empty, twice the same,
    // and two that are in the vault already.
    struct Sources {
        Sources() {
            Sha256 hash;
            for (const std::string& content : {Deck(3000),
                                               Noise(3000),
                                               std::string(),
                                               Deck(3000),
                                               Deck(kBlock + 500000),
                                               Noise(kBlock + 500),
                                               Deck(4000),
                                               Noise(kBlock + 5, 7)}) {
                paths.push_back(folder.Write(std::to_string(paths.size()), content));
                hash.Update(content.data(), content.size());
                hashes.push_back(hash.Finish());
            }
        }

        Folder folder;
        std::vector<std::string> paths;
        std::vector<std::string> hashes;
    };

    static void SetUpTestSuite() { sources_ = std::make_unique<Sources>(); }
    static void TearDownTestSuite() { sources_.reset(); }

    // A vault of its own.
    struct World {
        World() {
            known = {sound.Add(sources_->paths[6]), sound.Add(sources_->paths[7])};
            folder.Write("target", "mine");
        }

        const std::vector<std::string>& paths = sources_->paths;
        const std::vector<std::string>& hashes = sources_->hashes;
        Folder folder;
        std::string directory = folder.File("vault");
        MeddlingLayer quick;
        Vault sound{directory, quick};
        std::vector<Stored> known;
    };

    void Arm(const Fault& fault) {
        calls_ = 0;
        failed_.clear();
        layer_.before = [this, fault](const std::string& call, const std::string& path) {
            ++calls_;
            if (calls_ == fault.number || (fault.lasts && calls_ > fault.number)) {
                failed_ += failed_.empty() ? call : "";
                throw FileError(fault.code, "used for " + call, path);
            }
        };
    }

    void Disarm() { layer_.before = nullptr; }

    using Operation = std::function<void(World&, Vault&)>;

    // Runs the operation with the n-th call failing, for each n.
    void Run(const Operation& operation, const Operation& check) {
        const Fault kind = GetParam();
        for (int number = 1; number < 1000; ++number) {
            World world;
            Vault failing(world.directory, layer_);
            Arm({number, kind.lasts, kind.code});
            const std::string error = ErrorOf([&] { operation(world, failing); });
            Disarm();
            SCOPED_TRACE("call " + std::to_string(number) + " " + failed_ + ": " + error);
            if (failed_.empty()) {
                EXPECT_EQ(error, "");
                check(world, failing);
                EXPECT_GT(number, 10);
                return;
            }
            // A file that was only read has done its part before it is closed, a list of files
            // before it is removed.
            if (failed_ != "Close" && (failed_ != "Remove" || !error.empty())) {
                EXPECT_THAT(error, HasSubstr("can't be used for "));
            }
            EXPECT_EQ(Problems(world.sound), "");
            if (failed_ != "Remove" && !kind.lasts) {
                EXPECT_EQ(Temporaries(world.directory), 0U);
            }
            for (const Stored& stored : world.known) {
                EXPECT_TRUE(world.sound.Holds(stored.hash));
            }
            if (!error.empty()) {
                operation(world, failing);
            }
            check(world, failing);
            EXPECT_EQ(Problems(world.sound), "");
            if (HasFailure()) {
                return;
            }
        }
        FAIL() << "no run was clean";
    }

    static void CheckAllThere(World& world, Vault&) {
        for (const std::string& hash : world.hashes) {
            EXPECT_TRUE(world.sound.Holds(hash)) << hash;
        }
    }

    static void CheckTarget(World& world, const std::string& expected) {
        EXPECT_TRUE(ReadFile(world.folder.File("target")) == expected);
    }

    static inline std::unique_ptr<Sources> sources_;
    MeddlingLayer layer_;
    int calls_ = 0;
    std::string failed_;
};

INSTANTIATE_TEST_SUITE_P(OnceAndForGood,
                         FaultTest,
                         testing::Values(Fault{0, false, EIO},
                                         Fault{0, false, ENOSPC},
                                         Fault{0, true, EIO}));

TEST_P(FaultTest, Adding) {
    Run(
        [](World& world, Vault& vault) {
            for (const std::string& path : world.paths) {
                vault.Add(path);
            }
        },
        CheckAllThere);
}

TEST_P(FaultTest, AddingABatch) {
    Run(
        [](World& world, Vault& vault) {
            Batch batch(vault);
            for (const std::string& path : world.paths) {
                batch.Add(path);
            }
            batch.Commit();
        },
        CheckAllThere);
}

TEST_P(FaultTest, AddingADelivery) {
    Run(
        [](World& world, Vault& vault) {
            Delivery delivery(vault);
            for (const std::string& path : world.paths) {
                SourceFile source(vault.Files(), path);
                delivery.Add(source, path);
            }
            delivery.Commit();
        },
        CheckAllThere);
}

TEST_P(FaultTest, AddingTheFirstFileOfAVault) {
    Run(
        [](World& world, Vault& vault) {
            Vault fresh(world.folder.File("a/b/fresh"), vault.Files());
            fresh.Add(world.paths[0]);
            Vault batched(world.folder.File("c/batched"), vault.Files());
            Batch batch(batched);
            batch.Add(world.paths[0]);
            batch.Commit();
        },
        [](World& world, Vault&) {
            for (const char* name : {"a/b/fresh", "c/batched"}) {
                Vault vault(world.folder.File(name));
                EXPECT_EQ(Problems(vault), "");
                EXPECT_TRUE(vault.Holds(world.hashes[0]));
            }
        });
}

TEST_P(FaultTest, Retrieving) {
    Run(
        [this](World& world, Vault& vault) {
            for (const Stored& stored : world.known) {
                const std::string target = world.folder.File("target");
                const std::string before = ReadFile(target);
                try {
                    vault.Retrieve(
                        stored.hash, target, {.overwrite = true, .flush = true, .modified = 1});
                } catch (const std::exception&) {
                    // Flushing the folder is what follows the rename.
                    if (failed_ != "FlushFolder" && failed_ != "OpenFolder") {
                        EXPECT_TRUE(ReadFile(target) == before);
                    }
                    throw;
                }
            }
        },
        [](World& world, Vault&) { CheckTarget(world, Noise(kBlock + 5, 7)); });
}

TEST_P(FaultTest, RetrievingBesideOtherFiles) {
    Run(
        [](World& world, Vault& vault) {
            // A new file, then one that is equal.
            vault.Retrieve(world.known[0].hash, world.folder.File("new"), {.modified = 1});
            vault.Retrieve(world.known[0].hash, world.folder.File("new"), {.modified = 1});
        },
        [](World& world, Vault&) {
            EXPECT_TRUE(ReadFile(world.folder.File("new")) == Deck(4000));
            CheckTarget(world, "mine");
        });
}

TEST_P(FaultTest, ReadingAndVerifying) {
    Run(
        [](World& world, Vault& vault) {
            for (const Stored& stored : world.known) {
                const Finding finding = vault.Verify(stored.hash);
                if (finding.state != Finding::State::Sound) {
                    EXPECT_EQ(finding.state, Finding::State::Unreadable);
                    throw UDMStoreException(finding.problem);
                }
                (void)vault.ReadText(stored.hash, 5000);
                (void)vault.ReadText(stored.hash, 100);
            }
        },
        [](World& world, Vault& vault) {
            EXPECT_TRUE(vault.ReadText(world.known[0].hash, 5000) == Deck(4000));
        });
}

TEST_P(FaultTest, RemovingAndListing) {
    Run(
        [](World& world, Vault& vault) {
            vault.List([](const Entry& entry) { EXPECT_FALSE(entry.hash.empty()); });
            vault.RemoveStaleTemporaries();
            Stored stored = world.sound.Add(world.paths[0]);
            vault.Remove(stored.hash);
        },
        [](World& world, Vault&) {
            std::size_t count = 0;
            world.sound.List([&](const Entry&) { ++count; });
            EXPECT_EQ(count, world.known.size());
        });
}

}  // namespace
}  // namespace kxudm::vault
