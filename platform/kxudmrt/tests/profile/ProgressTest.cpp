#include <kxudm/UDMProgress.h>
#include <kxudm/spi/IProgressSource.h>

#include "Library.h"

namespace kxudm::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class Listener : public IUDMProgressListener {
  public:
    bool Advance(const UDMProgress& progress) override {
        heard.push_back(progress.name);
        return goOn;
    }
    void Failed(const kxString& item, const kxString& reason) override {
        failures.push_back(item + ": " + reason);
    }

    Names heard;
    Names failures;
    bool goOn = true;
};

class OnlyAdvance : public IUDMProgressListener {
  public:
    bool Advance(const UDMProgress& /*progress*/) override { return true; }
};

class ProgressScope : public testing::Test {
  protected:
    // What an operation of the session would tell.
    IUDMProgressListener* Told() const {
        return dynamic_cast<const spi::IProgressSource&>(*ann).ProgressListener();
    }

    Library library;
    ProfilePtr ann = library.Open("ann");
    Listener listener;
};

TEST_F(ProgressScope, PassesProgressOnWhileItLives) {
    EXPECT_EQ(Told(), nullptr);
    {
        UDMProgressScope scope(ann, listener);
        ASSERT_NE(Told(), nullptr);
        EXPECT_TRUE(Told()->Advance({.name = "a"}));
        EXPECT_FALSE(scope.WasCancelled());
    }
    EXPECT_EQ(Told(), nullptr);
    EXPECT_THAT(listener.heard, ElementsAre("a"));
}

TEST_F(ProgressScope, RemembersThatTheListenerCancelled) {
    UDMProgressScope scope(ann, listener);
    listener.goOn = false;
    EXPECT_FALSE(Told()->Advance({.name = "a"}));
    listener.goOn = true;
    EXPECT_TRUE(Told()->Advance({.name = "b"}));
    EXPECT_TRUE(scope.WasCancelled());
}

TEST_F(ProgressScope, CountsTheFailuresThatItPassesOn) {
    UDMProgressScope scope(ann, listener);
    EXPECT_EQ(scope.FailureCount(), 0U);
    Told()->Failed("a.inp", "it is gone");
    Told()->Failed("b.inp", "it is a pipe");
    EXPECT_EQ(scope.FailureCount(), 2U);
    EXPECT_THAT(listener.failures, ElementsAre("a.inp: it is gone", "b.inp: it is a pipe"));
}

TEST_F(ProgressScope, HidesTheOneAroundIt) {
    Listener inner;
    UDMProgressScope outerScope(ann, listener);
    {
        UDMProgressScope innerScope(ann, inner);
        Told()->Advance({.name = "a"});
    }
    Told()->Advance({.name = "b"});
    EXPECT_THAT(inner.heard, ElementsAre("a"));
    EXPECT_THAT(listener.heard, ElementsAre("b"));
}

TEST_F(ProgressScope, MayOutliveItsSession) {
    UDMProgressScope scope(ann, listener);
    ProfilePtr closing = ann;
    UDMProfileMgr::DiscardProfile(closing);
    EXPECT_THAT(listener.heard, IsEmpty());
}

TEST_F(ProgressScope, NeedsASession) {
    EXPECT_THAT(Refusal([&] { UDMProgressScope scope(ProfilePtr(), listener); }),
                HasSubstr("null"));
}

TEST_F(ProgressScope, TakesAListenerThatDoesNotCareForFailures) {
    OnlyAdvance careless;
    UDMProgressScope scope(ann, careless);
    Told()->Failed("a.inp", "it is gone");
    EXPECT_EQ(scope.FailureCount(), 1U);
}

}  // namespace
}  // namespace kxudm::test
