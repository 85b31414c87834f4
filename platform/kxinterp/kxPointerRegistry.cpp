#include <kxinterp/kxPointerRegistry.h>
#include <kxutl/kxString.h>

#include <array>
#include <atomic>
#include <charconv>
#include <cstdint>
#include <map>
#include <mutex>
#include <unordered_map>

namespace {

constexpr std::string_view Prefix = "kxptr:";

struct Registry {
    std::mutex mutex;
    std::uint64_t lastNumber = 0;
    std::unordered_map<std::uint64_t, std::pair<void*, kxString>> byNumber;
    std::map<const void*, std::map<kxString, std::uint64_t>> byPointer;
    // The size of byPointer, to be read without the lock.
    std::atomic<std::size_t> known = 0;
};

// Never destroyed: objects may be forgotten while the process ends.
Registry& TheRegistry() {
    static auto* registry = new Registry;
    return *registry;
}

kxString MakeText(const kxString& typeName, std::uint64_t number) {
    std::array<char, 16> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number, 16);
    kxString text(Prefix);
    text += typeName;
    text += ':';
    text.append(digits.data(), end.ptr);
    return text;
}

// The number at the end of the text, if the text is exactly as MakeText makes it.
bool ParseText(const kxString& text, std::string_view& typeName, std::uint64_t& number) {
    const std::size_t colon = text.rfind(':');
    if (!text.starts_with(Prefix) || colon < Prefix.size()) {
        return false;
    }
    const char* last = text.data() + text.size();
    const auto end = std::from_chars(text.data() + colon + 1, last, number, 16);
    typeName = std::string_view(text).substr(Prefix.size(), colon - Prefix.size());
    return end.ec == std::errc() && end.ptr == last && MakeText(typeName, number) == text;
}

}  // namespace

kxString kxPointerRegistry::ToText(void* pointer, const kxString& typeName) {
    if (pointer == nullptr) {
        return MakeText(typeName, 0);
    }
    Registry& registry = TheRegistry();
    const std::lock_guard lock(registry.mutex);
    std::uint64_t& number = registry.byPointer[pointer][typeName];
    registry.known = registry.byPointer.size();
    if (number == 0) {
        number = ++registry.lastNumber;
        registry.byNumber.try_emplace(number, pointer, typeName);
    }
    return MakeText(typeName, number);
}

bool kxPointerRegistry::FromText(const kxString& text, void*& pointer, kxString& typeName) {
    std::string_view type;
    std::uint64_t number = 0;
    if (!ParseText(text, type, number)) {
        return false;
    }
    if (number == 0) {
        pointer = nullptr;
        typeName = type;
        return true;
    }
    Registry& registry = TheRegistry();
    const std::lock_guard lock(registry.mutex);
    const auto found = registry.byNumber.find(number);
    if (found == registry.byNumber.end() || found->second.second != type) {
        return false;
    }
    pointer = found->second.first;
    typeName = found->second.second;
    return true;
}

void kxPointerRegistry::Forget(const void* pointer) noexcept {
    Registry& registry = TheRegistry();
    if (registry.known == 0) {
        return;
    }
    const std::lock_guard lock(registry.mutex);
    const auto found = registry.byPointer.find(pointer);
    if (found == registry.byPointer.end()) {
        return;
    }
    for (const auto& [typeName, number] : found->second) {
        registry.byNumber.erase(number);
    }
    registry.byPointer.erase(found);
    registry.known = registry.byPointer.size();
}
