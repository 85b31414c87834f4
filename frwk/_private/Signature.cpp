#include "frwk/_private/Signature.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>
#include <vector>

namespace kxct {
namespace {

constexpr std::string_view CALLING_CONVENTION = "__cdecl ";

template <std::size_t N>
bool OneOf(std::string_view word, const std::array<std::string_view, N>& words) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

// A name alone does not tell what kind of type it is; all that are not listed here are classes.
std::string_view KindOf(std::string_view name) {
    static constexpr std::array<std::string_view, 8> structs{"std::less",
                                                             "std::greater",
                                                             "std::pair",
                                                             "std::char_traits",
                                                             "std::hash",
                                                             "kxct::DocumentInfo",
                                                             "kxct::Metadata",
                                                             "Tcl_Interp"};
    static constexpr std::array<std::string_view, 8> enums{"HistoryCategory",
                                                           "CONN_TYPE",
                                                           "ManagerType",
                                                           "ItemRenderState",
                                                           "DataType",
                                                           "QueryMode",
                                                           "MetadataAttribute",
                                                           "SignalOption"};
    if (OneOf(name, structs)) {
        return "struct ";
    }
    const auto scope = name.rfind("::");
    const auto last = scope == std::string_view::npos ? name : name.substr(scope + 2);
    return OneOf(last, enums) ? "enum " : "class ";
}

// Appends the default arguments that the compiler leaves out when it prints a container.
void AddDefaultArguments(std::string_view name, std::vector<std::string>& arguments) {
    static constexpr std::array<std::string_view, 4> sequences{
        "kxStlVector", "std::vector", "std::list", "std::deque"};
    static constexpr std::array<std::string_view, 2> sets{"kxStlSet", "std::set"};
    static constexpr std::array<std::string_view, 2> maps{"kxStlMap", "std::map"};
    const auto close = [](const std::string& text) {
        return text + (text.ends_with('>') ? " >" : ">");
    };
    const bool isMap = OneOf(name, maps);
    if ((isMap && arguments.size() == 2) || (OneOf(name, sets) && arguments.size() == 1)) {
        arguments.push_back(close("struct std::less<" + arguments[0]));
    }
    if (isMap && arguments.size() == 3) {
        const auto pair = close("struct std::pair<" + arguments[0] + " const ," + arguments[1]);
        arguments.push_back(close("class std::allocator<" + pair));
    } else if ((OneOf(name, sets) && arguments.size() == 2) ||
               (OneOf(name, sequences) && arguments.size() == 1)) {
        arguments.push_back(close("class std::allocator<" + arguments[0]));
    }
}

// Reads types from left to right and writes them in the told shape. Fails (nullopt) on anything
// that is no plain type, such as a function pointer.
class TypeWriter {
  public:
    explicit TypeWriter(std::string_view text) : _text(text) {}

    // The types of an argument list, "void" for none.
    std::optional<std::string> Arguments() {
        if (AtEnd()) {
            return "void";
        }
        std::string result;
        do {
            const auto type = Type(Place::ARGUMENT);
            if (!type) {
                return std::nullopt;
            }
            result += (result.empty() ? "" : ",") + *type;
        } while (Take(","));
        return AtEnd() ? std::optional(result) : std::nullopt;
    }

    std::optional<std::string> Result() {
        auto type = Type(Place::ARGUMENT);
        return AtEnd() ? type : std::nullopt;
    }

    // A function's qualified name; only its template arguments are types.
    std::optional<std::string> FunctionName() {
        auto name = QualifiedName(false);
        if (name && name->ends_with("operator")) {
            *name += _text.substr(_at);
            return name;
        }
        return AtEnd() ? name : std::nullopt;
    }

  private:
    // Where "const" stands differs: before the type in arguments, behind it within "<...>".
    enum class Place { ARGUMENT, TEMPLATE };

