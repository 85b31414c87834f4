// The order of virtual operations is part of the binary interface: plug-ins and hosts are compiled
// against it. A pointer to a virtual member function holds one more than the byte offset of its
// slot in the virtual table, on every platform of the Itanium C++ ABI, which is all that we build
// for.
#include <gtest/gtest.h>
#include <kxctinterfaces/Controller.h>
#include <kxctinterfaces/Factory.h>
#include <kxctinterfaces/Item.h>
#include <kxctinterfaces/MasterDBManager.h>

#include <cstddef>
#include <cstring>

namespace {

using namespace kxct;
using Items = kxStlVector<Item*>;
using Names = kxStlVector<kxString>;
using Maps = ChildFilterMap;
using Filters = ItemFilterList;
using Text = const kxString&;

template <class Member>
size_t SlotOf(Member member) {
    std::ptrdiff_t raw = 0;
    std::memcpy(&raw, &member, sizeof raw);
    return static_cast<size_t>(raw - 1) / sizeof(void*);
}

// Picks one overload: As<bool(Text)>(&Item::Checkout).
template <class Signature, class Class>
size_t As(Signature Class::*member) {
    return SlotOf(member);
}

void ExpectSlots(std::initializer_list<size_t> slots, size_t first) {
    size_t expected = first;
    for (const size_t slot : slots) {
        EXPECT_EQ(slot, expected);
        ++expected;
    }
}

TEST(SlotOrder, OfItem) {
    ExpectSlots(
        {
            SlotOf(&Item::Checkout),
            SlotOf(&Item::Save),
            SlotOf(&Item::IsA),
            SlotOf(&Item::GetAttributeDescription),
            SlotOf(&Item::GetAttributeNameList),
            SlotOf(&Item::GetAttributeNameDiplaynameMap),
            SlotOf(&Item::GetAttributeValue),
            SlotOf(&Item::IsAttributeEditable),
            SlotOf(&Item::GetDisplayName),
            SlotOf(&Item::GetQueryString),
            SlotOf(&Item::GetUID),
            SlotOf(&Item::GetType),
            SlotOf(&Item::IsEditable),
            SlotOf(&Item::Persist),
            As<bool(Text, Names&, const bool&, const bool&)>(&Item::RetrieveFilesIntoFolder),
            As<bool(Text)>(&Item::RetrieveFilesIntoFolder),
            As<bool(Text, Text, Names&)>(&Item::RetrieveFilesIntoFolder),
            As<bool(Names&, const bool&, const bool&)>(&Item::RetrieveFilesIntoWorkspace),
            As<bool()>(&Item::RetrieveFilesIntoWorkspace),
            SlotOf(&Item::GetDocuments),
            SlotOf(&Item::GetDocumentNames),
            SlotOf(&Item::GetDocumentInfo),
            As<bool(Text, const float&)>(&Item::SetAttributeValue),
            As<bool(Text, const int&)>(&Item::SetAttributeValue),
            As<bool(Text, Text)>(&Item::SetAttributeValue),
            As<bool(Text, kxVariant&)>(&Item::SetAttributeValue),
            SlotOf(&Item::NextAttributeValue),
            As<size_t(Items&, const Maps&, const Maps&, const Filters&)>(&Item::GetChildren),
            As<size_t(Items&, const Maps&, const Maps&)>(&Item::GetChildren),
            As<size_t(Items&)>(&Item::GetChildren),
            As<size_t(Items&, Text, Text)>(&Item::GetChildren),
            As<size_t(Items&, Text)>(&Item::GetChildren),
            As<size_t(const Maps&, const Maps&, const Filters&)>(&Item::GetNumChildren),
            As<size_t(const Maps&, const Maps&)>(&Item::GetNumChildren),
            As<size_t(Text)>(&Item::GetNumChildren),
            As<size_t()>(&Item::GetNumChildren),
            SlotOf(&Item::GetDataType),
            As<bool(const Maps&, const Maps&, const Filters&)>(&Item::HasChildren),
            As<bool(Text)>(&Item::HasChildren),
            As<bool()>(&Item::HasChildren),
            SlotOf(&Item::HasParent),
            SlotOf(&Item::GetParent),
            SlotOf(&Item::GetParents),
            SlotOf(&Item::GetRenderState),
            SlotOf(&Item::SetRenderState),
            SlotOf(&Item::UsedAsChild),
            SlotOf(&Item::UseAsChild),
            SlotOf(&Item::UndoCheckout),
            SlotOf(&Item::Add),
            SlotOf(&Item::AddFile),
            SlotOf(&Item::Remove),
            SlotOf(&Item::RemoveFile),
            SlotOf(&Item::ReAddFile),
        },
        0);
    // The destructor stands between the two runs and takes two slots.
    ExpectSlots(
        {
            As<kxudm::UDMItemHandle&(Item*)>(&Item::GetItemHandle),
            As<kxudm::UDMItemHandle&()>(&Item::GetItemHandle),
            SlotOf(&Item::AddItem),
        },
        55);
}

TEST(SlotOrder, OfFactory) {
    using Manager = MasterDBManager*;
    ExpectSlots(
        {
            SlotOf(&Factory::CreateMasterDBManager),
            SlotOf(&Factory::DeleteMasterDBManager),
            As<Controller*(Text, Text, Text, Text, Text, Text, Text, Text, Text, Text, Text)>(
                &Factory::CreateController),
            As<Controller*(Manager, Text, Text, Text, Text, Text, Text, Text, Text, Text)>(
                &Factory::CreateController),
            SlotOf(&Factory::DeleteController),
            As<Controller*(Text, Text, Text, Text, Text)>(&Factory::GetController),
            As<Controller*(Manager, Text, Text, Text, Text)>(&Factory::GetController),
        },
        0);
}

TEST(SlotOrder, OfMasterDBManager) {
    ExpectSlots(
        {
            SlotOf(&MasterDBManager::GetSettingsFile),
            SlotOf(&MasterDBManager::GetSettingValue),
            SlotOf(&MasterDBManager::SetCustomEntityDefinitionFolder),
            SlotOf(&MasterDBManager::GetSettingKeys),
            SlotOf(&MasterDBManager::GetMasterDBPath),
            SlotOf(&MasterDBManager::GetUDMSettingsPath),
            SlotOf(&MasterDBManager::GetLibrariesInfo),
            SlotOf(&MasterDBManager::GetLibraryIDByName),
            SlotOf(&MasterDBManager::GetLibraryInfoByID),
            SlotOf(&MasterDBManager::GetLibraryInfoByName),
            SlotOf(&MasterDBManager::GetLibraryClientSettings),
            SlotOf(&MasterDBManager::GetProfileName),
            SlotOf(&MasterDBManager::DeleteLibrary),
            SlotOf(&MasterDBManager::SetDefaultLibrary),
            SlotOf(&MasterDBManager::GetWorkspaceInfo),
            SlotOf(&MasterDBManager::GetWorkspacesInfo),
            SlotOf(&MasterDBManager::CheckConnection),
        },
        0);
}

TEST(SlotOrder, OfController) {
    using C = Controller;
    using Groups = kxStlMap<kxString, Names>;
    using Mode = const QueryMode&;
    using Type = const ManagerType&;
    ExpectSlots(
        {
            SlotOf(&C::GetWorkspaceName),
            SlotOf(&C::GetLibraryName),
            As<bool(Item*, Text, bool)>(&C::AddFile),
            As<bool(Item*, Text, Text, Text, bool, kxString)>(&C::AddFile),
            SlotOf(&C::ClearCache),
            SlotOf(&C::AddClassification),
            SlotOf(&C::RemoveClassification),
            As<Item*(Text, Text, Item*)>(&C::CreateContent),
            As<Item*(Text, Text)>(&C::CreateContent),
            As<bool(Text, kxStlVector<Metadata>&)>(&C::UpdateContentDefinition),
            As<bool(Text)>(&C::UpdateContentDefinition),
            SlotOf(&C::GetContentDefinitionNames),
            SlotOf(&C::GetContentDefinitionMetadata),
            SlotOf(&C::GetHistory),
            As<Item*(Text, bool)>(&C::GetItem),
            As<Item*(Text, Type, bool)>(&C::GetItem),
            SlotOf(&C::GetItemList),
            SlotOf(&C::GetAllItems),
            SlotOf(&C::GetMasterClassifications),
            SlotOf(&C::GetOtherClassifications),
            SlotOf(&C::GetSignalHandler),
            SlotOf(&C::CheckOut),
            SlotOf(&C::Delete),
            SlotOf(&C::Publish),
            SlotOf(&C::Revert),
            SlotOf(&C::Save),
            SlotOf(&C::Organize),
            SlotOf(&C::DropAllowed),
            SlotOf(&C::GetStructure),
            SlotOf(&C::IsDBValid),
            As<bool(Text, Text, Text, const Groups&, Items&, bool)>(&C::Merge),
            As<bool(Text, Text, Text, const Names&, Items&)>(&C::Merge),
            SlotOf(&C::DumpSession),
            As<size_t(Text, Names&, const int&, Mode, long, long, bool, bool)>(&C::Query),
            As<size_t(Text, Items&, const int&, Mode, long, long, bool, bool)>(&C::Query),
            As<size_t(Text, Items&, Type, const int&, Mode, long, long, bool, bool)>(&C::Query),
            SlotOf(&C::GetAttributeDescription),
            SlotOf(&C::GetAttributeNameList),
            SlotOf(&C::GetAttributeNameDiplaynameMap),
            SlotOf(&C::HasPendingAttributeChanges),
            As<const kxVariant(Text, Text) const>(&C::GetAttributeValue),
            As<const kxVariant(Item*, Text) const>(&C::GetAttributeValue),
            SlotOf(&C::IsAttributeEditable),
            As<bool(Text, Text, kxVariant&)>(&C::SetAttributeValue),
            As<bool(Item*, Text, kxVariant&)>(&C::SetAttributeValue),
            SlotOf(&C::NextAttributeValue),
            SlotOf(&C::SetAttributeSettingsFile),
            SlotOf(&C::RegisterScriptedAttribute),
            SlotOf(&C::UnRegisterScriptedAttribute),
            SlotOf(&C::GetScriptedAttributes),
            SlotOf(&C::SetFilterMap),
            SlotOf(&C::GetFilterMap),
            SlotOf(&C::SetHideMap),
            SlotOf(&C::GetHideMap),
            SlotOf(&C::SetFilterMapForChildren),
            SlotOf(&C::GetFilterMapForChildren),
            SlotOf(&C::SetGroupByAttributes),
            SlotOf(&C::GetGroupByAttributes),
            SlotOf(&C::MoveContent),
            SlotOf(&C::GetOrCreateFolder),
            SlotOf(&C::CreateFolder),
            SlotOf(&C::GetFolder),
            SlotOf(&C::GetFolderFullPath),
            SlotOf(&C::AddFoldersAndFiles),
            SlotOf(&C::AddReferences),
            SlotOf(&C::GetReferences),
            SlotOf(&C::RemoveReferences),
            SlotOf(&C::GetReferredBy),
            SlotOf(&C::GetSyncStatus),
            SlotOf(&C::Synchronize),
            SlotOf(&C::AddRelation),
            SlotOf(&C::RemoveRelation),
            SlotOf(&C::AddChildren),
            SlotOf(&C::Export),
            SlotOf(&C::Import),
            SlotOf(&C::ToItems),
        },
        0);
}

}  // namespace
