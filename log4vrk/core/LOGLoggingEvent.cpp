#include "log4vrk/core/LOGLoggingEvent.h"

#include <new>

#include "log4vrk/core/LOGLevel.h"
#include "log4vrk/core/LOGLogger.h"
#include "log4vrk/core/LOGNDC.h"
#include "log4vrk/core/LOGObject.h"
#include "log4vrk/core/LOGRendererMap.h"
#include "log4vrk/core/internal/LOGEventFields.h"
#include "log4vrk/core/internal/LOGStatementCall.h"
#include "log4vrk/core/internal/LOGThreadState.h"
#include "log4vrk/platform/VRKThrowable.h"
#include "log4vrk/platform/internal/VRKTime.h"

namespace {

const VRKTime::Moment g_start = VRKTime::now();

std::unique_ptr<LOGObject> cloneOf(const LOGObject* message) {
  return std::unique_ptr<LOGObject>(message != nullptr ? message->clone() : nullptr);
}

}  // namespace

const I18NString& LOGLocationInfo::m_NA = vrkImmortal<I18NString>("?");

const I18NString& LOGLoggingEvent::NO_TEXT = vrkImmortal<I18NString>();
const LOGLoggerName& LOGLoggingEvent::NO_LOGGER = vrkImmortal<LOGLoggerName>(I18NString());

LOGSerializable::~LOGSerializable() = default;

[[gnu::always_inline]] inline void LOGLoggingEvent::begin(const I18NString& fqnOfLoggerClass) {
  VRK_ASSERT(m_logger);
  m_fqnOfLoggerClass = &fqnOfLoggerClass;
  // Any other class name is the caller's, and nobody says how long it stays.
  if (m_fqnOfLoggerClass != &LOGLogger::m_FQCN) {
    own().fqnOfLoggerClass = fqnOfLoggerClass;
    m_fqnOfLoggerClass = &m_own->fqnOfLoggerClass;
  }
  m_loggerName = m_logger->m_name.get();
  const VRKTime::Moment now = VRKTime::now();
  m_timeStamp = now.seconds;
  m_timeStampNanos = now.nanoseconds;
}

LOGLoggingEvent::LOGLoggingEvent(const I18NString& fqnOfLoggerClass, LOGLogger* logger, LOGLevel* level,
                                 LOGObject* message)
    : m_level(level), m_logger(logger) {
  vrkTranslateErrors(VRK_HERE, [&] {
    begin(fqnOfLoggerClass);
    m_message = cloneOf(message);
    // Nobody says how long the event stays.
    if (const I18NUtf8Buffer& context = LOGThreadState::current().fields; context.size() > 0) {
      ownFields(context.view(), {});
    }
  });
}

LOGLoggingEvent::LOGLoggingEvent(const I18NString& fqnOfLoggerClass, LOGLogger* logger, LOGLevel* level,
                                 std::string_view utf8)
    : m_isText(true), m_isPassing(true), m_level(level), m_logger(logger), m_text(utf8) {
  vrkTranslateErrors(VRK_HERE, [&] {
    begin(fqnOfLoggerClass);
    m_contextOf = &LOGThreadState::current().fields;
    m_contextSize = m_contextOf->size();
  });
}

LOGLoggingEvent::LOGLoggingEvent(const LOGStatementCall& call, std::string_view utf8)
    : m_timeStamp(call.time().seconds),
      m_timeStampNanos(call.time().nanoseconds),
      m_isText(true),
      m_isPassing(true),
      m_level(call.level()),
      m_logger(&call.logger()),
      m_place(call.place()),
      m_loggerName(call.logger().m_name.get()),
      m_fqnOfLoggerClass(&LOGLogger::m_FQCN),
      m_text(utf8),
      m_fields(call.fields()),
      m_contextOf(&LOGThreadState::current().fields),
      m_contextSize(m_contextOf->size()) {}

void LOGStatementCall::print() {
  try {
    m_text = m_packed->printTo(*m_room);
  } catch (const std::bad_alloc&) {
    m_text = "<not printed: no memory>";
  }
  m_packed = nullptr;
}

void LOGStatementCall::makeEvent() { m_event = ::new (m_memory) LOGLoggingEvent(*this, text()); }

LOGLoggingEvent::LOGLoggingEvent(const LOGLoggingEvent& other) : LOGSerializable(other) { *this = other; }

