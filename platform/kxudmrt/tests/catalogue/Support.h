// What the tests of the catalogue share: reading of small documents, and the text of a refusal.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kxudm/UDMException.h>

#include <memory>
#include <string>
#include <string_view>

#include "catalogue/Catalogue.h"

namespace kxudm::catalogue::testing {

// A catalogue of `body`, which starts on line 2 of the file "test.xml".
inline std::string Document(std::string_view body) {
    return "<catalogue version=\"1\">\n" + std::string(body) + "\n</catalogue>\n";
}

inline std::shared_ptr<const Catalogue> Read(std::string_view body) {
    return Catalogue::ReadText(Document(body), "test.xml");
}

// The text of the exception that `action` throws; fails the test if it throws none.
template <class Action>
std::string Refusal(Action action) {
    try {
        action();
    } catch (const UDMException& error) {
        return error.what();
    }
    ADD_FAILURE() << "nothing was refused";
    return {};
}

inline std::string RefusalOfText(std::string_view text) {
    return Refusal([&] { Catalogue::ReadText(text, "test.xml"); });
}

inline std::string RefusalOf(std::string_view body) {
    return RefusalOfText(Document(body));
}

}  // namespace kxudm::catalogue::testing
