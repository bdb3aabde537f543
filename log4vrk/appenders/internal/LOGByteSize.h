// Sizes as people write them.

#pragma once

#include <cstdint>
#include <limits>
#include <string>

#include "log4vrk/platform/I18NLocale.h"
#include "log4vrk/platform/I18NString.h"

/// "500", "64kB", "10 MB", "2gb": bytes, or so many times 1024, 1024 squared or cubed. False, and `bytes` is left
/// alone, when the text is none, negative or too large. Thread safety: any thread.
inline bool logReadByteSize(const I18NString& text, std::int64_t& bytes) {
  const std::string all = text.toUtf8();
  std::int64_t number = 0;
  std::size_t at = 0;
  for (; at < all.size() && all[at] >= '0' && all[at] <= '9'; ++at) {
    if (number > (std::numeric_limits<std::int64_t>::max() - 9) / 10) return false;
    number = 10 * number + (all[at] - '0');
  }
  if (at == 0) return false;
  at = all.find_first_not_of(' ', at);
  const I18NString unit(at == all.npos ? std::string() : all.substr(at));
  std::int64_t factor = unit.isEmpty() ? 1 : 0;
  std::int64_t power = 1;
  for (const char* each : {"kB", "MB", "GB"}) {
    power *= 1024;
    if (vrkEqualIgnoringCase(unit, each)) factor = power;
  }
  if (factor == 0 || number > std::numeric_limits<std::int64_t>::max() / factor) return false;
  bytes = number * factor;
  return true;
}
