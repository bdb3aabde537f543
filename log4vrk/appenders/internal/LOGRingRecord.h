// An event as texts and numbers, which say everything by themselves.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "log4vrk/core/LOGLevel.h"
#include "log4vrk/core/LOGLogger.h"
#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/core/internal/LOGStatementCall.h"
#include "log4vrk/core/internal/LOGThreadState.h"
#include "log4vrk/platform/internal/I18NUtf8Buffer.h"

/// What a record of a ring holds, in UTF-8. Logger and place are null but in the process that made the record.
struct LOGRingRecord {
  std::int64_t seconds = 0;
  std::int32_t nanoseconds = 0;
  std::int32_t rank = 0;
  LOGLogger* logger = nullptr;
  const LOGSourceLocation* place = nullptr;
  // As they stand one behind the other.
  std::string_view threadName, loggerName, message, context, rest;

  std::uint64_t textBytes() const {
    return std::uint64_t{threadName.size()} + loggerName.size() + message.size() + context.size() + rest.size();
  }

  /// Memory for the texts of an event that does not have them as a record needs them.
  struct Room {
    std::string threadName, context;
    char restRoom[512];
    I18NUtf8Buffer rest{restRoom, sizeof restRoom};
    I18NUtf8Buffer message;
  };
  /// Whether the event is a text and perhaps fields, of one of the usual levels and a thread without a nested context.
  /// Then what it needs is looked up without a copy.
  static bool isOrdinary(const LOGLoggingEvent& event, const LOGThreadState& thread) {
    return event.isPlain() && thread.context.stack == nullptr && isUsual(event.m_level);
  }
  static bool hasFields(const LOGLoggingEvent& event) { return event.hasFields(); }
  static LOGRingRecord ofOrdinary(const LOGLoggingEvent& event, LOGThreadState& thread, Room& room);
  /// Without fields.
  static LOGRingRecord ofOrdinary(const LOGLoggingEvent& event, LOGThreadState& thread) {
    LOGRingRecord record = begin(event);
    record.logger = event.m_logger;
    record.threadName = thread.name.utf8();
    record.message = event.m_text;
    return record;
  }
  /// The same for an event that has not been made.
  static bool isOrdinary(const LOGStatementCall& call, const LOGThreadState& thread) {
    return thread.context.stack == nullptr && isUsual(call.level());
  }
  static LOGRingRecord ofOrdinary(LOGStatementCall& call, LOGThreadState& thread) {
    LOGRingRecord record;
    record.seconds = call.time().seconds;
    record.nanoseconds = call.time().nanoseconds;
    record.rank = call.level()->toInt();
    record.logger = &call.logger();
    record.place = call.place();
    record.threadName = thread.name.utf8();
    record.loggerName = call.logger().getNameUtf8();
    record.message = call.text();
    return record;
  }
  /// A record of any event, which borrows from event and room. Whatever layouts may ask for is looked up here, on the
  /// thread that logs: when it has been killed, nobody can be asked.
  static LOGRingRecord ofAny(LOGLoggingEvent& event, Room& room);

  /// An event that is filled again and again, and what it borrows.
  class Place {
   public:
    /// Valid until the next call.
    LOGLoggingEvent* fill(const LOGRingRecord& record);

   private:
    void fillEvent(const LOGRingRecord& record, LOGLevel* level);
    void fillRest(std::string_view left, std::int32_t rankOfLevel);

    LOGLoggingEvent m_event;
    std::string m_threadUtf8, m_contextUtf8;
    I18NString m_threadName, m_context;
    LOGLoggerName::Share m_loggerName;
    LOGLevel m_level;
  };

 private:
  /// Of the levels that a rank alone brings back.
  static bool isUsual(const LOGLevel* level) {
    return level == LOGLevel::INFO_OBJ || level == LOGLevel::DEBUG_OBJ || level == LOGLevel::WARN_OBJ ||
           level == LOGLevel::ERROR_OBJ || level == LOGLevel::FATAL_OBJ;
  }
  static LOGRingRecord begin(const LOGLoggingEvent& event) {
    LOGRingRecord record;
    record.seconds = event.m_timeStamp;
    record.nanoseconds = event.m_timeStampNanos;
    record.rank = event.m_level != nullptr ? event.m_level->toInt() : 0;
    record.loggerName = std::string_view(event.m_loggerName->utf8).substr(0, UINT16_MAX);
    record.place = event.m_place;
    return record;
  }
  static void addFields(const LOGLoggingEvent& event, Room& room);
};
