// The way of events from a ring to appenders.

#pragma once

#include <memory>
#include <string>

#include "log4vrk/appenders/internal/LOGRing.h"
#include "log4vrk/core/LOGAppenderAttachableImpl.h"
#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/internal/VRKFileJournal.h"

class LOGAppenderSkeleton;
class LOGFileAppender;
struct LOGAppenderList;
struct LOGThreadState;

/// Delivers what is in a ring to the appenders of a container, in batches. The first of them that writes to a file gets
/// each event once, however often the process is killed: its lines are in the ring's outbox before they are in the
/// file. The others get those events again that had not been released when the process was killed.
///
/// Thread safety: one thread at a time, which serves a queue (LOGDeferral::DispatcherThread).
class LOG4VRK_EXPORT LOGRingDelivery : private VRKFileJournal {
 public:
  explicit LOGRingDelivery(std::shared_ptr<LOGAppenderAttachableImpl> container);

  /// Whether there are appenders, and the file of the first that writes to one is open.
  bool isReady();
  /// The path of that file, as an absolute one; empty when there is none.
  const std::string& path() const { return m_path; }
  /// Delivers some events. False when there are none.
  bool deliverSome(LOGRing& ring);
  /// Writes into the ring where its events go.
  void describe(LOGRing& ring);
  /// The same before there is a delivery. The caller keeps the appenders.
  LOG4VRK_HIDDEN static void describe(LOGRing& ring, const LOGAppenderList& list);

 private:
  class LOG4VRK_HIDDEN Batch;

  LOG4VRK_HIDDEN void find(LOGFileAppender& target);
  LOG4VRK_HIDDEN void deliver(LOGLoggingEvent* event, const LOGAppenderList& list, const LOGAppenderSkeleton* except,
                              LOGThreadState& thread);
  void collected() override;
  void writes(const Place& place, std::string_view lines) override;
  void wrote() override;

  const std::shared_ptr<LOGAppenderAttachableImpl> m_container;
  I18NString m_file;               // as its appender calls it
  I18NString m_absolute;           // the same as seen from everywhere
  I18NString m_layoutPattern;      // of that appender's layout, as far as that is known
  std::string m_path, m_pattern;   // both for the ring
  LOGRing* m_described = nullptr;  // knows them
  // Under the lock of that appender while its lines are held back. No ring: what is written is somebody else's.
  LOGRing* m_ring = nullptr;
  std::uint64_t m_end = 0;  // the position after the last event whose line has been collected
};
