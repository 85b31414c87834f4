#include "query/Parser.h"

#include <algorithm>
#include <utility>

#include "catalogue/Value.h"
#include "query/Lexer.h"

namespace kxudm::query {

namespace {

constexpr std::size_t LONGEST_FRAGMENT = 40;
constexpr std::string_view ATTRIBUTE_PREFIX = "attrib.";
constexpr const char* EXPECTED_FIELD =
    "expected type, class, id, name, attrib.NAME, \"!\" or \"(\"";
constexpr const char* EXPECTED_OPERATOR = "expected ==, !=, <, <=, >, >=, like or in";
constexpr const char* EXPECTED_VALUE =
    "expected a value: a text in quotation marks, a number, true, false or a word";

std::string Cut(std::string_view text) {
    if (text.size() <= LONGEST_FRAGMENT) {
        return std::string(text);
    }
    std::size_t size = LONGEST_FRAGMENT;
    while (size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0U) == 0x80U) {
        --size;
    }
    return std::string(text.substr(0, size));
}

std::string ErrorText(std::size_t position, std::string_view fragment, const std::string& problem) {
    const std::string place = fragment.empty()
                                  ? " (its end): "
                                  : " at \"" + catalogue::Printable(Cut(fragment)) +
                                        (fragment.size() > LONGEST_FRAGMENT ? "...\": " : "\": ");
    return "The query has an error at character " + std::to_string(position) + place + problem;
}

class Parser {
  public:
    explicit Parser(std::string_view text) : _lexer(text) { Advance(); }

    Tree Run() {
        if (_token.kind == TokenKind::End) {
            return {};
        }
        Node root = Expression();
        if (_token.kind != TokenKind::End) {
            Fail(_token.Is(")") ? "there is no \"(\" that this closes" : "expected && or ||");
        }
        Add(std::move(root));
        return {std::move(_nodes), std::move(_comparisons)};
    }

  private:
    // One level of parentheses or "!".
    class Level {
      public:
        explicit Level(Parser& parser) : _parser(parser) {
            if (_parser._depth == MAX_QUERY_DEPTH) {
                _parser.Fail("parentheses and \"!\" may be nested " +
                             std::to_string(MAX_QUERY_DEPTH) + " levels deep, not deeper");
            }
            ++_parser._depth;
        }
        ~Level() { --_parser._depth; }
        Level(const Level&) = delete;
        Level& operator=(const Level&) = delete;

      private:
        Parser& _parser;
    };

    [[noreturn]] void Fail(const std::string& problem) const {
        _lexer.Fail(_token.source, problem);
    }

    Token Advance() { return std::exchange(_token, _lexer.Next()); }

    std::size_t Add(Node&& node) {
        _nodes.push_back(std::move(node));
        return _nodes.size() - 1;
    }

    // Operands are kept unadded until their parent is known, so that a chain becomes one node.
    template <typename Operand>
    Node Chain(Node::Kind kind, std::string_view symbol, Operand&& operand) {
        Node first = operand();
        if (!_token.Is(symbol)) {
            return first;
        }
        Node chain{.kind = kind};
        Append(chain, std::move(first));
        while (_token.Is(symbol)) {
            Advance();
            Append(chain, operand());
        }
        return chain;
    }

    void Append(Node& chain, Node&& operand) {
        if (operand.kind == chain.kind) {
            chain.children.insert(
                chain.children.end(), operand.children.begin(), operand.children.end());
        } else {
            chain.children.push_back(Add(std::move(operand)));
        }
    }

    Node Expression() {
        return Chain(Node::Kind::Or, "||", [this] { return Term(); });
    }
    Node Term() {
        return Chain(Node::Kind::And, "&&", [this] { return Factor(); });
    }

    Node Factor() {
        if (_token.Is("!")) {
            const Level level(*this);
            Advance();
            return Not(Factor());
        }
        if (_token.Is("(")) {
            const Level level(*this);
            Advance();
            Node inner = Expression();
            if (!_token.Is(")")) {
                Fail("expected &&, || or \")\"");
            }
            Advance();
            return inner;
        }
        return Compare();
    }

