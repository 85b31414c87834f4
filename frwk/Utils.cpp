#include <kxct/Utils.h>

#include <boost/xpressive/xpressive_dynamic.hpp>
#include <exception>

namespace kxct {

using boost::xpressive::sregex;

namespace {

// A default-constructed expression has no identity; matching with it would be an error.
bool IsUsable(const sregex& expression) {
    return expression.regex_id() != nullptr;
}

}  // namespace

bool Utils::CompileRegExp(const kxString& pattern, bool caseSensitive, sregex& expression) {
    if (pattern.empty()) {
        return false;
    }
    try {
        auto flags = boost::xpressive::regex_constants::ECMAScript;
        if (!caseSensitive) {
            flags = flags | boost::xpressive::regex_constants::icase;
        }
        const std::string& text = pattern;
        expression = sregex::compile(text, flags);
        return true;
    } catch (...) {
        return false;
    }
}

bool Utils::MatchRegExp(const kxString& text, const kxString& pattern, bool caseSensitive) {
    sregex expression;
    return CompileRegExp(pattern, caseSensitive, expression) && MatchRegExp(text, expression);
}

bool Utils::MatchRegExp(const kxString& text, const sregex& expression) {
    try {
        const std::string& subject = text;
        return IsUsable(expression) && boost::xpressive::regex_match(subject, expression);
    } catch (const std::exception&) {
        return false;
    }
}

bool Utils::SearchRegExp(const kxString& text, const kxString& pattern, bool caseSensitive) {
    sregex expression;
    return CompileRegExp(pattern, caseSensitive, expression) && SearchRegExp(text, expression);
}

bool Utils::SearchRegExp(const kxString& text, const sregex& expression) {
    try {
        const std::string& subject = text;
        return IsUsable(expression) && boost::xpressive::regex_search(subject, expression);
    } catch (const std::exception&) {
        return false;
    }
}

bool Utils::ValidateRegExp(const kxString& pattern) {
    sregex expression;
    return CompileRegExp(pattern, true, expression) && IsUsable(expression);
}

}  // namespace kxct
