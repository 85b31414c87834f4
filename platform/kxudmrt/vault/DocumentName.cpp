#include "vault/DocumentName.h"

#include <kxudm/UDMException.h>
#include <utf8proc.h>

#include <algorithm>
#include <array>

namespace kxudm::vault {
namespace {

constexpr std::size_t kLongest = 255;

// The bytes of the first character; 0 or less where there is none.
utf8proc_ssize_t FirstCharacter(std::string_view text, utf8proc_int32_t& character) {
    return utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                            static_cast<utf8proc_ssize_t>(text.size()),
                            &character);
}

bool IsControl(utf8proc_int32_t character) {
    return character < 0x20 || (character >= 0x7F && character < 0xA0);
}

[[noreturn]] void Refuse(std::string_view name, const char* reason) {
    throw UDMException("'" + Printable(name) + "' is no name for a document: " + reason);
}

void CheckCharacters(std::string_view name) {
    std::string_view rest = name;
    while (!rest.empty()) {
        utf8proc_int32_t character = 0;
        const utf8proc_ssize_t length = FirstCharacter(rest, character);
        if (length <= 0) {
            Refuse(name, "it is no valid UTF-8; give a plain file name in UTF-8");
        }
        if (character == '/' || character == '\\') {
            Refuse(name, "it holds a separator; give a plain file name without folders");
        }
        if (IsControl(character)) {
            Refuse(name, "it holds a control character; leave it out");
        }
        rest.remove_prefix(static_cast<std::size_t>(length));
    }
}

// The part before the first dot is what names a device: "nul.tar.gz" is one.
bool IsDevice(std::string_view name) {
    std::string stem(name.substr(0, name.find('.')));
    while (!stem.empty() && stem.back() == ' ') {
        stem.pop_back();
    }
    std::transform(stem.begin(), stem.end(), stem.begin(), [](char c) {
        return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    });
    constexpr std::array<std::string_view, 6> kDevices = {
        "CON", "PRN", "AUX", "NUL", "CONIN$", "CONOUT$"};
    if (std::find(kDevices.begin(), kDevices.end(), stem) != kDevices.end()) {
        return true;
    }
    if (!stem.starts_with("COM") && !stem.starts_with("LPT")) {
        return false;
    }
    const std::string number = stem.substr(3);
    // The superscript digits 1 to 3 count as digits there.
    return (number.size() == 1 && number[0] >= '0' && number[0] <= '9') || number == "\u00B9" ||
           number == "\u00B2" || number == "\u00B3";
}

}  // namespace

void CheckDocumentName(std::string_view name) {
    if (name.empty()) {
        Refuse(name, "it is empty; give a plain file name");
    }
    if (name == "." || name == "..") {
        Refuse(name, "it names a folder; give a plain file name");
    }
    CheckCharacters(name);
    if (name.size() > kLongest) {
        Refuse(name, "it is longer than 255 bytes; shorten it");
    }
    if (name.back() == '.' || name.back() == ' ') {
        Refuse(name, "it ends with a dot or a blank, which not every system keeps; leave it out");
    }
    if (IsDevice(name)) {
        Refuse(name, "it is the name of a device on some systems; choose another one");
    }
}

std::string Printable(std::string_view text) {
    constexpr std::size_t kShown = 1000;
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::string shown;
    while (!text.empty()) {
        if (shown.size() >= kShown) {
            return shown + "...";
        }
        utf8proc_int32_t character = 0;
        utf8proc_ssize_t length = FirstCharacter(text, character);
        if (length <= 0 || IsControl(character)) {
            const auto byte = static_cast<unsigned char>(text.front());
            shown += "\\x";
            shown += kDigits[byte >> 4];
            shown += kDigits[byte & 15];
            length = 1;
        } else {
            shown += text.substr(0, static_cast<std::size_t>(length));
        }
        text.remove_prefix(static_cast<std::size_t>(length));
    }
    return shown;
}

}  // namespace kxudm::vault
