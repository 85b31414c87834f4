// Catalogues: any bytes are refused with an error or give a catalogue that is the same after it was
// written and read again.
#include <kxudm/UDMException.h>

#include "Fuzz.h"
#include "catalogue/Catalogue.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using kxudm::catalogue::Catalogue;
    kxString written;
    try {
        written = Catalogue::ReadText(fuzz::TextOf(data, size), "fuzz.xml")->ToXml();
    } catch (const kxudm::UDMException& error) {
        fuzz::Demand(!std::string(error.what()).empty(), "an error without text");
        return 0;
    }
    // What was accepted once has to be accepted from a library.
    const auto again = Catalogue::ReadText(written, "again.xml");
    fuzz::Demand(again->ToXml() == written, "reading changed the catalogue:\n" + written);
    return 0;
}
