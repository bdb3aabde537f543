// The decision whether an appender writes an event.

#pragma once

#include <atomic>

#include "log4vrk/core/LOGObject.h"
#include "log4vrk/core/LOGOptionHandler.h"
#include "log4vrk/platform/VRKExport.h"

class LOGLoggingEvent;
struct LOGFilterInternals;

/// A link of an appender's filter chain.
///
/// Thread safety: set its options before it is added to an appender. decide() runs under that appender's lock.
/// Ownership: it stays with whoever made it, and must outlive the appenders that have it. It has one successor, so it
/// can be in one chain only.
/// Errors: an event whose filter raises is not written. The library's own errors end in the internal log. Others reach
/// the log call, which keeps them from the program.
class LOG4VRK_EXPORT LOGFilter : public LOGOptionHandler, public LOGObject {
 public:
  static constexpr int m_DENY = -1;    // drop the event
  static constexpr int m_NEUTRAL = 0;  // ask the next filter; after the last one, write
  static constexpr int m_ACCEPT = 1;   // write the event, ask no further filter

  LOGFilter();
  ~LOGFilter() override;

  void activateOptions() override {}
  /// Returns one of the three constants. After any other answer the same filter is asked again, for ever.
  virtual int decide(LOGLoggingEvent* event) = 0;
  /// Raises VRKAssertError here. The library's concrete filters return a copy that the caller owns.
  LOGFilter* clone() const override;

  LOGFilter* getNext() const { return m_next.load(std::memory_order_acquire); }
  /// For the appender that has the filter.
  void setNext(LOGFilter* next) { m_next.store(next, std::memory_order_release); }

 protected:
  /// A copy has the same successor.
  LOGFilter(const LOGFilter& other);

 private:
  friend struct LOGFilterInternals;

  const LOGFilterInternals* m_internals = nullptr;  // constant once it is constructed
  std::atomic<LOGFilter*> m_next{nullptr};          // atomic, because getNext() takes no lock
};
