// Random edits of two users, each followed by random searches, which find what a scan of a model in
// memory finds. The model knows nothing of indexes: it keeps the words of each revision as numbers
// of a vocabulary.
//
// KXCT_TEST_SEED sets the seed, KXCT_TEST_SEQUENCES makes it longer.
#include <kxudm/UDMMaintenance.h>

#include <map>
#include <optional>
#include <random>
#include <set>

#include "FullText.h"
#include "tests/support/Seed.h"

namespace kxudm::test {
namespace {

constexpr int USERS = 2;
constexpr int STEPS = 60;
constexpr unsigned long SEQUENCES = 10;

struct Word {
    const char* written;
    const char* folded;
};
constexpr std::array<Word, 12> VOCABULARY{{{"bolt", "bolt"},
                                           {"Bolt", "bolt"},
                                           {"BOLT", "bolt"},
                                           {"bolted", "bolted"},
                                           {"nut", "nut"},
                                           {"Nuts", "nuts"},
                                           {"\xC3\x89tage", "etage"},
                                           {"\xC3\xA9tage", "etage"},
                                           {"etage", "etage"},
                                           {"Stra\xC3\x9F"
                                            "e",
                                            "strasse"},
                                           {"strasse", "strasse"},
                                           {"AND", "and"}}};

// A text: numbers of words.
using Text = std::vector<std::size_t>;

struct Content {
    Text description;
    Text tag;
    std::map<std::string, Text> files;
};

struct Entity {
    kxString base;
    std::string name;  // a word that nobody else has
    std::optional<Content> published;
    std::optional<Content> working;
    int holder = -1;
    bool deleted = false;

    [[nodiscard]] const Content* SeenBy(int user) const {
        const bool own = working && holder == user;
        return deleted ? nullptr : own ? &*working : published ? &*published : nullptr;
    }
};

struct Question {
    Text words;
    int mode = ALL;
    bool exact = false;
    bool prefix = false;  // the last word is cut to its first letters

    [[nodiscard]] std::string Asked(std::size_t i) const {
        const Word& word = VOCABULARY[words[i]];
        const std::string text = exact ? word.written : word.folded;
        return prefix && i + 1 == words.size() ? text.substr(0, 3) : text;
    }
    [[nodiscard]] bool Is(std::size_t i, std::size_t word) const {
        const std::string text = exact ? VOCABULARY[word].written : VOCABULARY[word].folded;
        return prefix && i + 1 == words.size() ? text.starts_with(Asked(i)) : text == Asked(i);
    }
    [[nodiscard]] bool HasPhrase(const Text& text) const {
        for (std::size_t at = 0; at + words.size() <= text.size(); ++at) {
            std::size_t same = 0;
            while (same < words.size() && Is(same, text[at + same])) {
                ++same;
            }
            if (same == words.size()) {
                return true;
            }
        }
        return false;
    }
    [[nodiscard]] bool IsMetBy(const Content& content) const {
        std::vector<const Text*> texts{&content.description, &content.tag};
        for (const auto& [name, text] : content.files) {
            texts.push_back(&text);
        }
        std::size_t found = 0;
        for (std::size_t i = 0; i < words.size(); ++i) {
            found += std::any_of(texts.begin(), texts.end(), [&](const Text* text) {
                return std::any_of(
                    text->begin(), text->end(), [&](std::size_t word) { return Is(i, word); });
            });
        }
        switch (mode) {
            case ALL:
                return found == words.size();
            case ANY:
                return found > 0;
            default:
                return std::any_of(
                    texts.begin(), texts.end(), [&](const Text* text) { return HasPhrase(*text); });
        }
    }
};

class FullTextRandom : public Files {
  protected:
    std::size_t Any(std::size_t below) { return random() % below; }

    Text AnyText(std::size_t most) {
        Text text(Any(most + 1));
        for (std::size_t& word : text) {
            word = Any(VOCABULARY.size());
        }
        return text;
    }
    static std::string Written(const Text& text) {
        std::string written;
        for (std::size_t i = 0; i < text.size(); ++i) {
            written += i == 0 ? "" : i % 3 == 0 ? ", " : " ";
            written += VOCABULARY[text[i]].written;
        }
        return written;
    }

    // --- Steps; those that are refused do nothing ---

