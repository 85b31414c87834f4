#include <gtest/gtest.h>
#include <kxutl/kxRuntime.h>

TEST(kxRuntime, IsOneObjectForTheProcess) {
    EXPECT_EQ(&kxRuntime::GetInstance(), &kxRuntime::GetInstance());
}

TEST(kxRuntime, SeparatesPathsBySlash) {
    EXPECT_EQ(kxRuntime::GetInstance().GetPathSeparator(), '/');
}
