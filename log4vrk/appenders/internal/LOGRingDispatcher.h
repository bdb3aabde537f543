// The thread that delivers what a durable queue holds.

#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "log4vrk/appenders/internal/LOGRing.h"
#include "log4vrk/appenders/internal/LOGRingDelivery.h"
#include "log4vrk/appenders/internal/LOGRingRecovery.h"
#include "log4vrk/platform/VRKThread.h"

/// Recovers first what earlier processes have left, as soon as there are appenders for it, and then delivers from its
/// own ring, until it is closed and the ring is empty. Then the file of the ring goes.
///
/// Thread safety: any thread; close() from any but its own.
class LOGRingDispatcher : public VRKThread {
 public:
  /// Recovers rings of that name in those directories.
  LOGRingDispatcher(std::shared_ptr<LOGRing> ring, std::shared_ptr<LOGAppenderAttachableImpl> container,
                    std::string name, std::vector<I18NString> directories);
  ~LOGRingDispatcher() override;

  void run() override;
  /// Has the thread deliver everything that is queued, and waits until it has ended.
  void close();
  /// The same without waiting; the object deletes itself. For the dispatcher's own thread.
  void closeItself();
  /// True on the dispatcher's own thread.
  bool isItself() const { return m_threadId == VRKThread::currentThreadId(); }

 private:
  bool deliverSome();
  void recover();
  bool isOurs(const LOGRing& ring) const;

  const std::shared_ptr<LOGRing> m_ring;
  const std::string m_name;
  const std::string m_reporter;
  const std::vector<I18NString> m_directories;
  LOGRingDelivery m_delivery;
  bool m_recovered = false;
  std::atomic<long> m_threadId{0};
  std::atomic<int> m_interrupted{0};
  std::atomic<bool> m_deletesItself{false};
};