LOGLoggingEvent& LOGLoggingEvent::operator=(const LOGLoggingEvent& other) {
  if (this == &other) return *this;
  copyMessage(other);
  m_timeStamp = other.m_timeStamp;
  m_timeStampNanos = other.m_timeStampNanos;
  m_ndcLookupRequired = other.m_ndcLookupRequired;
  m_place = other.m_place;
  m_fqnOfLoggerClass = other.m_fqnOfLoggerClass;
  m_threadName = other.m_threadName;
  m_ndc = other.m_ndc;
  if (other.m_own || m_own) copyOwn(other);
  keepLogger(other);
  keepLevel(other.m_level);
  if (m_threadName != &NO_TEXT) setThreadName(I18NString(*m_threadName));
  return *this;
}

// Copies share the logger's name, so that it outlives the logger without a copy of the text for each of them.
void LOGLoggingEvent::keepLogger(const LOGLoggingEvent& other) {
  m_wasRenderable = other.isRenderable();
  m_logger = other.m_logger;
  m_loggerName = other.m_loggerName;
  m_ownLoggerName = other.m_ownLoggerName;
  if (m_ownLoggerName.get() != nullptr || m_loggerName == &NO_LOGGER) return;
  if (m_logger != nullptr && m_loggerName == m_logger->m_name.get()) {
    m_ownLoggerName = m_logger->m_name;
  } else {
    m_ownLoggerName = LOGLoggerName::Share(new LOGLoggerName(*m_loggerName));
    m_loggerName = m_ownLoggerName.get();
  }
}

// A level may be the logger's own copy of one that was set, and go with the logger. The seven singletons live for ever:
// when one of them is the same in all respects it takes the place of the copy.
void LOGLoggingEvent::keepLevel(LOGLevel* level) {
  m_level = level;
  if (level == nullptr) return;
  LOGLevel* const lasting = LOGLevel::toLevel(static_cast<long>(level->toInt()), nullptr);
  if (lasting == level) return;
  if (lasting != nullptr && *lasting == *level && lasting->toString() == level->toString()) {
    m_level = lasting;
  } else {
    own().level = std::make_shared<LOGLevel>(*level);
    m_level = m_own->level.get();
  }
}

bool LOGLoggingEvent::isRenderable() const {
  if (m_ownLoggerName.get() != nullptr) return m_wasRenderable;
  return m_logger != nullptr && m_logger->getRepository() != nullptr;
}

void LOGLoggingEvent::setLogger(LOGLogger* logger) {
  m_logger = logger;
  m_wasRenderable = logger != nullptr && logger->getRepository() != nullptr;
}

void LOGLoggingEvent::copyMessage(const LOGLoggingEvent& other) {
  m_message.reset();
  m_ownText.clear();
  m_ownText.appendChecked(other.m_text);
  m_text = m_ownText.view();
  ownFields(other.contextBytes(), other.m_fields);
  m_isText = other.m_isText;
  if (!m_isText) m_message = cloneOf(other.m_message.get());
}

std::string_view LOGLoggingEvent::findContext() const {
  if (m_contextOf != nullptr) return m_contextOf->view().substr(0, m_contextSize);
  return m_ownText.view().substr(m_text.size(), m_contextSize);
}

void LOGLoggingEvent::ownFields(std::string_view context, std::string_view fields) {
  m_contextOf = nullptr;
  m_contextSize = context.size();
  m_fields = {};
  if (context.empty() && fields.empty()) return;
  const std::size_t size = m_text.size();
  m_ownText.appendChecked(context);
  m_ownText.appendChecked(fields);
  m_text = m_ownText.view().substr(0, size);
  m_fields = m_ownText.view().substr(size + context.size());
}

std::string LOGLoggingEvent::getField(std::string_view name) const {
  I18NUtf8Buffer text;
  LOGFields::Field field;
  if (LOGEventFields(*this).find(name, field)) field.appendValue(text);
  return std::string(text.view());
}

void LOGLoggingEvent::copyOwn(const LOGLoggingEvent& other) {
  if (!other.m_own) {
    m_own.reset();
    return;
  }
  own().fqnOfLoggerClass = other.m_own->fqnOfLoggerClass;
  m_own->threadName = other.m_own->threadName;
  m_own->ndc = other.m_own->ndc;
  m_own->renderedMessage = other.m_own->renderedMessage;
  m_own->throwableStrRep = other.m_own->throwableStrRep;
  if (m_fqnOfLoggerClass == &other.m_own->fqnOfLoggerClass) m_fqnOfLoggerClass = &m_own->fqnOfLoggerClass;
  if (m_ndc == &other.m_own->ndc) m_ndc = &m_own->ndc;
}

