#include <gtest/gtest.h>
#include <kxlmosa/osaFileInfo.h>

namespace {

struct Parts {
    const char* path;
    const char* directory;
    const char* name;
    const char* extension;
};

void PrintTo(const Parts& parts, std::ostream* out) {
    *out << parts.path;
}

class osaFileInfoParts : public testing::TestWithParam<Parts> {};

TEST_P(osaFileInfoParts, AreFoundInTheText) {
    const osaFileInfo info(GetParam().path);
    EXPECT_EQ(info.GetPath(), GetParam().directory);
    EXPECT_EQ(info.GetBaseName(), GetParam().name);
    EXPECT_EQ(info.GetFileExtension(), GetParam().extension);
}

INSTANTIATE_TEST_SUITE_P(Paths,
                         osaFileInfoParts,
                         testing::Values(Parts{"/data/steel.ldb", "/data", "steel", "ldb"},
                                         Parts{"/data/a.b.ldb", "/data", "a.b", "ldb"},
                                         Parts{"/data.d/steel", "/data.d", "steel", ""},
                                         Parts{"/data/steel.", "/data", "steel", ""},
                                         Parts{"/data/.ldb", "/data", ".ldb", ""},
                                         Parts{"/data/.a.ldb", "/data", ".a", "ldb"},
                                         Parts{"/data/..", "/data", "..", ""},
                                         Parts{"/data/", "/data", "", ""},
                                         Parts{"/data//x.y", "/data", "x", "y"},
                                         Parts{"data/x.LDB", "data", "x", "LDB"},
                                         Parts{"x.ldb", ".", "x", "ldb"},
                                         Parts{"/x", "/", "x", ""},
                                         Parts{"/", "/", "", ""},
                                         Parts{"//", "/", "", ""},
                                         Parts{".", ".", ".", ""},
                                         Parts{"", ".", "", ""},
                                         Parts{"C:\\a\\b.ldb", ".", "C:\\a\\b", "ldb"},
                                         Parts{"/d/\xff.\xfe", "/d", "\xff", "\xfe"}));

TEST(osaFileInfo, KeepsNulBytesOfAName) {
    const osaFileInfo info(kxString("/d/a\0b.c\0d", 10));
    EXPECT_EQ(info.GetBaseName(), kxString("a\0b", 3));
    EXPECT_EQ(info.GetFileExtension(), kxString("c\0d", 3));
}

}  // namespace
