#include <gtest/gtest.h>
#include <kxlmcore/Message.h>
#include <kxlmcore/iLibraryManagerResponder.h>
#include <kxlmcore/iMessageLogger.h>
#include <kxlmcore/iSettings.h>

#include <memory>

namespace {

class Logger : public kxlm::iMessageLogger {
  public:
    explicit Logger(bool& destroyed) : _destroyed(destroyed) {}
    ~Logger() override { _destroyed = true; }
    void LogMessage(const kxlm::Message&, const char*, int, const kxString&) override { _form = 1; }
    void LogMessage(const kxlm::Message&, const char*, int) override { _form = 2; }
    void LogMessage(unsigned int, const kxString&, const char*, int) override { _form = 3; }
    void LogMessage(unsigned int, const kxString&) override { _form = 4; }
    void LogMessage(const kxlm::Message&) override { _form = 5; }
    void LogMessageExtended(const kxString&, kxStlVector<kxString>) override { _form = 6; }

    int _form = 0;

  private:
    bool& _destroyed;
};

class Responder : public kxlm::iLibraryManagerResponder {
  public:
    kxString GetAnswer(const kxString&, kxStlVector<kxString> options) override {
        return options.front();
    }
    kxString GetAnswerExtended(const kxString&,
                               kxStlVector<kxString> options,
                               kxStlVector<kxString>,
                               int first,
                               int) override {
        return options.at(static_cast<std::size_t>(first));
    }
    kxString GetInputText(const kxString& question, kxStlVector<kxString>) override {
        return question;
    }
    int PostQuestionDialog(kxlm::QuestionDialog*) override { return -1; }
};

TEST(iMessageLogger, EachFormReachesItsOverrideThroughTheInterface) {
    bool destroyed = false;
    auto logger = std::make_unique<Logger>(destroyed);
    kxlm::iMessageLogger& base = *logger;
    const kxlm::Message message(1, "m");
    base.LogMessage(message, "f", 1, "extra");
    EXPECT_EQ(logger->_form, 1);
    base.LogMessage(message, "f", 1);
    EXPECT_EQ(logger->_form, 2);
    base.LogMessage(1, "m", "f", 1);
    EXPECT_EQ(logger->_form, 3);
    base.LogMessage(1, "m");
    EXPECT_EQ(logger->_form, 4);
    base.LogMessage(message);
    EXPECT_EQ(logger->_form, 5);
    base.LogMessageExtended("m", {});
    EXPECT_EQ(logger->_form, 6);
    base.Reserved1();
    base.Reserved2();
    base.Reserved3();
    EXPECT_EQ(logger->_form, 6);
    EXPECT_FALSE(base.SupportsNewInterface());
}

TEST(iMessageLogger, IsDestroyedThroughTheInterface) {
    bool destroyed = false;
    std::unique_ptr<kxlm::iMessageLogger> logger = std::make_unique<Logger>(destroyed);
    logger.reset();
    EXPECT_TRUE(destroyed);
}

TEST(iLibraryManagerResponder, AnswersThroughTheInterface) {
    const std::unique_ptr<kxlm::iLibraryManagerResponder> responder = std::make_unique<Responder>();
    EXPECT_EQ(responder->GetAnswer("?", {"a", "b"}), "a");
    EXPECT_EQ(responder->GetAnswerExtended("?", {"a", "b"}, {}, 1, 0), "b");
    EXPECT_EQ(responder->GetInputText("?", {}), "?");
    EXPECT_EQ(responder->PostQuestionDialog(nullptr), -1);
    EXPECT_FALSE(responder->SupportsNewInterface());
}

}  // namespace