    void Create(int user) {
        Entity entity;
        entity.name = "n" + std::to_string(entities.size()) + "n";
        entity.base = Base(users[user]->CreateEntity("Part", entity.name));
        entity.working = Content();
        entity.holder = user;
        entities.push_back(entity);
    }
    void Edit(int user, Entity& entity) {
        const UDMItemHandle handle = users[user]->GetEntity(entity.base);
        Content& content = *entity.working;
        const std::string file = Any(2) == 0 ? "a.txt" : "b.txt";
        switch (Any(5)) {
            case 0:
            case 1:
                content.description = AnyText(5);
                users[user]->SetAttributeValue(handle, "description", Written(content.description));
                break;
            case 2:
                content.tag = AnyText(1);
                users[user]->SetAttributeValue(
                    handle, "tags", kxStlVector<kxString>{Written(content.tag)});
                break;
            case 3: {
                const bool there = content.files.count(file) != 0;
                content.files[file] = AnyText(8);
                const std::string path = Write(file, Written(content.files[file]));
                if (there) {
                    users[user]->ReAddFile(handle, path, false, false);
                } else {
                    AddFile(users[user], handle, path);
                }
                break;
            }
            default:
                if (content.files.erase(file) != 0) {
                    users[user]->RemoveFile(handle, file);
                }
        }
    }
    void Live(int user, Entity& entity) {
        IUDMProfile& profile = *users[user];
        const UDMItemHandle handle = profile.GetEntity(entity.base);
        if (!entity.working) {
            profile.Checkout(handle, "");
            entity.working = entity.published;
            entity.holder = user;
            return;
        }
        if (Any(3) == 0 && entity.published) {
            profile.UndoCheckout(handle);
            entity.working.reset();
            return;
        }
        const bool keep = Any(3) == 0;
        profile.PersistEntity(handle, "", keep, true, true);
        entity.published = entity.working;
        if (!keep) {
            entity.working.reset();
        }
    }
    void Step() {
        const int user = static_cast<int>(Any(USERS));
        const std::size_t chosen = Any(12);
        if (entities.empty() || chosen < 2) {
            Create(user);
            return;
        }
        Entity& entity = entities[Any(entities.size())];
        const bool mine = entity.working && entity.holder == user;
        if (entity.deleted) {
            if (chosen < 6) {
                UDMMaintenance(users[user]).Undelete(entity.base);
                entity.deleted = false;
            }
        } else if (entity.working && !mine) {
            return;
        } else if (chosen == 2) {
            users[user]->DeleteEntity(users[user]->GetEntity(entity.base), true, false);
            entity.deleted = true;
        } else if (chosen < 8 && mine) {
            Edit(user, entity);
        } else if (chosen == 11 && Any(4) == 0) {
            UDMMaintenance(users[user]).RebuildFullText();
        } else {
            Live(user, entity);
        }
    }

    // --- Searches ---

    Question AnyQuestion() {
        Question question;
        question.mode = static_cast<int>(Any(3));
        question.exact = Any(3) == 0;
        question.prefix = Any(4) == 0;
        do {
            question.words = AnyText(3);
        } while (question.words.empty());
        return question;
    }
    void Compare(int user) {
        const Question question = AnyQuestion();
        std::string text;
        for (std::size_t i = 0; i < question.words.size(); ++i) {
            text += (i == 0 ? "" : " ") + question.Asked(i);
        }
        text += question.prefix ? "*" : "";
        Names expected;
        for (const Entity& entity : entities) {
            const Content* const seen = entity.SeenBy(user);
            if (seen != nullptr && question.IsMetBy(*seen)) {
                expected.push_back(entity.name);
            }
        }
        EXPECT_EQ(Search(users[user], text, question.mode, !question.exact), expected)
            << "user " << user << (question.exact ? ", exact" : "") << ", mode " << question.mode
            << ": " << text;
        found += expected.size();
    }
    void CompareSome() {
        std::unique_ptr<store::LibraryStore> writer;
        std::unique_ptr<sql::Transaction> lock;
        if (Any(3) == 0) {
            // Nothing can be indexed meanwhile.
            writer = providers::OpenLibraryFile(library.File(), 1000);
            lock = std::make_unique<sql::Transaction>(writer->Connection());
        }
        for (int i = 0; i < 4; ++i) {
            Compare(i % USERS);
        }
    }

    std::vector<ProfilePtr> users{ann, library.Open("bob")};
    std::mt19937 random;
    std::vector<Entity> entities;
    std::size_t found = 0;
};

TEST_F(FullTextRandom, FindsWhatAScanOfAllWordsFinds) {
    const unsigned seed = kxct_test::Seed();
    random.seed(seed);
    const unsigned long sequences = kxct_test::Setting("KXCT_TEST_SEQUENCES", SEQUENCES);
    for (unsigned long i = 0; i < sequences && !HasFailure(); ++i) {
        for (Entity& entity : entities) {
            // What is there keeps being searched for, but not for ever.
            const ProfilePtr& owner = users[entity.working ? entity.holder : 0];
            if (!entity.deleted && Any(2) == 0) {
                owner->DeleteEntity(owner->GetEntity(entity.base), true, false);
                entity.deleted = true;
            }
        }
        for (int step = 0; step < STEPS && !HasFailure(); ++step) {
            Step();
            CompareSome();
        }
        for (const UDMFinding& finding : UDMMaintenance(ann).Verify()) {
            ADD_FAILURE() << finding.object << ": " << finding.text;
        }
    }
    EXPECT_GT(found, sequences * STEPS);
}

}  // namespace
}  // namespace kxudm::test
