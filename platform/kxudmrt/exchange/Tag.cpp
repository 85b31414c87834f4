#include "exchange/Tag.h"

#include <algorithm>

#include "catalogue/Value.h"
#include "exchange/Text.h"

namespace kxudm::exchange {

Tag::Tag(const char* element, const char** attributes) : element_(element) {
    for (const char** each = attributes; *each != nullptr; each += 2) {
        attributes_.push_back({each[0], each[1]});
    }
}

Tag::Attribute* Tag::Find(std::string_view name) {
    const auto found = std::find_if(attributes_.begin(),
                                    attributes_.end(),
                                    [&](const Attribute& each) { return each.name == name; });
    if (found == attributes_.end()) {
        return nullptr;
    }
    found->taken = true;
    return &*found;
}

bool Tag::Has(std::string_view name) const {
    return std::any_of(attributes_.begin(), attributes_.end(), [&](const Attribute& each) {
        return each.name == name;
    });
}

void Tag::Refuse(std::string_view name, std::string_view value, const std::string& expected) const {
    throw BadTag("the attribute \"" + std::string(name) + "\" of <" + std::string(element_) +
                 "> is \"" + catalogue::Printable(value) + "\"; expected " + expected);
}

std::optional<std::string> Tag::OptionalText(std::string_view name) {
    const Attribute* found = Find(name);
    if (found == nullptr) {
        return std::nullopt;
    }
    std::optional<std::string> text = Unescaped(found->value);
    if (!text) {
        Refuse(
            name, found->value, "\"\\\\\" for a backslash, and \"\\xHH\" only where it is needed");
    }
    return text;
}

std::string Tag::Text(std::string_view name) {
    std::optional<std::string> text = OptionalText(name);
    if (!text) {
        throw BadTag("<" + std::string(element_) + "> has no attribute \"" + std::string(name) +
                     "\"; expected one");
    }
    return std::move(*text);
}

std::string Tag::Name(std::string_view name) {
    std::string text = Text(name);
    if (text.empty()) {
        Refuse(name, text, "a text that is not empty");
    }
    return text;
}

std::string Tag::Uid(std::string_view name) {
    std::string text = Text(name);
    if (!IsBaseUid(text)) {
        Refuse(name, text, "a UID without revision, 26 characters of Crockford's base 32");
    }
    return text;
}

store::Microseconds Tag::Time(std::string_view name) {
    const std::string text = Text(name);
    const std::optional<std::int64_t> time = TimeOf(text);
    if (!time) {
        Refuse(name, text, "a time like \"2026-01-31T12:00:00Z\"");
    }
    return *time;
}

std::int64_t Tag::Number(std::string_view name, std::int64_t least, std::int64_t most) {
    const std::string text = Text(name);
    const std::optional<std::int64_t> number = IntegerOf(text);
    if (!number || *number < least || *number > most) {
        Refuse(name,
               text,
               "a whole number from " + std::to_string(least) + " to " + std::to_string(most));
    }
    return *number;
}

int Tag::RevisionNumber(std::string_view name) {
    return static_cast<int>(Number(name, 0, store::MAX_REVISION));
}

int Tag::RevisionNumber(std::string_view name, int absent) {
    return Has(name) ? RevisionNumber(name) : absent;
}

bool Tag::Flag(std::string_view name, bool usual) {
    const std::optional<std::string> text = OptionalText(name);
    if (text && *text != (usual ? "false" : "true")) {
        Refuse(name, *text, std::string("\"") + (usual ? "false" : "true") + "\" or no attribute");
    }
    return text ? !usual : usual;
}

void Tag::Finish() const {
    for (const Attribute& each : attributes_) {
        if (!each.taken) {
            throw BadTag("<" + std::string(element_) + "> has the unknown attribute \"" +
                         catalogue::Printable(each.name) + "\"; leave it out");
        }
    }
}

}  // namespace kxudm::exchange
