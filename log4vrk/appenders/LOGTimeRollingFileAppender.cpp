#include "log4vrk/appenders/LOGTimeRollingFileAppender.h"

#include <algorithm>
#include <cerrno>
#include <limits>
#include <typeinfo>
#include <utility>

#include "log4vrk/appenders/LOGCountingQuietWriter.h"
#include "log4vrk/appenders/internal/LOGByteSize.h"
#include "log4vrk/appenders/internal/LOGFileKeeper.h"
#include "log4vrk/appenders/internal/LOGFileLine.h"
#include "log4vrk/core/internal/LOGTimeLimit.h"
#include "log4vrk/platform/I18NLocale.h"
#include "log4vrk/platform/VRKConfigurationFactory.h"
#include "log4vrk/platform/VRKFmFile.h"
#include "log4vrk/platform/internal/VRKErrorText.h"
#include "log4vrk/platform/internal/VRKFault.h"
#include "log4vrk/platform/internal/VRKFileFacts.h"
#include "log4vrk/platform/internal/VRKTimeZone.h"
#include "log4vrk/platform/internal/VRKTurnFile.h"

namespace {

constexpr std::int64_t AT_ONCE = std::numeric_limits<std::int64_t>::min();
// How long a log call waits for a process that rolls the file over, and the seconds until it tries again.
constexpr std::chrono::milliseconds LONGEST_TURN{200};
constexpr std::int64_t UNTIL_NEXT_TURN = 5;
constexpr std::chrono::seconds LONGEST_TIDYING{1};

constexpr LOGFailureTexts ROLL_FAILURES = {"LOGTimeRollingFileAppender -- could not roll over",
                                           "LOGTimeRollingFileAppender -- could not roll over",
                                           "LOGTimeRollingFileAppender -- could not roll over"};

constexpr const char* COMPRESSIONS[] = {"zlib", "zstd"};  // by VRKCompressor::Format

// A program may give its events any time. The calendar ends in the year 9999.
std::int64_t secondOf(const LOGLoggingEvent& event) {
  constexpr std::int64_t FIRST = -62135596800, LAST = 253402300799;
  return std::clamp(event.getTimeStamp(), FIRST, LAST);
}

void ignored(const char* parameter, const I18NString& value, const char* why) {
  LOGLogLog::warn(I18NString("LOGTimeRollingFileAppender -- ") + parameter + " [" + value + "] " + why);
}

void readSize(const char* parameter, const I18NString& text, std::int64_t& bytes) {
  if (!logReadByteSize(text, bytes)) ignored(parameter, text, "is no size, such as 500, 64kB, 10 MB or 2GB; ignored");
}

}  // namespace

// A period in turn with other processes, which leave to each other what the file is for.
class LOGTimeRollingFileAppender::Turn {
 public:
  explicit Turn(const I18NString& path) : m_file(path + ".lock", LONGEST_TURN) {}

  bool isOurs() const { return m_file.isOurs(); }
  int getLastError() const { return m_file.getLastError(); }

  // The note counts for the file that it names. Any other's period is that in which it was last changed.
  LOGRollPeriod periodOf(const VRKFileFacts& file, const LOGRollCalendar& calendar) const {
    VRKFileFacts noted;
    long long start = 0;
    unsigned long long device = 0, inode = 0;
    const bool isNoted = std::sscanf(m_file.note().c_str(), "%lld %llu %llu", &start, &device, &inode) == 3;
    noted.device = device;
    noted.inode = inode;
    if (isNoted && noted.isSameFile(file)) return calendar.at(start);
    return file.size > 0 ? calendar.at(file.modified) : LOGRollPeriod();
  }
  void note(const VRKFileFacts& file, const LOGRollPeriod& period) const {
    m_file.setNote(std::to_string(period.start) + " " + std::to_string(file.device) + " " + std::to_string(file.inode));
  }

 private:
  const VRKTurnFile m_file;
};

// What there is besides the file.
struct LOGTimeRollingFileAppender::Rolling {
  // Settings.
  I18NString interval, datePattern, zoneName, link;
  std::shared_ptr<const VRKTimeZone> zone;
  LOGHistoryLimits limits;
  std::optional<VRKCompressor::Format> format;

