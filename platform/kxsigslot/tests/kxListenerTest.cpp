#include <gtest/gtest.h>
#include <kxsigslot/kxSignal.h>

#include <optional>

namespace {

class Counter : public kxListener<single_threaded> {
  public:
    void OnNumber(int) { ++_calls; }
    int _calls = 0;
};

TEST(kxListener, DisconnectsItselfWhenItDies) {
    kxiSignal1<int> first;
    kxiSignal1<int> second;
    {
        Counter counter;
        first.connect(&counter, &Counter::OnNumber);
        first.connect(&counter, &Counter::OnNumber);
        second.connect(&counter, &Counter::OnNumber);
        EXPECT_EQ(counter.GetNumConnections(), 3u);
    }
    EXPECT_EQ(first.GetSignal().GetNumConnections(), 0u);
    EXPECT_EQ(second.GetSignal().GetNumConnections(), 0u);
    first.raise(1);
    second.raise(1);
}

TEST(kxListener, OutlivesItsSignals) {
    Counter counter;
    {
        std::optional<kxiSignal1<int>> signal(std::in_place);
        signal->connect(&counter, &Counter::OnNumber);
        signal->connect(&counter, &Counter::OnNumber);
        signal->raise(1);
    }
    EXPECT_EQ(counter._calls, 2);
    EXPECT_EQ(counter.GetNumConnections(), 0u);
}

TEST(kxListener, DisconnectAllEndsItsConnectionsEverywhere) {
    kxiSignal1<int> first;
    kxiSignal1<int> second;
    Counter counter;
    Counter other;
    first.connect(&counter, &Counter::OnNumber);
    second.connect(&counter, &Counter::OnNumber);
    second.connect(&other, &Counter::OnNumber);
    counter.DisconnectAll();
    first.raise(1);
    second.raise(1);
    EXPECT_EQ(counter._calls, 0);
    EXPECT_EQ(other._calls, 1);
    first.connect(&counter, &Counter::OnNumber);
    first.raise(1);
    EXPECT_EQ(counter._calls, 1);
}

TEST(kxListener, ACopyHasNoConnectionsAndAssignmentChangesNone) {
    kxiSignal1<int> signal;
    Counter counter;
    signal.connect(&counter, &Counter::OnNumber);
    Counter copy = counter;
    EXPECT_EQ(copy.GetNumConnections(), 0u);
    counter = copy;
    EXPECT_EQ(counter.GetNumConnections(), 1u);
    signal.raise(1);
    EXPECT_EQ(counter._calls, 1);
    EXPECT_EQ(copy._calls, 0);
}

}  // namespace
