// Every item of a pattern and what it writes: the table of docs/layouts.md.

#include <cstdio>
#include <string>

#include "log4vrk/log4vrk.h"

namespace {

const struct {
  const char* pattern;
  const char* meaning;
} ROWS[] = {
    {"%m", "message, as its renderer or toString() has it"},
    {"%n", "line feed"},
    {"%p", "level"},
    {"%c", "logger"},
    {"%c{2}", "the last two components of its name"},
    {"%t", "thread: its number, or a name that was set"},
    {"%x", "nested context, oldest text first"},
    {"%X", "context and fields"},
    {"%X{order}", "the value of one"},
    {"%e", "message, escaped: one line"},
    {"%r", "milliseconds since the library was loaded"},
    {"%d", "date in ISO8601"},
    {"%d{ABSOLUTE}", "date in a named format or a pattern of strftime"},
    {"%d{%d/%m %H:%M:%S.%Q}", "in which %Q is the milliseconds"},
    {"%d{ISO8601}{Asia/Tokyo}", "date in a time zone"},
    {"%C", "class of the log call: never known"},
    {"%F", "file: never known, see %s"},
    {"%L", "line: never known, see %s"},
    {"%M", "method: never known, see %s"},
    {"%l", "class.method(file:line)"},
    {"%s", "where the log statement stands, if a macro made it"},
    {"%s{function}", "also path, file and line"},
    {"%%", "percent sign"},
    {"[%6p]", "minimum width, blanks on the left"},
    {"[%-6p]", "blanks on the right"},
    {"[%.10c]", "maximum width: the beginning is cut off"},
    {"[%-12.10c]", "both"},
    {"%m %y", "what is not understood stands as it is"},
    {"%r [%t] %p %c %x - %m%n", "the pattern of a layout that was given none"},
};

// In UTC instead of local time, so that the table is the same everywhere.
I18NString inUtc(const std::string& pattern) {
  if (pattern == "%d") return "%d{}{UTC}";
  const bool zoneMissing = pattern.compare(0, 3, "%d{") == 0 && pattern.find("}{") == std::string::npos;
  return I18NString(std::string_view(zoneMissing ? pattern + "{UTC}" : pattern));
}

std::string formatted(const std::string& pattern, LOGLoggingEvent& event) {
  LOGPatternLayout layout(inUtc(pattern));
  std::string line = layout.format(&event).toUtf8();
  if (!line.empty() && line.back() == '\n') line.replace(line.size() - 1, 1, "\\n");
  return line;
}

}  // namespace

int main() {
  LOGNDC::push("client 7");
  LOGNDC::push("session 9");
  LOG4VRK_CONTEXT("order", 17, "total", 17.5);
  LOGObject message("order 17 accepted");
  LOGLoggingEvent event("LOGLogger", LOGManager::getLogger("com.acme.shop.Orders"), LOGLevel::INFO_OBJ, &message);
  event.setThreadName("4711");
  static constexpr LOGSourceLocation PLACE{"shop/src/Orders.cpp", "accept", 42};  // as the macros make it
  event.setSourceLocation(&PLACE);
  LOGLoggingEvent soon = event;
  event.setTimeStamp(1785587696, 789000000);
  soon.setTimeStamp(LOGLoggingEvent::getStartTime() + 2, LOGLoggingEvent::getStartTimeNanos());

  std::printf("%-25s  %-50s  %s\n", "pattern", "meaning", "example");
  for (const auto& row : ROWS) {
    const std::string pattern = row.pattern;
    const bool counts = pattern.find("%r") != std::string::npos;
    std::printf("%-25s  %-50s  %s\n", row.pattern, row.meaning, formatted(pattern, counts ? soon : event).c_str());
  }
}
