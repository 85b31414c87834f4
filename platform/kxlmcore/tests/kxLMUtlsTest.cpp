#include <gtest/gtest.h>
#include <kxlmcore/iFileMgr.h>
#include <kxlmcore/kxLMUtls.h>
#include <pwd.h>
#include <stdlib.h>
#include <unistd.h>

#include <optional>

namespace {

class Recorder : public kxlm::iFileMgr {
  public:
    void LogMessage(unsigned int type, const kxString& text) override {
        _type = type;
        _text = text;
    }
    unsigned int _type = 0;
    kxString _text;
};

// Sets HOME, or removes it, for one test.
class Home {
  public:
    explicit Home(const char* value) {
        if (const char* before = ::getenv("HOME")) {
            _before = before;
        }
        Set(value);
    }
    ~Home() { Set(_before ? _before->c_str() : nullptr); }
    Home(const Home&) = delete;
    Home& operator=(const Home&) = delete;

  private:
    static void Set(const char* value) {
        value != nullptr ? ::setenv("HOME", value, 1) : ::unsetenv("HOME");
    }
    std::optional<std::string> _before;
};

TEST(kxLMUtls, HasNoFileManagerUntilTheHostSetsOne) {
    EXPECT_EQ(kxLMUtls::GetFileMgr(), nullptr);
    Recorder recorder;
    kxLMUtls::SetFileMgr(&recorder);
    ASSERT_EQ(kxLMUtls::GetFileMgr(), &recorder);
    kxLMUtls::GetFileMgr()->LogMessage(3, "broken");
    EXPECT_EQ(recorder._type, 3u);
    EXPECT_EQ(recorder._text, "broken");
    kxLMUtls::SetFileMgr(nullptr);
    EXPECT_EQ(kxLMUtls::GetFileMgr(), nullptr);
}

TEST(kxLMUtls, UserDirectoryIsHome) {
    const Home home("/somewhere/\xff");
    EXPECT_EQ(kxLMUtls::GetUserDirectory(), "/somewhere/\xff");
}

TEST(kxLMUtls, UserDirectoryWithoutHomeComesFromTheUserDatabase) {
    const passwd* entry = ::getpwuid(::getuid());
    const kxString expected = entry != nullptr ? entry->pw_dir : "";
    {
        const Home unset(nullptr);
        EXPECT_EQ(kxLMUtls::GetUserDirectory(), expected);
    }
    const Home empty("");
    EXPECT_EQ(kxLMUtls::GetUserDirectory(), expected);
}

}  // namespace
