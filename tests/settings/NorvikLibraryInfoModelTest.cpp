// Descriptions of libraries compared with a plain list of entities on generated input.
#include <gmock/gmock.h>
#include <kxct/NorvikLibraryInfo.h>

#include <algorithm>
#include <boost/lexical_cast.hpp>
#include <deque>
#include <limits>
#include <optional>
#include <random>

#include "tests/support/Seed.h"

namespace kxct::test {
namespace {

using Texts = kxStlMap<kxString, kxString>;
using Paths = kxStlVector<kxString>;
using Ids = std::optional<kxStlVector<unsigned int>>;

const Paths types{"Part", "part", "Plate", ""};
const Paths names{"libraryentityid", "libraryname", "librarycomment"};
// Ids as texts say them; the last three can't be listed.
const Paths written{"0", "1", "2", "3", "007", "+2", "-1", "x", "", "4294967296"};
constexpr std::uint64_t idLimit = 6;

// The document as a plain list that is searched from the front for each question.
class LinearInfo {
  public:
    struct Entity {
        kxString type;
        kxString id;
        Texts attributes{};
        Paths metadata{};
        Paths categories{};
        kxString folder{};
    };

    // An entity as a text says it, whether or not there is an equal one.
    void Append(const kxString& type, const kxString& id) { _entities.push_back({type, id}); }

    Entity& Get(const kxString& type, std::uint64_t id) {
        for (Entity& entity : _entities) {
            if (entity.type == type && entity.id == std::to_string(id)) {
                return entity;
            }
        }
        Append(type, std::to_string(id));
        return _entities.back();
    }

    Paths Types() const {
        Paths found;
        for (const Entity& entity : _entities) {
            if (std::find(found.begin(), found.end(), entity.type) == found.end()) {
                found.push_back(entity.type);
            }
        }
        return found;
    }

    // Nothing where an id can't be listed.
    Ids IdsOf(const kxString& type) const {
        kxStlVector<unsigned int> ids;
        for (const Entity& entity : _entities) {
            if (entity.type != type) {
                continue;
            }
            const std::size_t sign = entity.id.find_first_of("+-") == 0 ? 1 : 0;
            const kxString digits = entity.id.substr(sign);
            if (digits.empty() || digits.find_first_not_of("0123456789") != kxString::npos ||
                std::stoull(digits) > std::numeric_limits<unsigned int>::max()) {
                return std::nullopt;
            }
            const auto number = static_cast<unsigned int>(std::stoull(digits));
            const unsigned int id = entity.id[0] == '-' ? 0U - number : number;
            if (std::find(ids.begin(), ids.end(), id) == ids.end()) {
                ids.push_back(id);
            }
        }
        return ids;
    }

  private:
    std::deque<Entity> _entities;
};

Ids IdsOf(const NorvikLibraryInfo& info, const kxString& type) {
    try {
        return info.GetEntities(type);
    } catch (const boost::bad_lexical_cast&) {
        return std::nullopt;
    }
}

class NorvikLibraryInfoModel : public testing::Test {
  protected:
    NorvikLibraryInfoModel() { random.seed(seed); }

    std::size_t Below(std::size_t limit) { return random() % limit; }
    const kxString& AnyType() { return types[Below(types.size())]; }

    // A text with up to seven entities, equal ones among them.
    kxString StartingText(LinearInfo& model) {
        kxString text = "<kxct:NorvikLibraryInfo>";
        for (std::size_t i = Below(8); i > 0; --i) {
            // Ids that can't be listed are rare, so that most lists are compared.
            const kxString& id = written[Below(Below(4) == 0 ? written.size() : 7)];
            const kxString& type = AnyType();
            model.Append(type, id);
            text += "<Entity type='" + type + "' id='" + id + "'/>";
        }
        return text + "</kxct:NorvikLibraryInfo>";
    }

    // One call of any form, to both.
    void Add(NorvikLibraryInfo& info, LinearInfo& model, const kxString& text) {
        const kxString& type = AnyType();
        const std::uint64_t id = Below(idLimit);
        const kxString& name = names[Below(names.size())];
        const Texts attributes{{name, text}};
        const Texts metadata{{"a", text}};
        LinearInfo::Entity& entity = model.Get(type, id);
        const std::size_t form = Below(5);
        if (form == 0) {
            EXPECT_TRUE(info.AddEntity(type, id));
            return;
        }
        entity.attributes[name] = text;
        if (form == 1) {
            EXPECT_TRUE(info.AddEntity(type, id, attributes));
            return;
        }
        entity.metadata.insert(entity.metadata.end(), {"a", text});
        if (form == 2) {
            EXPECT_TRUE(info.AddEntity(type, id, attributes, metadata));
            return;
        }
        entity.categories.push_back(text);
        if (form == 3) {
            EXPECT_TRUE(info.AddEntity(type, id, attributes, metadata, {text}));
            return;
        }
        entity.folder = text;
        EXPECT_TRUE(info.AddEntity(type, id, attributes, metadata, {text}, text));
    }

    static void ExpectAlike(const NorvikLibraryInfo& info, LinearInfo model) {
        EXPECT_EQ(info.GetEntityTypes(), model.Types());
        for (const kxString& type : types) {
            EXPECT_EQ(IdsOf(info, type), model.IdsOf(type)) << type;
            for (std::uint64_t id = 0; id < idLimit; ++id) {
                const LinearInfo::Entity& entity = model.Get(type, id);
                Paths attributes;
                for (const kxString& name : names) {
                    if (entity.attributes.count(name) != 0) {
                        attributes.insert(attributes.end(), {name, entity.attributes.at(name)});
                    }
                }
                EXPECT_EQ(info.GetEntityAttributes(type, id), attributes);
                EXPECT_EQ(info.GetEntityMetadata(type, id), entity.metadata);
                EXPECT_EQ(info.GetEntityCategories(type, id), entity.categories);
                EXPECT_EQ(info.GetEntityFolder(type, id), entity.folder);
            }
        }
    }

    const unsigned seed = kxct_test::Seed();
    std::mt19937 random;
};

TEST_F(NorvikLibraryInfoModel, AnswersAsALinearScanWould) {
    for (int round = 0; round < 300 && !HasFailure(); ++round) {
        SCOPED_TRACE("round " + std::to_string(round));
        LinearInfo model;
        NorvikLibraryInfo info(StartingText(model));
        for (std::size_t i = Below(30); i > 0; --i) {
            Add(info, model, std::to_string(i));
        }
        ExpectAlike(info, model);
        ExpectAlike(NorvikLibraryInfo(info.Serialize()), model);
    }
}

}  // namespace
}  // namespace kxct::test
