// A GoogleMock of the runtime's session, and of an engine that merges.
//
//     auto profile = NewProfile();            // a NiceMock with the session id "session-1"
//     EXPECT_CALL(*profile, Checkout(IsHandle("A:1"), kxString("why")));
//
// Tests of everything above the runtime prove with it which calls are made, in which order and
// with which arguments.
#pragma once

#include <gmock/gmock.h>
#include <kxudm/IUDMProfile.h>
#include <kxudm/UDMKXMergeToCatalog.h>

#include <boost/smart_ptr/make_shared.hpp>

#include "tests/mock/MockSignatures.h"

namespace kxct::mock {

class MockProfile : public kxudm::IUDMProfile {
  public:
    using Handle = kxudm::UDMItemHandle;
    using Handles = kxStlVector<kxudm::UDMItemHandle>;
    using Slot = boost::shared_ptr<kxudm::IUDMProfileSlot>;

    MockProfile();
    ~MockProfile() override;

    MOCK_METHOD(Handle, GetEntity, (const kxString&), (override));
    MOCK_METHOD(Handle, CreateEntity, (const kxString&, const kxString&), (override));
    MOCK_METHOD(void, DeleteEntity, (const Handle&, bool, bool), (override));
    MOCK_METHOD(void, RemoveChild, (const Handle&, const Handle&), (override));
    MOCK_METHOD(Handle,
                CreateAndAddChild,
                (const kxString&, const kxString&, const Handle&, const kxString&),
                (override));
    MOCK_METHOD(kxudm::UDMRelationHandle,
                CreateRelation,
                (const Handle&, const Handle&, const kxString&, bool),
                (override));
    MOCK_METHOD(bool, RemoveRelation, (const Handle&, const Handle&), (override));
    MOCK_METHOD(void, AddChild, (const Handle&, const Handle&, const kxString&), (override));
    MOCK_METHOD(std::size_t,
                GetChildCount,
                (const Handle&, const kxString&, const kxString&),
                (override));
    MOCK_METHOD(void,
                GetChildren,
                (Handles&, const Handle&, const kxString&, const kxString&),
                (override));
    MOCK_METHOD(void, GetParents, (Handles&, const Handle&, const kxString&, bool), (override));
    MOCK_METHOD(void,
                SetAttributeValue,
                (const Handle&, const kxString&, const kxVariant&),
                (override));

    MOCK_METHOD(void,
                PersistEntity,
                (const Handle&, const kxString&, bool, bool, bool),
                (override));
    MOCK_METHOD(void, SaveEntity, (const Handle&, const kxString&, bool), (override));
    MOCK_METHOD(void, UndoCheckout, (const Handle&), (override));
    MOCK_METHOD(void, Checkout, (const Handle&, const kxString&), (override));
    MOCK_METHOD(void, SetDisplayName, (const kxString&, const Handle&), (override));

    MOCK_METHOD(std::size_t,
                RunQuery,
                (Handles&,
                 const kxString&,
                 int,
                 long,
                 long,
                 const kxudm::UDMQuerySettingHandle&,
                 bool,
                 bool),
                (override));

    MOCK_METHOD(void, Connect, (Slot&), (override));
    MOCK_METHOD(void, Disconnect, (Slot&), (override));

    MOCK_METHOD(boost::shared_ptr<kxudm::UDMHistoryNode>, GetHistory, (const Handle&), (override));
    MOCK_METHOD(Handle, GetWorkingHandle, (const Handle&), (override));

    MOCK_METHOD(void,
                GetDocuments,
                (const Handle&, kxStlVector<kxudm::UDMGenericDocument>&, bool),
                (override));
    MOCK_METHOD(kxudm::AddFileBuilder, BeginAddFile, (const Handle&), (override));
    MOCK_METHOD(void, ReAddFile, (const Handle&, const kxString&, bool, bool), (override));
    MOCK_METHOD(void, RemoveFile, (const Handle&, const kxString&), (override));
    MOCK_METHOD(void,
                RetrieveFilesIntoWorkspace,
                (const Handle&, const bool&, const bool&, kxStlVector<kxString>&),
                (override));
    MOCK_METHOD(void,
                RetrieveFilesToPath,
                (const Handle&, const kxString&, kxStlVector<kxString>&, const kxString&),
                (override));
    MOCK_METHOD(void,
                RetrieveFilesToFolder,
                (const Handle&, const kxString&, const bool&, const bool&, kxStlVector<kxString>&),
                (override));

