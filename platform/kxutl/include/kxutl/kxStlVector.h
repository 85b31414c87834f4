#pragma once

// std::vector under the name that the interfaces use. Converts from std::vector, so that results of
// standard algorithms pass without a loop. Layer: bottom.

#include <kxutl/kxutl_export.h>

#include <memory>
#include <utility>
#include <vector>

template <class T, class A = std::allocator<T>>
class KXUTL_EXPORT kxStlVector : public std::vector<T, A> {
  public:
    using Base = std::vector<T, A>;
    using Base::Base;
    using Base::operator=;

    kxStlVector() = default;
    // Converts, as hosts expect of texts and containers. NOLINTBEGIN(google-explicit-constructor)
    kxStlVector(const Base& other) : Base(other) {}
    kxStlVector(Base&& other) noexcept : Base(std::move(other)) {}
    // NOLINTEND(google-explicit-constructor)
};
