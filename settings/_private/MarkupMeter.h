// Measures XML text as it streams by: how many attribute names it has used so far and how many
// namespace declarations are in force. Lowest layer of the settings documents, no dependencies.
//
// The XML runtime keeps both in linear lists, so that a crafted document of a few hundred kilobytes
// would keep it busy for minutes. The meter ends such a document before the runtime sees the
// excess. It follows the runtime's own tolerant reading of markup and judges nothing else about it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_set>
#include <vector>

namespace kxct {

class MarkupMeter {
  public:
    // The documents' own vocabulary has about twenty names and five declarations.
    static constexpr std::size_t maxAttributeNames = 256;
    static constexpr std::size_t maxNamespacesInForce = 256;

    /// Takes the next `size` bytes; pieces may be cut anywhere. The result is how many of them are
    /// within the limits: `size`, or less when a limit was passed, after which it is 0 for ever.
    std::size_t Accept(const char* data, std::size_t size);

  private:
    enum class State {
        Text,
        TagOpened,
        TagName,
        BetweenAttributes,
        AttributeName,
        BeforeValue,
        QuotedValue,
        BareValue,
        EndTag,
        Declaration,
        CommentOpened,
        Comment,
        CDataOpened,
        CData,
        Instruction,
        SkippedMarkup
    };

    void Step(char character);
    void StepInTag(char character);
    void StepInDeclaration(char character);
    void OpenTag(char character);
    void CloseTag();
    void SkipMarkup(char character);
    void BeginName(char character);
    void ContinueName(char character);
    void EndName();
    std::size_t SkipPlainText(const char* data, std::size_t size) const;

    State _state = State::Text;
    char _previous = 0;
    char _quote = 0;
    bool _exceeded = false;
    // Open "<" inside a declaration that is skipped.
    std::size_t _nesting = 0;
    // Length of the run of ']' or '-' just seen.
    std::size_t _run = 0;

    // The name that is being read: only its hash is kept, since it may be of any length.
    std::uint64_t _nameHash = 0;
    std::size_t _nameLength = 0;
    bool _beginsXmlns = false;
    std::unordered_set<std::uint64_t> _names;

    // Declarations of each open element, outermost first, and those of the tag that is being read.
    std::vector<std::uint16_t> _openElements;
    std::uint16_t _declaredHere = 0;
    std::size_t _inForce = 0;
};

}  // namespace kxct
