#include <gmock/gmock.h>
#include <kxsigslot/kxSignal.h>

#include <functional>
#include <stdexcept>

namespace {

using testing::ElementsAre;

// Writes its name and then does what the test gave it to do.
class Actor : public kxListener<single_threaded> {
  public:
    Actor(char name, std::vector<char>& calls) : _name(name), _calls(calls) {}
    void OnRaised(int number) {
        // A copy, since the action may destroy this object.
        const auto action = _action;
        _calls.push_back(_name);
        if (action) {
            action(number);
        }
    }
    std::function<void(int)> _action;

  private:
    char _name;
    std::vector<char>& _calls;
};

class kxSignalRound : public testing::Test {
  protected:
    void Connect(Actor& actor) { _signal->connect(&actor, &Actor::OnRaised); }

    std::vector<char> _calls;
    std::unique_ptr<kxiSignal1<int>> _signal = std::make_unique<kxiSignal1<int>>();
    Actor _a{'a', _calls};
    Actor _b{'b', _calls};
    Actor _c{'c', _calls};
};

TEST_F(kxSignalRound, RaisingWhileBeingRaisedDoesNothing) {
    _a._action = [&](int number) {
        if (number < 3) {
            _signal->raise(number + 1);
        }
    };
    Connect(_a);
    Connect(_b);
    _signal->raise(1);
    EXPECT_THAT(_calls, ElementsAre('a', 'b'));
    _signal->raise(3);
    EXPECT_THAT(_calls, ElementsAre('a', 'b', 'a', 'b'));
}

TEST_F(kxSignalRound, CallsConnectionsAddedMeanwhile) {
    _a._action = [&](int number) {
        if (number == 1) {
            for (int i = 0; i < 100; ++i) {
                Connect(_b);
            }
        }
    };
    Connect(_a);
    _signal->raise(1);
    EXPECT_EQ(_calls.size(), 101u);
    _calls.clear();
    _signal->raise(2);
    EXPECT_EQ(_calls.size(), 101u);
}

TEST_F(kxSignalRound, DoesNotCallWhatWasDisconnectedMeanwhile) {
    _a._action = [&](int) { EXPECT_TRUE(_signal->disconnect(&_b)); };
    Connect(_a);
    Connect(_b);
    Connect(_c);
    _signal->raise(1);
    EXPECT_THAT(_calls, ElementsAre('a', 'c'));
    EXPECT_EQ(_b.GetNumConnections(), 0u);
    EXPECT_EQ(_signal->GetSignal().GetNumConnections(), 2u);
}

TEST_F(kxSignalRound, AMethodMayDisconnectItself) {
    _a._action = [&](int) { EXPECT_TRUE(_signal->disconnect(&_a, &Actor::OnRaised)); };
    Connect(_a);
    Connect(_b);
    _signal->raise(1);
    _signal->raise(1);
    EXPECT_THAT(_calls, ElementsAre('a', 'b', 'b'));
}

TEST_F(kxSignalRound, AConnectionMadeAgainMeanwhileIsCalledAtTheEnd) {
    _a._action = [&](int) {
        _signal->disconnect(&_b);
        Connect(_b);
    };
    Connect(_a);
    Connect(_b);
    Connect(_c);
    _signal->raise(1);
    EXPECT_THAT(_calls, ElementsAre('a', 'c', 'b'));
}

TEST_F(kxSignalRound, ALaterListenerMayDie) {
    auto dying = std::make_unique<Actor>('d', _calls);
    _a._action = [&](int) { dying.reset(); };
    Connect(_a);
    Connect(*dying);
    Connect(_b);
    _signal->raise(1);
    EXPECT_THAT(_calls, ElementsAre('a', 'b'));
    EXPECT_EQ(_signal->GetSignal().GetNumConnections(), 2u);
}

TEST_F(kxSignalRound, AListenerMayDestroyItself) {
    auto dying = std::make_unique<Actor>('d', _calls);
    dying->_action = [&](int) { dying.reset(); };
    Connect(*dying);
    Connect(_b);
    _signal->raise(1);
    _signal->raise(1);
    EXPECT_THAT(_calls, ElementsAre('d', 'b', 'b'));
}

TEST_F(kxSignalRound, EndsRegularlyWhenTheHolderDiesInIt) {
    _a._action = [&](int) { _signal.reset(); };
    Connect(_a);
    Connect(_b);
    _signal->raise(1);
    EXPECT_THAT(_calls, ElementsAre('a', 'b'));
    EXPECT_EQ(_a.GetNumConnections(), 0u);
    EXPECT_EQ(_b.GetNumConnections(), 0u);
}

TEST_F(kxSignalRound, HolderAndListenerMayBothDieInIt) {
    auto dying = std::make_unique<Actor>('d', _calls);
    dying->_action = [&](int) {
        _signal.reset();
        dying.reset();
    };
    Connect(*dying);
    Connect(_b);
    _signal->raise(1);
    EXPECT_THAT(_calls, ElementsAre('d', 'b'));
}

TEST_F(kxSignalRound, BlockingMeanwhileTakesEffectFromTheNextRoundOn) {
    _a._action = [&](int) { _signal->block(); };
    Connect(_a);
    Connect(_b);
    _signal->raise(1);
    _signal->raise(1);
    EXPECT_THAT(_calls, ElementsAre('a', 'b'));
}

TEST_F(kxSignalRound, CutShortByAnExceptionStillRemovesWhatWasDisconnected) {
    _a._action = [&](int) {
        _signal->disconnect(&_a);
        throw std::runtime_error("stop");
    };
    Connect(_a);
    Connect(_b);
    EXPECT_THROW(_signal->raise(1), std::runtime_error);
    _signal->raise(1);
    EXPECT_THAT(_calls, ElementsAre('a', 'b'));
}

TEST_F(kxSignalRound, OfAnotherSignalMayStartWithinIt) {
    kxiSignal1<int> other;
    other.connect(&_b, &Actor::OnRaised);
    _a._action = [&](int number) { other.raise(number); };
    Connect(_a);
    Connect(_c);
    _signal->raise(1);
    EXPECT_THAT(_calls, ElementsAre('a', 'b', 'c'));
}

}  // namespace
