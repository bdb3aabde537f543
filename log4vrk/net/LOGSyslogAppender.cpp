#include "log4vrk/net/LOGSyslogAppender.h"

#include <typeinfo>
#include <utility>

#include "log4vrk/core/LOGLayout.h"
#include "log4vrk/core/LOGLevel.h"
#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/core/internal/LOGAppendLine.h"
#include "log4vrk/core/internal/LOGTaking.h"
#include "log4vrk/net/LOGSyslogQuietWriter.h"
#include "log4vrk/net/LOGSyslogWriter.h"
#include "log4vrk/platform/I18NLocale.h"

namespace {

constexpr int USER = 8;
constexpr int UNKNOWN = -1;
constexpr LOGFailureTexts APPEND_FAILURE =
    LOGFailureTexts::ofLostEvent("LOGSyslogAppender::append --- An unknown exception occurred.");

}  // namespace

struct LOGSyslogAppender::Facility {
  const char* name;
  int code;
};

// The codes are the numbers of the facilities times 8, as they stand in a datagram. 12 to 15 have no names.
const LOGSyslogAppender::Facility LOGSyslogAppender::FACILITIES[] = {
    {"kern", 0},      {"user", USER},  {"mail", 16},    {"daemon", 24},  {"auth", 32},
    {"syslog", 40},   {"lpr", 48},     {"news", 56},    {"uucp", 64},    {"cron", 72},
    {"authpriv", 80}, {"ftp", 88},     {"local0", 128}, {"local1", 136}, {"local2", 144},
    {"local3", 152},  {"local4", 160}, {"local5", 168}, {"local6", 176}, {"local7", 184},
};

const I18NString& LOGSyslogAppender::TAB = vrkImmortal<I18NString>("    ");

LOGSyslogAppender::LOGSyslogAppender() : m_facility(USER), m_facilityString("user:") {
  instance("LOGSyslogAppender");
  LOGAppenderSkeleton::setName("LOGSyslogAppender");
  LOGAppenderInternals::set(*this, INTERNALS);
}

LOGSyslogAppender::~LOGSyslogAppender() = default;

int LOGSyslogAppender::getFacility(const I18NString& name) {
  for (const Facility& facility : FACILITIES) {
    if (vrkEqualIgnoringCase(name, facility.name)) return facility.code;
  }
  return UNKNOWN;
}

I18NString LOGSyslogAppender::getFacilityString(int code) {
  for (const Facility& facility : FACILITIES) {
    if (facility.code == code) return facility.name;
  }
  return I18NString();
}

void LOGSyslogAppender::setFacility(const I18NString& name) {
  if (name.isEmpty()) return;
  const int code = getFacility(name);
  const LOGGuard guard(*this);
  m_facility = code == UNKNOWN ? USER : code;
  m_facilityString = getFacilityString(m_facility) + ":";
  if (m_qw) m_qw->setFacility(m_facility);
}

I18NString LOGSyslogAppender::getFacility() const {
  const LOGGuard guard(*this);
  return getFacilityString(m_facility);
}

void LOGSyslogAppender::setFacilityPrinting(int printing) {
  const LOGGuard guard(*this);
  m_facilityPrinting = printing;
}

int LOGSyslogAppender::getFacilityPrinting() const {
  const LOGGuard guard(*this);
  return m_facilityPrinting;
}

void LOGSyslogAppender::setSyslogHost(const I18NString& host) {
  const LOGGuard guard(*this);
  openWriter(host);
}

I18NString LOGSyslogAppender::getSyslogHost() const { return LOGSyslogWriter::getSyslogHost(); }

void LOGSyslogAppender::activateOptions() {
  // Called before every event: an active appender has to answer without the lock.
  if (m_active.load(std::memory_order_acquire) || getClosed() == 1) return;
  const LOGGuard guard(*this);
  if (!m_qw && getClosed() != 1) openWriter(LOGSyslogWriter::getSyslogHost());
}

