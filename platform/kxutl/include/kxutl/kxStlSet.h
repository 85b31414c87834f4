#pragma once

// std::set under the name that the interfaces use: ordered, each key once. Layer: bottom.

#include <kxutl/kxutl_export.h>

#include <functional>
#include <memory>
#include <set>
#include <utility>

template <class K, class C = std::less<K>, class A = std::allocator<K>>
class KXUTL_EXPORT kxStlSet : public std::set<K, C, A> {
  public:
    using Base = std::set<K, C, A>;
    using Base::Base;
    using Base::operator=;

    kxStlSet() = default;
    // Converts, as hosts expect of texts and containers. NOLINTBEGIN(google-explicit-constructor)
    kxStlSet(const Base& other) : Base(other) {}
    kxStlSet(Base&& other) noexcept : Base(std::move(other)) {}
    // NOLINTEND(google-explicit-constructor)
};
