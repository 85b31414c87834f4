// A query as a tree: what the parser makes and the engines read.
//
// Layer: query. A tree is immutable and owns all of its texts; copies are independent. Its nodes
// stand in one vector, children before parents and the root last, so that walkers are loops:
// nothing here or in the engines recurses over a tree.
//
//     const Tree tree = Parse("type == UDMPart && attrib.mass > 2.5");
//     tree.Dump();   // (and (== type "UDMPart") (> attrib.mass "2.5"=2.5))
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace kxudm::query {

enum class Field { Type, Class, Id, Name, Attribute };

enum class Operator {
    Equal,
    NotEqual,
    Less,
    LessOrEqual,
    Greater,
    GreaterOrEqual,
    Like,
    In,
};

using Number = std::variant<std::int64_t, double>;

// The number that a text says in decimal notation ("12", "-0.5", "1e3"); 1 and 0 for "true" and
// "false" in any case. Nothing for other texts and for what a double does not hold.
[[nodiscard]] std::optional<Number> NumberOf(std::string_view text);

// A value as written, without its quotes. Attributes that hold numbers compare with `number`,
// all others with `text`; so it does not matter whether a number was quoted.
struct Literal {
    std::string text;
    std::optional<Number> number = {};
};

struct Comparison {
    Field field = Field::Name;
    std::string attribute = {};  // name, for Field::Attribute
    Operator op = Operator::Equal;
    std::vector<Literal> values = {};  // one; for In one or more
    std::size_t position = 1;          // of the field in the text, in characters from 1
};

struct Node {
    enum class Kind { And, Or, Not, Compare };

    Kind kind = Kind::Compare;
    // And, Or: two or more; Not: one. Places in Nodes(), each less than the node's own.
    std::vector<std::size_t> children = {};
    // Compare: place in Comparisons().
    std::size_t comparison = 0;
};

class Tree {
  public:
    // The empty query: every root entity, or, where a listing is thinned out, everything.
    Tree() = default;
    Tree(std::vector<Node> nodes, std::vector<Comparison> comparisons)
        : _nodes(std::move(nodes)), _comparisons(std::move(comparisons)) {}

    [[nodiscard]] bool IsEmpty() const { return _nodes.empty(); }
    [[nodiscard]] const std::vector<Node>& Nodes() const { return _nodes; }
    [[nodiscard]] const std::vector<Comparison>& Comparisons() const { return _comparisons; }

    // For tests and logs: "(and X Y)", "(not X)", "(== type "T")", "(roots)" for the empty query.
    [[nodiscard]] std::string Dump() const;

  private:
    std::vector<Node> _nodes;
    std::vector<Comparison> _comparisons;
};

// "==", "like", ...
[[nodiscard]] std::string_view SymbolOf(Operator op);
// "type", "attrib.mass", with quotes round a name that needs them.
[[nodiscard]] std::string NameOf(const Comparison& comparison);
// True for the characters that a name after "attrib." may have without quotes.
[[nodiscard]] bool IsNameCharacter(char c);

}  // namespace kxudm::query