  std::string path;  // of the open file
  LOGRolledNames names;
  LOGRollPeriod period;  // that the file is for; none until an event has been there
  LOGFailureOnce turn, rename, opening, thread;
  std::unique_ptr<LOGFileKeeper> keeper;
  unsigned keeperForks = 0;  // of the process whose keeper it is

  void begin(const I18NString& file) {
    std::string problem;
    path = file.toUtf8();
    names = LOGRolledNames(path, LOGRollCalendar::make(interval, datePattern, zone, problem));
    if (!problem.empty()) LOGLogLog::warn("LOGTimeRollingFileAppender -- " + I18NString(problem));
  }
  // The keeper of a parent is left alone in a child of a fork.
  std::unique_ptr<LOGFileKeeper> takeKeeper() {
    if (keeper && keeperForks != VRKThread::forks()) static_cast<void>(keeper.release());
    return std::move(keeper);
  }
};

const LOGFileAppender::Identity LOGTimeRollingFileAppender::IDENTITY = {
    "LOGTimeRollingFileAppender",
    "LOGTimeRollingFileAppender::setFile -- ",
    {"LOGTimeRollingFileAppender::setFile -- some i18nstring exception occurred",
     "LOGTimeRollingFileAppender::setFile -- some VRKThrowable exception occurred",
     "LOGTimeRollingFileAppender::setFile -- generic exception happened"}};

const LOGAppenderInternals LOGTimeRollingFileAppender::INTERNALS = {
    &typeid(LOGTimeRollingFileAppender), false, &LOGTimeRollingFileAppender::appendFast, &LOGFileAppender::holdBack,
    &LOGFileAppender::release};

LOGTimeRollingFileAppender::LOGTimeRollingFileAppender()
    : m_rolling(vrkNew<Rolling>(VRK_HERE)), m_nextLook(AT_ONCE), m_nextSettling(AT_ONCE) {
  setIdentity(IDENTITY, INTERNALS);
}

// See LOGRollingFileAppender: opened by the base's constructor the file would have the base's writer.
LOGTimeRollingFileAppender::LOGTimeRollingFileAppender(LOGLayout* layout, const I18NString& fileName, int append)
    : LOGTimeRollingFileAppender() {
  setLayout(layout);
  LOGTimeRollingFileAppender::setFile(fileName, append, 0, DEFAULT_BUFFER_SIZE);
}

LOGTimeRollingFileAppender::~LOGTimeRollingFileAppender() { m_rolling->takeKeeper(); }

// Under a turn, so that no other process takes the name away between two steps. Who does not get one opens the file
// nevertheless: the first event looks at it again.
void LOGTimeRollingFileAppender::setFileOptions(const I18NString& name, int append, int bufferedIO, long bufferSize) {
  logContain(IDENTITY.setFileFailures, [&]() VRK_NO_THREAD_SAFETY_ANALYSIS {
    const I18NString path = VRKConfigurationFactory::getInstance().resolvePath(name);
    const Turn turn(path);
    if (!openFile(name, append, bufferedIO, bufferSize)) return;
    m_rolling->begin(m_fileName);
    m_rolling->period = {};
    beginFile();
    makeLink();
  });
}

void LOGTimeRollingFileAppender::setQWForFiles() { makeWriter<LOGCountingQuietWriter>(); }

LOGCountingQuietWriter* LOGTimeRollingFileAppender::counter() const {
  LOGQuietWriter* const writer = m_qw.get();
  if (writer == nullptr) return nullptr;
  const bool isOwn = typeid(*writer) == typeid(LOGCountingQuietWriter);  // nearly always, and then there is no search
  return isOwn ? static_cast<LOGCountingQuietWriter*>(writer) : dynamic_cast<LOGCountingQuietWriter*>(writer);
}

void LOGTimeRollingFileAppender::subappend(LOGLoggingEvent* event) {
  lookIfDue(*event);
  LOGFileAppender::subappend(event);
  settleIfFull(*event);
}

