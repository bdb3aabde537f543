#include "log4vrk/core/LOGLoggingEvent.h"

#include "log4vrk/core/LOGLogger.h"
#include "log4vrk/core/LOGNDC.h"
#include "log4vrk/layouts/LOGRendererMap.h"
#include "log4vrk/platform/VRKThread.h"
#include "log4vrk/platform/VRKThrowable.h"
#include "log4vrk/platform/VRKTime.h"

namespace {

const VRKTime::Moment g_start = VRKTime::now();

std::unique_ptr<LOGObject> cloneOf(const LOGObject* message) {
  return std::unique_ptr<LOGObject>(message != nullptr ? message->clone() : nullptr);
}

}  // namespace

const I18NString& LOGLocationInfo::m_NA = vrkImmortal<I18NString>("?");

LOGSerializable::~LOGSerializable() = default;

LOGLoggingEvent::LOGLoggingEvent(const I18NString& fqnOfLoggerClass, LOGLogger* logger, LOGLevel* level,
                                 LOGObject* message)
    : m_level(level), m_logger(logger) {
  vrkTranslateErrors(VRK_HERE, [&] {
    VRK_ASSERT(m_logger);
    m_fqnOfLoggerClass = fqnOfLoggerClass;
    m_loggerName = logger->getName();
    const VRKTime::Moment now = VRKTime::now();
    m_timeStamp = now.seconds;
    m_timeStampNanos = now.nanoseconds;
    m_message = cloneOf(message);
  });
}

LOGLoggingEvent::LOGLoggingEvent(const LOGLoggingEvent& other)
    : LOGSerializable(other),
      m_loggerName(other.m_loggerName),
      m_fqnOfLoggerClass(other.m_fqnOfLoggerClass),
      m_timeStamp(other.m_timeStamp),
      m_timeStampNanos(other.m_timeStampNanos),
      m_level(other.m_level),
      m_logger(other.m_logger),
      m_message(cloneOf(other.m_message.get())),
      m_ndc(other.m_ndc),
      m_ndcLookupRequired(other.m_ndcLookupRequired),
      m_renderedMessage(other.m_renderedMessage),
      m_threadName(other.m_threadName),
      m_throwableStrRep(other.m_throwableStrRep) {}

LOGLoggingEvent& LOGLoggingEvent::operator=(const LOGLoggingEvent& other) {
  if (this == &other) return *this;
  m_message.reset();
  m_location.reset();
  m_loggerName = other.m_loggerName;
  m_fqnOfLoggerClass = other.m_fqnOfLoggerClass;
  m_timeStamp = other.m_timeStamp;
  m_timeStampNanos = other.m_timeStampNanos;
  m_level = other.m_level;
  m_logger = other.m_logger;
  m_message = cloneOf(other.m_message.get());
  m_ndc = other.m_ndc;
  m_ndcLookupRequired = other.m_ndcLookupRequired;
  m_renderedMessage = other.m_renderedMessage;
  m_threadName = other.m_threadName;
  m_throwableStrRep = other.m_throwableStrRep;
  return *this;
}

LOGLoggingEvent::~LOGLoggingEvent() = default;

const I18NString& LOGLoggingEvent::getNDC() {
  if (m_ndcLookupRequired) {
    m_ndcLookupRequired = false;
    m_ndc = LOGNDC::get();
  }
  return m_ndc;
}

const I18NString& LOGLoggingEvent::getThreadName() {
  if (m_threadName.isEmpty()) m_threadName += VRKThread::currentThreadId();
  return m_threadName;
}

I18NString* LOGLoggingEvent::getRenderedMessage() {
  if (!m_renderedMessage.isEmpty()) return vrkNew<I18NString>(VRK_HERE, m_renderedMessage);
  if (!m_message || m_logger == nullptr || m_logger->getRepository() == nullptr) return nullptr;
  return LOGRendererMap::findAndRender(m_message.get());
}

LOGLocationInfo* LOGLoggingEvent::getLocationInformation() {
  if (!m_location) m_location.reset(vrkNew<LOGLocationInfo>(VRK_HERE));
  return m_location.get();
}

std::int64_t LOGLoggingEvent::getStartTime() { return g_start.seconds; }

std::int32_t LOGLoggingEvent::getStartTimeNanos() { return g_start.nanoseconds; }
