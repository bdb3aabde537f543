// Makes log calls and nothing else, for ./dev bench instructions: log_calls <way> COUNT. What the ways are, see below.

#include <cstdlib>
#include <functional>
#include <map>
#include <string>

#include "benchmarks/Ours.h"

namespace {

LOGAppenderSkeleton* file() { return new LOGFileAppender(bench::OurLog::layout(), "/dev/null", 1); }

LOGAppenderSkeleton* console() { return new LOGConsoleAppender(bench::OurLog::layout()); }

LOGAppenderSkeleton* colours(const char* colours, const char* prefix) {
  auto* const appender = new LOGColorConsoleAppender(bench::OurLog::layout());
  appender->setColors(colours);
  appender->setPrefix(prefix);
  appender->setColor(*LOGLevel::INFO_OBJ, "yellow");
  return appender;
}

LOGAppenderSkeleton* limited(long events) {
  static LOGRateLimitFilter filter;
  filter.setMaxEvents(events);
  filter.setSeconds(1000000);
  LOGAppenderSkeleton* const appender = console();
  appender->addFilter(&filter);
  return appender;
}

LOGAppenderSkeleton* withFallback() {
  auto* const appender = new LOGFallbackAppender;
  appender->addAppender(file());
  appender->addAppender(console());
  return appender;
}

}  // namespace

int main(int argc, char** argv) {
  const std::map<std::string, std::function<LOGAppenderSkeleton*()>> ways{
      {"disabled", file},
      {"enabled", file},
      {"fallback", withFallback},
      {"console", console},
      {"colours", [] { return colours("always", "none"); }},
      {"no-colours", [] { return colours("never", "none"); }},
      {"severities", [] { return colours("never", "sd-daemon"); }},
      {"within-rate", [] { return limited(1000000000); }},
      {"above-rate", [] { return limited(1); }},
  };
  const auto way = argc == 3 ? ways.find(argv[1]) : ways.end();
  if (way == ways.end()) return 2;
  const long count = std::strtol(argv[2], nullptr, 10);
  bench::OurLog log(way->second());
  if (way->first == "disabled") LOGManager::getRootLogger()->setLevel(LOGLevel::WARN_OBJ);
  for (long i = 0; i < count; ++i) log.log(i);
}
