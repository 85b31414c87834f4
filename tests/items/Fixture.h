// A session on a mock runtime, for tests of items and managers.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kxct/ContentItem.h>
#include <kxct/DefaultItemManager.h>
#include <kxct/ItemImpl.h>
#include <kxct/SignalHandler.h>
#include <kxct/UDMDBCtrl.h>
#include <kxctinterfaces/Attributes.h>
#include <kxctinterfaces/ItemFilterList.h>
#include <kxudm/UDMUID.h>

#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/mock/FakeDefinitions.h"
#include "tests/mock/FakeItemState.h"
#include "tests/mock/MockProfile.h"
#include "tests/mock/MockProvider.h"

namespace kxct::test {

using Items = kxStlVector<Item*>;
using Names = kxStlVector<kxString>;
using Handles = kxStlVector<kxudm::UDMItemHandle>;

// Fills the result vector of a mock operation, its first argument.
inline auto Give(Handles handles) {
    return [handles](Handles& out, auto&&...) {
        out.insert(out.end(), handles.begin(), handles.end());
    };
}

class SessionTest : public ::testing::Test {
  protected:
    SessionTest() {
        ON_CALL(*provider, OpenProfile).WillByDefault(::testing::Return(profile));
        ON_CALL(*profile, GetProfileUtils).WillByDefault([this] {
            return kxudm::UDMProfileUtils(definitions);
        });
        session = std::make_unique<UDMDBCtrl>(mock::SessionParameters());
    }

    // A content of definition "UDMPart" behind `state`, in the manager's cache.
    ContentItem* Content(const boost::shared_ptr<mock::FakeItemState>& state) {
        return static_cast<ContentItem*>(manager->CreateItem(mock::HandleOf(state)));
    }

    mock::ProviderRegistration provider;
    boost::shared_ptr<::testing::NiceMock<mock::MockProfile>> profile = mock::NewProfile();
    boost::shared_ptr<mock::FakeDefinitions> definitions =
        boost::make_shared<mock::FakeDefinitions>();
    std::unique_ptr<UDMDBCtrl> session;
    SignalHandler signals;
    // Made on demand by tests that need another one.
    std::unique_ptr<DefaultItemManager> manager;
};

// The same with a manager of the content tree and a definition "UDMPart".
class ContentTest : public SessionTest {
  protected:
    ContentTest() {
        manager = std::make_unique<DefaultItemManager>(session.get(), &signals);
        part = &definitions->Add("UDMPart");
        state->displayName = "Bracket";
        content = Content(state);
    }

    mock::FakeDefinition* part = nullptr;
    boost::shared_ptr<mock::FakeItemState> state =
        boost::make_shared<mock::FakeItemState>("A:1", "UDMPart", "Bracket");
    ContentItem* content = nullptr;
};

// Writes down every signal of a handler, in order, as "ItemUpdated A:1" and the like.
class SignalSpy : public kxListener<single_threaded> {
  public:
    explicit SignalSpy(SignalHandler& signals) {
        signals.ItemUpdated.connect(this, &SignalSpy::OnUpdated);
        signals.ItemStructureUpdated.connect(this, &SignalSpy::OnStructure);
        signals.SessionClosed.connect(this, &SignalSpy::OnClosed);
        signals.ItemDeleted.connect(this, &SignalSpy::OnDeleted);
        signals.ChildAdded.connect(this, &SignalSpy::OnAdded);
        signals.ChildRemoved.connect(this, &SignalSpy::OnRemoved);
        signals.ItemCreated.connect(this, &SignalSpy::OnCreated);
    }

    std::vector<std::string> log;
    // The item of the last signal.
    Item* last = nullptr;

  private:
    static std::string Name(Item* item) { return item ? item->GetUID() : "null"; }

    void Write(const std::string& line, Item* item) {
        log.push_back(line);
        last = item;
    }
    void OnUpdated(Item* item) { Write("ItemUpdated " + Name(item), item); }
    void OnStructure(Item* item) { Write("ItemStructureUpdated " + Name(item), item); }
    void OnClosed(const kxString& id) { Write("SessionClosed " + id, nullptr); }
    void OnDeleted(const kxString& uid, Item* item) {
        Write("ItemDeleted " + uid + " " + Name(item), item);
    }
    void OnAdded(Item* parent, Item* child) {
        Write("ChildAdded " + Name(parent) + " " + Name(child), child);
    }
    void OnRemoved(Item* parent, Item* child) {
        Write("ChildRemoved " + Name(parent) + " " + Name(child), child);
    }
    void OnCreated(Item* parent, Item* item) {
        Write("ItemCreated " + Name(parent) + " " + Name(item), item);
    }
};

// The UIDs of items, blank-separated.
inline std::string Uids(const Items& items) {
    std::ostringstream text;
    for (Item* item : items) {
        text << (text.tellp() > 0 ? " " : "") << (item ? item->GetUID() : kxString("null"));
    }
    return text.str();
}

}  // namespace kxct::test
