#include <gtest/gtest.h>
#include <kxinterp/kxInterp.h>

namespace {

class StubInterp : public kxInterp {
  public:
    bool invoke(const kxString&, kxStlVector<kxVariant>&, kxVariant&) override { return true; }
    bool evaluate(const kxString&, kxStlVector<kxVariant>&, kxVariant&) override { return true; }
};

class StubCreator : public kxIInterpCreator {
  public:
    explicit StubCreator(kxInterp* interp) : _interp(interp) {}
    kxInterp* GetInterp() override { return _interp; }

  private:
    kxInterp* _interp;
};

TEST(kxInterp, OfAnUnknownKindIsNull) {
    EXPECT_EQ(kxInterp::Get("no such kind"), nullptr);
}

TEST(kxInterp, IsFoundByTheCreatorRegisteredLast) {
    static StubInterp first;
    static StubInterp second;
    static StubCreator firstCreator(&first);
    static StubCreator secondCreator(&second);
    static StubCreator emptyCreator(nullptr);
    kxInterp::RegisterCreator("stub", &firstCreator);
    EXPECT_EQ(kxInterp::Get("stub"), &first);
    kxInterp::RegisterCreator("stub", &secondCreator);
    EXPECT_EQ(kxInterp::Get("stub"), &second);
    kxInterp::RegisterCreator("stub", &emptyCreator);
    EXPECT_EQ(kxInterp::Get("stub"), nullptr);
}

TEST(kxInterp, ANullCreatorLeadsNowhere) {
    kxInterp::RegisterCreator("null", nullptr);
    EXPECT_EQ(kxInterp::Get("null"), nullptr);
}

TEST(kxInterp, HasNoRawInterpreterAndNoErrorAtFirst) {
    const StubInterp interp;
    EXPECT_EQ(interp.interp, nullptr);
    EXPECT_EQ(interp.LastError(), "");
    EXPECT_EQ(interp.LastErrorTrace(), "");
}

}  // namespace
