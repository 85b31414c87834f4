// Generated steps of three seats at one library, and a listener at each that shows every content:
// it reads an item again only when a signal names it. After each step it must show what the items
// answer, and the item of a content's newest revision must be the one that it shows.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kxct/SignalHandler.h>
#include <kxctinterfaces/Item.h>
#include <kxsigslot/kxListener.h>
#include <kxsigslot/kxSignal.h>

#include <algorithm>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "Host.h"
#include "tests/support/Seed.h"

using kxct::Controller;
using kxct::Item;

namespace {

using Items = kxStlVector<Item*>;

constexpr int SEQUENCES = 12;
constexpr int STEPS = 80;
constexpr std::size_t MOST_CONTENTS = 8;
constexpr const char* GROUPS[] = {"parts", "references"};

kxString BaseOf(const kxString& uid) {
    return uid.substr(0, uid.find(':'));
}

class View : public kxListener<single_threaded> {
  public:
    using Lines = std::vector<std::string>;

    explicit View(Controller& controller) : _controller(controller) {
        kxct::SignalHandler* signals = controller.GetSignalHandler(kxct::MANAGER_DEFAULT);
        signals->ItemUpdated.connect(this, &View::OnChanged);
        signals->ItemStructureUpdated.connect(this, &View::OnChanged);
        signals->ItemDeleted.connect(this, &View::OnDeleted);
        signals->ItemCreated.connect(this, &View::OnCreated);
        signals->ChildRemoved.connect(this, &View::OnChildRemoved);
    }

    [[nodiscard]] bool Shows(const kxString& base) const { return _items.count(base) != 0; }
    // A listener is not told of what nobody shows.
    void Show(Item* item) {
        _items[BaseOf(item->GetUID())] = item;
        _shown[item] = Read(*item);
    }
    void Refresh() {
        for (Item* item : std::exchange(_changed, {})) {
            const auto shown = _shown.find(item);
            if (shown == _shown.end()) {
                continue;
            }
            const Lines before = std::exchange(shown->second, Read(*item));
            for (const std::string& line : before) {
                LoseChild(line);
            }
        }
    }
    void Compare(const kxString& base) {
        Item* item = _controller.GetItem(base, true);
        const auto found = _items.find(base);
        if (item == nullptr) {
            EXPECT_EQ(found, _items.end()) << base << " is still shown";
        } else if (found != _items.end()) {
            EXPECT_EQ(found->second, item) << "another item than the newest one is shown";
            EXPECT_EQ(found->second->GetUID(), item->GetUID());
            EXPECT_EQ(_shown.at(found->second), Read(*item));
        }
    }

  private:
    static Lines Read(Item& item) {
        Lines lines{item.GetUID(),
                    item.GetDisplayName(),
                    item.GetAttributeValue("description").GetString(),
                    item.IsEditable() ? "editable" : "published"};
        std::set<std::string> children;
        for (const char* group : GROUPS) {
            Items found;
            item.GetChildren(found, group);
            for (Item* child : found) {
                children.insert(std::string(group) + " " + BaseOf(child->GetUID()));
            }
        }
        lines.insert(lines.end(), children.begin(), children.end());
        return lines;
    }

    // The deletion of a child is told by the structure of its owners alone.
    void LoseChild(const std::string& line) {
        const auto child = _items.find(kxString(line.substr(line.find(' ') + 1)));
        if (child != _items.end() && _controller.GetItem(child->first, true) == nullptr) {
            _shown.erase(child->second);
            _items.erase(child);
        }
    }

    void OnChanged(Item* item) { _changed.insert(item); }
    void OnChildRemoved(Item* parent, Item* /*child*/) { _changed.insert(parent); }
    void OnCreated(Item* /*parent*/, Item* item) { Show(item); }
    void OnDeleted(const kxString& uid, Item* item) {
        const auto shown = _items.find(BaseOf(uid));
        if (shown != _items.end() && shown->second == item) {
            _items.erase(shown);
        }
        _shown.erase(item);
    }

    Controller& _controller;
    std::map<kxString, Item*> _items;  // by base UID
    std::map<Item*, Lines> _shown;
    std::set<Item*> _changed;
};

class FollowedItems : public testing::Test {
  protected:
    struct Seat {
        Controller* controller;
        std::unique_ptr<View> view;
    };

