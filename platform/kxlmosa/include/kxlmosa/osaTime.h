#pragma once

// A point in time, to the second, and its text in local time. Layer: above kxutl. A value; any
// thread, as long as nobody changes the time zone or the locale meanwhile.
//
//     kxString text;
//     osaTime::GetCurrentTime().GetFormatTime("%c", text);

#include <kxlmosa/kxlmosa_export.h>

#include <ctime>

class kxString;

class KXLMOSA_EXPORT osaTime {
  public:
    explicit osaTime(std::time_t secondsSince1970) noexcept : _seconds(secondsSince1970) {}

    static osaTime GetCurrentTime() noexcept;

    std::time_t GetSeconds() const noexcept { return _seconds; }

    // Replaces `out` by the local time written as strftime does; a NUL ends the
    // format. False, with `out` unchanged, if
    // the time can't be told as a calendar date or the text would be unreasonably longer than
    // `format`.
    bool GetFormatTime(const kxString& format, kxString& out) const;

  private:
    std::time_t _seconds;
};
