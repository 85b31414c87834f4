#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/db/OpenSession.h"

namespace kxct {
namespace {

using kxudm::AddFileBuilder;
using namespace mock;
using ::testing::_;
using ::testing::ElementsAre;
using ::testing::InSequence;
using ::testing::Ref;
using ::testing::Return;
using ::testing::StartsWith;
using ::testing::Throw;

TEST(UDMDBCtrl, AddFileFillsTheBuilderAndLetsItGo) {
    OpenSession open;
    std::vector<std::pair<std::string, bool>> added;
    ON_CALL(*open.profile, BeginAddFile(IsHandle("A:1"))).WillByDefault([&](const auto&) {
        return AddFileBuilder(
            [&](const kxString& path, bool external) { added.emplace_back(path, external); });
    });
    auto handle = NewHandle("A:1");
    EXPECT_TRUE(open->AddFile(handle, "/data/a.inp", true));
    EXPECT_TRUE(open->AddFile(handle, "/data/b.inp", false));
    EXPECT_THAT(
        added,
        ElementsAre(std::make_pair("/data/a.inp", true), std::make_pair("/data/b.inp", false)));
}

TEST(UDMDBCtrl, AFileThatCannotBeAddedRaisesAddFilesFailure) {
    OpenSession open;
    ON_CALL(*open.profile, BeginAddFile).WillByDefault([](const auto&) {
        return AddFileBuilder(
            [](const kxString&, bool) { throw std::runtime_error("vault is full"); });
    });
    auto handle = NewHandle("A:1");
    const auto text = FailureOf([&] { open->AddFile(handle, "/data/a.inp", false); });
    EXPECT_THAT(text, StartsWith("bool __cdecl kxct::UDMDBCtrl::AddFile("));
    EXPECT_EQ(text,
              "bool __cdecl kxct::UDMDBCtrl::AddFile(class kxudm::UDMItemHandle &,const class "
              "kxString &,bool) vault is full");
}

TEST(UDMDBCtrl, ReAddFileHandsItsFlagsOnInOrder) {
    OpenSession open;
    auto handle = NewHandle("A:1");
    InSequence order;
    EXPECT_CALL(*open.profile, ReAddFile(IsHandle("A:1"), kxString("/a"), true, false));
    EXPECT_CALL(*open.profile, ReAddFile(IsHandle("A:1"), kxString("/a"), false, true));
    EXPECT_TRUE(open->ReAddFile(handle, "/a", true, false));
    EXPECT_TRUE(open->ReAddFile(handle, "/a", false, true));
}

TEST(UDMDBCtrl, RemoveFileHandsTheNameOn) {
    OpenSession open;
    auto handle = NewHandle("A:1");
    EXPECT_CALL(*open.profile, RemoveFile(IsHandle("A:1"), kxString("a.inp")));
    EXPECT_TRUE(open->RemoveFile(handle, "a.inp"));
}

TEST(UDMDBCtrl, GetDocumentsAlwaysAsksForExternalOnesToo) {
    OpenSession open;
    auto handle = NewHandle("A:1");
    kxStlVector<kxudm::UDMGenericDocument> out;
    EXPECT_CALL(*open.profile, GetDocuments(IsHandle("A:1"), Ref(out), true))
        .WillOnce([](const auto&, kxStlVector<kxudm::UDMGenericDocument>& documents, bool) {
            documents.emplace_back("a.inp", "/v/a", "inp", "2026-01-31T12:00:00Z", 12, true);
        });
    EXPECT_TRUE(open->GetDocuments(handle, out));
    ASSERT_EQ(out.size(), 1U);
    EXPECT_EQ(out.front().GetName(), "a.inp");
}

TEST(UDMDBCtrl, AddFoldersAndFilesGivesTheRuntimesNumber) {
    OpenSession open;
    kxStlMap<kxString, kxString> options;
    options["definition"] = "UDMPart";
    EXPECT_CALL(*open.profile,
                AddFoldersAndFiles(Texts{"/d1", "/d2"}, Texts{"/f1"}, kxString("/Root"), options))
        .WillOnce(Return(-7));
    EXPECT_EQ(open->AddFoldersAndFiles({"/d1", "/d2"}, {"/f1"}, "/Root", options), -7);
}

TEST(UDMDBCtrl, RetrievalByTextPutsTheResultBeforeTheText) {
    OpenSession open;
    Texts files;
    EXPECT_CALL(
        *open.profile,
        RetrieveFilesToPath(IsHandle("A:1"), kxString("/out"), Ref(files), kxString("a.inp")));
    open->RetrieveFilesIntoFolder(NewHandle("A:1"), "/out", kxString("a.inp"), files);
}

TEST(UDMDBCtrl, RetrievalByTextWithoutAResultAsksTheSame) {
    OpenSession open;
    EXPECT_CALL(
        *open.profile,
        RetrieveFilesToPath(IsHandle("A:1"), kxString("/out"), ElementsAre(), kxString("a.inp")));
    open->RetrieveFilesIntoFolder(NewHandle("A:1"), "/out", kxString("a.inp"));
}

TEST(UDMDBCtrl, RetrievalByFlagsHandsThemOnInOrder) {
    OpenSession open;
    Texts files;
    InSequence order;
    EXPECT_CALL(*open.profile,
                RetrieveFilesToFolder(IsHandle("A:1"), kxString("/out"), true, false, Ref(files)));
    EXPECT_CALL(
        *open.profile,
        RetrieveFilesToFolder(IsHandle("A:1"), kxString("/out"), false, true, ElementsAre()));
    open->RetrieveFilesIntoFolder(NewHandle("A:1"), "/out", true, false, files);
    open->RetrieveFilesIntoFolder(NewHandle("A:1"), "/out", false, true);
}

TEST(UDMDBCtrl, RetrievalIntoTheWorkspaceHandsItsFlagsOnInOrder) {
    OpenSession open;
    Texts files;
    InSequence order;
    EXPECT_CALL(*open.profile,
                RetrieveFilesIntoWorkspace(IsHandle("A:1"), true, false, Ref(files)));
    EXPECT_CALL(*open.profile,
                RetrieveFilesIntoWorkspace(IsHandle("A:1"), false, true, ElementsAre()));
    open->RetrieveFilesIntoWorkspace(NewHandle("A:1"), true, false, files);
    open->RetrieveFilesIntoWorkspace(NewHandle("A:1"), false, true);
}

TEST(UDMDBCtrl, ShortRetrievalsFailWithTheSignatureOfTheLongOnes) {
    OpenSession open;
    const std::runtime_error boom("boom");
    ON_CALL(*open.profile, RetrieveFilesToPath).WillByDefault(Throw(boom));
    ON_CALL(*open.profile, RetrieveFilesToFolder).WillByDefault(Throw(boom));
    ON_CALL(*open.profile, RetrieveFilesIntoWorkspace).WillByDefault(Throw(boom));
    const auto handle = NewHandle("A:1");
    const std::string vector =
        "class kxStlVector<class kxString,class std::allocator<class kxString> > &)";
    EXPECT_EQ(
        FailureOf([&] { open->RetrieveFilesIntoFolder(handle, "/out", kxString("a.inp")); }),
        "void __cdecl kxct::UDMDBCtrl::RetrieveFilesIntoFolder(const class kxudm::UDMItemHandle "
        "&,const class kxString &,const class kxString &," +
            vector + " boom");
    EXPECT_EQ(
        FailureOf([&] { open->RetrieveFilesIntoFolder(handle, "/out", true, false); }),
        "void __cdecl kxct::UDMDBCtrl::RetrieveFilesIntoFolder(const class kxudm::UDMItemHandle "
        "&,const class kxString &,const bool &,const bool &," +
            vector + " boom");
    EXPECT_EQ(FailureOf([&] { open->RetrieveFilesIntoWorkspace(handle, true, false); }),
              "void __cdecl kxct::UDMDBCtrl::RetrieveFilesIntoWorkspace(const class "
              "kxudm::UDMItemHandle &,const bool &,const bool &," +
                  vector + " boom");
}

TEST(UDMDBCtrl, TheVaultLiesBelowTheLibrarysBaseDirectory) {
    OpenSession open;
    auto handle = NewHandle("A:1");
    InSequence order;
    EXPECT_CALL(*open.profile, SetVault(IsHandle("A:1"), kxString("/base/second")));
    EXPECT_CALL(*open.profile, SetVault(IsHandle("A:1"), kxString("/base/")));
    EXPECT_CALL(*open.profile, SetVault(IsHandle("A:1"), kxString("/base//x/../y")));
    open->SetVault(handle, "second");
    open->SetVault(handle, "");
    open->SetVault(handle, "/x/../y");
}

TEST(UDMDBCtrl, SetVaultWithoutABaseDirectoryRaisesTheMapsFailure) {
    Parameters params = SessionParameters();
    params.erase("RepositoryBaseDir");
    OpenSession open(params);
    EXPECT_CALL(*open.profile, SetVault(_, _)).Times(0);
    auto handle = NewHandle("A:1");
    try {
        open->SetVault(handle, "second");
        FAIL() << "no exception";
    } catch (const KXCTException&) {
        FAIL() << "translated";
    } catch (const std::out_of_range& failure) {
        EXPECT_STREQ(failure.what(), "invalid map<K, T> key");
    }
}

// Opens the protected operation to the tests below, in a folder of its own.
class TmpFiles : public UDMDBCtrl {
  public:
    using UDMDBCtrl::_CreateFileInTmpDirectory;
    using UDMDBCtrl::UDMDBCtrl;
};

class TmpFolder {
  public:
    TmpFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "kxct-db-XXXXXX").string();
        if (mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("no temporary folder");
        }
        path = name;
    }
    ~TmpFolder() { std::filesystem::remove_all(path.c_str()); }
    TmpFolder(const TmpFolder&) = delete;
    TmpFolder& operator=(const TmpFolder&) = delete;

