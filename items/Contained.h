// Turns the failure of a call into an answer.
//
// Item operations that change the repository or list children tell a failure by false or 0 and drop
// its text. Anything that is not a std::exception travels on.
#pragma once

#include <exception>
#include <utility>

namespace kxct {

template <class Result, class Call>
Result Contained(Result failure, Call&& call) {
    try {
        return std::forward<Call>(call)();
    } catch (const std::exception&) {
        return failure;
    }
}

}  // namespace kxct
