// Queries: any text is refused with an error, or the database and the evaluator find the same
// entities with it.
#include <algorithm>
#include <limits>

#include "Fuzz.h"
#include "QueryLibrary.h"

namespace {

class Library final : public kxudm::test::QueryLibrary {
  public:
    Library() {
        const auto text = [](const char* value) { return kxVariant(value); };
        Make("Part", "plate", {{"mass", kxVariant(2.5)}, {"material", text("Steel")}});
        Make("Part", "Plate 2", {{"mass", kxVariant(10)}, {"count", kxVariant(3)}}, Life::MyDraft);
        Make("Bolt", "bolt *[a]?", {{"flag", kxVariant(true)}, {"size", kxVariant(12)}});
        Make("Document",
             "Stra\xC3\x9F"
             "e \xC3\x89",
             {{"size", text("12")}, {"code", text("B-7")}},
             Life::Published);
        Make("Hidden", "hidden", {{"material", text("steel")}});
        Make("Part",
             "changed",
             {{"mass", kxVariant(std::numeric_limits<double>::max())}, {"code", text("")}},
             Life::MyCheckOut,
             {{"mass", kxVariant(1)}, {"material", text("wood")}});
        Make("Bolt",
             "",
             {{"count", kxVariant(-1)}},
             Life::AnotherCheckOut,
             {{"count", kxVariant(9)}});
    }

    void Check(const std::string& text) {
        // What the store computes, such as times, the entities of the evaluator don't have.
        if (text.find("smd_") != std::string::npos) {
            return;
        }
        for (const Letters letters : {Letters::Exact, Letters::Folded}) {
            try {
                // The empty query means roots to the store and everything to the evaluator.
                if (kxudm::query::Parse(text).IsEmpty()) {
                    return;
                }
                const Names hits = Hits(text, letters);
                fuzz::Demand(hits == Expected(text, letters), "the database finds others");
            } catch (const kxudm::UDMException& error) {
                fuzz::Demand(!std::string(error.what()).empty(), "an error without text");
            }
        }
    }

  private:
    void TestBody() override {}
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Library library;
    library.Check(std::string(fuzz::TextOf(data, size)));
    return 0;
}