    std::optional<std::string> Type(Place place) {
        bool isConst = false;
        std::vector<std::string_view> builtin;
        std::optional<std::string> name;
        for (auto word = PeekWord(); !word.empty() && !name; word = PeekWord()) {
            if (word == "const") {
                isConst = true;
                Skip(word);
            } else if (IsBuiltin(word)) {
                builtin.push_back(word);
                Skip(word);
            } else if (!builtin.empty()) {
                break;
            } else if (name = QualifiedName(true); !name) {
                return std::nullopt;
            }
        }
        if (!name && builtin.empty()) {
            return std::nullopt;
        }
        auto type = name ? *name : BuiltinName(builtin);
        isConst = TakeWord("const") || isConst;
        if (isConst) {
            type = place == Place::ARGUMENT ? "const " + type : type + " const ";
        }
        TakePointers(type);
        if (place == Place::ARGUMENT && !PeekWord().empty()) {
            Skip(PeekWord());
        }
        return type;
    }

    void TakePointers(std::string& type) {
        for (;;) {
            SkipBlanks();
            const auto pointer = Take("&&") ? "&&" : Take("&") ? "&" : Take("*") ? "*" : "";
            if (!*pointer) {
                return;
            }
            if (!type.ends_with(' ') && !type.ends_with('*')) {
                type += ' ';
            }
            type += pointer;
            if (TakeWord("const")) {
                type += "const ";
            }
        }
    }

    std::optional<std::string> QualifiedName(bool withKind) {
        std::string kind;
        for (const std::string_view given : {"class", "struct", "enum"}) {
            if (TakeWord(given)) {
                kind = std::string(given) + " ";
            }
        }
        std::string bare;
        std::string result;
        for (;;) {
            if (Take("~")) {
                result += '~';
            }
            const auto word = PeekWord();
            if (word.empty()) {
                return std::nullopt;
            }
            Skip(word);
            bare += word;
            result += word;
            if (word != "operator" && !TemplateArguments(bare, result)) {
                return std::nullopt;
            }
            if (!Take("::")) {
                break;
            }
            bare += "::";
            result += "::";
        }
        return withKind ? NamedType(kind, bare, result) : result;
    }

    // Appends "<...>" to `result` if it follows. False only for a malformed list.
    bool TemplateArguments(std::string_view name, std::string& result) {
        if (!Take("<")) {
            return true;
        }
        std::vector<std::string> arguments;
        do {
            const auto argument = Type(Place::TEMPLATE);
            if (!argument) {
                return false;
            }
            arguments.push_back(*argument);
        } while (Take(","));
        if (!Take(">")) {
            return false;
        }
        AddDefaultArguments(name, arguments);
        result += '<';
        for (std::size_t i = 0; i < arguments.size(); ++i) {
            result += (i ? "," : "") + arguments[i];
        }
        result += result.ends_with('>') ? " >" : ">";
        return true;
    }

    static std::string NamedType(const std::string& kind,
                                 std::string_view bare,
                                 const std::string& full) {
        if (bare == "size_t" || bare == "std::size_t") {
            return "unsigned __int64";
        }
        if (bare == "std::string" || bare == "std::__cxx11::basic_string") {
            return "class std::basic_string<char,struct std::char_traits<char>,"
                   "class std::allocator<char> >";
        }
        return (kind.empty() ? std::string(KindOf(bare)) : kind) + full;
    }

    static bool IsBuiltin(std::string_view word) {
        static constexpr std::array<std::string_view, 11> words{"void",
                                                                "bool",
                                                                "char",
                                                                "short",
                                                                "int",
                                                                "long",
                                                                "float",
                                                                "double",
                                                                "signed",
                                                                "unsigned",
                                                                "wchar_t"};
        return OneOf(word, words);
    }

    // GCC says "long unsigned int" where others say "unsigned long"; the texts know one spelling.
    static std::string BuiltinName(const std::vector<std::string_view>& words) {
        const auto count = [&](std::string_view word) {
            return std::count(words.begin(), words.end(), word);
        };
        const std::string sign = count("unsigned") ? "unsigned " : "";
        if (count("long") == 2 || (count("long") == 1 && count("unsigned"))) {
            return sign + "__int64";
        }
        for (const std::string_view base : {"double", "long", "short", "char"}) {
            if (count(base)) {
                const bool longDouble = base == "double" && count("long");
                return sign + (longDouble ? "long " : "") + std::string(base);
            }
        }
        return sign.empty() ? std::string(words.front() == "signed" ? "int" : words.front())
                            : sign + "int";
    }

