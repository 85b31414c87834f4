#include "tests/controller/ControllerFixture.h"

#include <kxudm/UDMProfileUpdate.h>

namespace kxct::test {

using testing::Return;

ControllerTest::ControllerTest() {
    for (const char* name : {"UDMPart", "Foldertype", "Categories"}) {
        definitions->Add(name).type = name;
    }
    definitions->Add("OwnFolder").type = "Foldertype";
    definitions->Add("OwnCategory").type = "Categories";

    ON_CALL(*local, OpenProfile).WillByDefault([this](const Parameters& params) {
        opened.push_back(params);
        return opened.size() == 1 ? profile
                                  : mock::NewProfile("session-" + std::to_string(opened.size()));
    });
    ON_CALL(*profile, GetProfileUtils).WillByDefault([this] {
        return kxudm::UDMProfileUtils(definitions);
    });
    ON_CALL(*profile, GetEntity).WillByDefault([this](const kxString& uid) {
        if (entities.count(uid) == 0) {
            throw kxudm::UDMNotFoundException("no entity " + uid);
        }
        return mock::HandleOf(entities[uid]);
    });
    ON_CALL(*profile, GetWorkingHandle).WillByDefault([](const kxudm::UDMItemHandle& handle) {
        return handle;
    });
    controller = std::make_unique<ControllerProbe>(&Manager(), "Demo", "Work", "anna", "secret");
}

ControllerTest::~ControllerTest() {
    controller.reset();
    DeleteManager();
}

State& ControllerTest::Entity(const kxString& uid,
                              const kxString& definition,
                              const kxString& name) {
    entities[uid] = boost::make_shared<State>(uid, definition, name);
    return *entities[uid];
}

kxudm::UDMItemHandle ControllerTest::HandleOf(const kxString& uid) {
    return mock::HandleOf(entities[uid]);
}

Item* ControllerTest::ItemOf(const kxString& uid, const ManagerType& type) {
    return controller->GetItem(uid, type, false);
}

UDMDBCtrl& ControllerTest::Session() {
    UDMDBCtrl* session = Open();
    Manager().Close(session);
    return *session;
}

void ControllerTest::LoseConnection() {
    Session().Update(kxudm::UDMProfileUpdate::OfSession("session-1"));
}

Item* ControllerTest::GroupNodeOf(const kxString& uid) {
    return controller->_GetItemManager(MANAGER_DEFAULT)->CreateItem(ItemOf(uid), kxString("parts"));
}

std::vector<std::string> UidsOf(const Items& items) {
    std::vector<std::string> uids;
    for (Item* item : items) {
        uids.push_back(item != nullptr ? item->GetUID() : kxString("null"));
    }
    return uids;
}

}  // namespace kxct::test