    int Below(std::size_t limit) { return static_cast<int>(random() % limit); }
    bool Chance(int percent) { return Below(100) < percent; }
    // One that the seat sees; null if it sees none.
    Item* Any(Controller& controller) {
        Items seen;
        for (const kxString& base : bases) {
            if (Item* item = controller.GetItem(base, true)) {
                seen.push_back(item);
            }
        }
        return seen.empty() ? nullptr : seen[Below(seen.size())];
    }

    void Step(Controller& controller) {
        if (bases.size() < 3 || (bases.size() < MOST_CONTENTS && Chance(10))) {
            Item* item =
                controller.CreateContent("UDMAssemblyDM", "a" + std::to_string(bases.size()));
            ASSERT_NE(item, nullptr);
            bases.push_back(BaseOf(item->GetUID()));
            Note("create " + std::to_string(bases.size() - 1));
            return;
        }
        Item* item = Any(controller);
        Item* other = Any(controller);
        if (item == nullptr || other == nullptr) {
            return;
        }
        Act(controller, *item, *other);
    }

    void Act(Controller& controller, Item& item, Item& other) {
        Items items{&item};
        Items others{&other};
        const std::string both = NumberOf(item) + " " + NumberOf(other);
        switch (Below(12)) {
            case 0:
            case 1:
                Note("describe " + NumberOf(item));
                item.SetAttributeValue("description", kxString(std::to_string(Below(100))));
                break;
            case 2:
            case 3:
                Note("add " + both);
                item.Add(&other, "parts");
                break;
            case 4:
            case 11:
                Note("remove from " + NumberOf(item));
                for (Item* child : ChildrenOf(item)) {
                    if (Chance(60)) {
                        item.Remove(child);
                    }
                }
                break;
            case 5:
                Note("refer " + both);
                controller.AddReferences(&item, others, {"references"});
                break;
            case 6:
            case 7:
                Note("check out " + NumberOf(item));
                controller.CheckOut(items, "");
                break;
            case 8:
            case 9:
                Note("publish " + NumberOf(item));
                controller.Publish(items, "", Chance(30));
                break;
            default:
                if (Chance(25)) {
                    Note("delete " + NumberOf(item));
                    controller.Delete(items);
                } else {
                    Note("revert " + NumberOf(item));
                    controller.Revert(items);
                }
        }
    }

    static Items ChildrenOf(Item& item) {
        Items children;
        for (const char* group : GROUPS) {
            item.GetChildren(children, group);
        }
        return children;
    }
    std::string NumberOf(Item& item) {
        const auto found = std::find(bases.begin(), bases.end(), BaseOf(item.GetUID()));
        return std::to_string(found - bases.begin()) +
               item.GetUID().substr(BaseOf(item.GetUID()).size());
    }
    void Note(const std::string& what) {
        log += "seat " + std::to_string(seat) + ": " + what + "\n";
    }

    void CompareAll() {
        for (Seat& each : seats) {
            each.view->Refresh();
        }
        for (std::size_t i = 0; i < seats.size(); ++i) {
            SCOPED_TRACE("at seat " + std::to_string(i));
            for (const kxString& base : bases) {
                seats[i].view->Compare(base);
                Item* item = seats[i].controller->GetItem(base, true);
                if (item != nullptr && !seats[i].view->Shows(base)) {
                    seats[i].view->Show(item);
                }
            }
        }
    }

    TemporaryFolder home;
    Host host{home.Path()};
    std::vector<Seat> seats;
    const unsigned seed = kxct_test::Seed();
    std::mt19937 random;
    kxStlVector<kxString> bases;
    std::string log;
    std::size_t seat = 0;
};

}  // namespace

TEST_F(FollowedItems, ShowWhatTheyAnswerAfterAnyStepsOfAnySeat) {
    for (const auto& [workspace, user] :
         {std::pair("ws", "anna"), {"theirs", "ben"}, {"home", "anna"}}) {
        Controller* controller = host.Create("Demo", workspace, user);
        ASSERT_NE(controller, nullptr);
        seats.push_back({controller, std::make_unique<View>(*controller)});
    }
    for (unsigned sequence = 0; sequence < SEQUENCES && !HasFailure(); ++sequence) {
        random.seed(seed + sequence);
        bases.clear();
        log.clear();
        for (int step = 0; step < STEPS && !HasFailure(); ++step) {
            seat = static_cast<std::size_t>(Below(seats.size()));
            Step(*seats[seat].controller);
            CompareAll();
        }
        EXPECT_FALSE(HasFailure()) << "sequence " << sequence << ":\n" << log;
    }
}
