// Two engines, one meaning: generated queries find in the database what the evaluator finds in
// memory. The seed is printed; KXCT_TEST_SEED sets it.
#include <random>

#include "QueryLibrary.h"
#include "tests/support/Seed.h"

using kxudm::store::EntityId;
using kxudm::test::QueryLibrary;

namespace {

// Many small libraries: each round fills a new one.
constexpr int ENTITIES = 60;
constexpr int QUERIES = 1000;
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int ROUNDS = 2;
#else
constexpr int ROUNDS = 25;
#endif

class Generator {
  public:
    explicit Generator(unsigned seed) : random_(seed) {}

    unsigned Below(unsigned limit) { return random_() % limit; }
    bool Chance(unsigned percent) { return Below(100) < percent; }
    template <typename List>
    std::string OneOf(const List& list) {
        return list[Below(static_cast<unsigned>(std::size(list)))];
    }

    std::string Text() {
        static const char* const texts[] = {"",
                                            "a",
                                            "A",
                                            "ab",
                                            "aB",
                                            "abc",
                                            "b",
                                            "\xC3\xA4",
                                            "\xC3\x84"
                                            "b",
                                            "a\xCC\x88",
                                            "7",
                                            "07",
                                            "12",
                                            "-1",
                                            "2.5",
                                            "1e1",
                                            "true",
                                            "a b",
                                            "a*b",
                                            "a?b",
                                            "a_b",
                                            "a%b",
                                            "a[b]",
                                            "a]b",
                                            "a\"b",
                                            "a\\b",
                                            "stra\xC3\x9F"
                                            "e",
                                            "STRASSE",
                                            "\xF4\x8F\xBF\xBF",
                                            "\x7F",
                                            "'",
                                            "z"};
        return OneOf(texts);
    }

    std::string Number() {
        static const char* const numbers[] = {"-1",
                                              "0",
                                              "1",
                                              "1.0",
                                              "2.5",
                                              "7",
                                              "10",
                                              "12",
                                              "9007199254740993",
                                              "9007199254740992.0",
                                              "1e1"};
        return OneOf(numbers);
    }

    kxVariant Value(const std::string& attribute, const std::string& definition) {
        const bool whole =
            attribute == "count" || (attribute == "size" && definition != "Document");
        if (attribute == "mass") {
            return kxVariant(static_cast<double>(Below(8)) * 2.5 - 2.5);
        }
        if (whole) {
            return Chance(10) ? kxVariant(9007199254740993LL)
                              : kxVariant(static_cast<int>(Below(14)) - 1);
        }
        if (attribute == "flag") {
            return kxVariant(Chance(50));
        }
        if (attribute == "tags") {
            return kxVariant(kxStlVector<kxString>{Text(), Text()});
        }
        return kxVariant(Text());
    }

    std::map<std::string, kxVariant> Attributes(const std::string& definition) {
        std::map<std::string, kxVariant> attributes;
        for (const char* name : {"mass", "count", "flag", "material", "code", "tags", "size"}) {
            const bool part = definition == "Part" || definition == "Bolt";
            const bool numeric = std::string(name) == "mass" || std::string(name) == "count" ||
                                 std::string(name) == "flag";
            if (Chance(70) && (part || !numeric)) {
                attributes[name] = Value(name, definition);
            }
        }
        return attributes;
    }

    std::string Quoted(const std::string& text) {
        std::string out = "\"";
        for (const char c : text) {
            out += c == '"' || c == '\\' ? std::string("\\") + c : std::string(1, c);
        }
        return out + "\"";
    }

    std::string Literal() {
        return Chance(40) ? Number() : Quoted(Text() + (Chance(20) ? Text() : ""));
    }

    std::string Pattern() {
        std::string pattern;
        for (unsigned left = Below(4); left > 0; --left) {
            pattern += Chance(30) ? "*" : Chance(20) ? "?" : Text();
        }
        return Quoted(pattern);
    }

    std::string Comparison() {
        static const char* const orders[] = {"==", "==", "!=", "<", "<=", ">", ">="};
        if (Chance(20)) {
            static const char* const names[] = {"Root", "Part", "Bolt", "Document", "Fold", "x"};
            static const char* const equalities[] = {"==", "!=", "like"};
            return (Chance(50) ? "type " : "class ") + OneOf(equalities) + " " + OneOf(names);
        }
        if (Chance(10)) {
            const std::string uid = "U" + std::to_string(1000 + Below(ENTITIES));
            return "id " + OneOf(orders) + " " + uid +
                   (Chance(50) ? ":" + std::to_string(Below(2)) : "");
        }
        static const char* const fields[] = {"name",
                                             "attrib.mass",
                                             "attrib.count",
                                             "attrib.flag",
                                             "attrib.material",
                                             "attrib.code",
                                             "attrib.tags",
                                             "attrib.size",
                                             "attrib.displayname"};
        const std::string field = OneOf(fields);
        if (Chance(25)) {
            return field + " like " + Pattern();
        }
        if (Chance(20)) {
            return field + " in (" + Literal() + ", " + Literal() + ")";
        }
        return field + " " + OneOf(orders) + " " + Literal();
    }