    MOCK_METHOD(void, GetClassifications, (Handles&, const kxString&), (override));
    MOCK_METHOD(void, AddClassification, (const Handle&, const Handle&), (override));
    MOCK_METHOD(void, RemoveClassification, (const Handle&, const Handle&), (override));
    MOCK_METHOD(void, SetMaster, (const Handle&, bool), (override));
    MOCK_METHOD(void, SetVault, (const Handle&, const kxString&), (override));

    MOCK_METHOD(bool, ReloadContentDefinition, (const kxString&), (override));
    MOCK_METHOD(bool,
                UpdateContentDefinition,
                (const kxString&, const kxStlVector<kxudm::UDMCdefMetaData>&, bool),
                (override));

    MOCK_METHOD(int,
                AddFoldersAndFiles,
                (const kxStlVector<kxString>&,
                 const kxStlVector<kxString>&,
                 const kxString&,
                 (const kxStlMap<kxString, kxString>&)),
                (override));

    MOCK_METHOD(void, AddReference, (const Handle&, const Handle&, const kxString&), (override));
    MOCK_METHOD(void, GetReferences, (Handles&, const Handle&, const kxString&), (override));
    MOCK_METHOD(void, RemoveReference, (const Handle&, const Handle&), (override));
    MOCK_METHOD(void, GetReferredBy, (Handles&, kxStlVector<kxString>&, const Handle&), (override));
    MOCK_METHOD(bool, GetSyncStatus, (const Handle&), (override));
    MOCK_METHOD(void, Synchronize, (const Handle&), (override));

    MOCK_METHOD(void, MoveContent, (const Handle&, const Handle&), (override));
    MOCK_METHOD(void, GetOrCreateFolder, (Handle&, const kxString&, bool), (override));
    MOCK_METHOD(void, CreateFolder, (Handle&, const kxString&), (override));
    MOCK_METHOD(void, GetFolder, (Handle&, const kxString&, bool), (override));
    MOCK_METHOD(void, GetFolderFullPath, (kxString&, const Handle&), (override));

    MOCK_METHOD(void,
                GetContentDefinitionMetadata,
                (const kxString&, kxStlVector<kxudm::UDMCdefMetaData>&),
                (override));
    MOCK_METHOD(kxString, GetSessionId, (), (override));
    MOCK_METHOD(kxudm::UDMProfileUtils, GetProfileUtils, (), (override));
    MOCK_METHOD(void, DumpSession, (), (override));

    MOCK_METHOD(void, Export, (const kxString&, const kxStlVector<kxString>&, int), (override));
    MOCK_METHOD(void, Import, (const kxString&), (override));
};

class MockMerge : public kxudm::UDMKXMergeToCatalog {
  public:
    using Handles = kxStlVector<kxudm::UDMItemHandle>;
    using Groups = kxStlMap<kxudm::UDMUID, kxStlVector<kxString>>;

    MockMerge();
    ~MockMerge() override;

    MOCK_METHOD(Handles, merge, (kxStlVector<kxudm::UDMUID>, bool), (override));
    MOCK_METHOD(Handles, merge, (const Groups&, bool), (override));
};

// A mock session that answers GetSessionId with `sessionId` and GetProfileUtils with an empty set
// of definitions (FakeDefinitions), and does nothing else until it is told to.
boost::shared_ptr<::testing::NiceMock<MockProfile>> NewProfile(
    const kxString& sessionId = "session-1");

// Matches a handle by its UID text.
MATCHER_P(IsHandle, uid, "") {
    return arg.Uid() == kxString(uid);
}

}  // namespace kxct::mock
