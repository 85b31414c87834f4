#include <kxutl/kxVariant.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "kxVariantText.h"

namespace {

constexpr double TwoTo63 = 9223372036854775808.0;

std::int64_t Truncated(double value) {
    if (std::isnan(value)) {
        return 0;
    }
    if (value >= TwoTo63) {
        return std::numeric_limits<std::int64_t>::max();
    }
    if (value < -TwoTo63) {
        return std::numeric_limits<std::int64_t>::min();
    }
    return static_cast<std::int64_t>(value);
}

// Kinds that compare as one group share a rank.
int Rank(kxVariant::Kind kind) {
    switch (kind) {
        case kxVariant::EMPTY:
            return 0;
        case kxVariant::BOOLEAN:
            return 1;
        case kxVariant::INTEGER:
        case kxVariant::FLOAT:
        case kxVariant::DOUBLE:
            return 2;
        case kxVariant::STRING:
            return 3;
        case kxVariant::STRINGLIST:
            return 4;
        case kxVariant::POINTER:
            return 5;
    }
    return 6;
}

std::weak_ordering CompareDoubles(double a, double b) {
    if (std::isnan(a) || std::isnan(b)) {
        return std::isnan(a) <=> std::isnan(b);
    }
    if (a < b) {
        return std::weak_ordering::less;
    }
    return a > b ? std::weak_ordering::greater : std::weak_ordering::equivalent;
}

std::weak_ordering Reversed(std::weak_ordering order) {
    if (std::is_lt(order)) {
        return std::weak_ordering::greater;
    }
    return std::is_gt(order) ? std::weak_ordering::less : order;
}

// Exact: converting the integer to double would make neighbours above 2^53 equal.
std::weak_ordering CompareMixed(std::int64_t a, double b) {
    if (std::isnan(b) || b >= TwoTo63) {
        return std::weak_ordering::less;
    }
    if (b < -TwoTo63) {
        return std::weak_ordering::greater;
    }
    const double whole = std::trunc(b);
    const std::weak_ordering order = a <=> static_cast<std::int64_t>(whole);
    return std::is_neq(order) ? order : CompareDoubles(whole, b);
}

}  // namespace

kxVariant::kxVariant(void* pointer, const kxString& typeName) {
    SetPointer(pointer, typeName);
}

void kxVariant::SetPointer(void* pointer, const kxString& typeName) {
    _value = Pointer{pointer, std::make_shared<const kxString>(typeName)};
}

bool kxVariant::GetBoolean() const {
    switch (GetKind()) {
        case EMPTY:
            return false;
        case BOOLEAN:
            return std::get<BOOLEAN>(_value);
        case INTEGER:
            return std::get<INTEGER>(_value) != 0;
        case FLOAT:
        case DOUBLE:
            return GetDouble() != 0;
        case STRING:
            return kxVariantText::ReadBoolean(std::get<STRING>(_value));
        case STRINGLIST: {
            const auto& list = std::get<STRINGLIST>(_value);
            return list.size() == 1 && kxVariantText::ReadBoolean(list.front());
        }
        case POINTER:
            return GetPointer() != nullptr;
    }
    return false;
}

