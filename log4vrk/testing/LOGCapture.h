// The events of a logger while a scope lasts, for tests to look at.

#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

class LOGAppenderAttachable;
class LOGAppenderBundle;
class LOGLevel;
class LOGLogger;

/// An event as plain values, in UTF-8. It points to nothing of the library's.
struct LOGCapturedEvent {
  std::string level;                           ///< by its name: "WARN"
  int rank = 0;                                ///< of the level: LOGLevel::WARN_RANK
  std::string logger;                          ///< all of its name
  std::string message;                         ///< as a layout would print it: rendered or formatted
  std::string thread;                          ///< the name of the thread that logged, or of the queue's
  std::string nested;                          ///< the nested context (LOGNDC)
  std::map<std::string, std::string> context;  ///< names and values (LOGContext); those that a field hides are not here
  std::map<std::string, std::string> fields;   ///< the statement's own (LOG4VRK_INFO_KV); values as they are printed
  std::string throwable;                       ///< the text of a throwable
  std::string file;                            ///< where a macro stands; empty for the functions
  std::string function;                        ///< see `file`
  int line = 0;                                ///< see `file`
  std::int64_t seconds = 0;                    ///< when it was logged, since the Unix epoch
  std::int32_t nanoseconds = 0;                ///< within that second
};

/// What a LOGCapture changes of its logger while it lives.
struct LOGCaptureOptions {
  /// What it does about the appenders of the logger's ancestors.
  enum Ancestors {
    AS_CONFIGURED,  ///< nothing
    LEFT_OUT        ///< they get no events: the logger is not additive
  };
  /// Null leaves the level as it is. Events below the level in force are not logged, and so not captured.
  LOGLevel* level = nullptr;
  Ancestors ancestors = AS_CONFIGURED;  ///< see Ancestors
};

/// Captures the events of a logger, and of all loggers below it that are additive, from its beginning to its end:
///
///   LOGCapture logs("shop.orders", {LOGLevel::DEBUG_OBJ, LOGCaptureOptions::LEFT_OUT});
///   desk.accept(order);
///   EXPECT_THAT(logs.events(), Contains(Logged(LOGLevel::WARN_OBJ, HasSubstr("stock"))));
///
/// The matchers are in log4vrk/testing/matchers.h. Captures nest, on one logger too: each gets every event. Those of
/// one logger end in the reverse order, as scopes do.
///
/// Events of all threads are captured, in the order in which the logger delivers them. When a log call has returned its
/// event is here, unless a queue lies in between: a capture that is attached to a queue gets what the queue's thread
/// delivers, and so waitFor() has to wait for it. So it has to when another thread logs. What is logged from inside a
/// log call (by a renderer, say) is here when the outermost call has returned.
///
/// An event costs the logging thread a LOGCapturedEvent, which is in memory until clear() or the end. A statement with
/// a format string is formatted by the thread that logs, and no event takes the fast path.
///
/// A document that names the logger, read meanwhile, removes the capture with the other appenders: what was captured
/// stays, and nothing is added; isAttached() tells. The level and additivity of that document stay in force. Documents
/// that do not name the logger change nothing, and neither does LOG4VRKConfigurator::shutdown(). The level that a
/// capture sets says so in its name: "DEBUG (captured)".
///
/// Thread safety: any thread, except for the end of its life.
/// Ownership: whatever it is attached to must outlive it. Loggers do.
/// Failures: the constructors raise what adding an appender raises. An event for which there is no memory is left out,
/// with a line in the internal log.
class LOG4VRK_EXPORT LOGCapture {
 public:
  explicit LOGCapture(const I18NString& loggerName);
  LOGCapture(const I18NString& loggerName, const LOGCaptureOptions& options);
  /// Such as LOGManager::getRootLogger(), for everything.
  explicit LOGCapture(LOGLogger& logger, const LOGCaptureOptions& options = LOGCaptureOptions());
  /// A queue, for what comes out of it.
  explicit LOGCapture(LOGAppenderAttachable& queue);
  /// Gives the level back, unless somebody else has set one since, and the additivity, unless it has been removed.
  ~LOGCapture();
  LOGCapture(const LOGCapture&) = delete;
  LOGCapture& operator=(const LOGCapture&) = delete;

  /// A copy of those captured so far, the oldest first.
  std::vector<LOGCapturedEvent> events() const;
  /// Forgets those captured so far.
  void clear();
  /// Waits until at least `count` events are there, for `limit` at most, by the steady clock. False when the time is
  /// over. Not from inside a log call.
  bool waitFor(std::size_t count, std::chrono::milliseconds limit) const;
  /// False once a document, or the program, has removed it.
  bool isAttached() const;

 private:
  class Appender;
  struct Store;

  const std::shared_ptr<Store> m_store;
  std::shared_ptr<LOGAppenderBundle> m_bundle;  // has the appender
  LOGAppenderAttachable& m_place;
  LOGLogger* m_logger = nullptr;         // whose level and additivity have been changed
  LOGLevel* m_levelBefore = nullptr;     // null: it inherited
  LOGLevel* m_levelMeanwhile = nullptr;  // the logger's own copy; null: unchanged
  int m_additivityBefore = 1;
  bool m_hasChangedAdditivity = false;
};
