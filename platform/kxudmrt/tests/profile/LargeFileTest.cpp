// A file that 32 bits can't count, through everything that a document goes through.
#include <fstream>

#include "Files.h"

namespace kxudm::test {
namespace {

using testing::ElementsAre;

// Where holes of a file are read fastest.
std::string FastPlace() {
    const std::string shared = "/dev/shm";
    return std::filesystem::exists(shared) ? shared
                                           : std::filesystem::temp_directory_path().string();
}

class LargeFile : public Files {
  protected:
    const vault::Folder place{FastPlace()};
};

TEST_F(LargeFile, OfFiveGibibytesIsKeptAndFoundEqualToItsLastByte) {
    constexpr std::uintmax_t size = std::uintmax_t{5} << 30;
    const std::string path = place.Write("big.bin", "begin");
    std::filesystem::resize_file(path, size - 3);  // takes no place on the disk
    std::ofstream(path, std::ios::app | std::ios::binary) << "end";
    const UDMItemHandle part = Part();
    AddFile(ann, part, path);
    const UDMItemHandle one = Publish(ann, part);
    EXPECT_EQ(Documents(ann, one).at(0).GetSize(), 2147483647);
    EXPECT_LT(std::filesystem::file_size(StoredPath()), size / 100);
    // Where an equal file lies, retrieval reads all of it and leaves it alone.
    EXPECT_THAT(Retrieve(one, place.Path()), ElementsAre(path));
}

}  // namespace
}  // namespace kxudm::test