    // A double negation goes: its operand was added last.
    Node Not(Node&& operand) {
        if (operand.kind != Node::Kind::Not) {
            return {.kind = Node::Kind::Not, .children = {Add(std::move(operand))}};
        }
        Node inner = std::move(_nodes.back());
        _nodes.pop_back();
        return inner;
    }

    void CountTerm() {
        if (++_terms > MAX_QUERY_TERMS) {
            Fail("a query may have " + std::to_string(MAX_QUERY_TERMS) +
                 " comparisons and list values, not more");
        }
    }

    Node Compare() {
        CountTerm();
        Comparison comparison;
        comparison.position = _lexer.PositionOf(_token.source);
        TakeField(comparison);
        TakeOperator(comparison);
        if (comparison.op == Operator::In) {
            TakeList(comparison);
        } else {
            if (_token.Is("(")) {
                Fail("a list of values may only follow the operator in");
            }
            comparison.values.push_back(Value(comparison));
        }
        _comparisons.push_back(std::move(comparison));
        return {.kind = Node::Kind::Compare, .comparison = _comparisons.size() - 1};
    }

    void TakeField(Comparison& comparison) {
        constexpr std::pair<std::string_view, Field> fields[] = {{"type", Field::Type},
                                                                 {"class", Field::Class},
                                                                 {"id", Field::Id},
                                                                 {"name", Field::Name}};
        for (const auto& [name, field] : fields) {
            if (_token.IsWord(name)) {
                comparison.field = field;
                Advance();
                return;
            }
        }
        if (_token.kind != TokenKind::Word || !_token.value.starts_with(ATTRIBUTE_PREFIX)) {
            Fail(EXPECTED_FIELD);
        }
        comparison.field = Field::Attribute;
        comparison.attribute = AttributeName();
    }

    std::string AttributeName() {
        std::string name = _token.value.substr(ATTRIBUTE_PREFIX.size());
        if (!name.empty()) {
            if (!std::all_of(name.begin(), name.end(), IsNameCharacter)) {
                Fail(
                    "an attribute name with other characters than letters, digits, \"_\", \".\" "
                    "and \"-\" must stand in quotation marks: attrib.\"NAME\"");
            }
            Advance();
            return name;
        }
        const bool touches = _token.touchesNext;
        Advance();
        if (!touches || _token.kind != TokenKind::Quoted || _token.value.empty()) {
            Fail("expected the name of an attribute directly after \"attrib.\"");
        }
        return Advance().value;
    }

    void TakeOperator(Comparison& comparison) {
        constexpr Operator operators[] = {Operator::Equal,
                                          Operator::NotEqual,
                                          Operator::Less,
                                          Operator::LessOrEqual,
                                          Operator::Greater,
                                          Operator::GreaterOrEqual,
                                          Operator::Like,
                                          Operator::In};
        for (const Operator op : operators) {
            if (_token.Is(SymbolOf(op)) || _token.IsWord(SymbolOf(op))) {
                comparison.op = op;
                CheckOrder(comparison);
                Advance();
                return;
            }
        }
        Fail(EXPECTED_OPERATOR);
    }

    void CheckOrder(const Comparison& comparison) const {
        const bool unordered = comparison.field == Field::Type || comparison.field == Field::Class;
        const bool order =
            comparison.op >= Operator::Less && comparison.op <= Operator::GreaterOrEqual;
        if (unordered && order) {
            Fail("definitions have no order: expected ==, !=, like or in");
        }
    }

    void TakeList(Comparison& comparison) {
        if (!_token.Is("(")) {
            Fail("expected \"(\" and a list of values");
        }
        for (bool more = true; more;) {
            Advance();
            if (!comparison.values.empty()) {
                CountTerm();
            }
            comparison.values.push_back(Value(comparison));
            more = _token.Is(",");
        }
        if (!_token.Is(")")) {
            Fail("expected \",\" or \")\"");
        }
        Advance();
    }

