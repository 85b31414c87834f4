// Every operation that asks the session, in one table: what it says without a session, and what it
// makes of a failure of the runtime.
#include <gtest/gtest.h>
#include <kxctinterfaces/Item.h>
#include <kxctinterfaces/Metadata.h>

#include <functional>

#include "tests/db/OpenSession.h"
#include "tests/mock/FakeDefinitions.h"

namespace kxct {
namespace {

using kxudm::UDMItemHandle;
using namespace mock;
using ::testing::_;
using ::testing::Throw;

const std::string H = "class kxudm::UDMItemHandle &";
const std::string CH = "const class kxudm::UDMItemHandle &";
const std::string S = "class kxString &";
const std::string CS = "const class kxString &";
const std::string TEXTS = "class kxStlVector<class kxString,class std::allocator<class kxString> >";
const std::string HANDLES =
    "class kxStlVector<class kxudm::UDMItemHandle,class std::allocator<class "
    "kxudm::UDMItemHandle> >";
const std::string METADATA =
    "class kxStlVector<struct kxct::Metadata,class std::allocator<struct kxct::Metadata> >";
const std::string TEXT_MAP =
    "class kxStlMap<class kxString,class kxString,struct std::less<class kxString>,class "
    "std::allocator<struct std::pair<class kxString const ,class kxString> > >";

std::string Signature(const std::string& result,
                      const std::string& name,
                      const std::vector<std::string>& arguments,
                      const std::string& tail = "") {
    std::string list;
    for (const auto& argument : arguments) {
        list += (list.empty() ? "" : ",") + argument;
    }
    return result + " __cdecl kxct::UDMDBCtrl::" + name + "(" + (list.empty() ? "void" : list) +
           ")" + tail;
}

// Arguments for all calls of the table.
struct Arguments {
    UDMItemHandle h = NewHandle("A:1");
    UDMItemHandle h2 = NewHandle("B:1");
    kxString s = "text";
    Handles handles;
    Texts texts;
    kxStlVector<kxudm::UDMGenericDocument> documents;
    kxStlVector<Metadata> metadata;
    kxStlMap<kxString, kxString> map;
    kxudm::UDMQuerySettingHandle settings;
};

struct Operation {
    std::string signature;
    std::function<void(UDMDBCtrl&, Arguments&)> call;
};

std::vector<Operation> EntityOperations() {
    return {
        {Signature("class kxudm::UDMItemHandle", "CreateEntity", {CS, CS}),
         [](auto& d, auto& a) { d.CreateEntity(a.s, a.s); }},
        {Signature("class kxudm::UDMItemHandle", "CreateAndAdd", {CS, CS, CH, CS}),
         [](auto& d, auto& a) { d.CreateAndAdd(a.s, a.s, a.h, a.s); }},
        {"void __cdecl kxct::UDMDBCtrl::AddChild(const class kxudm::UDMItemHandle &,const class "
         "kxudm::UDMItemHandle &,const class kxString &)",
         [](auto& d, auto& a) { d.AddChild(a.h, a.h2, a.s); }},
        {Signature("void", "RemoveChildFromParent", {H, H}),
         [](auto& d, auto& a) { d.RemoveChildFromParent(a.h, a.h2); }},
        {Signature("void", "DeleteRootEntity", {H}),
         [](auto& d, auto& a) { d.DeleteRootEntity(a.h); }},
        {Signature("void", "MoveContent", {CH, CH}),
         [](auto& d, auto& a) { d.MoveContent(a.h, a.h2); }},
        {Signature("void", "GetChildren", {HANDLES + " &", CH, CS, CS}),
         [](auto& d, auto& a) { d.GetChildren(a.handles, a.h, a.s, a.s); }},
        {Signature("unsigned __int64", "GetNChildren", {CH, CS, CS}, " const"),
         [](auto& d, auto& a) { d.GetNChildren(a.h, a.s, a.s); }},
        {"void __cdecl kxct::UDMDBCtrl::GetParents(class kxStlVector<class "
         "kxudm::UDMItemHandle,class std::allocator<class kxudm::UDMItemHandle> > &,const class "
         "kxudm::UDMItemHandle &,const class kxString &,const bool)",
         [](auto& d, auto& a) { d.GetParents(a.handles, a.h, a.s, true); }},
        {Signature("void", "GetParents", {HANDLES + " &", CH, "const bool"}),
         [](auto& d, auto& a) { d.GetParents(a.handles, a.h, true); }},
        {Signature("class kxudm::UDMItemHandle", "GetUDMItemHandle", {CS}),
         [](auto& d, auto& a) { d.GetUDMItemHandle(a.s); }},
        {Signature("void", "SetDisplayName", {CS, CH}, " const"),
         [](auto& d, auto& a) { d.SetDisplayName(a.s, a.h); }},
        {Signature("void", "SetMetaData", {CH, CS, "const class kxVariant &"}),
         [](auto& d, auto& a) { d.SetMetaData(a.h, a.s, kxVariant(1)); }},
        {Signature("void", "DumpSession", {}), [](auto& d, auto&) { d.DumpSession(); }},
    };
}

std::vector<Operation> FolderOperations() {
    return {
        {Signature("void", "CreateFolder", {H, CS}),
         [](auto& d, auto& a) { d.CreateFolder(a.h, a.s); }},
        {Signature("void", "GetFolder", {H, CS, "bool"}),
         [](auto& d, auto& a) { d.GetFolder(a.h, a.s, true); }},
        {Signature("void", "GetOrCreateFolder", {H, CS, "bool"}),
         [](auto& d, auto& a) { d.GetOrCreateFolder(a.h, a.s, true); }},
        {Signature("void", "FindFolderFullPath", {S, CH}),
         [](auto& d, auto& a) { d.FindFolderFullPath(a.s, a.h); }},
        {Signature("void", "AddClassification", {H, H}),
         [](auto& d, auto& a) { d.AddClassification(a.h, a.h2); }},
        {Signature("void", "RemoveClassification", {H, H}),
         [](auto& d, auto& a) { d.RemoveClassification(a.h, a.h2); }},
        {Signature("void", "SetIsMaster", {CH, "bool"}),
         [](auto& d, auto& a) { d.SetIsMaster(a.h, true); }},
        {Signature("void", "GetRootClassifications", {HANDLES + " &", CS}),
         [](auto& d, auto& a) { d.GetRootClassifications(a.handles, a.s); }},
        {Signature("void", "GetOtherClassifications", {HANDLES + " &", CS}),
         [](auto& d, auto& a) { d.GetOtherClassifications(a.handles, a.s); }},
    };
}

std::vector<Operation> FileOperations() {
    return {
        {Signature("bool", "AddFile", {H, CS, "bool"}),
         [](auto& d, auto& a) { d.AddFile(a.h, a.s, true); }},
        {Signature("bool", "ReAddFile", {H, CS, "bool", "bool"}),
         [](auto& d, auto& a) { d.ReAddFile(a.h, a.s, true, true); }},
        {Signature("bool", "RemoveFile", {H, CS}),
         [](auto& d, auto& a) { d.RemoveFile(a.h, a.s); }},
        {Signature("bool",
                   "GetDocuments",
                   {H,
                    "class kxStlVector<class kxudm::UDMGenericDocument,class "
                    "std::allocator<class kxudm::UDMGenericDocument> > &"}),
         [](auto& d, auto& a) { d.GetDocuments(a.h, a.documents); }},
        {Signature(
             "int",
             "AddFoldersAndFiles",
             {"const " + TEXTS + " &", "const " + TEXTS + " &", CS, "const " + TEXT_MAP + " &"}),
         [](auto& d, auto& a) { d.AddFoldersAndFiles(a.texts, a.texts, a.s, a.map); }},
        {Signature("void", "RetrieveFilesIntoFolder", {CH, CS, CS, TEXTS + " &"}),
         [](auto& d, auto& a) { d.RetrieveFilesIntoFolder(a.h, a.s, a.s, a.texts); }},
        {Signature("void",
                   "RetrieveFilesIntoFolder",
                   {CH, CS, "const bool &", "const bool &", TEXTS + " &"}),
         [](auto& d, auto& a) { d.RetrieveFilesIntoFolder(a.h, a.s, true, true, a.texts); }},
        {Signature("void",
                   "RetrieveFilesIntoWorkspace",
                   {CH, "const bool &", "const bool &", TEXTS + " &"}),
         [](auto& d, auto& a) { d.RetrieveFilesIntoWorkspace(a.h, true, true, a.texts); }},
        {Signature("void", "SetVault", {H, CS}), [](auto& d, auto& a) { d.SetVault(a.h, a.s); }},
    };
}

std::vector<Operation> RevisionOperations() {
    return {
        {Signature("void", "Checkout", {CH, CS}), [](auto& d, auto& a) { d.Checkout(a.h, a.s); }},
        {Signature("void", "UndoCheckout", {CH}), [](auto& d, auto& a) { d.UndoCheckout(a.h); }},
        {Signature("void", "Save", {H, CS}), [](auto& d, auto& a) { d.Save(a.h, a.s); }},
        {Signature("void", "Persist", {H, CS, "const bool"}),
         [](auto& d, auto& a) { d.Persist(a.h, a.s, true); }},
        {Signature("void", "Synchronize", {H}), [](auto& d, auto& a) { d.Synchronize(a.h); }},
        {Signature("bool", "GetSyncStatus", {H}), [](auto& d, auto& a) { d.GetSyncStatus(a.h); }},
        {Signature(
             "class boost::shared_ptr<class kxudm::UDMHistoryNode>", "GetHistory", {CH}, " const"),
         [](auto& d, auto& a) { d.GetHistory(a.h); }},
        {Signature(
             "unsigned __int64", "GetLineage", {CH, "enum kxct::HistoryCategory", HANDLES + " &"}),
         [](auto& d, auto& a) { d.GetLineage(a.h, HISTORY_VERSIONS, a.handles); }},
    };
}

std::vector<Operation> RelationOperations() {
    return {
        {Signature("class kxudm::UDMRelationHandle", "CreateRelation", {CS, H, H, "bool"}),
         [](auto& d, auto& a) { d.CreateRelation(a.s, a.h, a.h2, true); }},
        {Signature("bool", "RemoveRelation", {H, H}),
         [](auto& d, auto& a) { d.RemoveRelation(a.h, a.h2); }},
        {"void __cdecl kxct::UDMDBCtrl::AddReference(class kxudm::UDMItemHandle &,const class "
         "kxudm::UDMItemHandle &,const class kxString &)",
         [](auto& d, auto& a) { d.AddReference(a.h, a.h2, a.s); }},
        {Signature("void", "RemoveReference", {H, H}),
         [](auto& d, auto& a) { d.RemoveReference(a.h, a.h2); }},
        {Signature("void", "GetReferences", {HANDLES + " &", CS, CH}),
         [](auto& d, auto& a) { d.GetReferences(a.handles, "", a.h); }},
        {Signature("void", "GetReferredBy", {HANDLES + " &", TEXTS + " &", CH}),
         [](auto& d, auto& a) { d.GetReferredBy(a.handles, a.texts, a.h); }},
        {Signature(
             "unsigned __int64",
             "ExecQuery",
             {CS, "class kxudm::UDMQuerySettingHandle &", HANDLES + " &", "long", "long", "bool"}),
         [](auto& d, auto& a) { d.ExecQuery(a.s, a.settings, a.handles, 0, 0, true); }},
        {Signature("unsigned __int64",
                   "ExecQueryFullText",
                   {CS,
                    "int",
                    "class kxudm::UDMQuerySettingHandle &",
                    HANDLES + " &",
                    "long",
                    "long",
                    "bool"}),
         [](auto& d, auto& a) { d.ExecQueryFullText(a.s, 0, a.settings, a.handles, 0, 0, true); }},
        {Signature("void", "Import", {CS}), [](auto& d, auto& a) { d.Import(a.s); }},
        {Signature("void", "Export", {CS, "const " + TEXTS + " &"}),
         [](auto& d, auto& a) { d.Export(a.s, a.texts); }},
    };
}

std::vector<Operation> DefinitionOperations() {
    return {
        {Signature("class kxudm::UDMContentDefinitionHandle",
                   "GetContentDefinitionHandle",
                   {CS},
                   " const"),
         [](auto& d, auto& a) { d.GetContentDefinitionHandle(a.s); }},
        {Signature("class kxudm::UDMAttributeDefinitionHandle",
                   "GetAttributeDefinitionHandle",
                   {CS, CS},
                   " const"),
         [](auto& d, auto& a) { d.GetAttributeDefinitionHandle(a.s, a.s); }},
        {Signature("const " + TEXTS, "GetContentDefinitionNames", {}),
         [](auto& d, auto&) { d.GetContentDefinitionNames(); }},
        {Signature("class kxStlVector<class boost::shared_ptr<class "
                   "kxudm::UDMContentDefinition>,class std::allocator<class "
                   "boost::shared_ptr<class kxudm::UDMContentDefinition> > >",
                   "GetRegisteredContentDefinitions",
                   {},
                   " const"),
         [](auto& d, auto&) { d.GetRegisteredContentDefinitions(); }},
        {Signature("void",
                   "GetClassNames",
                   {"class kxStlSet<class kxString,struct std::less<class kxString>,class "
                    "std::allocator<class kxString> > &"}),
         [](auto& d, auto&) {
             kxStlSet<kxString> names;
             d.GetClassNames(names);
         }},
        {Signature("void", "GetAllowedChildCdefNames", {CS, TEXTS + " &", CS}, " const"),
         [](auto& d, auto& a) { d.GetAllowedChildCdefNames(a.s, a.texts, a.s); }},
        {Signature("void", "GetGroupNames", {CS, TEXTS + " &"}, " const"),
         [](auto& d, auto& a) { d.GetGroupNames(a.s, a.texts); }},
        {Signature("unsigned __int64", "GetContentDefinitionMetadata", {CS, METADATA + " &"}),
         [](auto& d, auto& a) { d.GetContentDefinitionMetadata(a.s, a.metadata); }},
        {Signature("bool", "UpdateContentDefinition", {CS}),
         [](auto& d, auto& a) { d.UpdateContentDefinition(a.s); }},
        {Signature("bool", "UpdateContentDefinition", {CS, METADATA + " &"}),
         [](auto& d, auto& a) { d.UpdateContentDefinition(a.s, a.metadata); }},
    };
}

std::vector<Operation> AllOperations() {
    std::vector<Operation> all;
    for (const auto& part : {EntityOperations(),
                             FolderOperations(),
                             FileOperations(),
                             RevisionOperations(),
                             RelationOperations(),
                             DefinitionOperations()}) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

// Makes every operation of the session that this table reaches throw `failure`.
template <class Failure>
void LetAllFail(MockProfile& profile, const Failure& failure) {
    const auto fail = Throw(failure);
    ON_CALL(profile, GetEntity).WillByDefault(fail);
    ON_CALL(profile, CreateEntity).WillByDefault(fail);
    ON_CALL(profile, DeleteEntity).WillByDefault(fail);
    ON_CALL(profile, RemoveChild).WillByDefault(fail);
    ON_CALL(profile, CreateAndAddChild).WillByDefault(fail);
    ON_CALL(profile, CreateRelation).WillByDefault(fail);
    ON_CALL(profile, RemoveRelation).WillByDefault(fail);
    ON_CALL(profile, AddChild).WillByDefault(fail);
    ON_CALL(profile, GetChildCount).WillByDefault(fail);
    ON_CALL(profile, GetChildren).WillByDefault(fail);
    ON_CALL(profile, GetParents).WillByDefault(fail);
    ON_CALL(profile, SetAttributeValue).WillByDefault(fail);
    ON_CALL(profile, PersistEntity).WillByDefault(fail);
    ON_CALL(profile, SaveEntity).WillByDefault(fail);
    ON_CALL(profile, UndoCheckout).WillByDefault(fail);
    ON_CALL(profile, Checkout).WillByDefault(fail);
    ON_CALL(profile, SetDisplayName).WillByDefault(fail);
    ON_CALL(profile, RunQuery).WillByDefault(fail);
    ON_CALL(profile, GetHistory).WillByDefault(fail);
    ON_CALL(profile, GetDocuments).WillByDefault(fail);
    ON_CALL(profile, BeginAddFile).WillByDefault(fail);
    ON_CALL(profile, ReAddFile).WillByDefault(fail);
    ON_CALL(profile, RemoveFile).WillByDefault(fail);
    ON_CALL(profile, RetrieveFilesIntoWorkspace).WillByDefault(fail);
    ON_CALL(profile, RetrieveFilesToPath).WillByDefault(fail);
    ON_CALL(profile, RetrieveFilesToFolder).WillByDefault(fail);
    ON_CALL(profile, GetClassifications).WillByDefault(fail);
    ON_CALL(profile, AddClassification).WillByDefault(fail);
    ON_CALL(profile, RemoveClassification).WillByDefault(fail);
    ON_CALL(profile, SetMaster).WillByDefault(fail);
    ON_CALL(profile, SetVault).WillByDefault(fail);
    ON_CALL(profile, ReloadContentDefinition).WillByDefault(fail);
    ON_CALL(profile, UpdateContentDefinition).WillByDefault(fail);
    ON_CALL(profile, AddFoldersAndFiles).WillByDefault(fail);
    ON_CALL(profile, AddReference).WillByDefault(fail);
    ON_CALL(profile, GetReferences).WillByDefault(fail);
    ON_CALL(profile, RemoveReference).WillByDefault(fail);
    ON_CALL(profile, GetReferredBy).WillByDefault(fail);
    ON_CALL(profile, GetSyncStatus).WillByDefault(fail);
    ON_CALL(profile, Synchronize).WillByDefault(fail);
    ON_CALL(profile, MoveContent).WillByDefault(fail);
    ON_CALL(profile, GetOrCreateFolder).WillByDefault(fail);
    ON_CALL(profile, CreateFolder).WillByDefault(fail);
    ON_CALL(profile, GetFolder).WillByDefault(fail);
    ON_CALL(profile, GetFolderFullPath).WillByDefault(fail);
    ON_CALL(profile, GetContentDefinitionMetadata).WillByDefault(fail);
    ON_CALL(profile, GetProfileUtils).WillByDefault(fail);
    ON_CALL(profile, DumpSession).WillByDefault(fail);
    ON_CALL(profile, Export).WillByDefault(fail);
    ON_CALL(profile, Import).WillByDefault(fail);
}

TEST(UDMDBCtrl, EachOperationWithoutASessionRaisesTheNullGuardWithItsSignature) {
    OpenSession open;
    const auto profile = UDMDBCtrlPeer::TakeProfile(*open);
    for (const auto& operation : AllOperations()) {
        Arguments arguments;
        EXPECT_EQ(FailureOf([&] { operation.call(*open, arguments); }),
                  operation.signature +
                      ":: db/_private/UDMDBCtrl.cpp. The pointer _udmProfilePtr is null!");
    }
}

TEST(UDMDBCtrl, GetUDMItemHandleListRaisesOnlyForTheMissingSession) {
    OpenSession open;
    const auto profile = UDMDBCtrlPeer::TakeProfile(*open);
    Handles out;
    EXPECT_EQ(FailureOf([&] { open->GetUDMItemHandleList(out, {}); }),
              Signature("bool", "GetUDMItemHandleList", {HANDLES + " &", "const " + TEXTS + " &"}) +
                  ":: db/_private/UDMDBCtrl.cpp. The pointer _udmProfilePtr is null!");
}

TEST(UDMDBCtrl, EachFailureOfTheRuntimeIsTranslatedWithTheOperationsSignature) {
    OpenSession open;
    LetAllFail(*open.profile, std::runtime_error("disk full"));
    // The failure of Save and Persist that comes after the working revision was found.
    ON_CALL(*open.profile, GetWorkingHandle).WillByDefault(::testing::Return(NewHandle("A:2")));
    for (const auto& operation : AllOperations()) {
        Arguments arguments;
        EXPECT_EQ(FailureOf([&] { operation.call(*open, arguments); }),
                  operation.signature + " disk full");
    }
}

TEST(UDMDBCtrl, WhatIsNoStandardExceptionPassesThroughEachOperation) {
    OpenSession open;
    LetAllFail(*open.profile, 42);
    for (const auto& operation : AllOperations()) {
        Arguments arguments;
        EXPECT_THROW(operation.call(*open, arguments), int) << operation.signature;
    }
}

}  // namespace
}  // namespace kxct
