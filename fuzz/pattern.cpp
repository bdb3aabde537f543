// Any text as a pattern, and as the message that it writes.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "log4vrk/core/LOGLevel.h"
#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/core/LOGManager.h"
#include "log4vrk/layouts/LOGPatternLayout.h"

namespace {

void expect(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", what);
  std::abort();
}

I18NString throughUtf8(const I18NString& text) { return I18NString(std::string_view(text.toUtf8())); }

void tryPattern(const I18NString& pattern) {
  LOGPatternLayout layout(pattern);
  expect(layout.getConversionPattern() == pattern, "a pattern comes back as it was set");

  LOGObject message(pattern);
  LOGLoggingEvent event("LOGLogger", LOGManager::getLogger("com.acme.shop.Orders"), LOGLevel::WARN_OBJ, &message);
  event.setThreadName("main");
  event.setTimeStamp(1785587696, 789000000);
  const I18NString line = layout.format(&event);
  expect(layout.format(&event) == line, "a line is the same when it is written again");
  if (throughUtf8(pattern) == pattern) expect(throughUtf8(line) == line, "whole characters stay whole");

  LOGLoggingEvent empty;
  layout.format(&empty);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const char* const bytes = reinterpret_cast<const char*>(data);
  tryPattern(I18NString(std::string_view(bytes, size)));
  // Also what UTF-8 cannot say: surrogates that are not paired.
  std::u16string units;
  for (std::size_t i = 0; i + 1 < size; i += 2) units += static_cast<char16_t>(data[i] | data[i + 1] << 8);
  tryPattern(I18NString(std::move(units)));
  return 0;
}
