// Formats that turn moments into text.

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

/// The text of one second, in which only the digits of the milliseconds change.
///
/// Thread safety: as a plain struct.
struct LOG4VRK_EXPORT LOGSecondText {
  std::string text;                    // in UTF-8
  std::vector<std::size_t> positions;  // where milliseconds stand in the text: three digits, "000" at first
  std::int32_t millisecond = 0;        // the one that the digits show

  /// Has the digits show this millisecond, 0 to 999.
  void show(std::int32_t newMillisecond) {
    if (newMillisecond != millisecond) write(newMillisecond);
  }

 private:
  void write(std::int32_t newMillisecond);
};

/// Turns moments into text. A format keeps the text of the last second, so that a busy log works out the calendar once
/// a second instead of once an event.
///
/// Thread safety: not thread-safe. Each thread has a clone(), or a lock guards the format.
class LOG4VRK_EXPORT LOGDateFormat {
 public:
  /// `name`, in any case, is one of
  ///   NULL      no date: the result is null
  ///   RELATIVE  milliseconds since the library was loaded
  ///   ABSOLUTE  12:34:56,789
  ///   DATE      01 Aug 2026 12:34:56,789, in English whatever the locale
  ///   ISO8601   2026-08-01 12:34:56,789
  /// Any other text is a pattern of strftime, to which %Q adds what strftime lacks: the milliseconds, three digits. A
  /// pattern's %s, the seconds since the epoch, is right in the process's own zone only.
  static std::unique_ptr<LOGDateFormat> create(const I18NString& name, const LOGTimeZone& zone = LOGTimeZone());

  virtual ~LOGDateFormat();
  virtual std::unique_ptr<LOGDateFormat> clone() const = 0;

  /// Appends the date. Each stretch of a pattern between two %Q (or the whole, without one) whose text exceeds 128 KiB
  /// is left out.
  virtual void append(I18NUtf8Buffer& out, const LOGDate& date) = 0;
  void append(I18NString& out, const LOGDate& date);
  /// The text of a second, its milliseconds 000, valid until the next call. Null from a format whose text changes
  /// within a second in other places.
  virtual const LOGSecondText* textOf(std::int64_t second);
};
