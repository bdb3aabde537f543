#include "log4vrk/appenders/LOGColorConsoleAppender.h"

#include <algorithm>
#include <typeinfo>

#include "log4vrk/appenders/internal/LOGLineWriter.h"
#include "log4vrk/core/LOGLayout.h"
#include "log4vrk/core/LOGLevel.h"
#include "log4vrk/core/internal/LOGAppendLine.h"
#include "log4vrk/core/internal/LOGSeverity.h"
#include "log4vrk/core/internal/LOGTaking.h"
#include "log4vrk/platform/I18NLocale.h"
#include "log4vrk/platform/VRKFmFile.h"
#include "log4vrk/platform/internal/VRKTerminal.h"

namespace {

constexpr LOGFailureTexts APPEND_FAILURE = LOGFailureTexts::ofLostEvent("LOGAppenderSkeleton::subAppend -- ");
constexpr std::string_view OFF = "\033[0m";

// The number of a word in an SGR sequence; empty: there is none.
std::string numberOf(std::string_view word) {
  constexpr std::string_view COLORS[] = {"black", "red", "green", "yellow", "blue", "magenta", "cyan", "white"};
  constexpr std::pair<std::string_view, const char*> STYLES[] = {
      {"bold", "1"}, {"dim", "2"}, {"italic", "3"}, {"underline", "4"}, {"reverse", "7"}};
  constexpr std::string_view BRIGHT = "bright-";
  for (const auto& [name, number] : STYLES) {
    if (word == name) return number;
  }
  const bool isBright = word.substr(0, BRIGHT.size()) == BRIGHT;
  if (isBright) word.remove_prefix(BRIGHT.size());
  const auto* const color = std::find(std::begin(COLORS), std::end(COLORS), word);
  if (color != std::end(COLORS)) return std::to_string((isBright ? 90 : 30) + (color - std::begin(COLORS)));
  const bool isSequence = !isBright && !word.empty() && word.find_first_not_of("0123456789;") == word.npos;
  return isSequence ? std::string(word) : "";
}

// What switches a colour on. False when the text is none.
bool parseColor(const I18NString& color, std::string& start) {
  constexpr char BLANK = ' ';
  std::string text = color.toUtf8();
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  std::string numbers;
  std::string_view rest = text;
  std::size_t words = 0;
  for (std::size_t at; (at = rest.find_first_not_of(BLANK)) != rest.npos; ++words) {
    rest.remove_prefix(at);
    const std::string_view word = rest.substr(0, rest.find(BLANK));
    rest.remove_prefix(word.size());
    if (word == "none") continue;
    const std::string number = numberOf(word);
    if (number.empty()) return false;
    numbers += (numbers.empty() ? "" : ";") + number;
  }
  start = numbers.empty() ? "" : "\033[" + numbers + "m";
  return words > 0;
}

}  // namespace

LOGColorConsoleAppender::LOGColorConsoleAppender() : m_colors("auto") {
  instance("LOGColorConsoleAppender");
  LOGAppenderInternals::set(*this, INTERNALS);
  const LOGGuard guard(*this);
  const char* const colors[LEVELS] = {"dim", "none", "yellow", "red", "bold red"};
  for (std::size_t i = 0; i < LEVELS; ++i) {
    m_looks[i].color = colors[i];
    parseColor(m_looks[i].color, m_looks[i].start);
  }
}

LOGColorConsoleAppender::LOGColorConsoleAppender(LOGLayout* layout) : LOGColorConsoleAppender() { setLayout(layout); }

std::size_t LOGColorConsoleAppender::indexOf(const LOGLevel& level) {
  constexpr int RANKS[] = {LOGLevel::INFO_RANK, LOGLevel::WARN_RANK, LOGLevel::ERROR_RANK, LOGLevel::FATAL_RANK};
  return static_cast<std::size_t>(std::upper_bound(std::begin(RANKS), std::end(RANKS), level.toInt()) -
                                  std::begin(RANKS));
}

void LOGColorConsoleAppender::setColors(const I18NString& when) {
  const LOGGuard guard(*this);
  for (const char* const known : {"auto", "always", "never"}) {
    if (!vrkEqualIgnoringCase(when, known)) continue;
    m_colors = known;
    decideColors();
    return;
  }
  LOGLogLog::warn("LOGColorConsoleAppender::setColors -- possible values are auto, always and never");
}

I18NString LOGColorConsoleAppender::getColors() const {
  const LOGGuard guard(*this);
  return m_colors;
}

