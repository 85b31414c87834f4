// The text of a query as tokens.
//
// Layer: query, inside. The text must outlive the lexer and its tokens.
#pragma once

#include <string>
#include <string_view>

namespace kxudm::query {

enum class TokenKind {
    End,
    Word,    // field, keyword, number or bare value: which of them, its place decides
    Quoted,  // the value is the text without quotes and escapes
    Symbol,  // && || ! ( ) , == != < <= > >=
};

struct Token {
    TokenKind kind = TokenKind::End;
    std::string_view source = {};  // as it stands in the text
    std::string value = {};        // Word, Quoted
    bool touchesNext = false;      // no blank before what follows

    [[nodiscard]] bool Is(std::string_view symbol) const {
        return kind == TokenKind::Symbol && source == symbol;
    }
    [[nodiscard]] bool IsWord(std::string_view word) const {
        return kind == TokenKind::Word && source == word;
    }
};

class Lexer {
  public:
    explicit Lexer(std::string_view text) : _text(text), _rest(text) {}

    // Throws SyntaxError for what is no token.
    [[nodiscard]] Token Next();
    // Position of a part of the text, in characters from 1.
    [[nodiscard]] std::size_t PositionOf(std::string_view part) const;
    // Throws SyntaxError at a part of the text.
    [[noreturn]] void Fail(std::string_view at, const std::string& problem) const;

  private:
    [[nodiscard]] Token Take(TokenKind kind, std::size_t size);
    [[nodiscard]] Token TakeQuoted();
    [[nodiscard]] std::size_t WordSize() const;

    std::string_view _text;
    std::string_view _rest;
};

}  // namespace kxudm::query