    Literal Value(const Comparison& comparison) {
        if (_token.kind != TokenKind::Word && _token.kind != TokenKind::Quoted) {
            Fail(EXPECTED_VALUE);
        }
        if (comparison.op == Operator::Like && _token.value.size() > MAX_PATTERN_BYTES) {
            Fail("a pattern may have " + std::to_string(MAX_PATTERN_BYTES) + " bytes, not more");
        }
        const bool isDefinition =
            comparison.field == Field::Type || comparison.field == Field::Class;
        Literal literal{.text = isDefinition ? DefinitionName() : Advance().value};
        literal.number = NumberOf(literal.text);
        return literal;
    }

    // Names of definitions may have blanks inside, and stand in expressions as they are.
    std::string DefinitionName() {
        Token first = Advance();
        std::string_view name = first.source;
        while (first.kind == TokenKind::Word && _token.kind == TokenKind::Word) {
            const auto end = static_cast<std::size_t>(_token.source.data() - name.data());
            name = {name.data(), end + _token.source.size()};
            Advance();
        }
        return first.kind == TokenKind::Word ? std::string(name) : first.value;
    }

    Lexer _lexer;
    Token _token;
    std::size_t _depth = 0;
    std::size_t _terms = 0;
    std::vector<Node> _nodes;
    std::vector<Comparison> _comparisons;
};

void RequireText(std::string_view text) {
    const std::size_t invalid = catalogue::FirstInvalidUtf8(text);
    const std::size_t wrong = std::min(invalid, text.find('\0'));
    if (wrong != std::string_view::npos) {
        Lexer(text).Fail(
            text.substr(wrong, 1),
            wrong == invalid ? "the text is not UTF-8 from here on" : "a query can't hold NUL");
    }
}

// The question for siblings of like names, into which callers put a name as it is:
//
//     (type == DEFINITION) && (attrib.displayname like "NAME")
//
// with the quotation marks and backslashes of the name escaped. Empty for any other text.
std::string WithNameEscaped(std::string_view text) {
    constexpr std::string_view BEGIN = "(type == ";
    constexpr std::string_view MIDDLE = ") && (attrib.";
    constexpr std::string_view OPEN = " like \"";
    constexpr std::string_view CLOSE = "\")";
    const std::size_t open = text.find(OPEN);
    const std::size_t start = open + OPEN.size();
    if (open == std::string_view::npos || !text.starts_with(BEGIN) || !text.ends_with(CLOSE) ||
        text.size() < start + CLOSE.size()) {
        return {};
    }
    const std::string_view head = text.substr(0, open);
    if (head.find(MIDDLE) == std::string_view::npos || head.find('"') != std::string_view::npos) {
        return {};
    }
    std::string escaped(text.substr(0, start));
    for (const char letter : text.substr(start, text.size() - CLOSE.size() - start)) {
        escaped += letter == '"' || letter == '\\' ? "\\" : "";
        escaped += letter;
    }
    return escaped += CLOSE;
}

}  // namespace

SyntaxError::SyntaxError(std::size_t position,
                         std::string_view fragment,
                         const std::string& problem)
    : UDMException(ErrorText(position, fragment, problem)),
      _position(position),
      _fragment(Cut(fragment)) {}

Tree Parse(std::string_view text) {
    if (text.size() > MAX_QUERY_BYTES) {
        throw UDMException("The query is " + std::to_string(text.size()) + " bytes long; at most " +
                           std::to_string(MAX_QUERY_BYTES) + " are allowed");
    }
    RequireText(text);
    try {
        return Parser(text).Run();
    } catch (const SyntaxError&) {
        const std::string escaped = WithNameEscaped(text);
        if (escaped.empty()) {
            throw;
        }
        return Parser(escaped).Run();
    }
}

}  // namespace kxudm::query
