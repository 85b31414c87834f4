#include "query/Lexer.h"

#include <algorithm>
#include <array>

#include "query/Parser.h"
#include "query/Tree.h"

namespace kxudm::query {

namespace {

constexpr std::string_view BLANKS = " \t\r\n";
constexpr std::string_view FURTHER_WORD_CHARACTERS = ":+/@#*?~$%";
// Longer ones first.
constexpr std::array<std::string_view, 12> SYMBOLS{
    "&&", "||", "==", "!=", "<=", ">=", "<", ">", "!", "(", ")", ","};

bool IsWordCharacter(char c) {
    return IsNameCharacter(c) || FURTHER_WORD_CHARACTERS.find(c) != std::string_view::npos;
}

bool IsControl(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

// Size of the UTF-8 character that begins the text.
std::size_t CharacterSize(std::string_view text) {
    std::size_t size = 1;
    while (size < text.size() && (static_cast<unsigned char>(text[size]) & 0xC0U) == 0x80U) {
        ++size;
    }
    return size;
}

}  // namespace

std::size_t Lexer::PositionOf(std::string_view part) const {
    const auto before = _text.substr(0, static_cast<std::size_t>(part.data() - _text.data()));
    return 1 + static_cast<std::size_t>(std::count_if(before.begin(), before.end(), [](char c) {
               return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
           }));
}

void Lexer::Fail(std::string_view at, const std::string& problem) const {
    throw SyntaxError(PositionOf(at), at, problem);
}

Token Lexer::Take(TokenKind kind, std::size_t size) {
    Token token;
    token.kind = kind;
    token.source = _rest.substr(0, size);
    _rest.remove_prefix(size);
    token.touchesNext = !_rest.empty() && BLANKS.find(_rest.front()) == std::string_view::npos;
    return token;
}

std::size_t Lexer::WordSize() const {
    const auto end = std::find_if_not(_rest.begin(), _rest.end(), IsWordCharacter);
    return static_cast<std::size_t>(end - _rest.begin());
}

// A backslash before another character than " and \ stands for itself.
Token Lexer::TakeQuoted() {
    std::string value;
    std::size_t i = 1;
    for (; i < _rest.size() && _rest[i] != '"'; ++i) {
        const bool escape = _rest[i] == '\\' && i + 1 < _rest.size() &&
                            (_rest[i + 1] == '"' || _rest[i + 1] == '\\');
        i += escape ? 1 : 0;
        value += _rest[i];
    }
    if (i == _rest.size()) {
        Fail(_rest, "the quotation mark that closes this text is missing");
    }
    Token token = Take(TokenKind::Quoted, i + 1);
    token.value = std::move(value);
    return token;
}

Token Lexer::Next() {
    _rest.remove_prefix(std::min(_rest.find_first_not_of(BLANKS), _rest.size()));
    if (_rest.empty()) {
        return Take(TokenKind::End, 0);
    }
    if (_rest.front() == '"') {
        return TakeQuoted();
    }
    for (const std::string_view symbol : SYMBOLS) {
        if (_rest.starts_with(symbol)) {
            return Take(TokenKind::Symbol, symbol.size());
        }
    }
    if (const std::size_t size = WordSize(); size > 0) {
        Token token = Take(TokenKind::Word, size);
        token.value = token.source;
        return token;
    }
    Fail(_rest.substr(0, CharacterSize(_rest)),
         IsControl(_rest.front()) ? "a control character must stand in quotation marks"
                                  : "this character has no meaning outside of quotation marks");
}

}  // namespace kxudm::query
