// Grouping compared with a naive model of it on generated input, and structures of great depth and
// size.
#include <algorithm>
#include <map>
#include <random>

#include "tests/items/StructureFixture.h"
#include "tests/support/Seed.h"

namespace kxct::test {
namespace {

using Values = kxStlVector<kxVariant>;

// Lines of what is to be shown: "new [name] as gN" and "parent > child", groups by number in the
// order in which they are made.
using Picture = std::vector<std::string>;

// The model. Says for each item by itself where it hangs, by looking at all others.
class GroupingModel {
  public:
    GroupingModel(const std::vector<Values>& rows, const std::vector<std::string>& uids)
        : _rows(rows), _uids(uids) {}

    Picture Draw() {
        for (const std::size_t row : SortedWithoutEqual()) {
            HangBelowGroups(row);
        }
        Picture picture = _groups;
        picture.insert(picture.end(), _relations.begin(), _relations.end());
        return picture;
    }

  private:
    // Insertion into a sorted list; of equal rows the first one stays.
    const std::vector<std::size_t>& SortedWithoutEqual() {
        for (std::size_t row = 0; row < _rows.size(); ++row) {
            std::size_t at = 0;
            while (at < _kept.size() && Less(_kept[at], row)) {
                ++at;
            }
            if (at == _kept.size() || Less(row, _kept[at])) {
                _kept.insert(_kept.begin() + static_cast<std::ptrdiff_t>(at), row);
            }
        }
        return _kept;
    }
    bool Less(std::size_t a, std::size_t b) const {
        for (std::size_t i = 0; i < _rows[a].size(); ++i) {
            if (_rows[a][i] != _rows[b][i]) {
                return _rows[a][i] < _rows[b][i];
            }
        }
        return false;
    }
    // How many attributes are needed before an item differs from all others, at most all but one.
    std::size_t DepthOf(std::size_t row) const {
        std::size_t depth = 0;
        while (depth + 1 < _rows[row].size() && !StandsAlone(row, depth)) {
            ++depth;
        }
        return depth;
    }
    bool StandsAlone(std::size_t row, std::size_t depth) const {
        return std::none_of(_kept.begin(), _kept.end(), [&](std::size_t other) {
            return other != row && Agree(row, other, depth);
        });
    }
    bool Agree(std::size_t a, std::size_t b, std::size_t count) const {
        for (std::size_t i = 0; i < count; ++i) {
            if (_rows[a][i] != _rows[b][i]) {
                return false;
            }
        }
        return true;
    }
    // Two levels above where it stands alone, one level above where it never does.
    std::size_t LevelOf(std::size_t row) const {
        const std::size_t depth = DepthOf(row);
        const std::size_t above = StandsAlone(row, depth) ? 2 : 1;
        return depth < above ? 0 : depth - above;
    }
    void HangBelowGroups(std::size_t row) {
        std::string parent;
        for (std::size_t level = 0; level <= LevelOf(row); ++level) {
            std::string group = GroupOf(row, level);
            if (group.empty()) {
                group = "g" + std::to_string(_groups.size());
                _groups.push_back("new [" + _rows[row][level].GetString() + "] as " + group);
                _owners.push_back({row, level});
                if (!parent.empty()) {
                    _relations.push_back(parent + " > " + group);
                }
            }
            parent = group;
        }
        _relations.push_back(parent + " > " + _uids[row]);
    }
    // The group that an earlier row made for the same values; empty without one.
    std::string GroupOf(std::size_t row, std::size_t level) const {
        for (std::size_t i = 0; i < _owners.size(); ++i) {
            if (_owners[i].second == level && Agree(row, _owners[i].first, level + 1)) {
                return "g" + std::to_string(i);
            }
        }
        return {};
    }

    const std::vector<Values>& _rows;
    const std::vector<std::string>& _uids;
    std::vector<std::size_t> _kept;
    Picture _groups;
    Picture _relations;
    std::vector<std::pair<std::size_t, std::size_t>> _owners;
};

class StructureModel : public Structure {
  protected:
    StructureModel() { random.seed(seed); }

    std::size_t Below(std::size_t limit) { return random() % limit; }

    // Values of all kinds, few enough to meet often; some are equal across kinds.
    kxVariant AnyValue() {
        static const Values values{kxVariant(),
                                   kxVariant(""),
                                   kxVariant(1),
                                   kxVariant(1.0),
                                   kxVariant(2.5F),
                                   kxVariant(-3),
                                   kxVariant(true),
                                   kxVariant(false),
                                   kxVariant("1"),
                                   kxVariant("steel"),
                                   kxVariant("Steel"),
                                   kxVariant(kxStlVector<kxString>{"a", "b"})};
        return values[Below(1 + Below(values.size()))];
    }

    // What the manager says, drawn as the model draws.
    Picture Drawn() const {
        Picture picture;
        std::map<Item*, std::string> names;
        for (Item* group : newItems) {
            names[group] = "g" + std::to_string(names.size());
            picture.push_back("new [" + group->GetDisplayName() + "] as " + names[group]);
        }
        const auto name = [&](Item* item) {
            const auto group = names.find(item);
            return group == names.end() ? std::string(item->GetUID()) : group->second;
        };
        for (const auto& [parent, child] : newRelations) {
            picture.push_back(name(parent) + " > " + name(child));
        }
        return picture;
    }

