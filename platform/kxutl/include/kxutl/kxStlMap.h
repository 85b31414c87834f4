#pragma once

// std::map under the name that the interfaces use, with one difference: the checked lookup `at` of
// a missing key throws std::out_of_range with the text "invalid map<K, T> key". Callers hand that
// text on to their own callers, so it is part of the interface. Layer: bottom.

#include <kxutl/kxutl_export.h>

#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <utility>

template <class K, class T, class C = std::less<K>, class A = std::allocator<std::pair<const K, T>>>
class KXUTL_EXPORT kxStlMap : public std::map<K, T, C, A> {
  public:
    using Base = std::map<K, T, C, A>;
    using Base::Base;
    using Base::operator=;

    kxStlMap() = default;
    // Converts, as hosts expect of texts and containers. NOLINTBEGIN(google-explicit-constructor)
    kxStlMap(const Base& other) : Base(other) {}
    kxStlMap(Base&& other) noexcept : Base(std::move(other)) {}
    // NOLINTEND(google-explicit-constructor)

    // The value of `key`; throws std::out_of_range when there is none. Never inserts.
    T& at(const K& key) {
        const auto found = this->find(key);
        if (found == this->end()) {
            throw std::out_of_range("invalid map<K, T> key");
        }
        return found->second;
    }
    const T& at(const K& key) const {
        const auto found = this->find(key);
        if (found == this->end()) {
            throw std::out_of_range("invalid map<K, T> key");
        }
        return found->second;
    }
};
