#include <gmock/gmock.h>
#include <kxsigslot/kxSignal.h>
#include <kxutl/kxString.h>

#include <stdexcept>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Recorder : public kxListener<single_threaded> {
  public:
    void OnNumber(int number) { _numbers.push_back(number); }
    void OnOtherNumber(int number) { _numbers.push_back(-number); }
    bool OnNumberWithResult(int number) const { return number > 0; }
    void OnText(const kxString& text) { _texts.push_back(&text); }
    void OnPair(const kxString& text, int* pointer) {
        _texts.push_back(&text);
        _pointers.push_back(pointer);
    }
    void Throw(int) { throw std::runtime_error("listener failed"); }

    std::vector<int> _numbers;
    std::vector<const kxString*> _texts;
    std::vector<int*> _pointers;
};

class DerivedRecorder : public Recorder {};

TEST(kxiSignal1, IsEmptyUntilSomebodyConnects) {
    kxiSignal1<int> signal;
    signal.raise(1);
    EXPECT_TRUE(signal.IsEmpty());
    EXPECT_EQ(sizeof(signal), sizeof(std::shared_ptr<int>));
    Recorder recorder;
    EXPECT_FALSE(signal.disconnect(&recorder));
    EXPECT_FALSE(signal.disconnect(&recorder, &Recorder::OnNumber));
    signal.unblock();
    EXPECT_TRUE(signal.IsEmpty());
    signal.connect(&recorder, &Recorder::OnNumber);
    EXPECT_FALSE(signal.IsEmpty());
}

TEST(kxiSignal1, CallsConnectionsInTheirOrder) {
    kxiSignal1<int> signal;
    Recorder recorder;
    signal.connect(&recorder, &Recorder::OnOtherNumber);
    signal.connect(&recorder, &Recorder::OnNumber);
    signal.connect(&recorder, &Recorder::OnOtherNumber);
    signal.raise(7);
    EXPECT_THAT(recorder._numbers, ElementsAre(-7, 7, -7));
}

TEST(kxiSignal1, TakesMethodsWithResultAndOfBaseClasses) {
    kxiSignal1<int> signal;
    DerivedRecorder recorder;
    signal.connect(&recorder, &Recorder::OnNumberWithResult);
    signal.connect(&recorder, &Recorder::OnNumber);
    signal.raise(3);
    EXPECT_THAT(recorder._numbers, ElementsAre(3));
}

TEST(kxiSignal1, HandsReferencesThroughWithoutACopy) {
    kxiSignal1<const kxString&> signal;
    Recorder recorder;
    signal.connect(&recorder, &Recorder::OnText);
    const kxString text = "view";
    signal.raise(text);
    EXPECT_THAT(recorder._texts, ElementsAre(&text));
}

TEST(kxiSignal2, HandsBothArgumentsThrough) {
    kxiSignal2<const kxString&, int*> signal;
    Recorder recorder;
    signal.connect(&recorder, &Recorder::OnPair);
    const kxString text = "uid";
    int target = 0;
    signal.raise(text, &target);
    EXPECT_THAT(recorder._texts, ElementsAre(&text));
    EXPECT_THAT(recorder._pointers, ElementsAre(&target));
    EXPECT_TRUE(signal.disconnect(&recorder, &Recorder::OnPair));
    signal.raise(text, nullptr);
    EXPECT_THAT(recorder._pointers, ElementsAre(&target));
}

TEST(kxiSignal1, DisconnectOfAMethodEndsOnlyThatMethodOfThatListener) {
    kxiSignal1<int> signal;
    Recorder first;
    Recorder second;
    for (Recorder* recorder : {&first, &second}) {
        signal.connect(recorder, &Recorder::OnNumber);
        signal.connect(recorder, &Recorder::OnOtherNumber);
        signal.connect(recorder, &Recorder::OnNumber);
    }
    EXPECT_TRUE(signal.disconnect(&first, &Recorder::OnNumber));
    EXPECT_FALSE(signal.disconnect(&first, &Recorder::OnNumber));
    signal.raise(1);
    EXPECT_THAT(first._numbers, ElementsAre(-1));
    EXPECT_THAT(second._numbers, ElementsAre(1, -1, 1));
    EXPECT_EQ(first.GetNumConnections(), 1u);
}

