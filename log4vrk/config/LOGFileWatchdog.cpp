#include "log4vrk/config/LOGFileWatchdog.h"

#include <algorithm>
#include <atomic>
#include <limits>

#include "log4vrk/core/internal/LOGContainment.h"
#include "log4vrk/platform/internal/VRKStackSize.h"
#include "log4vrk/platform/internal/VRKTime.h"

namespace {

// Of all watchdogs.
std::atomic<long> g_delay{LOGFileWatchdog::m_DEFAULT_DELAY};
std::atomic<std::int64_t> g_lastModified{0};
std::atomic<int> g_interrupted{0};

constexpr LOGFailureTexts CHECK_FAILURES{"LOGFileWatchdog::checkAndConfigure -- some i18nstring exception occurred",
                                         "LOGFileWatchdog::checkAndConfigure -- some VRKThrowable exception occurred",
                                         "LOGFileWatchdog::checkAndConfigure -- some generic error occurred"};

}  // namespace

LOGFileWatchdog::LOGFileWatchdog(const I18NString& fileName) : LOGFileWatchdog(fileName, LookLater()) {
  std::int64_t modified = 0;
  logContainAll(CHECK_FAILURES, [&] { examine(modified); });
}

LOGFileWatchdog::LOGFileWatchdog(const I18NString& fileName, LookLater)
    : VRKThread(VRK_STACK_SIZE), m_fileName(fileName), m_stop(std::make_shared<VRKStopSignal>()) {
  g_delay = m_DEFAULT_DELAY;
  g_lastModified = 0;
  g_interrupted = 0;
}

LOGFileWatchdog::~LOGFileWatchdog() { stop(); }

void LOGFileWatchdog::stop() {
  m_stop->stop();
  join();
}

void LOGFileWatchdog::setDelay(long milliseconds) { g_delay = milliseconds; }

long LOGFileWatchdog::getDelay() { return g_delay; }

bool LOGFileWatchdog::examine(std::int64_t& modified) {
  if (VRKTime::fileModified(m_fileName, modified)) return true;
  g_interrupted = 1;
  LOGLogLog::warn("Was not allowed to read check file existance, file:[" + m_fileName + "].");
  return false;
}

void LOGFileWatchdog::checkAndConfigure() {
  logContainAll(CHECK_FAILURES, [&] {
    std::int64_t modified = 0;
    if (!examine(modified) || modified <= g_lastModified) return;
    g_lastModified = modified;
    doOnChange();
  });
}

void LOGFileWatchdog::run() {
  static constexpr long long LONGEST = std::numeric_limits<long long>::max() / 1000;
  const std::shared_ptr<VRKStopSignal> stop = m_stop;
  const auto period = [] { return std::clamp<long long>(g_delay, 1, LONGEST) * 1000; };
  while (g_interrupted == 0 && !stop->wait(period())) checkAndConfigure();
}
