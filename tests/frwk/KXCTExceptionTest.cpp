#include <kxct/KXCTException.h>

#include <memory>
#include <stdexcept>
#include <type_traits>

using kxct::KXCTException;
using kxct::ThrowKXCTException;

TEST(KXCTException, KeepsItsText) {
    EXPECT_STREQ(KXCTException(kxString("no such group")).what(), "no such group");
    EXPECT_STREQ(KXCTException("no such group").what(), "no such group");
}

TEST(KXCTException, WithoutATextSaysUnknownException) {
    EXPECT_STREQ(KXCTException(static_cast<const char*>(nullptr)).what(), "Unknown exception");
    EXPECT_STREQ(KXCTException("").what(), "Unknown exception");
    EXPECT_STREQ(KXCTException(kxString()).what(), "Unknown exception");
}

TEST(KXCTException, IsALogicErrorWithoutFurtherMembers) {
    EXPECT_TRUE((std::is_base_of_v<std::logic_error, KXCTException>));
    EXPECT_EQ(sizeof(KXCTException), sizeof(std::logic_error));
}

TEST(KXCTException, ItsTextOutlivesTheTextItWasMadeFrom) {
    auto source = std::make_unique<kxString>("a text that is long enough to need memory");
    const KXCTException failure(*source);
    source->assign("changed");
    source.reset();
    EXPECT_STREQ(failure.what(), "a text that is long enough to need memory");
}

TEST(KXCTException, ACopyOutlivesItsOriginal) {
    auto original = std::make_unique<KXCTException>("a text that is long enough to need memory");
    const KXCTException copy(*original);
    KXCTException assigned("other");
    assigned = *original;
    original.reset();
    EXPECT_STREQ(copy.what(), "a text that is long enough to need memory");
    EXPECT_STREQ(assigned.what(), "a text that is long enough to need memory");
}

TEST(ThrowKXCTException, JoinsPlaceAndMessageWithTwoColons) {
    try {
        ThrowKXCTException("A", "B");
        FAIL() << "nothing was thrown";
    } catch (const KXCTException& failure) {
        EXPECT_STREQ(failure.what(), "A:: B");
    }
}

TEST(ThrowKXCTException, WhatItThrowsIsCaughtAsStandardException) {
    EXPECT_THROW(ThrowKXCTException("A", "B"), std::logic_error);
    EXPECT_THROW(ThrowKXCTException("A", "B"), std::exception);
}
