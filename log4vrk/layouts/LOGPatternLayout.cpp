#include "log4vrk/layouts/LOGPatternLayout.h"

#include <algorithm>
#include <array>
#include <typeinfo>
#include <utility>

#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/core/LOGLogger.h"
#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/core/internal/LOGContainment.h"
#include "log4vrk/core/internal/LOGLayoutInternals.h"
#include "log4vrk/core/internal/LOGThreadState.h"
#include "log4vrk/layouts/internal/LOGPatternConverter.h"
#include "log4vrk/layouts/internal/LOGPatternParser.h"

namespace {

std::atomic<std::uint64_t> g_numbers{0};

constexpr LOGFailureTexts FAILURES = {"LOGPatternLayout::format -- some i18nstring exception occurred",
                                      "LOGPatternLayout::format -- some VRKThrowable exception occurred",
                                      "LOGPatternLayout::format -- some generic error occurred"};

}  // namespace

// A pattern as one thread uses it. Each thread has a copy, so that threads that share a layout format without a lock,
// and so that a copy can keep what will probably be the same in the next line: the text of a date, the name of a level,
// and the whole beginning of the line up to the first item that changes within a second.
class LOGPatternCopy {
 public:
  bool isOf(std::uint64_t number) const { return m_number == number; }
  bool hasMessage() const { return m_hasMessage; }
  [[gnu::cold]] void take(std::uint64_t number, const std::vector<LOGPatternConverter>& converters, bool isSafe);
  std::size_t size() const { return m_converters.size(); }
  /// Appends to `out` all items from `next` on, and advances `next`. When an item raises, `next` is behind it.
  void write(I18NUtf8Buffer& out, std::size_t& next, LOGLoggingEvent& event, std::string_view message,
             LOGThreadState& thread);

 private:
  /// Converters of the frequent kind in a row: how many there are, and how many logger names and messages they write.
  /// From that follows how much memory they need, which is then asked for once and not for every item.
  struct Run {
    std::size_t length = 0, names = 0, messages = 0;
  };

  bool isSteady(const LOGPatternConverter& converter) const;
  void findRuns();
  bool takesRuns(const LOGLoggingEvent& event);
  bool hasBeginning(LOGLoggingEvent& event, LOGThreadState& thread);
  bool beginsFor(const I18NString& threadName, LOGThreadState& thread);
  [[gnu::cold]] void makeBeginning(LOGLoggingEvent& event);

  std::uint64_t m_number = 0;  // none
  std::vector<LOGPatternConverter> m_converters;
  bool m_hasMessage = false;
  std::vector<Run> m_runs;              // each begins at the converter of the same index
  const I18NString* m_level = nullptr;  // the name that the converters have; such names are never freed
  bool m_levelFits = false;             // whether all of them could take it

  std::size_t m_steady = 0;  // how many items there are in the beginning
  bool m_namesThread = false;
  bool m_filled = false;
  std::int64_t m_second = 0;
  bool m_ofOthers = false;  // it names a thread whose events this one prints
  I18NString m_threadName;  // of that one
  LOGSecondText m_beginning;
};

void LOGPatternCopy::take(std::uint64_t number, const std::vector<LOGPatternConverter>& converters, bool isSafe) {
  m_number = 0;  // until it is whole
  m_converters = std::vector<LOGPatternConverter>(converters);
  for (LOGPatternConverter& each : m_converters) each.isSafe |= isSafe && !each.isText();
  const auto has = [](char16_t letter) {
    return [=](const LOGPatternConverter& each) { return each.letter == letter; };
  };
  m_hasMessage = std::any_of(converters.begin(), converters.end(), has(u'm'));
  const auto end = std::find_if_not(converters.begin(), converters.end(),
                                    [this](const LOGPatternConverter& each) { return isSteady(each); });
  m_steady = static_cast<std::size_t>(end - converters.begin());
  m_namesThread = std::any_of(converters.begin(), end, has(u't'));
  m_filled = false;
  m_level = nullptr;
  findRuns();
  m_number = number;
}

void LOGPatternCopy::findRuns() {
  m_runs.assign(m_converters.size() + 1, Run());
  for (std::size_t i = m_converters.size(); i-- > 0;) {
    const LOGPatternConverter& converter = m_converters[i];
    if (!converter.isFrequent()) continue;
    m_runs[i] = m_runs[i + 1];
    ++m_runs[i].length;
    if (converter.letter == u'c') ++m_runs[i].names;
    if (converter.letter == u'm') ++m_runs[i].messages;
  }
}