bool LOGTimeRollingFileAppender::appendFast(LOGAppenderSkeleton& appender, LOGLoggingEvent* event) {
  auto& self = static_cast<LOGTimeRollingFileAppender&>(appender);
  return LOGAppenderInternals::appendLine(self, event,
                                          [&](std::string_view line) VRK_INLINED VRK_NO_THREAD_SAFETY_ANALYSIS {
                                            self.lookIfDue(*event);
                                            self.writeLine(line);
                                            self.settleIfFull(*event);
                                          });
}

inline void LOGTimeRollingFileAppender::lookIfDue(const LOGLoggingEvent& event) {
  if (event.getTimeStamp() < m_nextLook && !m_reopenAsked.load(std::memory_order_relaxed)) return;
  look(secondOf(event));
}

// Bytes that are collected but not written do not count on a full disk: see LOGRollingFileAppender.
inline void LOGTimeRollingFileAppender::settleIfFull(const LOGLoggingEvent& event) {
  const std::int64_t most = m_maximumFileSize.load(std::memory_order_relaxed);
  if (most <= 0 || m_file == nullptr || event.getTimeStamp() < m_nextSettling) return;
  LOGCountingQuietWriter* const counting = counter();
  if (counting == nullptr) return;
  if (counting->getCount() + static_cast<std::int64_t>(m_file->pending()) < most) return;
  settle(secondOf(event));
}

// Each second once, because somebody else may have renamed the file, or written to it.
void LOGTimeRollingFileAppender::look(std::int64_t now) {
  logContainAll(ROLL_FAILURES, [&]() VRK_NO_THREAD_SAFETY_ANALYSIS {
    if (getOpen() != 1 || !m_file || !m_file->isOpen()) return;
    m_nextLook = now + 1;
    const bool isAsked = m_reopenAsked.exchange(false);
    const LOGRollPeriod& period = m_rolling->period;
    if (isAsked || !period.isSet() || now >= period.end || isElsewhere()) return settle(now);
    m_nextLook = std::min(now + 1, period.end);
    if (counter() != nullptr) counter()->setCountToSizeOf(m_file.get());
  });
}

// What is collected belongs to the file that there is.
void LOGTimeRollingFileAppender::settle(std::int64_t now) {
  logContainAll(ROLL_FAILURES, [&]() VRK_NO_THREAD_SAFETY_ANALYSIS {
    if (m_file->pending() > 0) LOGLineWriter::flush(*m_qw, *m_file);
    m_nextLook = m_nextSettling = now + 1;
    const Turn turn(m_fileName);
    if (!turn.isOurs()) {
      m_rolling->turn.failed("could not lock [" + m_rolling->path + ".lock]: " + vrkErrorText(turn.getLastError()));
      m_nextLook = m_nextSettling = now + UNTIL_NEXT_TURN;
      return;
    }
    m_rolling->turn.worked();
    if (!settleInTurn(turn, now)) return;
    m_nextLook = std::min(now + 1, m_rolling->period.end);
    m_nextSettling = AT_ONCE;
    wakeKeeper();
  });
}

// Until the file is the one that the name leads to, is for a period that is not over, and has room.
bool LOGTimeRollingFileAppender::settleInTurn(const Turn& turn, std::int64_t now) {
  LOGRollPeriod& period = m_rolling->period;
  for (;;) {
    if (isElsewhere()) {
      if (!openAnew()) return false;
      period = {};
    }
    VRKFileFacts facts;
    if (!m_file->facts(facts)) return false;
    const LOGRollCalendar& calendar = m_rolling->names.calendar();
    if (!period.isSet()) period = turn.periodOf(facts, calendar);
    const bool isOver = !period.isSet() || now >= period.end;
    if (facts.size == 0 && isOver) {
      period = calendar.at(now);
      turn.note(facts, period);
      return true;
    }
    if (!isOver && !isFull()) return true;
    if (!rollOver(turn, now)) return false;
  }
}

bool LOGTimeRollingFileAppender::isFull() const {
  const std::int64_t most = m_maximumFileSize;
  return most > 0 && m_file->size() >= most;
}

bool LOGTimeRollingFileAppender::isElsewhere() const {
  VRKFileFacts open, named;
  return !m_file->facts(open) || !VRKFileFacts::of(m_rolling->path, named) || !open.isSameFile(named);
}

