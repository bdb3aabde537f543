// The thread that delivers what a TCP socket appender has taken.

#pragma once

#include <atomic>
#include <chrono>
#include <memory>

#include "log4vrk/core/LOGMutex.h"
#include "log4vrk/net/internal/LOGDelivery.h"
#include "log4vrk/net/internal/LOGOutbox.h"
#include "log4vrk/platform/VRKExport.h"
#include "log4vrk/platform/VRKThread.h"

/// Runs a LOGDelivery. When the system has no thread to give, the threads that ask for one keep the events instead.
///
/// Thread safety: any thread, except as said.
/// Ownership: shared, also by its own thread for as long as that runs.
/// Forks: a child closes its copies of the descriptors at once; there the thread does not exist.
class LOGConnector : public VRKThread, private LOGMutex, public std::enable_shared_from_this<LOGConnector> {
 public:
  using Clock = std::chrono::steady_clock;

  /// For acknowledgements, when the appender closes. A configuration run, for which log calls may wait, has less time:
  /// see LOGTimeLimit.
  static constexpr std::chrono::milliseconds LONGEST_FAREWELL{1500};

  static std::shared_ptr<LOGConnector> make(LOGDelivery::Settings settings, std::shared_ptr<LOGOutbox> outbox);
  ~LOGConnector() override;

  void run() override;

  /// True when the thread is started, now or before. If not, the outbox has been emptied into the recovery files, as
  /// far as they take it; it makes sense to call again.
  bool startOrKeep();
  /// As LOGDelivery::reconnect().
  void reconnect(LOGLogServer server, std::chrono::milliseconds longestDelay);

  /// Has the thread deliver or keep what is in the outbox, which is closed, and waits for it. A thread that is stuck in
  /// the file system is left to itself after some time; what it has in memory is counted as dropped. Once.
  static void close(std::shared_ptr<LOGConnector> given);

  /// The same for all connectors of the process, and for those that are made later: for its exit. What is not
  /// acknowledged in time is kept. Returns at `until` at the latest. Once, from any thread.
  LOG4VRK_EXPORT_FOR_TESTS static void finishAll(Clock::time_point until);

 private:
  struct Registry;

  LOGConnector(LOGDelivery::Settings settings, std::shared_ptr<LOGOutbox> outbox);
  void beginToFinish(Clock::time_point farewellUntil);
  void waitForEnd(Clock::time_point until);
  void abandonInChild();

  const I18NString m_name;  // of the appender, for the internal log
  const std::shared_ptr<LOGOutbox> m_outbox;
  const unsigned m_forks;  // of the process whose thread this is

  std::shared_ptr<LOGConnector> m_self;  // while the thread runs; set before it starts, and then the thread's
  LOGDelivery m_delivery;                // guarded by the mutex until the thread is started, and then the thread's
  bool m_started VRK_GUARDED_BY(m_critSection) = false;
  bool m_lacksThread VRK_GUARDED_BY(m_critSection) = false;  // which the internal log knows

  VRKMutex m_changeMutex;
  std::unique_ptr<LOGLogServer> m_newServer VRK_GUARDED_BY(m_changeMutex);
  std::chrono::milliseconds m_newDelay VRK_GUARDED_BY(m_changeMutex){0};

  std::atomic<bool> m_working{false};  // a fork now would catch the thread in the middle
};
