// Library information: any bytes give a document that answers as a search through its entities
// would, takes what is added to it, and, if the text was well-formed, has the same answers after it
// was written and read again. The runtime reads other texts too; literal bodies, which are written
// as they stand, may then hold anything.
#include <kxct/NorvikLibraryInfo.h>
#include <kxctH.h>

#include <algorithm>
#include <boost/lexical_cast.hpp>
#include <charconv>
#include <iterator>
#include <limits>
#include <optional>
#include <pugixml.hpp>
#include <sstream>

#include "Fuzz.h"
#include "settings/_private/XmlDocument.h"

namespace {

using kxct::NorvikLibraryInfo;
using Texts = kxStlVector<kxString>;
using Ids = std::optional<kxStlVector<unsigned int>>;

struct Answers {
    Texts attributes;
    Texts metadata;
    Texts categories;
    kxString folder;

    friend bool operator==(const Answers&, const Answers&) = default;
};

Answers AnswersOf(const NorvikLibraryInfo& info, const kxString& type, std::uint64_t id) {
    return {info.GetEntityAttributes(type, id),
            info.GetEntityMetadata(type, id),
            info.GetEntityCategories(type, id),
            info.GetEntityFolder(type, id)};
}

// Nothing where an id can't be listed.
Ids IdsOf(const NorvikLibraryInfo& info, const kxString& type) {
    try {
        return info.GetEntities(type);
    } catch (const boost::bad_lexical_cast&) {
        return std::nullopt;
    }
}

// The number that is written as `text`, and written so only.
std::optional<std::uint64_t> NumberOf(const std::string& text) {
    std::uint64_t number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return std::to_string(number) == text ? std::optional(number) : std::nullopt;
}

std::optional<unsigned int> ListedId(const std::string& text) {
    const std::size_t sign = text.find_first_of("+-") == 0 ? 1 : 0;
    const char* end = text.data() + text.size();
    unsigned int number = 0;
    const auto [last, error] = std::from_chars(text.data() + sign, end, number);
    if (error != std::errc() || last != end) {
        return std::nullopt;
    }
    return text.front() == '-' ? 0U - number : number;
}

// The entities of a text, as the binding reads them, searched from the front for each question.
class Entities {
  public:
    explicit Entities(const std::string& text)
        : _context(kxct::NewDocumentContext()),
          _root(kxct::soap_new__kxct__NorvikLibraryInfo(_context, -1)) {
        std::istringstream stream(text);
        kxct::ReadDocument(_context, stream, _root, nullptr, nullptr);
        // Null pointers stand in the list where the text says nil.
        std::copy_if(_root->Entity.begin(),
                     _root->Entity.end(),
                     std::back_inserter(_all),
                     [](const kxct::kxct__Entity* entity) { return entity != nullptr; });
    }
    ~Entities() { kxct::FreeDocumentContext(_context); }
    Entities(const Entities&) = delete;
    Entities& operator=(const Entities&) = delete;

    const std::vector<kxct::kxct__Entity*>& All() const { return _all; }

    Texts Types() const {
        Texts types;
        for (const kxct::kxct__Entity* entity : _all) {
            if (std::find(types.begin(), types.end(), entity->type) == types.end()) {
                types.push_back(entity->type);
            }
        }
        return types;
    }

    Ids IdsOf(const std::string& type) const {
        kxStlVector<unsigned int> ids;
        for (const kxct::kxct__Entity* entity : _all) {
            if (entity->type != type) {
                continue;
            }
            const std::optional<unsigned int> id = ListedId(entity->id);
            if (!id) {
                return std::nullopt;
            }
            if (std::find(ids.begin(), ids.end(), *id) == ids.end()) {
                ids.push_back(*id);
            }
        }
        return ids;
    }

    Answers AnswersOf(const std::string& type, std::uint64_t id) const {
        const auto found =
            std::find_if(_all.begin(), _all.end(), [&](const kxct::kxct__Entity* entity) {
                return entity->type == type && entity->id == std::to_string(id);
            });
        return found != _all.end() ? AnswersOf(**found) : Answers();
    }

  private:
    static Answers AnswersOf(const kxct::kxct__Entity& entity) {
        Answers answers;
        const auto attribute = [&](const char* name, const std::string* value) {
            if (value != nullptr) {
                answers.attributes.insert(answers.attributes.end(), {name, *value});
            }
        };
        attribute("libraryentityid", entity.libraryentityid);
        attribute("libraryname", entity.libraryname);
        attribute("librarycomment", entity.librarycomment);
        for (const kxct::kxct__metadata* record : entity.metadata) {
            if (record != nullptr) {
                answers.metadata.insert(answers.metadata.end(), {record->name, record->value});
            }
        }
        for (const kxct::kxct__category* category : entity.category) {
            if (category != nullptr) {
                answers.categories.push_back(category->path);
            }
        }
        if (entity.folder != nullptr) {
            answers.folder = entity.folder->path;
        }
        return answers;
    }

    soap* _context;
    kxct::_kxct__NorvikLibraryInfo* _root;
    std::vector<kxct::kxct__Entity*> _all;
};

void DemandAnswers(const NorvikLibraryInfo& info, const Entities& entities) {
    fuzz::Demand(info.GetEntityTypes() == entities.Types(), "other types");
    for (const kxString& type : entities.Types()) {
        fuzz::Demand(IdsOf(info, type) == entities.IdsOf(type), "other ids of " + type);
    }
    for (const kxct::kxct__Entity* entity : entities.All()) {
        if (const auto id = NumberOf(entity->id)) {
            fuzz::Demand(
                AnswersOf(info, entity->type, *id) == entities.AnswersOf(entity->type, *id),
                "other answers about " + entity->type + " " + entity->id);
        }
    }
}

// Adds to an entity, which the document may have, and expects to find it.
void Add(NorvikLibraryInfo& info, const kxString& type, std::uint64_t id) {
    Answers expected = AnswersOf(info, type, id);
    expected.attributes = {
        "libraryentityid", "7", "libraryname", "<n>", "librarycomment", "\n\xC3\xA9"};
    expected.metadata.insert(expected.metadata.end(), {"a&b", "\"v\""});
    expected.categories.push_back("/c/");
    expected.folder = "/f";
    const bool added = info.AddEntity(
        type,
        id,
        {{"libraryentityid", "7"}, {"libraryname", "<n>"}, {"librarycomment", "\n\xC3\xA9"}},
        {{"a&b", "\"v\""}},
        {"/c/"},
        "/f");
    fuzz::Demand(added, "an entity can't be added");
    fuzz::Demand(AnswersOf(info, type, id) == expected, "what was added isn't found");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(fuzz::TextOf(data, size));
    NorvikLibraryInfo info(text);
    const Entities entities(text);
    DemandAnswers(info, entities);

    Add(info, "Part", std::numeric_limits<std::uint64_t>::max());
    for (const kxct::kxct__Entity* entity : entities.All()) {
        Add(info, entity->type, NumberOf(entity->id).value_or(5));
    }
    const kxString written = info.Serialize();
    if (!pugi::xml_document().load_buffer(text.data(), text.size())) {
        return 0;
    }
    const Entities back(written);
    DemandAnswers(info, back);
    const NorvikLibraryInfo again(written);
    DemandAnswers(again, back);
    // The runtime writes attributes in the order in which it met them first, which a text that was
    // read before it was written has already.
    const kxString settled = again.Serialize();
    fuzz::Demand(NorvikLibraryInfo(settled).Serialize() == settled,
                 "reading changed the document:\n" + settled);
    return 0;
}