// Runs are for events that have a level with a short name, as most have. The converters keep the name as it is written:
// it changes rarely from one line to the next.
inline bool LOGPatternCopy::takesRuns(const LOGLoggingEvent& event) {
  const LOGLevel* const level = event.getLevel();
  if (level == nullptr) return false;
  const I18NString* const name = &level->toString();
  if (name != m_level) {
    m_level = name;
    m_levelFits = false;  // even if this raises
    m_levelFits = std::all_of(m_converters.begin(), m_converters.end(), [name](LOGPatternConverter& each) {
      return each.letter != u'p' || each.setLevel(*name);
    });
  }
  return m_levelFits;
}

// Whether the item reads the same in all lines of one thread and one second, but for milliseconds. A date that is
// fitted to a width is not steady: the milliseconds would have to be found again in what has been cut.
bool LOGPatternCopy::isSteady(const LOGPatternConverter& converter) const {
  switch (converter.letter) {
    case u'd':
      return !converter.isFitted() && (converter.date == nullptr || converter.date->textOf(0) != nullptr);
    case u't':
    case u'n':
    case u'%':
    case 0:
      return true;
    default:
      return false;
  }
}

void LOGPatternCopy::makeBeginning(LOGLoggingEvent& event) {
  I18NUtf8Buffer text;
  LOGSecondText made;
  for (std::size_t i = 0; i < m_steady; ++i) {
    LOGPatternConverter& converter = m_converters[i];
    if (converter.letter == u'd' && converter.date != nullptr) {
      text.appendChecked(converter.text);
      const LOGSecondText& date = *converter.date->textOf(event.getTimeStamp());
      for (const std::size_t position : date.positions) made.positions.push_back(text.size() + position);
      text.appendChecked(date.text);
    } else {
      converter.append(text, event, {});
    }
  }
  made.text = text.view();
  m_beginning = std::move(made);
}

// A beginning is made for another thread only when its events follow each other: where those of several come in turns
// it would be of no use to the next.
bool LOGPatternCopy::beginsFor(const I18NString& threadName, LOGThreadState& thread) {
  const bool isOwn = thread.name.owns(threadName);
  if (isOwn != m_ofOthers && (isOwn || threadName == m_threadName)) return true;
  m_filled = false;
  m_ofOthers = !isOwn;
  if (!isOwn) m_threadName = threadName;
  return isOwn;
}

bool LOGPatternCopy::hasBeginning(LOGLoggingEvent& event, LOGThreadState& thread) {
  if (m_steady == 0) return false;
  // Asked on every line, not only when the beginning is made: whoever reads an event's thread first names it for all.
  if (m_namesThread && !beginsFor(event.getThreadName(), thread)) return false;
  if (m_filled && m_second == event.getTimeStamp()) return true;
  m_filled = false;
  try {
    makeBeginning(event);
    m_second = event.getTimeStamp();
    m_filled = true;
  }
  VRK_RETHROW_FORCED_UNWIND
  catch (...) {
    m_steady = 0;  // item by item then, which tells what is wrong
  }
  return m_filled;
}

inline void LOGPatternCopy::write(I18NUtf8Buffer& out, std::size_t& next, LOGLoggingEvent& event,
                                  std::string_view message, LOGThreadState& thread) {
  if (next == 0 && hasBeginning(event, thread)) {
    m_beginning.show(event.getTimeStampNanos() / 1000000);
    out.appendChecked(m_beginning.text);
    next = m_steady;
  }
  const bool takes = takesRuns(event);
  while (next != size()) {
    const Run& run = m_runs[next];
    const LOGPatternConverter* const converter = &m_converters[next];
    if (!takes || run.length == 0) {
      m_converters[next++].append(out, event, message);
      continue;
    }
    next += run.length;
    const std::string& logger = event.getLoggerNameUtf8();
    char* to = out.room(run.length * LOGPatternConverter::MOST_PUT + run.names * logger.size() +
                        run.messages * message.size());
    for (std::size_t i = 0; i < run.length; ++i) to = converter[i].put(to, logger, message);
    out.extendTo(to);
  }
}

// The copies that a thread has used last. The place of each follows from its number, so that none is searched for. Two
// patterns that share a place take new copies in turn, which is slower and still right.
struct LOGPatternCopies : std::array<LOGPatternCopy, 16> {};

