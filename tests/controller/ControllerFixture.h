// A controller on a real master database manager and session, with a mock runtime below. The
// entities that the runtime knows are the fixture's `entities`; its definitions are "UDMPart",
// "Foldertype", "Categories", and two whose name differs from their type: "OwnFolder" of type
// "Foldertype" and "OwnCategory" of type "Categories".
//
//     State& part = Entity("A:1", "UDMPart", "Bracket");
//     part.isEditable = true;
//     EXPECT_CALL(*profile, Checkout(IsHandle("A:1"), _)).Times(0);
//     Items items{ItemOf("A:1")};
//     EXPECT_TRUE(controller->CheckOut(items, "why"));
#pragma once

#include <kxct/ContentItem.h>
#include <kxct/ControllerImpl.h>
#include <kxct/ItemManager.h>
#include <kxct/KXCTException.h>
#include <kxct/SignalHandler.h>
#include <kxctinterfaces/Attributes.h>
#include <kxctinterfaces/ItemFilterList.h>
#include <kxctinterfaces/Metadata.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/masterdb/ManagerFixture.h"
#include "tests/mock/FakeDefinitions.h"
#include "tests/mock/FakeItemState.h"

namespace kxct::test {

using Handles = kxStlVector<kxudm::UDMItemHandle>;
using Items = kxStlVector<Item*>;
using Relations = kxStlVector<std::pair<Item*, Item*>>;
using State = mock::FakeItemState;

// A controller whose protected operations a test can call.
class ControllerProbe : public ControllerImpl {
  public:
    using ControllerImpl::ControllerImpl;

    using ControllerImpl::_ExecQuery;
    using ControllerImpl::_ExecQueryFullText;
    using ControllerImpl::_GetItemHandle;
    using ControllerImpl::_GetItemManager;
    using ControllerImpl::_GetScriptedAttributeDescription;
    using ControllerImpl::_GetScriptedAttributeValue;
    using ControllerImpl::_GetUDMItemHandleList;
    using ControllerImpl::_IsScriptedAttributeEditable;
    using ControllerImpl::_NextScriptedAttributeValue;
    using ControllerImpl::_SetScriptedAttributeValue;
};

class ControllerTest : public ManagerTest {
  protected:
    ControllerTest();
    ~ControllerTest() override;

    // Makes an entity known to the runtime.
    State& Entity(const kxString& uid,
                  const kxString& definition = "UDMPart",
                  const kxString& name = "");
    kxudm::UDMItemHandle HandleOf(const kxString& uid);
    Item* ItemOf(const kxString& uid, const ManagerType& type = MANAGER_DEFAULT);
    // The session of `controller`, with nobody counted as its user by this call.
    UDMDBCtrl& Session();
    // Ends the session's connection without telling managers and items: the session is still
    // there, IsDBValid() is false and items go on working.
    void LoseConnection();
    // An item that is no content: the group node "parts" of a content.
    Item* GroupNodeOf(const kxString& uid);

    boost::shared_ptr<testing::NiceMock<mock::MockProfile>> profile = mock::NewProfile();
    boost::shared_ptr<mock::FakeDefinitions> definitions =
        boost::make_shared<mock::FakeDefinitions>();
    kxStlMap<kxString, boost::shared_ptr<State>> entities;
    std::unique_ptr<ControllerProbe> controller;
};

// Appends handles to the result vector of a mock operation, its first argument.
inline auto Give(Handles handles) {
    return [handles](Handles& out, auto&&...) {
        out.insert(out.end(), handles.begin(), handles.end());
    };
}

// Fails an operation of the runtime.
inline auto Fail() {
    return testing::Throw(std::runtime_error("the runtime says no"));
}

std::vector<std::string> UidsOf(const Items& items);

// Counts the signals that carry one item.
class ItemSpy : public kxListener<single_threaded> {
  public:
    explicit ItemSpy(kxiSignal1<Item*>& signal) { signal.connect(this, &ItemSpy::Heard); }

    std::vector<Item*> items;

  private:
    void Heard(Item* item) { items.push_back(item); }
};

}  // namespace kxct::test
