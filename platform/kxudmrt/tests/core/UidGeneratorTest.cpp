#include <gtest/gtest.h>

#include <set>

#include "core/UidGenerator.h"

namespace {

class SetClock : public kxudm::core::Clock {
  public:
    std::int64_t now = 1000000000LL;
    std::int64_t NowMicroseconds() override { return now; }
};

class SetRandom : public kxudm::core::Random {
  public:
    unsigned char byte = 0;
    void Fill(unsigned char* bytes, std::size_t count) override {
        for (std::size_t i = 0; i < count; ++i) {
            bytes[i] = byte;
        }
    }
};

}  // namespace

TEST(UidGenerator, AUidIs26CharactersOfCrockfordsBase32) {
    const kxString uid = kxudm::core::ProcessUidGenerator().Next();
    EXPECT_EQ(uid.size(), 26u);
    EXPECT_EQ(uid.find_first_not_of("0123456789ABCDEFGHJKMNPQRSTVWXYZ"), kxString::npos);
}

TEST(UidGenerator, AKnownTimeAndKnownBitsGiveAKnownUid) {
    SetClock clock;
    SetRandom random;
    clock.now = 1;
    EXPECT_EQ(kxudm::core::UidGenerator(clock, random).Next(), "00000000000000000000000000");
    clock.now = 32 * 1000;  // the 48-bit time ends with bit 80, a boundary of five bits
    EXPECT_EQ(kxudm::core::UidGenerator(clock, random).Next(), "00000000100000000000000000");
    random.byte = 0xFF;
    clock.now = 1;
    EXPECT_EQ(kxudm::core::UidGenerator(clock, random).Next(), "0000000000FZZZZZZZZZZZZZZZ");
}

TEST(UidGenerator, UidsOfOneMillisecondAscend) {
    SetClock clock;
    SetRandom random;
    random.byte = 0xFF;
    kxudm::core::UidGenerator generator(clock, random);
    kxString last = generator.Next();
    for (int i = 0; i < 1000; ++i) {
        const kxString next = generator.Next();
        EXPECT_LT(last, next);
        last = next;
    }
}

TEST(UidGenerator, UidsAscendThoughTheClockStepsBack) {
    SetClock clock;
    SetRandom random;
    kxudm::core::UidGenerator generator(clock, random);
    const kxString first = generator.Next();
    clock.now -= 60 * 1000000LL;
    EXPECT_LT(first, generator.Next());
}

TEST(UidGenerator, ManyUidsAreAllDifferent) {
    std::set<kxString> uids;
    for (int i = 0; i < 10000; ++i) {
        uids.insert(kxudm::core::ProcessUidGenerator().Next());
    }
    EXPECT_EQ(uids.size(), 10000u);
}
