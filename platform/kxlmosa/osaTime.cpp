#include <kxlmosa/osaTime.h>
#include <kxutl/kxString.h>

namespace {

// Far above what any calendar field needs; a width such as "%999999999Y" is refused by it.
constexpr std::size_t MostPerByte = 64;
constexpr std::size_t AlwaysAllowed = 4096;

// The format is the caller's by design, so there is no literal that the compiler could check.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
std::size_t Write(kxString& buffer, const kxString& format, const std::tm& fields) {
    return std::strftime(buffer.data(), buffer.size(), format.c_str(), &fields);
}
#pragma GCC diagnostic pop

}  // namespace

osaTime osaTime::GetCurrentTime() noexcept {
    return osaTime(std::time(nullptr));
}

bool osaTime::GetFormatTime(const kxString& format, kxString& out) const {
    std::tm fields{};
    if (::localtime_r(&_seconds, &fields) == nullptr) {
        return false;
    }
    // strftime gives 0 both for an empty text and for a buffer that is too small; the blank at the
    // end makes every text longer than 0.
    kxString marked = format.c_str();
    marked += ' ';
    const std::size_t most = AlwaysAllowed + format.size() * MostPerByte;
    kxString buffer;
    for (std::size_t size = marked.size() + 128; size <= most; size *= 4) {
        buffer.resize(size);
        const std::size_t length = Write(buffer, marked, fields);
        if (length > 0) {
            buffer.resize(length - 1);
            out = std::move(buffer);
            return true;
        }
    }
    return false;
}
