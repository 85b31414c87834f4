#include <gtest/gtest.h>

#include <vector>

#include "Support.h"
#include "vault/SideHash.h"

namespace kxudm::vault {
namespace {

std::string HashOf(const std::string& bytes) {
    Sha256 hash;
    hash.Update(bytes.data(), bytes.size());
    return hash.Finish();
}

TEST(SideHash, AnswersTheSameWithinAndBeside) {
    const std::string bytes = Noise(3'000'000);
    for (const bool beside : {false, true}) {
        SideHash hash;
        hash.Begin();
        if (beside) {
            hash.GoBeside();
        }
        std::vector<char> blocks[2] = {std::vector<char>(100'000), std::vector<char>(100'000)};
        for (std::size_t i = 0; i < 30; ++i) {
            std::vector<char>& block = blocks[i % 2];
            std::copy_n(
                bytes.begin() + static_cast<std::ptrdiff_t>(i * 100'000), 100'000, block.begin());
            hash.Update(block.data(), block.size());
        }
        EXPECT_EQ(hash.Finish(), HashOf(bytes)) << beside;
    }
}

TEST(SideHash, MayGoBesideInTheMiddle) {
    SideHash hash;
    hash.Begin();
    hash.Update("ab", 2);
    hash.GoBeside();
    hash.GoBeside();
    hash.Update("cd", 2);
    EXPECT_EQ(hash.Finish(), HashOf("abcd"));
}

TEST(SideHash, BeginsAnewAfterItsEndAndAfterBeingLeft) {
    SideHash hash;
    for (int i = 0; i < 3; ++i) {
        hash.Begin();
        hash.GoBeside();
        hash.Update("left", 4);
        hash.Stop();
        hash.Begin();
        hash.Update("ab", 2);
        EXPECT_EQ(hash.Finish(), HashOf("ab"));
        hash.GoBeside();
        hash.Update("cd", 2);
        hash.Update("", 0);
        EXPECT_EQ(hash.Finish(), HashOf("cd"));
    }
}

TEST(SideHash, EndsWithItsObject) {
    const std::string bytes = Noise(1'000'000);
    for (int i = 0; i < 20; ++i) {
        SideHash hash;
        hash.GoBeside();
        hash.Update(bytes.data(), bytes.size());
    }
}

}  // namespace
}  // namespace kxudm::vault
