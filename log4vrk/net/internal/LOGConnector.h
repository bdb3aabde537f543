// The thread that delivers what a TCP socket appender has taken.

#pragma once

#include <atomic>
#include <chrono>
#include <deque>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "log4vrk/net/internal/LOGConnection.h"
#include "log4vrk/net/internal/LOGOutbox.h"
#include "log4vrk/net/internal/LOGRecoveryFiles.h"
#include "log4vrk/net/internal/LOGRelpSession.h"
#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"
#include "log4vrk/platform/VRKThread.h"

/// Owns the connection and the recovery files. Events go the same way in one order: recovery files, then memory. As
/// soon as memory should not hold them any longer, they go to the end of the recovery files, those in flight first, and
/// everything later goes behind them. That is so when the connection is lost, when the queue is half full, when the
/// files have earlier ones that are not sent, when an event has not been acknowledged for LONGEST_IN_MEMORY, and when
/// the appender closes.
///
/// Thread safety: any thread, except as said.
/// Forks: a child closes its copies of the descriptors at once; there the thread does not exist.
class LOG4VRK_EXPORT LOGConnector : public VRKThread {
 public:
  using Clock = std::chrono::steady_clock;

  struct Settings {
    LOGLogServer server;
    std::chrono::milliseconds longestDelay{30000};  // between two attempts to connect
    I18NString recoveryDirectory;
    I18NString appenderName;  // for the internal log
  };

  /// For acknowledgements, when the appender closes. A configuration run may close it while log calls wait, which they
  /// do for two seconds.
  static constexpr std::chrono::milliseconds LONGEST_FAREWELL{1500};
  /// An event that has not been acknowledged after this time goes to the recovery files, lest a crash of the process
  /// take it along.
  static constexpr std::chrono::milliseconds LONGEST_IN_MEMORY{500};

  LOGConnector(Settings settings, std::shared_ptr<LOGOutbox> outbox);
  ~LOGConnector() override;

  void run() override;

  /// Has the thread deliver or keep what is in the outbox, which is closed, and waits for it. A thread that is stuck in
  /// the file system is left to itself after some time, and deletes the object when it comes out. Once.
  static void close(std::unique_ptr<LOGConnector> connector);

 private:
  enum Life { RUNNING, ENDED, LEFT };
  struct Registry;

  void work();
  bool carry();
  bool feed();
  bool takeEvents();
  void collectAnswers();
  void lost();
  void keepWhatHasToWait();
  const LOGOutgoing* oldestInMemory();
  bool hasMoreInFiles();
  bool keep();
  bool keepInFlight();
  bool cannotKeep();
  void farewell();
  void giveUpTheRest();
  void publish();
  void sayConnected();
  void sayUnreachable(const std::string& reason);
  Clock::duration nextDelay();
  void wait();
  void abandonInChild();

  const Settings m_settings;
  const std::shared_ptr<LOGOutbox> m_outbox;
  const std::shared_ptr<VRKWakeUp> m_wakeUp;  // the outbox's
  const std::string m_stream;                 // tells the events of this connector from all others
  const unsigned m_forks;                     // of the process whose thread this is

  // The thread's.
  LOGRecoveryFiles m_recovery;
  LOGRelpSession m_session;
  std::unique_ptr<LOGConnection> m_connection;
  std::deque<LOGOutgoing> m_taken;  // from the outbox; behind what the session has
  std::mt19937 m_random;
  Clock::duration m_delay;
  Clock::time_point m_nextAttempt;
  Clock::time_point m_nextKeeping;  // not before, because it has just failed
  Clock::time_point m_readySince;
  bool m_wasReady = false;                 // this connection
  bool m_down = false;                     // the last attempt failed, or the connection was lost
  bool m_hurries = false;                  // there is more to do at once
  std::vector<std::string> m_saidReasons;  // since the connection was lost
  bool m_refusalSaid = false;
  std::uint64_t m_acknowledged = 0;
  std::uint64_t m_lost = 0;     // refused by the server, or could not be kept when the appender closed
  std::uint64_t m_dropped = 0;  // published
  bool m_closing = false;
  bool m_finished = false;
  Clock::time_point m_farewellUntil;

  std::atomic<bool> m_working{false};  // a fork now would catch the thread in the middle
  std::atomic<Life> m_life{RUNNING};
  VRKStopSignal m_ended;
};
