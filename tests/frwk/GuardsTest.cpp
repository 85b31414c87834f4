#include <kxct/KXCTException.h>

#include <memory>
#include <stdexcept>

#include "frwk/_private/Guards.h"

namespace guarded {

class Operation {
  public:
    explicit Operation(std::shared_ptr<int> value) : _value(std::move(value)) {}

    int Read(const std::string&) {
        KXCT_GUARD(_value);
        return KXCT_TRANSLATED([&] { return *_value; });
    }
    void ReadAs(const bool) {
        constexpr auto function = "void guarded::Operation::ReadAs(const bool)";
        KXCT_GUARD_AS(function, _value);
        kxct::Translated(function, [] { throw std::out_of_range("gone"); });
    }
    template <class Failure>
    static void Fail(const Failure& failure) {
        kxct::Translated("void guarded::Operation::Fail()", [&] { throw failure; });
    }
    int& Reference() {
        return KXCT_TRANSLATED([this]() -> int& { return *_value; });
    }

  private:
    std::shared_ptr<int> _value;
};

template <class Call>
std::string TextOf(Call&& call) {
    try {
        call();
    } catch (const kxct::KXCTException& failure) {
        return failure.what();
    }
    return "no KXCTException";
}

}  // namespace guarded

using guarded::Operation;
using guarded::TextOf;

TEST(NullGuard, NamesOperationSourceFileAndPointer) {
    EXPECT_EQ(TextOf([] { Operation(nullptr).ReadAs(true); }),
              "void __cdecl guarded::Operation::ReadAs(const bool):: tests/frwk/GuardsTest.cpp. "
              "The pointer _value is null!");
}

TEST(NullGuard, TakesTheEnclosingOperationsName) {
    const auto text = TextOf([] { Operation(nullptr).Read(""); });
    EXPECT_THAT(text, testing::StartsWith("int __cdecl guarded::Operation::Read(const class "));
    EXPECT_THAT(text, testing::EndsWith(". The pointer _value is null!"));
}

TEST(NullGuard, LetsAPresentPointerPass) {
    EXPECT_EQ(Operation(std::make_shared<int>(7)).Read(""), 7);
}

TEST(Translation, PutsTheSignatureAndOneBlankBeforeTheCause) {
    EXPECT_EQ(TextOf([] { Operation(std::make_shared<int>(7)).ReadAs(true); }),
              "void __cdecl guarded::Operation::ReadAs(const bool) gone");
}

TEST(Translation, OfATranslatedFailureHoldsBothSignatures) {
    const auto inner = [] { Operation(std::make_shared<int>(7)).ReadAs(true); };
    EXPECT_EQ(TextOf([&] { kxct::Translated("void outer()", inner); }),
              "void __cdecl outer(void) void __cdecl guarded::Operation::ReadAs(const bool) gone");
}

TEST(Translation, LetsOtherThrownTypesPassUnchanged) {
    EXPECT_THROW(Operation::Fail(42), int);
}

TEST(Translation, AnswersWhatTheCallAnswersAlsoAReference) {
    const auto value = std::make_shared<int>(7);
    EXPECT_EQ(&Operation(value).Reference(), value.get());
}