    const unsigned seed = kxct_test::Seed();
    std::mt19937 random;
};

TEST_F(StructureModel, GroupingByAttributesIsAsTheNaiveModelSays) {
    for (int round = 0; round < 400; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        Names attributes;
        for (std::size_t i = 1 + Below(5); i > 0; --i) {
            attributes.push_back(kxString("attribute ") + std::to_string(i));
        }
        std::vector<std::unique_ptr<Node>> nodes;
        std::vector<Values> rows;
        std::vector<std::string> uids;
        Items items;
        for (std::size_t i = Below(30); i > 0; --i) {
            uids.push_back("u" + std::to_string(i) + ":1");
            Node& node = *nodes.emplace_back(std::make_unique<Node>(uids.back()));
            Values& row = rows.emplace_back();
            for (const kxString& attribute : attributes) {
                row.push_back(AnyValue());
                node.attributes[attribute] = row.back();
            }
            items.push_back(&node);
        }
        Ask(items, true, false, &attributes);
        ASSERT_EQ(Drawn(), GroupingModel(rows, uids).Draw());
    }
}

TEST_F(StructureModel, GroupingRevisionsIsAsTheNaiveModelSays) {
    for (int round = 0; round < 400; ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        manager->ClearCache();
        std::vector<std::unique_ptr<Node>> nodes;
        std::vector<std::pair<std::string, std::string>> contents;  // base and whole UID
        Items items;
        for (std::size_t i = Below(40); i > 0; --i) {
            const std::string base(1 + Below(2), static_cast<char>('A' + Below(12)));
            contents.emplace_back(base, base + ":" + std::to_string(i));
            items.push_back(
                nodes.emplace_back(std::make_unique<Node>(contents.back().second)).get());
        }
        std::vector<std::string> bases;
        for (const auto& [base, uid] : contents) {
            bases.push_back(base);
        }
        std::sort(bases.begin(), bases.end());
        std::vector<std::string> groups;
        std::vector<std::string> relations;
        for (const std::string& base : bases) {
            if (std::count(bases.begin(), bases.end(), base) < 2 ||
                std::count(groups.begin(), groups.end(), base) > 0) {
                continue;
            }
            groups.push_back(base);
            for (const auto& [itsBase, uid] : contents) {
                if (itsBase == base) {
                    relations.push_back(base + ">" + uid);
                }
            }
        }
        EXPECT_EQ(Ask(items, true, false), groups.size());
        ASSERT_EQ(Text(newItems), groups);
        ASSERT_EQ(Text(newRelations), relations);
    }
}

// A chain of nodes, the first one on top.
std::vector<std::unique_ptr<Node>> Chain(std::size_t length) {
    std::vector<std::unique_ptr<Node>> nodes;
    for (std::size_t i = 0; i < length; ++i) {
        nodes.push_back(std::make_unique<Node>(kxString("n") + std::to_string(i)));
        if (i > 0) {
            nodes[i - 1]->children.push_back(nodes[i].get());
        }
    }
    return nodes;
}

TEST_F(Structure, TenThousandLevelsAreWalkedToTheirEnd) {
    constexpr std::size_t depth = 10000;
    const auto nodes = Chain(depth);
    EXPECT_EQ(Ask({nodes.front().get()}, true, false), depth - 1);
    ASSERT_EQ(newRelations.size(), depth - 1);
    for (std::size_t i = 0; i + 1 < depth; ++i) {
        ASSERT_EQ(newItems[i], nodes[i + 1].get());
        ASSERT_EQ(newRelations[i], std::pair(static_cast<Item*>(nodes[i].get()), newItems[i]));
        ASSERT_EQ(nodes[i]->GetRenderState(), RENDER_EXPANDED);
    }
    EXPECT_EQ(nodes.back()->GetRenderState(), RENDER_NONE);
}

TEST_F(Structure, TenThousandLevelsOpenOneByOneOnDemand) {
    constexpr std::size_t depth = 10000;
    const auto nodes = Chain(depth);
    Ask({nodes.front().get()}, false, true);
    for (std::size_t i = 0; i + 1 < depth; ++i) {
        Ask({nodes[i].get()}, false, true);
        ASSERT_EQ(newItems.front(), nodes[i + 1].get());
        ASSERT_EQ(nodes[i]->GetRenderState(), RENDER_EXPANDED);
        // The ghost goes with its last user.
        ASSERT_EQ(deletedItems.size(), i + 2 == depth ? 1U : 0U);
    }
}

TEST_F(Structure, AHundredThousandItemsAreWalkedLevelByLevel) {
    constexpr std::size_t width = 317;
    Node top("top");
    std::vector<std::unique_ptr<Node>> nodes;
    for (std::size_t i = 0; i < width * width; ++i) {
        nodes.push_back(std::make_unique<Node>(kxString("n") + std::to_string(i)));
    }
    for (std::size_t i = 0; i < width; ++i) {
        top.children.push_back(nodes[i].get());
        for (std::size_t k = 0; k < width && width + i * width + k < nodes.size(); ++k) {
            nodes[i]->children.push_back(nodes[width + i * width + k].get());
        }
    }
    ASSERT_EQ(Ask({&top}, false, false), nodes.size());
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        ASSERT_EQ(newItems[i], nodes[i].get());
    }
}

// Groups go by value, so that a large input has the groups of a small one.
TEST_F(Structure, AHundredThousandItemsAreGrouped) {
    const Names attributes({"material", "mass", "number"});
    std::vector<std::unique_ptr<Node>> nodes;
    Items items;
    for (int i = 0; i < 100000; ++i) {
        Node& node = *nodes.emplace_back(std::make_unique<Node>(kxString("n") + std::to_string(i)));
        node.attributes["material"] = i % 10;
        node.attributes["mass"] = i % 100;
        node.attributes["number"] = i;
        items.push_back(&node);
    }
    EXPECT_EQ(Ask(items, true, false, &attributes), 10U + 100U);
    EXPECT_EQ(newRelations.size(), 100U + 100000U);
}

}  // namespace
}  // namespace kxct::test
