#include "log4vrk/appenders/internal/LOGRingRecord.h"

#include <cstring>

#include "log4vrk/appenders/internal/LOGRingFormat.h"
#include "log4vrk/core/internal/LOGFields.h"

namespace {

std::string bytesOf(std::int32_t number) {
  std::string bytes(sizeof number, '\0');
  std::memcpy(bytes.data(), &number, sizeof number);
  return bytes;
}

std::int32_t numberAt(const char* bytes) {
  std::int32_t number;
  std::memcpy(&number, bytes, sizeof number);
  return number;
}

void addToRest(I18NUtf8Buffer& rest, LOGRingFormat::Tag tag, std::string_view text) {
  char head[1 + sizeof(std::int32_t)] = {tag};
  const auto length = static_cast<std::int32_t>(text.size());
  std::memcpy(head + 1, &length, sizeof length);
  rest.appendChecked({head, sizeof head});
  rest.appendChecked(text);
}

// For what is nearly always the same as in the event before.
bool isSame(std::string_view a, const std::string& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size()) == 0;
}

LOGLevel* levelOf(std::int32_t rank) {
  switch (rank) {
    case LOGLevel::DEBUG_RANK:
      return LOGLevel::DEBUG_OBJ;
    case LOGLevel::INFO_RANK:
      return LOGLevel::INFO_OBJ;
    case LOGLevel::WARN_RANK:
      return LOGLevel::WARN_OBJ;
    case LOGLevel::ERROR_RANK:
      return LOGLevel::ERROR_OBJ;
    case LOGLevel::FATAL_RANK:
      return LOGLevel::FATAL_OBJ;
    default:
      return nullptr;
  }
}

// Texts are well-formed unless the file is damaged.
I18NString decoded(std::string_view utf8) { return I18NString(utf8); }

}  // namespace

void LOGRingRecord::addFields(const LOGLoggingEvent& event, Room& room) {
  if (!event.contextBytes().empty()) addToRest(room.rest, LOGRingFormat::CONTEXT_FIELDS, event.contextBytes());
  if (!event.m_fields.empty()) addToRest(room.rest, LOGRingFormat::OWN_FIELDS, event.m_fields);
}

LOGRingRecord LOGRingRecord::ofOrdinary(const LOGLoggingEvent& event, LOGThreadState& thread, Room& room) {
  LOGRingRecord record = ofOrdinary(event, thread);
  addFields(event, room);
  record.rest = room.rest.view();
  return record;
}

LOGRingRecord LOGRingRecord::ofAny(LOGLoggingEvent& event, Room& room) {
  LOGRingRecord record = begin(event);
  // Only the logger's own name leads back to it.
  if (event.m_logger != nullptr && event.m_ownLoggerName.get() == nullptr) record.logger = event.m_logger;
  record.message = event.renderUtf8(room.message);
  record.threadName = room.threadName = event.getThreadName().toUtf8().substr(0, UINT8_MAX);
  record.context = room.context = event.getNDC().toUtf8();
  if (!event.getThrowableStrRep().isEmpty()) {
    addToRest(room.rest, LOGRingFormat::THROWABLE, event.getThrowableStrRep().toUtf8());
  }
  // Nobody says how long another level stays.
  if (event.m_level != nullptr && !isUsual(event.m_level)) {
    addToRest(room.rest, LOGRingFormat::LEVEL,
              bytesOf(event.m_level->getSyslogEquivalent()) + event.m_level->toString().toUtf8());
  }
  addFields(event, room);
  record.rest = room.rest.view();
  return record;
}

LOGLoggingEvent* LOGRingRecord::Place::fill(const LOGRingRecord& record) {
  if (!isSame(record.threadName, m_threadUtf8)) {
    m_threadUtf8 = record.threadName;
    m_threadName = decoded(record.threadName);
  }
  if (!isSame(record.context, m_contextUtf8)) {
    m_contextUtf8 = record.context;
    m_context = decoded(record.context);
  }
  LOGLevel* const level = levelOf(record.rank);
  if (record.logger != nullptr) {
    m_event.setPlain(record.seconds, record.nanoseconds, level, record.logger, record.place, record.message);
  } else {
    fillEvent(record, level);
  }
  m_event.m_threadName = &m_threadName;
  m_event.m_ndc = &m_context;
  m_event.m_ndcLookupRequired = false;
  if (!record.rest.empty() || level == nullptr) fillRest(record.rest, record.rank);
  return &m_event;
}

// As a copy reads that has outlived its logger.
void LOGRingRecord::Place::fillEvent(const LOGRingRecord& record, LOGLevel* level) {
  if (m_loggerName.get() == nullptr || m_loggerName.get()->utf8 != record.loggerName) {
    m_loggerName = LOGLoggerName::Share(new LOGLoggerName(decoded(record.loggerName)));
  }
  m_event.m_message.reset();
  m_event.m_own.reset();
  m_event.setTimeStamp(record.seconds, record.nanoseconds);
  m_event.m_isText = m_event.m_isPassing = m_event.m_wasRenderable = true;
  m_event.m_level = level;
  m_event.m_logger = nullptr;
  m_event.m_place = record.place;
  m_event.m_ownLoggerName = m_loggerName;
  m_event.m_loggerName = m_loggerName.get();
  m_event.m_fqnOfLoggerClass = &LOGLogger::m_FQCN;
  m_event.m_ownText.clear();
  m_event.m_ownText.append(record.message);
  m_event.m_text = m_event.m_ownText.view();
  m_event.ownFields({}, {});
}

void LOGRingRecord::Place::fillRest(std::string_view left, std::int32_t rankOfLevel) {
  std::string_view level;
  LOGFields ofContext, own;  // read anew, since nobody knows what the bytes of a file are
  while (left.size() > sizeof(std::int32_t)) {
    const char tag = left[0];
    const std::int32_t length = numberAt(left.data() + 1);
    left.remove_prefix(1 + sizeof length);
    const std::string_view text = left.substr(0, static_cast<std::uint32_t>(length));
    if (tag == LOGRingFormat::THROWABLE) m_event.setThrowableStrRep(decoded(text));
    if (tag == LOGRingFormat::LEVEL) level = text;
    if (tag == LOGRingFormat::CONTEXT_FIELDS) ofContext.addAll(text);
    if (tag == LOGRingFormat::OWN_FIELDS) own.addAll(text);
    left.remove_prefix(text.size());
  }
  m_event.ownFields(ofContext.bytes(), own.bytes());
  if (level.size() >= sizeof(std::int32_t)) {
    const std::string name = decoded(level.substr(sizeof(std::int32_t))).toUtf8();
    m_level = LOGLevel(rankOfLevel, name.c_str(), numberAt(level.data()));
    m_event.m_level = &m_level;
  } else if (m_event.m_level == nullptr) {
    m_level = LOGLevel(rankOfLevel, "?", 0);
    m_event.m_level = &m_level;
  }
}
