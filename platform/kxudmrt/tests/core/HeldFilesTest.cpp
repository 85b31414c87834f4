#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <optional>

#include "../sql/TemporaryFolder.h"
#include "core/HeldFiles.h"

namespace kxudm::core {
namespace {

namespace fs = std::filesystem;

class HeldFilesTest : public testing::Test {
  protected:
    std::string Write(const std::string& name) {
        std::ofstream(folder.File(name)) << name;
        return folder.File(name);
    }
    TemporaryFolder folder;
};

TEST_F(HeldFilesTest, AreThoseThatWereThereUntilTheObjectGoes) {
    const std::string file = Write("a");
    const std::string other = Write("b");
    std::optional<HeldFiles> held;
    held.emplace(std::vector{file, folder.File("none")});
    EXPECT_TRUE(HeldFiles::Have(file));
    EXPECT_FALSE(HeldFiles::Have(other));
    EXPECT_FALSE(HeldFiles::Have(folder.File("none")));
    held.reset();
    EXPECT_FALSE(HeldFiles::Have(file));
}

TEST_F(HeldFilesTest, AreKnownByEveryNameAndByLinks) {
    const std::string file = Write("a");
    fs::create_hard_link(file, folder.File("hard"));
    fs::create_symlink("a", folder.File("soft"));
    const HeldFiles held({file});
    EXPECT_TRUE(HeldFiles::Have(folder.File("hard")));
    EXPECT_TRUE(HeldFiles::Have(folder.File("soft")));
    EXPECT_TRUE(HeldFiles::Have(folder.Path() + "/./a"));
}

TEST_F(HeldFilesTest, CountAsOftenAsTheyAreHeld) {
    const std::string file = Write("a");
    const HeldFiles first({file});
    { const HeldFiles second({file}); }
    EXPECT_TRUE(HeldFiles::Have(file));
}

}  // namespace
}  // namespace kxudm::core
