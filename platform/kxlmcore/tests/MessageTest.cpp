#include <gmock/gmock.h>
#include <kxlmcore/Message.h>
#include <kxlmcore/QuestionDialog.h>

namespace {

using testing::ElementsAre;

TEST(Message, KeepsTypeAndText) {
    const kxlm::Message message(7, kxString("a\0b", 3));
    EXPECT_EQ(message.GetType(), 7u);
    EXPECT_EQ(message.GetMessage(), kxString("a\0b", 3));
}

TEST(Message, TypesAscendWithTheirWeight) {
    EXPECT_EQ(kxlm::LM_MSG_DEBUG, 0u);
    EXPECT_EQ(kxlm::LM_MSG_INFO, 1u);
    EXPECT_EQ(kxlm::LM_MSG_WARNING, 2u);
    EXPECT_EQ(kxlm::LM_MSG_ERROR, 3u);
    EXPECT_EQ(kxlm::LM_MSG_FATAL, 4u);
}

TEST(QuestionDialog, KeepsItsTexts) {
    const kxlm::QuestionDialog dialog("title", "question?", {"Yes", "No"});
    EXPECT_EQ(dialog.GetTitle(), "title");
    EXPECT_EQ(dialog.GetQuestion(), "question?");
    EXPECT_THAT(dialog.GetOptions(), ElementsAre("Yes", "No"));
}

}  // namespace