// The former file stays open until there is a new one, so that no event is without a file.
bool LOGTimeRollingFileAppender::rollOver(const Turn& turn, std::int64_t now) {
  Rolling& rolling = *m_rolling;
  std::string name;
  VRKFileFacts::Renaming renaming;
  do {
    name = rolling.names.next(rolling.period.begin);
    renaming = VRKFileFacts::renameToNew(rolling.path, name);
  } while (renaming == VRKFileFacts::EXISTS);
  if (renaming != VRKFileFacts::RENAMED) {
    rolling.rename.failed("could not rename [" + rolling.path + "] to [" + name + "]: " + vrkErrorText(errno));
    return false;
  }
  rolling.rename.worked();
  VRKFault::mayDie(VRKFault::ROLL_RENAMED);
  if (!openAnew()) {
    VRKFileFacts::renameToNew(name, rolling.path);
    return false;
  }
  VRKFileFacts facts;
  if (now >= rolling.period.end) rolling.period = rolling.names.calendar().at(now);
  if (m_file->facts(facts)) turn.note(facts, rolling.period);
  VRKFault::mayDie(VRKFault::ROLL_CREATED);
  return true;
}

bool LOGTimeRollingFileAppender::openAnew() {
  const bool opened =
      m_file->open(m_fileName, VRKFmFile::EXISTING) || m_file->open(m_fileName, VRKFmFile::CREATE_EXCLUSIVE);
  if (!opened) {
    m_rolling->opening.failed("could not open [" + m_rolling->path + "]: " + vrkErrorText(m_file->getLastError()));
    return false;
  }
  m_rolling->opening.worked();
  m_file->setBuffer(getBufferedIO() == 1 ? static_cast<std::size_t>(std::max(0L, getBufferSize())) : 0);
  beginFile();
  return true;
}

// From now on nobody takes the file away, unless the system knows no locks.
void LOGTimeRollingFileAppender::beginFile() {
  m_file->hold();
  if (counter() != nullptr) counter()->setCountToSizeOf(m_file.get());
  m_nextLook = m_nextSettling = AT_ONCE;
}

void LOGTimeRollingFileAppender::reopen() {
  logContain(ROLL_FAILURES, [&] {
    const LOGGuard guard(*this);
    if (getOpen() != 1 || !m_file || !m_file->isOpen()) return;
    if (m_file->pending() > 0) LOGLineWriter::flush(*m_qw, *m_file);
    const Turn turn(m_fileName);
    if (openAnew()) m_rolling->period = {};
  });
}

void LOGTimeRollingFileAppender::close() {
  LOGFileAppender::close();
  std::unique_ptr<LOGFileKeeper> keeper;
  logContain("LOGTimeRollingFileAppender::close -- unable to lock mutex", [&] {
    const LOGGuard guard(*this);
    keeper = m_rolling->takeKeeper();
  });
  if (keeper) keeper->finish(LOGTimeLimit::until(LONGEST_TIDYING));
}

void LOGTimeRollingFileAppender::makeLink() {
  const I18NString path = VRKConfigurationFactory::getInstance().resolvePath(m_rolling->link);
  if (m_rolling->link.isEmpty() || VRKFileFacts::link(path.toUtf8(), m_rolling->path)) return;
  LOGLogLog::error("LOGTimeRollingFileAppender -- could not make the link [" + path + "]: " + vrkErrorText(errno));
}

// Not before the first event: behind a durable queue, what a killed process was about to write comes before that, and
// may belong to a file that is finished now.
void LOGTimeRollingFileAppender::wakeKeeper() {
  Rolling& rolling = *m_rolling;
  if (!rolling.limits.any() && !rolling.format) return;
  if (!rolling.keeper || rolling.keeperForks != VRKThread::forks()) {
    rolling.takeKeeper();
    rolling.keeper = std::make_unique<LOGFileKeeper>(LOGFileHistory(rolling.names, rolling.limits, rolling.format));
    rolling.keeperForks = VRKThread::forks();
  }
  try {
    rolling.keeper->wake(rolling.period.begin);
    rolling.thread.worked();
  } catch (const VRKThrowable& error) {
    rolling.thread.failed("could not start the thread for finished files: " + error.getText().toUtf8());
  }
}

// --- settings