void LOGSyslogAppender::openWriter(const I18NString& host) {
  std::unique_ptr<LOGSyslogWriter> writer(vrkNew<LOGSyslogWriter>(VRK_HERE, host));
  writer->init();
  // In this order, because the quiet writer refers to its writer.
  m_qw.reset(vrkNew<LOGSyslogQuietWriter>(VRK_HERE, writer.get(), m_facility, getErrorHandler()));
  m_writer = std::move(writer);
  m_active.store(true, std::memory_order_release);
}

bool LOGSyslogAppender::requiresLayout() { return true; }

[[gnu::always_inline]] inline bool LOGSyslogAppender::isReady() {
  if (m_qw) return true;
  LOGTaking::refuse();
  LOGLogLog::error("No syslog host is set for LOGSyslogAppedender named [" + getName() + "].");
  return false;
}

// A line in ASCII is sent as it is, behind the priority. Any other goes through the quiet writer as UTF-16, because how
// many of its bytes are sent depends on how many units it has (LOGSyslogWriter::write()). So does one with the facility
// in front. Inlined, so that few calls are open at the system call: see LOGAppendLine.h.
[[gnu::always_inline]] inline void LOGSyslogAppender::writeLine(const LOGLoggingEvent& event, std::string_view line) {
  const LOGLevel* const logLevel = event.getLevel();
  VRK_ASSERT(logLevel);
  // For each event, because the handler may have been replaced, and the one before freed.
  m_qw->setErrorHandler(getErrorHandler());
  m_qw->setLevel(logLevel->getSyslogEquivalent());
  const std::string_view datagram = m_facilityPrinting != 1 ? m_qw->asciiDatagram(line) : std::string_view();
  if (datagram.empty()) {
    m_message.clear();
    if (m_facilityPrinting == 1) m_message = m_facilityString;
    m_message.append(line);
    m_qw->write(m_message);
  } else {
    m_writer->writeAscii(datagram);
  }
}

const LOGAppenderInternals LOGSyslogAppender::INTERNALS = {
    &typeid(LOGSyslogAppender), false, [](LOGAppenderSkeleton& appender, LOGLoggingEvent* event) {
      auto& self = static_cast<LOGSyslogAppender&>(appender);
      return LOGAppenderInternals::appendLine(
          self, event, [&](std::string_view line) VRK_INLINED VRK_NO_THREAD_SAFETY_ANALYSIS {
            logContain(APPEND_FAILURE, [&]() VRK_INLINED VRK_NO_THREAD_SAFETY_ANALYSIS {
              if (self.isReady()) self.writeLine(*event, line);
            });
          });
    }};

// Takes the lock and tests the threshold again, though doAppend() has done both: a program may call append() directly.
void LOGSyslogAppender::append(LOGLoggingEvent* event) {
  VRK_ASSERT(event);
  try {
    const LOGGuard guard(*this);
    logContain(APPEND_FAILURE, [&]() VRK_NO_THREAD_SAFETY_ANALYSIS { send(*event); });
  } catch (VRKThrowable& error) {
    // Misspelt on purpose, like "Appedender" below: existing tools look for these lines.
    LOGLogLog::error("LOGSyslogAppender::append --- enable to lock mutex.", error);
  }
}

void LOGSyslogAppender::send(LOGLoggingEvent& event) {
  if (!isAsSevereAsThreshold(event.getLevel())) return;
  if (!isReady()) return;
  LOGLayout* const layout = getLayout();
  if (layout == nullptr) {
    LOGTaking::refuse();
    LOGLogLog::debug("LOGSyslogAppender::append --- m_layout is NULL. append canceled");
    return;
  }
  {
    // No LOGGuard: the appender's has brought the thread into the gate and put its log calls off.
    const VRKThreadGuard guard(layout->criticalSection());
    writeLine(event, LOGLayoutInternals::formatUtf8(*layout, &event));
  }
  if (!event.getThrowableStrRep().isEmpty()) m_qw->write(TAB + event.getThrowableStrRep());
}

void LOGSyslogAppender::close() {
  logContain("LOGSyslogAppender::close ---- Unable to lock mutex.", [&] {
    const LOGGuard guard(*this);
    setClosed(1);
    m_active = false;
    m_qw.reset();
    m_writer.reset();
  });
}
