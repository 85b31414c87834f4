// Documents of archives: any bytes are refused with an error, or give records that are the same
// after they were written and read again, whatever pieces they came in.
#include <algorithm>
#include <utility>

#include "Fuzz.h"
#include "catalogue/Catalogue.h"
#include "exchange/DocumentReader.h"
#include "exchange/DocumentWriter.h"

namespace {

using namespace kxudm::exchange;

// Writes the document that it hears.
class Copy final : public DocumentHandler {
  public:
    void Begin(Scope scope, std::string&& catalogueXml) override {
        std::string definitions;
        try {
            definitions = kxudm::catalogue::Catalogue::ReadText(catalogueXml, "fuzz")->ToXml();
        } catch (const kxudm::UDMException&) {
            definitions.clear();
        }
        writer_.Begin(scope, definitions);
    }
    void Entity(EntityRecord&& entity) override { writer_.Entity(entity); }
    void Link(const std::string& first, LinkRecord&& link) override { writer_.Link(first, link); }
    void End(const DocumentCounts&) override { writer_.End(); }

    std::string text;

  private:
    DocumentWriter writer_{[this](std::string_view bytes) { text += bytes; }};
};

std::string Copied(std::string_view text, std::size_t piece) {
    Copy copy;
    DocumentReader reader(copy, "fuzz.xml");
    for (; !text.empty(); text.remove_prefix(std::min(piece, text.size()))) {
        reader.Feed(text.substr(0, piece));
    }
    reader.Finish();
    return copy.text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = fuzz::TextOf(data, size);
    std::string written;
    std::string refusal;
    try {
        written = Copied(text, text.size() + 1);
    } catch (const kxudm::UDMException& error) {
        refusal = error.what();
        fuzz::Demand(!refusal.empty(), "an error without text");
    }
    if (!refusal.empty()) {
        bool refused = false;
        try {
            static_cast<void>(Copied(text, 3));
        } catch (const kxudm::UDMException&) {
            refused = true;
        }
        fuzz::Demand(refused, "taken in pieces what was refused as a whole");
        return 0;
    }
    fuzz::Demand(Copied(text, 3) == written, "pieces give another document");
    fuzz::Demand(Copied(written, 7) == written, "reading changed the document:\n" + written);
    return 0;
}
