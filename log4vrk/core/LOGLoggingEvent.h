// One log call as appenders, filters and layouts see it.

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "log4vrk/core/LOGLocationInfo.h"
#include "log4vrk/core/LOGSerializable.h"
#include "log4vrk/core/internal/LOGLoggerName.h"
#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"
#include "log4vrk/platform/internal/I18NUtf8Buffer.h"

class LOGLevel;
class LOGLogger;
class LOGObject;
class LOGStatementCall;
struct LOGSourceLocation;

/// What was logged, by which logger, at which level and when. Thread name and nested context are looked up when
/// somebody first asks, on the thread that asks, and then kept.
///
/// Thread safety: one thread at a time; the get operations may fill fields, too.
/// Ownership: an event owns a clone of the message. During a log call it borrows the rest: the logger, its name, the
/// level, fields and context, and the name of the thread that first asked for that. A message that is nothing but a
/// text is borrowed, too, and becomes an object when somebody asks for one. A copy owns all that it prints: it reads
/// the same for ever, also when the logger or the thread is gone. From then on the copy's getLogger() must not be
/// followed.
class LOG4VRK_EXPORT LOGLoggingEvent : public LOGSerializable {
 public:
  LOGLoggingEvent() = default;
  /// Takes the time and clones `message`, which may be null. A null logger raises VRKAssertError.
  LOGLoggingEvent(const I18NString& fqnOfLoggerClass, LOGLogger* logger, LOGLevel* level, LOGObject* message);
  LOGLoggingEvent(const LOGLoggingEvent& other);
  LOGLoggingEvent& operator=(const LOGLoggingEvent& other);
  ~LOGLoggingEvent() override;

  const I18NString& getLoggerName() const { return m_loggerName->text; }
  const std::string& getLoggerNameUtf8() const { return m_loggerName->utf8; }
  const I18NString& getFQNOfLoggerClass() const { return *m_fqnOfLoggerClass; }
  /// Whole seconds since the Unix epoch.
  std::int64_t getTimeStamp() const { return m_timeStamp; }
  /// The nanoseconds within that second.
  std::int32_t getTimeStampNanos() const { return m_timeStampNanos; }
  /// `nanoseconds` is 0 to 999999999, before 1970 too.
  void setTimeStamp(std::int64_t seconds, std::int32_t nanoseconds) {
    m_timeStamp = seconds;
    m_timeStampNanos = nanoseconds;
  }
  LOGLevel* getLevel() const { return m_level; }
  void setLevel(LOGLevel* level) { m_level = level; }
  LOGLogger* getLogger() const { return m_logger; }
  /// The stored logger name stays as it is.
  void setLogger(LOGLogger* logger);
  /// The event's own, or null.
  LOGObject* getMessage() const;

  const I18NString& getNDC();
  const I18NString& getThreadName();
  void appendThreadName(I18NUtf8Buffer& out);
  void setThreadName(const I18NString& name);
  /// The text of the message, new and owned by the caller, who deletes it: getRenderedMessageUtf8() spares that. Null
  /// without a message, and without a repository to find renderers by. A rendered text that was set takes precedence.
  I18NString* getRenderedMessage();
  /// The same text in UTF-8 and as a value, empty instead of null: what an appender or filter of your own uses. Nothing
  /// has to be deleted.
  std::string getRenderedMessageUtf8() {
    I18NUtf8Buffer room;
    return std::string(renderUtf8(room));
  }
  /// The same without a copy, for code that handles very many events. The text is the event's own when that is in
  /// UTF-8, otherwise it is converted into `room`. Valid as long as neither changes.
  std::string_view renderUtf8(I18NUtf8Buffer& room);
  void setRenderedMessage(const I18NString& text) { own().renderedMessage = text; }
  /// Empty unless the program has set it.
  const I18NString& getThrowableStrRep() const { return m_own ? m_own->throwableStrRep : NO_TEXT; }
  void setThrowableStrRep(const I18NString& text) { own().throwableStrRep = text; }
  /// Knows nothing and says "?", on purpose: what programs and documents print by it stays as it is.
  LOGLocationInfo* getLocationInformation();
  /// Where the log statement stands, or null: only the macros know it.
  const LOGSourceLocation* getSourceLocation() const { return m_place; }
  void setSourceLocation(const LOGSourceLocation* place) { m_place = place; }
  /// Whether the message is a text and nothing else, and that text.
  bool isText() const { return m_isText && !(m_own && !m_own->renderedMessage.isEmpty()); }
  std::string_view getText() const { return m_text; }
  /// Whether the message has a text at all: the logger of the event has a repository. A copy remembers.
  bool isRenderable() const;

