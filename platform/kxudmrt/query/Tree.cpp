#include "query/Tree.h"

#include <kxutl/kxVariant.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace kxudm::query {

namespace {

constexpr std::array<std::string_view, 8> SYMBOLS{"==", "!=", "<", "<=", ">", ">=", "like", "in"};

bool EqualsIgnoringCase(std::string_view text, std::string_view lower) {
    return std::equal(text.begin(), text.end(), lower.begin(), lower.end(), [](char a, char b) {
        return (a >= 'A' && a <= 'Z' ? static_cast<char>(a - 'A' + 'a') : a) == b;
    });
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

std::string Quoted(std::string_view text) {
    std::string out = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            out += '\\';
        }
        out += c;
    }
    return out + '"';
}

std::string DumpOf(const Comparison& comparison) {
    std::string out = "(" + std::string(SymbolOf(comparison.op)) + " " + NameOf(comparison);
    for (const Literal& value : comparison.values) {
        out += " " + Quoted(value.text);
        if (value.number) {
            out += "=";
            out += std::visit([](auto number) { return kxVariant(number).GetString(); },
                              *value.number);
        }
    }
    return out + ")";
}

}  // namespace

std::optional<Number> NumberOf(std::string_view text) {
    if (EqualsIgnoringCase(text, "true")) {
        return std::int64_t{1};
    }
    if (EqualsIgnoringCase(text, "false")) {
        return std::int64_t{0};
    }
    if (text.starts_with('+') && !text.starts_with("+-")) {
        text.remove_prefix(1);
    }
    // Words that the conversion knows ("inf", "nan") are no numbers here.
    const std::string_view digits = text.substr(text.starts_with('-') ? 1 : 0);
    const std::size_t first = digits.starts_with('.') ? 1 : 0;
    if (digits.size() <= first || !IsDigit(digits[first])) {
        return std::nullopt;
    }
    const char* const end = text.data() + text.size();
    std::int64_t whole = 0;
    if (const auto [stop, error] = std::from_chars(text.data(), end, whole);
        stop == end && error == std::errc()) {
        return whole;
    }
    double number = 0;
    if (const auto [stop, error] = std::from_chars(text.data(), end, number);
        stop == end && error == std::errc() && std::isfinite(number)) {
        return number;
    }
    return std::nullopt;
}

std::string_view SymbolOf(Operator op) {
    return SYMBOLS[static_cast<std::size_t>(op)];
}

bool IsNameCharacter(char c) {
    return IsDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == '.' ||
           c == '-' || static_cast<unsigned char>(c) >= 0x80;
}

std::string NameOf(const Comparison& comparison) {
    switch (comparison.field) {
        case Field::Type:
            return "type";
        case Field::Class:
            return "class";
        case Field::Id:
            return "id";
        case Field::Name:
            return "name";
        case Field::Attribute:
            break;
    }
    const std::string& name = comparison.attribute;
    const bool plain = !name.empty() && std::all_of(name.begin(), name.end(), IsNameCharacter);
    return "attrib." + (plain ? name : Quoted(name));
}

std::string Tree::Dump() const {
    std::vector<std::string> texts;
    texts.reserve(_nodes.size());
    for (const Node& node : _nodes) {
        if (node.kind == Node::Kind::Compare) {
            texts.push_back(DumpOf(_comparisons[node.comparison]));
            continue;
        }
        std::string text = node.kind == Node::Kind::And  ? "(and"
                           : node.kind == Node::Kind::Or ? "(or"
                                                         : "(not";
        for (const std::size_t child : node.children) {
            text += " " + std::exchange(texts[child], {});
        }
        texts.push_back(text + ")");
    }
    return texts.empty() ? "(roots)" : texts.back();
}

}  // namespace kxudm::query
