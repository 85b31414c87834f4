// What becomes of the files of a library that is open in this process where a user names them.
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Files.h"
#include "ImportTree.h"

namespace kxudm::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// Whether another process would find the file locked.
bool IsLocked(const std::string& path) {
    const pid_t other = fork();
    if (other == 0) {
        const int file = open(path.c_str(), O_RDWR);
        struct flock lock {};
        lock.l_type = F_WRLCK;
        lock.l_whence = SEEK_SET;
        const bool asked = file >= 0 && fcntl(file, F_GETLK, &lock) == 0;
        _exit(!asked ? 2 : lock.l_type == F_UNLCK ? 0 : 1);
    }
    int status = 0;
    EXPECT_EQ(waitpid(other, &status, 0), other);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) < 2) << path;
    return WEXITSTATUS(status) == 1;
}

class OpenLibraryFiles : public Files {
  protected:
    Names Own() const { return {library.File(), library.File() + "-shm", library.File() + "-wal"}; }
    bool HasItsLocks() const {
        return IsLocked(library.File()) && IsLocked(library.File() + "-shm");
    }
};

TEST_F(OpenLibraryFiles, F15_AreNeitherAddedNorExternalAndKeepTheirLocks) {
    const UDMItemHandle part = Part();
    ASSERT_TRUE(HasItsLocks());
    for (const std::string& file : Own()) {
        for (const bool external : {false, true}) {
            EXPECT_THAT(Refusal([&] { AddFile(ann, part, file, external); }),
                        HasSubstr("part of a library that is open"))
                << file;
        }
    }
    EXPECT_THAT(DocumentNames(ann, part), IsEmpty());
    EXPECT_TRUE(HasItsLocks());
}

TEST_F(OpenLibraryFiles, F15_AreKnownByLinksToThem) {
    const UDMItemHandle part = Part();
    std::filesystem::create_symlink(library.File(), sources.File("soft"));
    std::filesystem::create_hard_link(library.File(), sources.File("hard"));
    for (const char* name : {"soft", "hard"}) {
        EXPECT_THAT(Refusal([&] { AddFile(ann, part, sources.File(name)); }),
                    HasSubstr("part of a library that is open"));
    }
    EXPECT_TRUE(HasItsLocks());
}

TEST_F(OpenLibraryFiles, F15_AreLeftOutOfAnImportOfTheirFolder) {
    std::ofstream(library.BaseDirectory() + "/notes") << "n";
    ImportListener listener;
    const UDMProgressScope scope(ann, listener);
    EXPECT_EQ(ann->AddFoldersAndFiles({library.BaseDirectory()}, {}, "", {{"definition", "Part"}}),
              1);
    EXPECT_EQ(listener.failed, Own());
    EXPECT_TRUE(HasItsLocks());
}

TEST_F(OpenLibraryFiles, F15_AreNotReplacedByARetrieval) {
    const UDMItemHandle part = Part();
    Put(part, "Lib.ldb", "no library");
    Put(part, "a", "1");
    EXPECT_THAT(Refusal([&] { Retrieve(part, library.BaseDirectory(), true); }),
                HasSubstr("part of a library that is open"));
    EXPECT_FALSE(Exists(library.BaseDirectory() + "/a"));
    EXPECT_THAT(Contents(part), ElementsAre("Lib.ldb=no library", "a=1"));
    EXPECT_TRUE(HasItsLocks());
}

TEST_F(OpenLibraryFiles, F15_AreNeitherReadNorReplacedAsAnArchive) {
    const UDMItemHandle part = Part();
    ann->PersistEntity(part, "", false, true, true);
    EXPECT_THAT(Refusal([&] { ann->Import(library.File()); }),
                HasSubstr("part of a library that is open"));
    EXPECT_THAT(Refusal([&] { ann->Export(library.File(), {}, 2); }),
                HasSubstr("part of a library that is open"));
    EXPECT_TRUE(HasItsLocks());
    EXPECT_NO_THROW(Part("after"));
}

TEST_F(OpenLibraryFiles, F15_MayBeTakenInOnceTheirLibraryIsClosed) {
    Parameters other = library.Params();
    other["RepositoryName"] = "Other";
    ProfilePtr second = UDMProfileMgr::GetProfile(other);
    const std::string file = library.BaseDirectory() + "/Other.ldb";
    const UDMItemHandle part = Part();
    EXPECT_THAT(Refusal([&] { AddFile(ann, part, file); }),
                HasSubstr("part of a library that is open"));
    UDMProfileMgr::DiscardProfile(second);
    AddFile(ann, part, file);
    EXPECT_THAT(DocumentNames(ann, part), ElementsAre("Other.ldb"));
}

}  // namespace
}  // namespace kxudm::test