void LOGTimeRollingFileAppender::setInterval(const I18NString& interval) {
  LOGRollInterval unit;
  if (!LOGRollInterval::parse(interval, unit)) {
    return ignored("Interval", interval, "is none, such as minute, 2 hours, day or week; ignored");
  }
  const LOGGuard guard(*this);
  m_rolling->interval = unit.toString();
}

I18NString LOGTimeRollingFileAppender::getInterval() const {
  const LOGGuard guard(*this);
  return m_rolling->interval;
}

void LOGTimeRollingFileAppender::setDatePattern(const I18NString& pattern) {
  const LOGGuard guard(*this);
  m_rolling->datePattern = pattern;
}

I18NString LOGTimeRollingFileAppender::getDatePattern() const {
  const LOGGuard guard(*this);
  return m_rolling->datePattern;
}

void LOGTimeRollingFileAppender::setTimeZone(const I18NString& name) {
  std::shared_ptr<const VRKTimeZone> zone;
  if (!name.isEmpty()) {
    try {
      zone = VRKTimeZone::find(name);
      if (!zone) ignored("TimeZone", name, "is unknown, local time is used.");
    } catch (const VRKThrowable& error) {
      ignored("TimeZone", name, (error.getText() + ", local time is used.").toUtf8().c_str());
    }
  }
  const LOGGuard guard(*this);
  m_rolling->zone = std::move(zone);
  m_rolling->zoneName = name;
}

I18NString LOGTimeRollingFileAppender::getTimeZone() const {
  const LOGGuard guard(*this);
  return m_rolling->zoneName;
}

void LOGTimeRollingFileAppender::setMaximumFileSize(const I18NString& size) {
  std::int64_t bytes = m_maximumFileSize;
  readSize("MaximumFileSize", size, bytes);
  m_maximumFileSize = bytes;
}

void LOGTimeRollingFileAppender::setMaxHistory(long files) {
  const LOGGuard guard(*this);
  m_rolling->limits.files = files;
}

long LOGTimeRollingFileAppender::getMaxHistory() const {
  const LOGGuard guard(*this);
  return m_rolling->limits.files;
}

void LOGTimeRollingFileAppender::setMaxAge(const I18NString& age) {
  LOGRollInterval span;
  if (age != "0" && !LOGRollInterval::parse(age, span)) {
    return ignored("MaxAge", age, "is no time, such as 12 hours or 30 days; ignored");
  }
  const LOGGuard guard(*this);
  m_rolling->limits.age = age == "0" ? 0 : span.seconds();
}

std::int64_t LOGTimeRollingFileAppender::getMaxAge() const {
  const LOGGuard guard(*this);
  return m_rolling->limits.age;
}

void LOGTimeRollingFileAppender::setMaxTotalSize(const I18NString& size) {
  const LOGGuard guard(*this);
  readSize("MaxTotalSize", size, m_rolling->limits.bytes);
}

std::int64_t LOGTimeRollingFileAppender::getMaxTotalSize() const {
  const LOGGuard guard(*this);
  return m_rolling->limits.bytes;
}

void LOGTimeRollingFileAppender::setCompress(const I18NString& format) {
  const LOGGuard guard(*this);
  if (vrkEqualIgnoringCase(format, "none")) {
    m_rolling->format.reset();
  } else if (vrkEqualIgnoringCase(format, COMPRESSIONS[VRKCompressor::GZIP])) {
    m_rolling->format = VRKCompressor::GZIP;
  } else if (vrkEqualIgnoringCase(format, COMPRESSIONS[VRKCompressor::ZSTD])) {
    m_rolling->format = VRKCompressor::ZSTD;
  } else {
    ignored("Compress", format, "is none of zlib, zstd and none; ignored");
  }
}

I18NString LOGTimeRollingFileAppender::getCompress() const {
  const LOGGuard guard(*this);
  return m_rolling->format ? COMPRESSIONS[*m_rolling->format] : "none";
}

void LOGTimeRollingFileAppender::setLink(const I18NString& path) {
  const LOGGuard guard(*this);
  m_rolling->link = path;
}

I18NString LOGTimeRollingFileAppender::getLink() const {
  const LOGGuard guard(*this);
  return m_rolling->link;
}