    void SkipBlanks() {
        while (_at < _text.size() && _text[_at] == ' ') {
            ++_at;
        }
    }

    bool AtEnd() {
        SkipBlanks();
        return _at == _text.size();
    }

    std::string_view PeekWord() {
        SkipBlanks();
        auto end = _at;
        while (end < _text.size() &&
               (std::isalnum(static_cast<unsigned char>(_text[end])) || _text[end] == '_')) {
            ++end;
        }
        return _text.substr(_at, end - _at);
    }

    void Skip(std::string_view word) { _at += word.size(); }

    bool TakeWord(std::string_view word) {
        if (PeekWord() != word) {
            return false;
        }
        Skip(word);
        return true;
    }

    bool Take(std::string_view token) {
        SkipBlanks();
        if (!_text.substr(_at).starts_with(token)) {
            return false;
        }
        _at += token.size();
        return true;
    }

    std::string_view _text;
    std::size_t _at = 0;
};

struct Declaration {
    std::string_view result;
    std::string_view name;
    std::string_view arguments;
    bool isConst = false;
};

void Trim(std::string_view& text) {
    while (text.starts_with(' ')) {
        text.remove_prefix(1);
    }
    while (text.ends_with(' ')) {
        text.remove_suffix(1);
    }
}

std::string_view Undecorated(std::string_view text) {
    for (const std::string_view mark : {"::<lambda", "::(anonymous class)", " [with ", " [T = "}) {
        text = text.substr(0, text.find(mark));
    }
    for (const std::string_view word : {"static ", "virtual ", "constexpr ", "inline "}) {
        if (text.starts_with(word)) {
            text.remove_prefix(word.size());
        }
    }
    Trim(text);
    return text;
}

// The position behind the result type: the last blank outside of "<...>".
std::size_t StartOfName(std::string_view head) {
    head = head.substr(0, head.find("operator"));
    int depth = 0;
    for (auto i = head.size(); i-- > 0;) {
        depth += head[i] == '>' ? 1 : head[i] == '<' ? -1 : 0;
        if (head[i] == ' ' && depth == 0) {
            return i + 1;
        }
    }
    return 0;
}

std::optional<Declaration> Split(std::string_view text) {
    Declaration parts;
    const auto close = text.rfind(')');
    if (close == std::string_view::npos) {
        return std::nullopt;
    }
    parts.isConst = text.substr(close).find("const") != std::string_view::npos;
    auto open = close;
    for (int depth = 1; depth > 0;) {
        if (open-- == 0) {
            return std::nullopt;
        }
        depth += text[open] == ')' ? 1 : text[open] == '(' ? -1 : 0;
    }
    parts.arguments = text.substr(open + 1, close - open - 1);
    if (parts.arguments == "void") {
        parts.arguments = {};
    }
    const auto head = text.substr(0, open);
    auto start = StartOfName(head);
    while (start < head.size() && (head[start] == '&' || head[start] == '*')) {
        ++start;
    }
    parts.result = head.substr(0, start);
    parts.name = head.substr(start);
    Trim(parts.result);
    return parts;
}

}  // namespace

std::string SignatureText(std::string_view function) {
    const auto parts = Split(Undecorated(function));
    if (!parts) {
        return std::string(function);
    }
    const auto name = TypeWriter(parts->name).FunctionName();
    const auto arguments = TypeWriter(parts->arguments).Arguments();
    auto text = std::optional<std::string>("");
    if (!parts->result.empty()) {
        text = TypeWriter(parts->result).Result();
    }
    if (!name || !arguments || !text) {
        return std::string(function);
    }
    if (!text->empty()) {
        *text += ' ';
    }
    *text += std::string(CALLING_CONVENTION) + *name + "(" + *arguments + ")";
    return parts->isConst ? *text + " const" : *text;
}

}  // namespace kxct
