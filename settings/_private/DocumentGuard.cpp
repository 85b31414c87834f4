#include "settings/_private/DocumentGuard.h"

#include <string_view>

namespace kxct {

bool DocumentGuard::BeginsWithMarkup() {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (sgetc() == traits_type::to_int_type(byteOrderMark.front())) {
        for (const char expected : byteOrderMark) {
            if (sbumpc() != traits_type::to_int_type(expected)) {
                return false;
            }
        }
    }
    int_type next = sgetc();
    while (next == ' ' || next == '\t' || next == '\r' || next == '\n') {
        next = snextc();
    }
    return next == '<';
}

DocumentGuard::int_type DocumentGuard::underflow() {
    _source.read(_buffer.data(), static_cast<std::streamsize>(_buffer.size()));
    const auto received = static_cast<std::size_t>(_source.gcount());
    const std::size_t accepted = _meter.Accept(_buffer.data(), received);
    if (accepted == 0) {
        return traits_type::eof();
    }
    setg(_buffer.data(), _buffer.data(), _buffer.data() + accepted);
    return traits_type::to_int_type(_buffer.front());
}

}  // namespace kxct
