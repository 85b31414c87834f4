#include "Report.h"

#include <algorithm>
#include <cstdio>
#include <iostream>

namespace demo {

namespace {

// Length of the UTF-8 sequence that begins at `text[at]`, 0 where none does.
std::size_t SequenceLength(const std::string& text, std::size_t at) {
    const auto lead = static_cast<unsigned char>(text[at]);
    if (lead < 0x80) {
        return 1;
    }
    std::size_t length = 0;
    unsigned least = 0x80;  // of the second byte
    unsigned greatest = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        least = lead == 0xE0 ? 0xA0 : 0x80;
        greatest = lead == 0xED ? 0x9F : 0xBF;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        least = lead == 0xF0 ? 0x90 : 0x80;
        greatest = lead == 0xF4 ? 0x8F : 0xBF;
    }
    if (length == 0 || at + length > text.size()) {
        return 0;
    }
    for (std::size_t i = 1; i < length; ++i) {
        const auto byte = static_cast<unsigned char>(text[at + i]);
        if (byte < least || byte > greatest) {
            return 0;
        }
        least = 0x80;
        greatest = 0xBF;
    }
    return length;
}

// Of a sequence of two bytes and more: a control character, or one that turns the line round.
bool IsUnprintable(const std::string& text, std::size_t at, std::size_t length) {
    const std::string sequence = text.substr(at, length);
    return (length == 2 && sequence < "\xC2\xA0") ||
           (sequence >= "\xE2\x80\xA8" && sequence <= "\xE2\x80\xAE") ||
           (sequence >= "\xE2\x81\xA6" && sequence <= "\xE2\x81\xA9");
}

bool SameText(kxct::Item& item,
              const kxString& attribute,
              const kxString& expected,
              const std::string& who) {
    const kxString found = item.GetAttributeValue(attribute).GetString();
    if (found == expected) {
        return true;
    }
    std::cerr << "differs: " << who << ": " << attribute << " is \"" << Printable(found)
              << "\" in the library and \"" << Printable(expected) << "\" in the folder\n";
    return false;
}

bool IsEqual(kxct::Item* item, const Entry& entry) {
    const std::string who = Printable(entry.name) + " (" + entry.uid + ")";
    if (item == nullptr) {
        std::cerr << "missing: " << who << '\n';
        return false;
    }
    bool equal = SameText(*item, "name", entry.name, who);
    if (item->GetType() != entry.definition) {
        std::cerr << "differs: " << who << ": it is a " << item->GetType()
                  << " in the library and a " << entry.definition << " by the folder\n";
        equal = false;
    }
    if (!entry.isFolder) {
        equal = SameText(*item, "filetype", entry.type, who) && equal;
        equal = SameText(*item, "filesize", std::to_string(entry.size), who) && equal;
        equal = SameText(*item, "filelastmodified", entry.modified, who) && equal;
    }
    return equal;
}

}  // namespace

std::size_t CountContents(const std::vector<Entry>& entries) {
    return static_cast<std::size_t>(std::count_if(
        entries.begin(), entries.end(), [](const Entry& entry) { return !entry.isFolder; }));
}

std::string Printable(const std::string& name) {
    std::string text;
    for (std::size_t at = 0; at < name.size();) {
        const std::size_t length = SequenceLength(name, at);
        const auto byte = static_cast<unsigned char>(name[at]);
        const std::size_t taken = length == 0 ? 1 : length;
        if (name[at] == '\\') {
            text += "\\\\";
        } else if (length == 0 || byte < 0x20 || byte == 0x7F || IsUnprintable(name, at, length)) {
            for (std::size_t i = at; i < at + taken; ++i) {
                char escape[8];
                std::snprintf(
                    escape, sizeof escape, "\\x%02X", static_cast<unsigned char>(name[i]));
                text += escape;
            }
        } else {
            text.append(name, at, length);
        }
        at += taken;
    }
    return text;
}

std::size_t CountEqual(Library& library, const std::vector<Entry>& entries) {
    std::size_t equal = 0;
    for (const Entry& entry : entries) {
        kxct::Item* item = library.Controller().GetItem(entry.uid, false);
        if (IsEqual(item, entry) && !entry.isFolder) {
            ++equal;
        }
    }
    return equal;
}

void PrintTree(Library& library, const std::vector<Entry>& entries, std::size_t lines) {
    for (std::size_t i = 0; i < entries.size() && i < lines; ++i) {
        kxct::Item* item = library.Controller().GetItem(entries[i].uid, false);
        if (item == nullptr) {
            continue;
        }
        std::cout << std::string(2 * entries[i].depth, ' ') << Printable(item->GetDisplayName())
                  << "  [" << item->GetType() << ']';
        if (!entries[i].isFolder) {
            std::cout << "  " << item->GetAttributeValue("filesize").GetString() << " bytes";
        }
        std::cout << '\n';
    }
    if (entries.size() > lines) {
        std::cout << "... and " << entries.size() - lines << " more\n";
    }
}

}  // namespace demo