void LOGColorConsoleAppender::setColor(const LOGLevel& level, const I18NString& color) {
  std::string start;
  if (!parseColor(color, start)) {
    LOGLogLog::warn("LOGColorConsoleAppender::setColor -- there is no colour " + color);
    return;
  }
  const LOGGuard guard(*this);
  Look& look = m_looks[indexOf(level)];
  look.color = color;
  look.start = std::move(start);
}

I18NString LOGColorConsoleAppender::getColor(const LOGLevel& level) const {
  const LOGGuard guard(*this);
  return m_looks[indexOf(level)].color;
}

bool LOGColorConsoleAppender::isColor(const I18NString& color) {
  std::string start;
  return parseColor(color, start);
}

void LOGColorConsoleAppender::setPrefix(const I18NString& prefix) {
  const bool isOn = vrkEqualIgnoringCase(prefix, "sd-daemon");
  if (!isOn && !vrkEqualIgnoringCase(prefix, "none")) {
    LOGLogLog::warn("LOGColorConsoleAppender::setPrefix -- possible values are none and sd-daemon");
    return;
  }
  const LOGGuard guard(*this);
  m_hasPrefix = isOn;
}

I18NString LOGColorConsoleAppender::getPrefix() const {
  const LOGGuard guard(*this);
  return m_hasPrefix ? "sd-daemon" : "none";
}

void LOGColorConsoleAppender::setQWForFiles() {
  LOGConsoleAppender::setQWForFiles();
  decideColors();
}

void LOGColorConsoleAppender::decideColors() {
  m_isColored = m_colors == "always" ||
                (m_colors == "auto" && VRKTerminal::wantsColors(vrkEqualIgnoringCase(m_target, "err") ? 2 : 1));
}

void LOGColorConsoleAppender::subappend(LOGLoggingEvent* event) {
  if (getOpen() == 0) return LOGTaking::refuse();
  LOGLayout* const layout = getLayout();
  VRK_ASSERT(layout);
  logContain(APPEND_FAILURE, [&]() VRK_NO_THREAD_SAFETY_ANALYSIS {
    const VRKThreadGuard guard(layout->criticalSection());  // the appender's own brings the rest
    writeLine(event->getLevel(), LOGLayoutInternals::formatUtf8(*layout, event));
  });
}

void LOGColorConsoleAppender::writeLine(const LOGLevel* level, std::string_view line) {
  if (getOpen() == 0) return LOGTaking::refuse();
  VRK_ASSERT(m_qw);
  if (level != nullptr && !line.empty()) {
    const std::string_view start = m_isColored ? std::string_view(m_looks[indexOf(*level)].start) : "";
    if (m_hasPrefix || !start.empty()) {
      decorate(*level, start, line);
      line = m_line.view();
    }
  }
  LOGLineWriter::stWrite(*m_qw, *m_outFile, line);
  m_line.limitMemory(LOGLayoutInternals::MOST_KEPT);
}

// Each line by itself, and its line feed outside of the colour: a journal reads the severity of each, and a terminal
// that scrolls fills the new line with the background that it has at the line feed.
void LOGColorConsoleAppender::decorate(const LOGLevel& level, std::string_view start, std::string_view line) {
  const char prefix[] = {'<', static_cast<char>('0' + logSeverity(level)), '>'};
  m_line.clear();
  while (!line.empty()) {
    const std::string_view one = line.substr(0, line.find('\n'));
    line.remove_prefix(one.size());
    if (m_hasPrefix) m_line.appendChecked({prefix, sizeof prefix});
    if (!start.empty() && !one.empty()) {
      m_line.appendChecked(start);
      m_line.appendChecked(one);
      m_line.appendChecked(OFF);
    } else {
      m_line.appendChecked(one);
    }
    if (line.empty()) break;
    m_line.appendChecked("\n");
    line.remove_prefix(1);
  }
}

const LOGAppenderInternals LOGColorConsoleAppender::INTERNALS = {
    &typeid(LOGColorConsoleAppender), false, [](LOGAppenderSkeleton& appender, LOGLoggingEvent* event) {
      auto& self = static_cast<LOGColorConsoleAppender&>(appender);
      return LOGAppenderInternals::appendLine(
          self, event, [&](std::string_view line) VRK_INLINED VRK_NO_THREAD_SAFETY_ANALYSIS {
            logContain(APPEND_FAILURE,
                       [&]() VRK_INLINED VRK_NO_THREAD_SAFETY_ANALYSIS { self.writeLine(event->getLevel(), line); });
          });
    }};
