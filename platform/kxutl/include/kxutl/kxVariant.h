#pragma once

// A value of one of eight kinds: what attributes, session parameters and script arguments are made
// of. Layer: bottom.
//
// A variant owns its text or list; a pointer variant owns the type name but never what it points
// to. Reading as another kind converts and never fails: what makes no sense reads as false, 0, the
// empty text, the empty list or a null pointer. Variants are values without shared mutable state:
// different objects may be used from different threads.
//
// Order and equality are total across kinds and agree with each other: empty < booleans < numbers <
// texts < lists < pointers. Integers, floats and doubles are one group, compared exactly as numbers
// (2^53 and 2^53+1 differ even when one of them is a double); every NaN equals every other NaN and
// comes after all numbers. Pointers compare by type name, then address.
//
//     kxVariant size(12);
//     size.GetString();                    // "12"
//     kxVariant("12") == size;             // false, a text is no number
//     kxVariant(12.0) == size;             // true
//     kxVariant item(pointer, "kxct::Item");

#include <kxutl/kxStlVector.h>
#include <kxutl/kxString.h>

#include <compare>
#include <concepts>
#include <cstdint>
#include <iosfwd>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>

class KXUTL_EXPORT kxVariant {
  public:
    // The numbers are part of the interface: callers test for the floating kinds by 5 and 6.
    enum Kind {
        EMPTY = 0,
        BOOLEAN = 1,
        INTEGER = 2,
        STRING = 3,
        STRINGLIST = 4,
        FLOAT = 5,
        DOUBLE = 6,
        POINTER = 7
    };

    kxVariant() noexcept = default;
    // Converts, as hosts expect of texts and containers. NOLINTBEGIN(google-explicit-constructor)
    // Templates, so that a pointer of any type can't turn silently into a boolean, and an unsigned
    // 64-bit number, which may not fit, into an integer.
    template <std::same_as<bool> Boolean>
    kxVariant(Boolean value) noexcept : _value(std::in_place_index<BOOLEAN>, value) {}
    template <std::integral Integer>
    requires(!std::same_as<Integer, bool> && !std::same_as<Integer, char> &&
             std::numeric_limits<Integer>::digits <= std::numeric_limits<std::int64_t>::digits)
        kxVariant(Integer value)
    noexcept : _value(std::in_place_index<INTEGER>, static_cast<std::int64_t>(value)) {}
    kxVariant(std::same_as<float> auto value) noexcept
        : _value(std::in_place_index<FLOAT>, value) {}
    kxVariant(std::same_as<double> auto value) noexcept
        : _value(std::in_place_index<DOUBLE>, value) {}
    // A null pointer gives the empty text.
    kxVariant(const char* value) : _value(std::in_place_index<STRING>, value) {}
    kxVariant(const kxString& value) : _value(std::in_place_index<STRING>, value) {}
    kxVariant(kxString&& value) noexcept : _value(std::in_place_index<STRING>, std::move(value)) {}
    kxVariant(const std::string& value) : _value(std::in_place_index<STRING>, value) {}
    kxVariant(std::string&& value) noexcept
        : _value(std::in_place_index<STRING>, std::move(value)) {}
    kxVariant(std::string_view value) : _value(std::in_place_index<STRING>, value) {}
    kxVariant(const kxStlVector<kxString>& value)
        : _value(std::in_place_index<STRINGLIST>, value) {}
    kxVariant(kxStlVector<kxString>&& value) noexcept
        : _value(std::in_place_index<STRINGLIST>, std::move(value)) {}
    // NOLINTEND(google-explicit-constructor)
    // `pointer` may be null; it stays the caller's.
    kxVariant(void* pointer, const kxString& typeName);

    Kind GetKind() const noexcept { return static_cast<Kind>(_value.index()); }
    bool IsEmpty() const noexcept { return GetKind() == EMPTY; }

    // A number is true unless 0. A text is true when it is "true", "yes" or "on" in any case, or a
    // number other than 0. A list counts as its only entry, a list of another length is false. A
    // pointer is true unless null.
    bool GetBoolean() const;
    // GetInteger64, limited to the range of int.
    int GetInteger() const;
    // Fractions are cut off, what is out of range becomes the nearest limit, NaN is 0. A text is
    // read as a decimal number with blanks around it allowed; a text that is anything else reads as
    // 0.
    std::int64_t GetInteger64() const;
    // As GetInteger64 without cutting.
    double GetDouble() const;
    // "true" or "false"; numbers in the shortest form that reads back as the same number, whatever
    // the locale; a list as a Tcl list; a pointer as "kxptr:<type>:<hexadecimal address>".
    kxString GetString() const;
    // The list; for other kinds the text as the only entry, or no entry if that text is empty.
    kxStlVector<kxString> GetStringList() const;
    // Null unless this is a pointer.
    void* GetPointer() const noexcept;
    // Empty unless this is a pointer.
    kxString GetPointerTypeName() const;

    // The text or list inside, without a copy; null if this is of another kind. Valid until the
    // variant changes.
    const kxString* PeekString() const noexcept { return std::get_if<STRING>(&_value); }
    const kxStlVector<kxString>* PeekStringList() const noexcept {
        return std::get_if<STRINGLIST>(&_value);
    }

    void SetPointer(void* pointer, const kxString& typeName);
    void Clear() noexcept { _value.emplace<EMPTY>(); }

    // Replaces the type name of a pointer variant by its simple form, see SimpleTypeName. Does
    // nothing to other kinds.
    void _extract_simple_type();
    // Copies the value out without any conversion: true if this holds exactly a value of type T (an
    // integer must fit), otherwise false and `out` keeps its value. T is bool, int, long, long
    // long, float, double, kxString, kxStlVector<kxString> or void*.
    template <class T>
    bool _extract_simple_type(T& out) const;
    // The plain class name in a compiler's type name: "class kxct::Item * __ptr64", "kxct::Item
    // const*" and the mangled "PN4kxct4ItemE" all give "kxct::Item".
    static kxString SimpleTypeName(const kxString& compilerName);

    friend bool operator==(const kxVariant& a, const kxVariant& b) {
        return Compare(a, b) == std::weak_ordering::equivalent;
    }
    friend std::weak_ordering operator<=>(const kxVariant& a, const kxVariant& b) {
        return Compare(a, b);
    }
    // For logs and test failures: the kind and the text.
    friend KXUTL_EXPORT std::ostream& operator<<(std::ostream& stream, const kxVariant& value);

  private:
    // The name is shared by copies, so that a pointer variant stays as small as a text.
    struct Pointer {
        void* address = nullptr;
        std::shared_ptr<const kxString> typeName;
    };

    static std::weak_ordering Compare(const kxVariant& a, const kxVariant& b);

    // The index of an alternative is its Kind.
    std::variant<std::monostate,
                 bool,
                 std::int64_t,
                 kxString,
                 kxStlVector<kxString>,
                 float,
                 double,
                 Pointer>
        _value;
};

template <class T>
bool kxVariant::_extract_simple_type(T& out) const {
    if constexpr (std::same_as<T, void*>) {
        const Pointer* held = std::get_if<POINTER>(&_value);
        if (held == nullptr) {
            return false;
        }
        out = held->address;
    } else if constexpr (std::integral<T> && !std::same_as<T, bool>) {
        const std::int64_t* held = std::get_if<INTEGER>(&_value);
        if (held == nullptr || !std::in_range<T>(*held)) {
            return false;
        }
        out = static_cast<T>(*held);
    } else {
        const T* held = std::get_if<T>(&_value);
        if (held == nullptr) {
            return false;
        }
        out = *held;
    }
    return true;
}
