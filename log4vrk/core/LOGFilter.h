// The decision whether an appender writes an event.

#pragma once

#include <atomic>

#include "log4vrk/core/LOGObject.h"
#include "log4vrk/core/LOGOptionHandler.h"
#include "log4vrk/platform/VRKExport.h"

class LOGLoggingEvent;

/// A link of an appender's filter chain.
///
/// Thread safety: set up before it is added to an appender; decide() runs under that appender's lock.
/// Ownership: whoever made it; it outlives the appenders that have it.
class LOG4VRK_EXPORT LOGFilter : public LOGOptionHandler, public LOGObject {
 public:
  static constexpr int m_DENY = -1;    // drop the event
  static constexpr int m_NEUTRAL = 0;  // ask the next filter; after the last one, write
  static constexpr int m_ACCEPT = 1;   // write the event, ask no further filter

  LOGFilter();
  ~LOGFilter() override;

  void activateOptions() override {}
  /// One of the three constants. Any other answer and the same filter is asked again, for ever.
  virtual int decide(LOGLoggingEvent* event) = 0;
  /// Refused here; every concrete filter can be copied.
  LOGFilter* clone() const override;

  LOGFilter* getNext() const { return m_next.load(std::memory_order_acquire); }
  /// For the appender's chain.
  void setNext(LOGFilter* next) { m_next.store(next, std::memory_order_release); }

 protected:
  LOGFilter(const LOGFilter& other);

 private:
  std::atomic<LOGFilter*> m_next{nullptr};
};