  /// The value of a field, or of the context in which it was logged, as text; empty when there is none of that name.
  /// See LOGFields and LOGContext.
  std::string getField(std::string_view name) const;

  // There is no mapped context of objects, and an event has no stored form of its own.
  LOGObject* getMDC(const I18NString& /*key*/) { return nullptr; }
  void getMDCCopy() {}
  void readObject(LOGObject*) {}
  void writeObject(LOGObject*) {}

  /// When the library was loaded, in seconds since the epoch, and the nanoseconds within that second.
  static std::int64_t getStartTime();
  static std::int32_t getStartTimeNanos();

 private:
  friend class LOGBoundedFIFO;
  friend struct LOGEventFields;
  friend class LOGLogger;
  friend class LOGStatementCall;
  friend struct LOGRingRecord;

  static const I18NString& NO_TEXT;
  static const LOGLoggerName& NO_LOGGER;

  // What few events have, in memory of its own: the others stay small.
  struct Own {
    I18NString fqnOfLoggerClass;
    I18NString threadName;
    I18NString ndc;
    I18NString renderedMessage;
    I18NString throwableStrRep;
    LOGLocationInfo location;
    std::shared_ptr<LOGLevel> level;
  };
  Own& own();

  // A message as text: UTF-8, or UTF-16 that somebody else owns or that was made for it; or none.
  struct Rendered {
    bool isNull = true;
    std::string_view utf8;
    const I18NString* utf16 = nullptr;
    std::unique_ptr<I18NString> made;
  };
  Rendered render();

  /// For a message that is nothing but a text. `utf8` is well-formed, and lent for the life of the event.
  LOGLoggingEvent(const I18NString& fqnOfLoggerClass, LOGLogger* logger, LOGLevel* level, std::string_view utf8);
  LOG4VRK_HIDDEN LOGLoggingEvent(const LOGStatementCall& call, std::string_view utf8);
  void begin(const I18NString& fqnOfLoggerClass);
  /// True as long as the event is what a log call made of a text, and nobody has looked up or set anything. Of such an
  /// event a queue keeps a few members and no object; setPlain(), and ownFields() where it has any, make a copy from
  /// them, in memory that is there already.
  bool isPlain() const;
  void setPlain(std::int64_t seconds, std::int32_t nanoseconds, LOGLevel* level, LOGLogger* logger,
                const LOGSourceLocation* place, std::string_view utf8);
  /// Of the context, as bytes.
  std::string_view contextBytes() const { return m_contextSize == 0 ? std::string_view() : findContext(); }
  std::string_view findContext() const;
  bool hasFields() const { return m_contextSize != 0 || !m_fields.empty(); }
  /// Makes fields its own, behind the text, of which it has a copy already.
  void ownFields(std::string_view context, std::string_view fields);
  LOG4VRK_HIDDEN void copyMessage(const LOGLoggingEvent& other);
  LOG4VRK_HIDDEN void copyOwn(const LOGLoggingEvent& other);
  void keepLogger(const LOGLoggingEvent& other);
  void keepLevel(LOGLevel* level);

  // In the order of use, since every cache line counts when an event goes from one thread to another.
  std::int64_t m_timeStamp = 0;
  std::int32_t m_timeStampNanos = 0;
  mutable bool m_isText = false;  // the message is m_text until somebody asks for the object
  bool m_ndcLookupRequired = true;
  bool m_wasRenderable = false;  // in a copy: isRenderable() when it was made
  bool m_isPassing = false;      // it lives for a log call or a delivery, and may borrow the name of the thread
  LOGLevel* m_level = nullptr;
  LOGLogger* m_logger = nullptr;
  const LOGSourceLocation* m_place = nullptr;
  // Each points to a text that outlives the event, or into m_own. The name of the thread that asked first is lent by
  // that thread; a copy has its own.
  const LOGLoggerName* m_loggerName = &NO_LOGGER;
  const I18NString* m_fqnOfLoggerClass = &NO_TEXT;
  const I18NString* m_threadName = &NO_TEXT;
  const I18NString* m_ndc = &NO_TEXT;
  std::string_view m_text;    // lent, or in m_ownText
  std::string_view m_fields;  // the same
  // The context is the beginning of that of the thread, whose memory may move; or, where this is null, it is in
  // m_ownText between text and fields.
  const I18NUtf8Buffer* m_contextOf = nullptr;
  std::size_t m_contextSize = 0;
  I18NUtf8Buffer m_ownText;
  LOGLoggerName::Share m_ownLoggerName;  // in a copy, which may outlive the logger
  mutable std::unique_ptr<LOGObject> m_message;
  std::unique_ptr<Own> m_own;
};
