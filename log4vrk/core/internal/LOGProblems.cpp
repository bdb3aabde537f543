#include "log4vrk/core/internal/LOGProblems.h"

#include <algorithm>
#include <utility>

#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/platform/VRKThrowable.h"
#include "log4vrk/platform/internal/VRKMutex.h"

namespace {

VRKMutex g_mutex;
std::string& g_lastRun VRK_GUARDED_BY(g_mutex) = vrkImmortal<std::string>();

std::string nameOf(const char* kind, const I18NString& name) {
  return name.isEmpty() ? kind : kind + (" [" + name.toUtf8() + "]");
}

}  // namespace

__thread LOGProblems::Run* LOGProblems::s_run = nullptr;

LOGProblems::Run::~Run() {
  if (!m_isOutermost) return;
  s_run = m_before;
  if (m_isApart) return;
  const LOGLeafGuard guard(g_mutex);
  g_lastRun.swap(m_lines);
}

LOGProblems::Place::Place(long line, const char* kind, const I18NString& name, bool isPart)
    : m_run(s_run),
      m_outer(m_run != nullptr ? m_run->m_place : nullptr),
      m_line(line),
      m_kind(kind),
      m_name(name),
      m_isPart(isPart),
      m_exceptions(std::uncaught_exceptions()) {
  if (m_run == nullptr) return;
  m_run->m_place = this;
  m_run->m_failedAt.clear();
}

// An error is written where it is contained, when the place that it came from has been left.
LOGProblems::Place::~Place() {
  if (m_run == nullptr) return;
  if (std::uncaught_exceptions() > m_exceptions && m_run->m_failedAt.empty()) {
    try {
      m_run->m_failedAt = describe(*m_run);
    } catch (const std::exception&) {
      // The line will have the place around this one.
    }
  }
  m_run->m_place = m_outer;
}

LOGProblems::Pause::~Pause() {
  if (m_run != nullptr) --m_run->m_pauses;
}

void LOGProblems::Pause::begin() {
  if (m_run != nullptr || s_run == nullptr) return;
  m_run = s_run;
  ++m_run->m_pauses;
}

void LOGProblems::add(std::string_view text) noexcept {
  if (text.empty() || !areCollected()) return;
  try {
    Run& run = *s_run;
    std::string line = run.m_failedAt.empty() ? describe(run) : std::exchange(run.m_failedAt, {});
    line += text;
    std::replace(line.begin(), line.end(), '\n', ' ');
    run.m_lines += line + '\n';
  } catch (const std::exception&) {
    // There is nobody left to tell.
  }
}

std::string LOGProblems::describe(const Run& run) {
  long line = 0;
  std::string names;
  for (const Place* place = run.m_place; place != nullptr; place = place->m_outer) {
    if (line == 0) line = place->m_line;
    if (place->m_kind == nullptr) continue;
    names.insert(0, nameOf(place->m_kind, place->m_name).append(names.empty() ? ": " : ", "));
    if (!place->m_isPart) break;
  }
  std::string position = run.m_file;
  if (line > 0 && !position.empty()) position += ':' + std::to_string(line);
  if (!position.empty()) position += ": ";
  return position + names;
}

I18NString LOGProblems::ofLastRun() {
  const LOGLeafGuard guard(g_mutex);
  return I18NString(std::string_view(g_lastRun));
}