// Everything that setPlain() does not get has to be as it is at first.
bool LOGLoggingEvent::isPlain() const {
  return m_isText && !m_own && m_ndcLookupRequired && m_threadName == &NO_TEXT && m_logger != nullptr &&
         m_ownLoggerName.get() == nullptr && m_loggerName == m_logger->m_name.get() &&
         m_fqnOfLoggerClass == &LOGLogger::m_FQCN;
}

void LOGLoggingEvent::setPlain(std::int64_t seconds, std::int32_t nanoseconds, LOGLevel* level, LOGLogger* logger,
                               const LOGSourceLocation* place, std::string_view utf8) {
  m_message.reset();
  m_own.reset();
  m_timeStamp = seconds;
  m_timeStampNanos = nanoseconds;
  m_isText = m_ndcLookupRequired = m_isPassing = true;
  m_level = level;
  m_logger = logger;
  m_place = place;
  m_loggerName = logger->m_name.get();
  m_ownLoggerName = LOGLoggerName::Share();
  m_fqnOfLoggerClass = &LOGLogger::m_FQCN;
  m_threadName = m_ndc = &NO_TEXT;
  m_ownText.clear();
  m_ownText.appendChecked(utf8);
  m_text = m_ownText.view();
  ownFields({}, {});
}

LOGLoggingEvent::~LOGLoggingEvent() = default;

const I18NString& LOGLoggingEvent::getNDC() {
  if (m_ndcLookupRequired) {
    m_ndcLookupRequired = false;
    if (LOGThreadState::current().context.stack == nullptr) return *m_ndc;
    if (I18NString context = LOGNDC::get(); !context.isEmpty()) {
      own().ndc = std::move(context);
      m_ndc = &m_own->ndc;
    }
  }
  return *m_ndc;
}

// A thread keeps its name in UTF-8, too. That saves the conversion in nearly all lines, since most are written by the
// thread that has logged.
void LOGLoggingEvent::appendThreadName(I18NUtf8Buffer& out) {
  const I18NString& name = getThreadName();
  LOGThreadName& thread = LOGThreadState::current().name;
  if (thread.owns(name)) {
    out.appendChecked(thread.utf8());
  } else {
    out.append(name);
  }
}

// From here on the message is an object and no text any more, because whoever has asked for it may change it.
LOGObject* LOGLoggingEvent::getMessage() const {
  if (m_isText) {
    m_message.reset(vrkNew<LOGObject>(VRK_HERE, I18NString(m_text)));
    m_isText = false;
  }
  return m_message.get();
}

LOGLoggingEvent::Own& LOGLoggingEvent::own() {
  if (!m_own) m_own = std::make_unique<Own>();
  return *m_own;
}

void LOGLoggingEvent::setThreadName(const I18NString& name) {
  own().threadName = name;
  m_threadName = &m_own->threadName;
}

const I18NString& LOGLoggingEvent::getThreadName() {
  if (m_threadName->isEmpty()) {
    const I18NString& name = LOGThreadState::current().name.text();
    m_threadName = &name;
    // The thread may end before an event that somebody keeps.
    if (!m_isPassing) setThreadName(name);
  }
  return *m_threadName;
}

I18NString* LOGLoggingEvent::getRenderedMessage() {
  const Rendered rendered = render();
  if (rendered.isNull) return nullptr;
  return rendered.utf16 != nullptr ? vrkNew<I18NString>(VRK_HERE, *rendered.utf16)
                                   : vrkNew<I18NString>(VRK_HERE, rendered.utf8);
}

std::string_view LOGLoggingEvent::renderUtf8(I18NUtf8Buffer& room) {
  const Rendered rendered = render();
  if (rendered.utf16 == nullptr) return rendered.utf8;
  room.clear();
  room.append(*rendered.utf16);
  return room.view();
}

LOGLoggingEvent::Rendered LOGLoggingEvent::render() {
  Rendered rendered;
  if (m_own && !m_own->renderedMessage.isEmpty()) {
    rendered.utf16 = &m_own->renderedMessage;
  } else if (!isRenderable()) {
    return rendered;
  } else if (m_isText) {
    rendered.utf8 = m_text;
    rendered.isNull = false;
    return rendered;
  } else {
    rendered.utf16 = LOGRendererMap::findAndRender(m_message.get(), rendered.made);
  }
  rendered.isNull = rendered.utf16 == nullptr;
  return rendered;
}

LOGLocationInfo* LOGLoggingEvent::getLocationInformation() {
  return &vrkTranslateErrors(VRK_HERE, [&]() -> Own& { return own(); }).location;
}

std::int64_t LOGLoggingEvent::getStartTime() { return g_start.seconds; }

std::int32_t LOGLoggingEvent::getStartTimeNanos() { return g_start.nanoseconds; }
