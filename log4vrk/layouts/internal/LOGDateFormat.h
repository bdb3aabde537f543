// How dates are written.

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "log4vrk/layouts/LOGDate.h"
#include "log4vrk/layouts/LOGTimeZone.h"
#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"
#include "log4vrk/platform/internal/I18NUtf8Buffer.h"

/// A text in which only the milliseconds change for as long as a second lasts.
struct LOG4VRK_EXPORT LOGSecondText {
  std::string text;                    // in UTF-8
  std::vector<std::size_t> positions;  // where three digits stand, "000" at first
  std::int32_t millisecond = 0;        // that they show

  void show(std::int32_t newMillisecond) {
    if (newMillisecond != millisecond) write(newMillisecond);
  }

 private:
  void write(std::int32_t newMillisecond);
};

/// Turns moments into text. The text of a second is kept: a busy log does not work out the calendar for each event.
///
/// Thread safety: not thread-safe; a format for each thread, or used under a lock.
class LOG4VRK_EXPORT LOGDateFormat {
 public:
  /// `name`, in any case, is one of
  ///   NULL      no date: the result is null
  ///   RELATIVE  milliseconds since the library was loaded
  ///   ABSOLUTE  12:34:56,789
  ///   DATE      01 Aug 2026 12:34:56,789, in English whatever the locale
  ///   ISO8601   2026-08-01 12:34:56,789
  /// Any other text is a pattern of strftime, in which %Q adds what strftime lacks: the milliseconds, three digits. Its
  /// %s, the seconds since the epoch, is right in the process's own zone only.
  static std::unique_ptr<LOGDateFormat> create(const I18NString& name, const LOGTimeZone& zone = LOGTimeZone());

  virtual ~LOGDateFormat();
  virtual std::unique_ptr<LOGDateFormat> clone() const = 0;

  /// Appends the date. A pattern, or what stands between two %Q, appends nothing when its text exceeds 128 KiB.
  virtual void append(I18NUtf8Buffer& out, const LOGDate& date) = 0;
  void append(I18NString& out, const LOGDate& date);
  /// The text of a second, valid until the next call; null from a format that does not go by seconds.
  virtual const LOGSecondText* textOf(std::int64_t second);
};
