#include <gtest/gtest.h>
#include <kxbrowser/IManager.h>

#include <memory>

namespace {

TEST(CreateUIBrowserManager, GivesAManagerThatKnowsInterpreterAndHome) {
    int standIn = 0;
    auto* interp = reinterpret_cast<Tcl_Interp*>(&standIn);
    const std::unique_ptr<ui::browser::IManager> manager(CreateUIBrowserManager(interp, "/opt/kx"));
    EXPECT_EQ(manager->GetInterp(), interp);
    EXPECT_EQ(manager->GetHome(), "/opt/kx");
}

TEST(CreateUIBrowserManager, WorksWithoutInterpreterAndHome) {
    const std::unique_ptr<ui::browser::IManager> manager(CreateUIBrowserManager(nullptr, ""));
    EXPECT_EQ(manager->GetInterp(), nullptr);
    EXPECT_EQ(manager->GetHome(), "");
}

TEST(CreateUIBrowserManager, MakesANewManagerEachTime) {
    const std::unique_ptr<ui::browser::IManager> first(CreateUIBrowserManager(nullptr, "/a"));
    const std::unique_ptr<ui::browser::IManager> second(CreateUIBrowserManager(nullptr, "/b"));
    EXPECT_NE(first, second);
    EXPECT_EQ(first->GetHome(), "/a");
}

}  // namespace