const LOGLayoutInternals LOGPatternLayout::INTERNALS = {
    &typeid(LOGPatternLayout),
    [](LOGLayout& layout, LOGLoggingEvent* event) { return static_cast<LOGPatternLayout&>(layout).buildAny(event); },
    &LOGPatternLayout::formatFast,
    [](LOGLayout& layout) { return static_cast<LOGPatternLayout&>(layout).getConversionPattern(); },
};

LOGPatternLayout::LOGPatternLayout() : LOGPatternLayout("%r [%t] %p %c %x - %m%n") {}

LOGPatternLayout::LOGPatternLayout(const I18NString& pattern) {
  instance("LOGPatternLayout");
  LOGLayoutInternals::set(*this, INTERNALS);
  setConversionPattern(pattern);
}

LOGPatternLayout::~LOGPatternLayout() = default;

void LOGPatternLayout::setConversionPattern(const I18NString& pattern) {
  std::vector<LOGPatternConverter> converters = LOGPatternParser(pattern).parse();
  I18NString copy = pattern;
  const LOGGuard guard(*this);
  m_pattern = std::move(copy);
  m_converters.swap(converters);
  m_number.store(++g_numbers, std::memory_order_release);
}

void LOGPatternLayout::setSafeText(bool on) {
  const LOGGuard guard(*this);
  m_isSafe = on;
  m_number.store(++g_numbers, std::memory_order_release);
}

bool LOGPatternLayout::getSafeText() {
  const LOGGuard guard(*this);
  return m_isSafe;
}

I18NString LOGPatternLayout::getConversionPattern() {
  const LOGGuard guard(*this);
  return m_pattern;
}

I18NString& LOGPatternLayout::format(LOGLoggingEvent* event) {
  I18NString text = takeSpare();
  text.append(buildAny(event));
  return setResult(std::move(text));
}

inline LOGPatternCopy& LOGPatternLayout::copyOf(LOGThreadState& thread) {
  const std::uint64_t number = m_number.load(std::memory_order_acquire);
  if (thread.patterns) {
    LOGPatternCopy& copy = (*thread.patterns)[number % thread.patterns->size()];
    if (copy.isOf(number)) return copy;
  }
  return takeCopy(thread);
}

LOGPatternCopy& LOGPatternLayout::takeCopy(LOGThreadState& thread) {
  if (!thread.patterns) thread.patterns = std::make_shared<LOGPatternCopies>();
  const LOGGuard guard(*this);
  const std::uint64_t number = m_number.load(std::memory_order_relaxed);
  LOGPatternCopy& copy = (*thread.patterns)[number % thread.patterns->size()];
  copy.take(number, m_converters, m_isSafe);
  return copy;
}

std::string_view LOGPatternLayout::buildAny(LOGLoggingEvent* event) {
  if (event == nullptr) {
    LOGLogLog::error("LOGPatternLayout::format --- Event is NULL.");
    return {};
  }
  LOGThreadState& thread = LOGThreadState::current();
  thread.texts.message.limitMemory(LOGLayoutInternals::MOST_KEPT);
  // The message is rendered first. That may run application code, which may log by this layout or even set another
  // pattern: a copy that had been found before could be another pattern's afterwards. So it is looked up again.
  std::string_view message;
  LOGPatternCopy* copy = nullptr;
  logContain(FAILURES, [&] {
    if (copyOf(thread).hasMessage()) message = event->renderUtf8(thread.texts.message);
  });
  logContain(FAILURES, [&] { copy = &copyOf(thread); });
  return copy != nullptr ? build(thread, *copy, *event, message) : std::string_view();
}

std::string_view LOGPatternLayout::formatFast(LOGLayout& layout, LOGLoggingEvent& event) {
  LOGThreadState& thread = LOGThreadState::current();
  LOGPatternCopy& copy = static_cast<LOGPatternLayout&>(layout).copyOf(thread);
  return build(thread, copy, event, event.isRenderable() ? event.getText() : std::string_view());
}

std::string_view LOGPatternLayout::build(LOGThreadState& thread, LOGPatternCopy& copy, LOGLoggingEvent& event,
                                         std::string_view message) {
  I18NUtf8Buffer& text = thread.texts.line;
  text.limitMemory(LOGLayoutInternals::MOST_KEPT);
  text.clear();
  std::size_t next = 0;
  do {  // again behind an item that failed
    logContain(FAILURES, [&] { copy.write(text, next, event, message, thread); });
  } while (next != copy.size());
  return text.view();
}

int LOGPatternLayout::ignoresThrowable() { return 1; }