    kxString path;
};

std::string Content(const kxString& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

struct OpenTmpFiles {
    OpenTmpFiles() {
        ON_CALL(*provider, OpenProfile).WillByDefault(Return(NewProfile()));
        session.emplace(SessionParameters());
    }
    ProviderRegistration provider;
    std::optional<TmpFiles> session;
};

TEST(UDMDBCtrl, ATemporaryFileHoldsTheContentAndALineEnd) {
    TmpFolder folder;
    OpenTmpFiles open;
    const auto path = open.session->_CreateFileInTmpDirectory(folder.path, "a.txt", "hello");
    EXPECT_EQ(path, folder.path + "/a.txt");
    EXPECT_EQ(Content(path), "hello\n");
}

TEST(UDMDBCtrl, ATemporaryFileReplacesTheContentOfAnExistingOne) {
    TmpFolder folder;
    OpenTmpFiles open;
    open.session->_CreateFileInTmpDirectory(folder.path, "a.txt", "a longer text");
    const auto path = open.session->_CreateFileInTmpDirectory(folder.path, "a.txt", "b");
    EXPECT_EQ(Content(path), "b\n");
}

TEST(UDMDBCtrl, ATemporaryFileInAMissingDirectoryIsAnEmptyTextAndOneMessage) {
    TmpFolder folder;
    OpenTmpFiles open;
    ::testing::internal::CaptureStdout();
    const auto path = open.session->_CreateFileInTmpDirectory(folder.path + "/none", "a.txt", "b");
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Unable to open file");
    EXPECT_EQ(path, "");
}

TEST(UDMDBCtrl, ATemporaryFileNeedsNoSession) {
    TmpFolder folder;
    OpenTmpFiles open;
    const auto profile = UDMDBCtrlPeer::TakeProfile(*open.session);
    EXPECT_EQ(open.session->_CreateFileInTmpDirectory(folder.path, "a.txt", ""),
              folder.path + "/a.txt");
}

}  // namespace
}  // namespace kxct
