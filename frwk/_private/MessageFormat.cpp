#include "frwk/_private/MessageFormat.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace kxct {

namespace {

// More than any buffer here holds, and few enough digits to count with.
constexpr int MANY = 1 << 20;

int ReadNumber(const char*& at) {
    int number = 0;
    for (; *at >= '0' && *at <= '9'; ++at) {
        number = std::min(number * 10 + (*at - '0'), MANY);
    }
    return number;
}

// "%s" in all its forms.
struct Conversion {
    int position = 0;  // 1 for the first text; 0 for the next one
    bool left = false;
    int width = 0;
    int precision = -1;  // none
};

// Reads what follows a "%". False, with `at` anywhere, if it is not a conversion of a text.
bool ReadConversion(const char*& at, Conversion& conversion) {
    const char* const begin = at;
    if (const int number = ReadNumber(at); number > 0 && *at == '$') {
        conversion.position = number;
        ++at;
    } else {
        at = begin;
    }
    for (; *at != '\0' && std::strchr("-+ #0", *at) != nullptr; ++at) {
        conversion.left = conversion.left || *at == '-';
    }
    conversion.width = ReadNumber(at);
    if (*at == '.') {
        ++at;
        conversion.precision = ReadNumber(at);
    }
    return *at++ == 's';
}

class Buffer {
  public:
    void Append(std::string_view text) {
        const std::size_t count = std::min(text.size(), Room());
        std::memcpy(_bytes.data() + _size, text.data(), count);
        _size += count;
    }
    void Append(const Conversion& conversion, const char* text) {
        // Wider blanks are cut off anyway, but would be counted one by one first.
        const int most = conversion.precision < 0 ? MANY : std::min(conversion.precision, MANY);
        const int length = static_cast<int>(strnlen(text, static_cast<std::size_t>(most)));
        const int width =
            std::min(conversion.width, length + static_cast<int>(MESSAGE_BUFFER_SIZE));
        char* const end = _bytes.data() + _size;
        // One byte more than there is room for: the NUL.
        std::snprintf(end,
                      Room() + 1,
                      conversion.left ? "%-*.*s" : "%*.*s",
                      width,
                      conversion.precision,
                      text);
        _size += std::strlen(end);
    }
    bool IsFull() const { return Room() == 0; }
    kxString Text() const { return kxString(_bytes.data(), _size); }

  private:
    std::size_t Room() const { return MESSAGE_BUFFER_SIZE - 1 - _size; }

    std::array<char, MESSAGE_BUFFER_SIZE> _bytes{};
    std::size_t _size = 0;
};

}  // namespace

kxString FormatMessage(const kxString& format, const kxStlVector<kxString>& details) {
    const std::size_t count = std::min(details.size(), MAX_MESSAGE_DETAILS);
    Buffer buffer;
    std::size_t next = 0;
    // What follows a full buffer would only cost time.
    for (const char* at = format.c_str(); *at != '\0' && !buffer.IsFull();) {
        const char* const begin = at;
        at += std::strcspn(at, "%");
        buffer.Append(std::string_view(begin, static_cast<std::size_t>(at - begin)));
        if (*at == '\0') {
            break;
        }
        const char* const percent = at++;
        Conversion conversion;
        if (*at == '%') {
            buffer.Append("%");
            ++at;
        } else if (ReadConversion(at, conversion)) {
            const std::size_t index = conversion.position > 0
                                          ? static_cast<std::size_t>(conversion.position - 1)
                                          : next++;
            buffer.Append(conversion, index < count ? details[index].c_str() : "");
        } else {
            buffer.Append("%");
            at = percent + 1;
        }
    }
    return buffer.Text();
}

}  // namespace kxct
