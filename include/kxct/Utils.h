// Regular expressions over texts, for filters. ECMAScript syntax as Boost.Xpressive reads it.
//
// Layer: framework. Static helpers without state, usable from any thread. None lets a failure out:
// a pattern that is empty or invalid answers false.
//
//     kxct::Utils::SearchRegExp("bracket rev 2", "rev \\d+", true);   // true
//
//     boost::xpressive::sregex expression;                            // for many texts
//     if (kxct::Utils::CompileRegExp("rev \\d+", false, expression)) {
//         kxct::Utils::SearchRegExp("Bracket REV 2", expression);     // true
//     }
#pragma once

#include <kxct/kxct_export.h>
#include <kxutl/kxString.h>

#include <boost/xpressive/xpressive_fwd.hpp>

namespace kxct {

class KXCT_EXPORT Utils {
  public:
    // True if `pattern` compiles; `expression` then holds it.
    static bool CompileRegExp(const kxString& pattern,
                              bool caseSensitive,
                              boost::xpressive::sregex& expression);

    // True if the whole text matches.
    static bool MatchRegExp(const kxString& text, const kxString& pattern, bool caseSensitive);
    static bool MatchRegExp(const kxString& text, const boost::xpressive::sregex& expression);

    // True if some part of the text matches.
    static bool SearchRegExp(const kxString& text, const kxString& pattern, bool caseSensitive);
    static bool SearchRegExp(const kxString& text, const boost::xpressive::sregex& expression);

    // True if `pattern` compiles to an expression that is not empty.
    static bool ValidateRegExp(const kxString& pattern);
};

}  // namespace kxct