int kxVariant::GetInteger() const {
    return static_cast<int>(std::clamp<std::int64_t>(
        GetInteger64(), std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

std::int64_t kxVariant::GetInteger64() const {
    switch (GetKind()) {
        case BOOLEAN:
            return std::get<BOOLEAN>(_value) ? 1 : 0;
        case INTEGER:
            return std::get<INTEGER>(_value);
        case FLOAT:
        case DOUBLE:
            return Truncated(GetDouble());
        case STRING: {
            std::int64_t number = 0;
            const kxString& text = std::get<STRING>(_value);
            return kxVariantText::ReadInteger(text, number) ? number : Truncated(GetDouble());
        }
        case STRINGLIST: {
            const auto& list = std::get<STRINGLIST>(_value);
            return list.size() == 1 ? kxVariant(list.front()).GetInteger64() : 0;
        }
        case EMPTY:
        case POINTER:
            return 0;
    }
    return 0;
}

double kxVariant::GetDouble() const {
    switch (GetKind()) {
        case BOOLEAN:
        case INTEGER:
            return static_cast<double>(GetInteger64());
        case FLOAT:
            return static_cast<double>(std::get<FLOAT>(_value));
        case DOUBLE:
            return std::get<DOUBLE>(_value);
        case STRING:
            return kxVariantText::ReadDouble(std::get<STRING>(_value));
        case STRINGLIST: {
            const auto& list = std::get<STRINGLIST>(_value);
            return list.size() == 1 ? kxVariantText::ReadDouble(list.front()) : 0;
        }
        case EMPTY:
        case POINTER:
            return 0;
    }
    return 0;
}

kxString kxVariant::GetString() const {
    switch (GetKind()) {
        case EMPTY:
            return {};
        case BOOLEAN:
            return std::get<BOOLEAN>(_value) ? "true" : "false";
        case INTEGER:
            return kxVariantText::Write(std::get<INTEGER>(_value));
        case STRING:
            return std::get<STRING>(_value);
        case STRINGLIST:
            return kxVariantText::WriteList(std::get<STRINGLIST>(_value));
        case FLOAT:
            return kxVariantText::Write(std::get<FLOAT>(_value));
        case DOUBLE:
            return kxVariantText::Write(std::get<DOUBLE>(_value));
        case POINTER:
            return kxVariantText::WritePointer(GetPointer(), *std::get<POINTER>(_value).typeName);
    }
    return {};
}

kxStlVector<kxString> kxVariant::GetStringList() const {
    if (const auto* list = PeekStringList()) {
        return *list;
    }
    kxString text = GetString();
    kxStlVector<kxString> result;
    if (!text.empty()) {
        result.push_back(std::move(text));
    }
    return result;
}

void* kxVariant::GetPointer() const noexcept {
    const Pointer* held = std::get_if<POINTER>(&_value);
    return held != nullptr ? held->address : nullptr;
}

kxString kxVariant::GetPointerTypeName() const {
    const Pointer* held = std::get_if<POINTER>(&_value);
    return held != nullptr ? *held->typeName : kxString();
}

void kxVariant::_extract_simple_type() {
    if (const Pointer* held = std::get_if<POINTER>(&_value)) {
        SetPointer(held->address, SimpleTypeName(*held->typeName));
    }
}

std::weak_ordering kxVariant::Compare(const kxVariant& a, const kxVariant& b) {
    const Kind kindOfA = a.GetKind();
    const Kind kindOfB = b.GetKind();
    if (const int rankOfA = Rank(kindOfA), rankOfB = Rank(kindOfB); rankOfA != rankOfB) {
        return rankOfA <=> rankOfB;
    }
    switch (kindOfA) {
        case EMPTY:
            return std::weak_ordering::equivalent;
        case BOOLEAN:
            return std::get<BOOLEAN>(a._value) <=> std::get<BOOLEAN>(b._value);
        case STRING:
            return std::get<STRING>(a._value) <=> std::get<STRING>(b._value);
        case STRINGLIST:
            return std::get<STRINGLIST>(a._value) <=> std::get<STRINGLIST>(b._value);
        case POINTER: {
            const Pointer& left = std::get<POINTER>(a._value);
            const Pointer& right = std::get<POINTER>(b._value);
            const std::weak_ordering order = *left.typeName <=> *right.typeName;
            return std::is_neq(order) ? order
                                      : std::compare_three_way()(left.address, right.address);
        }
        case INTEGER:
        case FLOAT:
        case DOUBLE:
            break;
    }
    if (kindOfA == INTEGER && kindOfB == INTEGER) {
        return std::get<INTEGER>(a._value) <=> std::get<INTEGER>(b._value);
    }
    if (kindOfA == INTEGER) {
        return CompareMixed(std::get<INTEGER>(a._value), b.GetDouble());
    }
    if (kindOfB == INTEGER) {
        return Reversed(CompareMixed(std::get<INTEGER>(b._value), a.GetDouble()));
    }
    return CompareDoubles(a.GetDouble(), b.GetDouble());
}
