#include "catalogue/Value.h"

#include <kxudm/UDMException.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <utility>

namespace kxudm::catalogue {

namespace {

constexpr std::array<std::pair<std::string_view, DataType>, 7> kDataTypes{{
    {"Boolean", DataType::Boolean},
    {"Color", DataType::Color},
    {"Double", DataType::Double},
    {"Integer", DataType::Integer},
    {"String", DataType::String},
    {"StringList", DataType::StringList},
    {"Time", DataType::Time},
}};

// The outcome of a conversion: a value, or what would have been right.
struct Converted {
    kxVariant value;
    kxString expected;

    template <class Value>
    static Converted To(const Value& value) {
        return {kxVariant(value), {}};
    }
    static Converted Expected(kxString text) { return {{}, std::move(text)}; }
};

char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

kxString Lowered(std::string_view text) {
    kxString out(text);
    std::transform(out.begin(), out.end(), out.begin(), Lower);
    return out;
}

bool IsNumber(const kxVariant& value) {
    const kxVariant::Kind kind = value.GetKind();
    return kind == kxVariant::INTEGER || kind == kxVariant::FLOAT || kind == kxVariant::DOUBLE;
}

template <class Number>
bool Parse(std::string_view text, Number& number) {
    const char* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number);
    return result.ec == std::errc() && result.ptr == end;
}

// What is wrong with a text, or nothing.
kxString TextFault(std::string_view text) {
    const std::size_t invalid = FirstInvalidUtf8(text);
    if (invalid != std::string_view::npos) {
        return "UTF-8 text, but the byte at offset " + std::to_string(invalid) + " is not UTF-8";
    }
    const std::size_t nul = text.find('\0');
    if (nul != std::string_view::npos) {
        return "text without NUL, but there is one at offset " + std::to_string(nul);
    }
    return {};
}

Converted ToBoolean(const kxVariant& value) {
    if (value.GetKind() == kxVariant::BOOLEAN) {
        return Converted::To(value);
    }
    if (IsNumber(value) && (value == kxVariant(0) || value == kxVariant(1))) {
        return Converted::To(value == kxVariant(1));
    }
    if (const kxString* text = value.PeekString()) {
        const kxString lowered = Lowered(*text);
        if (lowered == "true" || lowered == "1") {
            return Converted::To(true);
        }
        if (lowered == "false" || lowered == "0") {
            return Converted::To(false);
        }
    }
    return Converted::Expected("true or false");
}

Converted ToInteger(const kxVariant& value) {
    if (value.GetKind() == kxVariant::INTEGER) {
        return Converted::To(value);
    }
    if (IsNumber(value)) {
        // Equality of variants is exact across number kinds, also at the limits of 64 bits.
        const kxVariant whole(value.GetInteger64());
        if (whole == value) {
            return Converted::To(whole);
        }
    }
    std::int64_t number = 0;
    if (const kxString* text = value.PeekString(); text != nullptr && Parse(*text, number)) {
        return Converted::To(number);
    }
    return Converted::Expected("a whole decimal number of 64 bits");
}

Converted ToDouble(const kxVariant& value) {
    double number = 0;
    if (IsNumber(value)) {
        number = value.GetDouble();
        if (std::isfinite(number) && kxVariant(number) == value) {
            return Converted::To(number);
        }
    }
    if (const kxString* text = value.PeekString();
        text != nullptr && Parse(*text, number) && std::isfinite(number)) {
        return Converted::To(number);
    }
    return Converted::Expected("a finite decimal number that a double holds");
}

Converted ToText(const kxVariant& value) {
    if (IsNumber(value) || value.GetKind() == kxVariant::BOOLEAN) {
        return Converted::To(value.GetString());
    }
    if (const kxString* text = value.PeekString()) {
        kxString fault = TextFault(*text);
        return fault.empty() ? Converted::To(value) : Converted::Expected(std::move(fault));
    }
    return Converted::Expected("one text");
}

Converted ToTextList(const kxVariant& value) {
    const kxVariant::Kind kind = value.GetKind();
    if (kind != kxVariant::STRING && kind != kxVariant::STRINGLIST) {
        return Converted::Expected("a list of texts");
    }
    const kxStlVector<kxString> list = value.GetStringList();
    for (std::size_t i = 0; i < list.size(); ++i) {
        const kxString fault = TextFault(list[i]);
        if (!fault.empty()) {
            return Converted::Expected("entry " + std::to_string(i) + " to be " + fault);
        }
    }
    return Converted::To(list);
}

bool IsColor(std::string_view text) {
    return text.size() == 7 && text.front() == '#' &&
           text.find_first_not_of("0123456789abcdefABCDEF", 1) == std::string_view::npos;
}

Converted ToColor(const kxVariant& value) {
    if (const kxString* text = value.PeekString(); text != nullptr && IsColor(*text)) {
        return Converted::To(Lowered(*text));
    }
    if (value.GetKind() == kxVariant::INTEGER && value.GetInteger64() >= 0 &&
        value.GetInteger64() <= 0xFFFFFF) {
        kxString color = "#000000";
        auto rest = static_cast<unsigned>(value.GetInteger64());
        for (std::size_t i = 6; i > 0; --i, rest >>= 4U) {
            color[i] = "0123456789abcdef"[rest & 0xFU];
        }
        return Converted::To(color);
    }
    return Converted::Expected("a colour as #rrggbb or a number up to 16777215");
}

unsigned DaysOf(unsigned year, unsigned month) {
    constexpr std::array<unsigned, 12> days{31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    return month == 2 && leap ? 29 : days[month - 1];
}

bool IsTime(std::string_view text) {
    constexpr std::string_view pattern = "dddd-dd-ddTdd:dd:ddZ";
    if (text.size() != pattern.size()) {
        return false;
    }
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        const bool digit = text[i] >= '0' && text[i] <= '9';
        if (pattern[i] == 'd' ? !digit : text[i] != pattern[i]) {
            return false;
        }
    }
    const auto number = [&](std::size_t from, std::size_t count) {
        unsigned out = 0;
        Parse(text.substr(from, count), out);
        return out;
    };
    const unsigned year = number(0, 4);
    const unsigned month = number(5, 2);
    const unsigned day = number(8, 2);
    return year >= 1 && month >= 1 && month <= 12 && day >= 1 && day <= DaysOf(year, month) &&
           number(11, 2) <= 23 && number(14, 2) <= 59 && number(17, 2) <= 59;
}

Converted ToTime(const kxVariant& value) {
    if (const kxString* text = value.PeekString(); text != nullptr && IsTime(*text)) {
        return Converted::To(value);
    }
    return Converted::Expected("a UTC time such as 2026-01-31T12:00:00Z");
}

Converted Convert(DataType type, const kxVariant& value) {
    switch (type) {
        case DataType::Boolean:
            return ToBoolean(value);
        case DataType::Color:
            return ToColor(value);
        case DataType::Double:
            return ToDouble(value);
        case DataType::Integer:
            return ToInteger(value);
        case DataType::String:
            return ToText(value);
        case DataType::StringList:
            return ToTextList(value);
        case DataType::Time:
            return ToTime(value);
    }
    return Converted::Expected("an attribute of a known data type");
}

bool IsAmong(const kxStlVector<kxString>& valid, const kxVariant& value) {
    const auto contains = [&](const kxString& text) {
        return std::find(valid.begin(), valid.end(), text) != valid.end();
    };
    if (const kxStlVector<kxString>* list = value.PeekStringList()) {
        return std::all_of(list->begin(), list->end(), contains);
    }
    return contains(value.GetString());
}

kxString ListOf(const kxStlVector<kxString>& valid) {
    constexpr std::size_t most = 8;
    kxString out = "one of";
    for (std::size_t i = 0; i < valid.size() && i < most; ++i) {
        out += (i == 0 ? " '" : ", '") + Printable(valid[i]) + "'";
    }
    return valid.size() > most ? kxString(out + ", ...") : out;
}

bool IsWithoutContent(const kxVariant& value) {
    const kxString* text = value.PeekString();
    const kxStlVector<kxString>* list = value.PeekStringList();
    return value.IsEmpty() || (text != nullptr && text->empty()) ||
           (list != nullptr && list->empty());
}

// The value that takes a value of the type away, where `value` is one without content.
kxVariant Cleared(DataType type, const kxVariant& value) {
    const bool keepsEmptyText = type == DataType::String && value.PeekString() != nullptr;
    return keepsEmptyText ? value : kxVariant();
}

[[noreturn]] void Refuse(const AttributeDefinition& attribute,
                         std::string_view definition,
                         const kxVariant& value,
                         const kxString& expected) {
    kxString text = "attribute '" + Printable(attribute.name) + "'";
    if (!definition.empty()) {
        text += " of definition '" + Printable(definition) + "'";
    }
    const bool pointer = value.GetKind() == kxVariant::POINTER;
    const kxString shown = pointer ? kxString("a pointer")
                                   : kxString("the value '" + Printable(value.GetString()) + "'");
    throw UDMException(text + " does not take " + shown + ": expected " + expected);
}

}  // namespace

std::optional<DataType> DataTypeOf(std::string_view name) {
    for (const auto& [known, type] : kDataTypes) {
        if (known == name) {
            return type;
        }
    }
    return std::nullopt;
}

kxVariant CheckedValue(const AttributeDefinition& attribute,
                       const kxVariant& value,
                       std::string_view definition) {
    const std::optional<DataType> type = DataTypeOf(attribute.dataType);
    if (!type) {
        Refuse(attribute, definition, value, "a known data type, not '" + attribute.dataType + "'");
    }
    if (IsWithoutContent(value)) {
        if (attribute.mandatory) {
            Refuse(attribute, definition, value, "a value, since the attribute is mandatory");
        }
        if (value.PeekStringList() == nullptr || *type == DataType::StringList) {
            return Cleared(*type, value);
        }
    }
    Converted converted = Convert(*type, value);
    if (!converted.expected.empty()) {
        Refuse(attribute, definition, value, converted.expected);
    }
    if (!attribute.validValues.empty() && !IsAmong(attribute.validValues, converted.value)) {
        Refuse(attribute, definition, value, ListOf(attribute.validValues));
    }
    return std::move(converted.value);
}

}  // namespace kxudm::catalogue