    std::string Expression(int depth) {
        if (depth == 0 || Chance(25)) {
            return Comparison();
        }
        std::string text = (Chance(20) ? "!(" : "(") + Expression(depth - 1);
        for (unsigned more = Below(3); more > 0; --more) {
            text += (Chance(60) ? " && " : " || ") + Expression(depth - 1);
        }
        return text + ")";
    }

  private:
    std::mt19937 random_;
};

class Differential : public QueryLibrary, public testing::WithParamInterface<unsigned> {
  protected:
    // In an empty library, all in one folder, which itself is none of them.
    void Fill(Generator& make) {
        store_ = NewLibrary();
        seen_.clear();
        folder_ = store_->Insert(
            {.uid = "F", .definition = "Hidden", .name = "F"}, {}, {kxudm::store::ANN, 1});
        static const char* const definitions[] = {"Part", "Part", "Bolt", "Document", "Folder"};
        store_->Update([&] {
            for (int i = 0; i < ENTITIES; ++i) {
                const std::string definition = make.OneOf(definitions);
                const EntityId id = Make(definition,
                                         make.Text() + make.Text(),
                                         make.Attributes(definition),
                                         static_cast<Life>(make.Below(5)),
                                         make.Attributes(definition));
                store_->AddLink({.parent = folder_,
                                 .child = id,
                                 .kind = kxudm::store::LinkKind::Folder,
                                 .revision = seen_.back().revision},
                                {kxudm::store::ANN, 2});
            }
        });
    }

    std::vector<std::string> Found(const std::string& text, Letters letters) {
        std::vector<kxudm::store::EntityRow> rows;
        store_->VisitHits(
            Compiled(text, letters), kxudm::store::ANN, false, 0, 0, kxudm::store::Into(rows));
        std::vector<std::string> uids = Uids(rows);
        std::erase(uids, "F");
        return uids;
    }

    std::vector<std::string> Listed(const std::string& text, Letters letters) {
        std::vector<kxudm::store::LinkedRow> rows;
        store_->Children(folder_,
                         0,
                         kxudm::store::LinkKind::Folder,
                         {},
                         kxudm::store::ANN,
                         rows,
                         false,
                         Compiled(text, letters, kxudm::query::CompileOptions::Use::Listing));
        return Uids(rows);
    }

    std::vector<std::string> Evaluated(const std::string& text, Letters letters) const {
        const kxudm::query::Evaluator evaluator(kxudm::query::Parse(text), letters);
        std::vector<std::string> uids;
        for (const auto& seen : seen_) {
            if (evaluator.Matches(seen)) {
                uids.push_back(seen.uid);
            }
        }
        return uids;
    }

    EntityId folder_ = 0;
};

}  // namespace

TEST_P(Differential, TheDatabaseFindsWhatTheEvaluatorFinds) {
    const unsigned seed = kxct_test::Seed() + GetParam();
    Generator make(seed);
    int withHits = 0;
    for (int round = 0; round < ROUNDS; ++round) {
        Fill(make);
        for (int i = 0; i < QUERIES; ++i) {
            const std::string text = make.Expression(static_cast<int>(make.Below(4)));
            const Letters letters = i % 2 == 0 ? Letters::Exact : Letters::Folded;
            const auto expected = Evaluated(text, letters);
            ASSERT_EQ(Found(text, letters), expected) << text << "\nseed " << seed << "\n"
                                                      << Compiled(text, letters).sql;
            ASSERT_EQ(Listed(text, letters), expected) << text << "\nseed " << seed;
            withHits += !expected.empty() && expected.size() < ENTITIES ? 1 : 0;
        }
    }
    // Otherwise the queries would say nothing.
    EXPECT_GT(withHits, ROUNDS * QUERIES / 4) << "seed " << seed;
}

// A hundred thousand queries altogether, in suites that run beside each other.
#define KXUDM_SHARD(number) \
    INSTANTIATE_TEST_SUITE_P(Shard##number, Differential, testing::Values(number##U))
KXUDM_SHARD(0);
KXUDM_SHARD(1);
KXUDM_SHARD(2);
KXUDM_SHARD(3);
#undef KXUDM_SHARD