TEST(kxiSignal1, DisconnectOfAListenerEndsAllItsConnections) {
    kxiSignal1<int> signal;
    Recorder first;
    Recorder second;
    signal.connect(&first, &Recorder::OnNumber);
    signal.connect(&second, &Recorder::OnNumber);
    signal.connect(&first, &Recorder::OnOtherNumber);
    EXPECT_TRUE(signal.disconnect(&first));
    EXPECT_FALSE(signal.disconnect(&first));
    EXPECT_FALSE(signal.disconnect(nullptr));
    signal.raise(1);
    EXPECT_THAT(first._numbers, IsEmpty());
    EXPECT_THAT(second._numbers, ElementsAre(1));
    EXPECT_EQ(signal.GetSignal().GetNumConnections(), 1u);
}

TEST(kxiSignal1, ABlockedSignalIsSilentUntilUnblocked) {
    kxiSignal1<int> signal;
    Recorder recorder;
    signal.connect(&recorder, &Recorder::OnNumber);
    signal.block();
    signal.block();
    EXPECT_TRUE(signal.is_blocked());
    signal.raise(1);
    signal.unblock();
    EXPECT_FALSE(signal.is_blocked());
    signal.raise(2);
    EXPECT_THAT(recorder._numbers, ElementsAre(2));
}

TEST(kxiSignal1, ABlockBeforeTheFirstConnectionHolds) {
    kxiSignal1<int> signal;
    Recorder recorder;
    signal.block();
    signal.connect(&recorder, &Recorder::OnNumber);
    signal.raise(1);
    EXPECT_THAT(recorder._numbers, IsEmpty());
}

TEST(kxiSignal1, AnExceptionReachesTheRaiserAndLeavesTheSignalUsable) {
    kxiSignal1<int> signal;
    Recorder recorder;
    signal.connect(&recorder, &Recorder::Throw);
    signal.connect(&recorder, &Recorder::OnNumber);
    EXPECT_THROW(signal.raise(1), std::runtime_error);
    EXPECT_THAT(recorder._numbers, IsEmpty());
    EXPECT_TRUE(signal.disconnect(&recorder, &Recorder::Throw));
    signal.raise(2);
    EXPECT_THAT(recorder._numbers, ElementsAre(2));
}

TEST(kxSignal1, AcceptsConnectionsOfOtherKinds) {
    class Counter : public kxConnection<int> {
      public:
        explicit Counter(int& sum) : kxConnection<int>(nullptr), _sum(sum) {}
        void Call(int number) override { _sum += number; }

      private:
        int& _sum;
    };
    kxiSignal1<int> signal;
    int sum = 0;
    signal.GetSignal().Connect(std::make_unique<Counter>(sum));
    signal.raise(4);
    EXPECT_FALSE(signal.disconnect(nullptr));
    signal.raise(5);
    EXPECT_EQ(sum, 9);
    signal.GetSignal().disconnect_all();
    signal.raise(6);
    EXPECT_EQ(sum, 9);
}

TEST(kxSignal1, ManyListenersAreCalledAndDisconnected) {
    kxiSignal1<int> signal;
    std::vector<std::unique_ptr<Recorder>> recorders;
    for (int i = 0; i < 2000; ++i) {
        recorders.push_back(std::make_unique<Recorder>());
        signal.connect(recorders.back().get(), &Recorder::OnNumber);
    }
    signal.raise(1);
    for (const auto& recorder : recorders) {
        EXPECT_EQ(recorder->_numbers.size(), 1u);
    }
    recorders.clear();
    EXPECT_EQ(signal.GetSignal().GetNumConnections(), 0u);
}

}  // namespace
