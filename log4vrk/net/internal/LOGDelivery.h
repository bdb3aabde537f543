// How the events of a TCP socket appender get to the log server.

#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "log4vrk/net/internal/LOGConnection.h"
#include "log4vrk/net/internal/LOGOutbox.h"
#include "log4vrk/net/internal/LOGOutboxFiles.h"
#include "log4vrk/net/internal/LOGRecoveryFiles.h"
#include "log4vrk/net/internal/LOGRelpSession.h"
#include "log4vrk/platform/I18NString.h"

/// Owns the connection and the recovery files. Events go the same way in one order: recovery files, then the outbox. As
/// soon as the outbox should not hold them any longer, they go to the end of the recovery files, those in flight first,
/// and everything later goes behind them. What outboxes of dead processes still hold goes there before anything else.
/// That is so when the connection is lost, when the queue is half full, when the files have earlier ones that are not
/// sent, when an event has not been acknowledged for LONGEST_IN_MEMORY, and when the outbox is closed.
///
/// An event that the server refuses, or that makes it break the connection whenever it is alone on its way, is set
/// aside in a file of its own and counted as dropped.
///
/// Thread safety: not thread-safe.
/// Errors: nothing is raised. Shortage of memory, or of threads for looking up names, is an attempt that failed; no
/// event is lost by it.
class LOGDelivery {
 public:
  using Clock = std::chrono::steady_clock;

  struct Settings {
    LOGLogServer server;
    std::chrono::milliseconds longestDelay{30000};  // between two attempts to connect; 20 ms to a day
    I18NString recoveryDirectory;
    I18NString appenderName;  // for the internal log
  };

  /// An event that has not been acknowledged after this time goes to the recovery files, to a disk perhaps, and leaves
  /// the outbox's memory.
  static constexpr std::chrono::milliseconds LONGEST_IN_MEMORY{500};

  LOGDelivery(Settings settings, std::shared_ptr<LOGOutbox> outbox);

  /// Goes as far as it gets without waiting.
  void step();
  /// The same without the network: everything goes to the recovery files.
  void stepOffline();
  /// Waits until there is something to do.
  void wait();
  /// Whether the outbox is closed, and everything is delivered, kept or given up.
  bool isFinished() const { return m_finished; }

  /// Uses another server, or the same in another way, from the next step on and at once.
  void reconnect(LOGLogServer server, std::chrono::milliseconds longestDelay);

  /// Leaves the recovery files to whoever comes next.
  void close();
  /// In the child of a fork, whose parent goes on.
  void abandon();

 private:
  void work();
  bool carry();
  bool feed();
  bool nextEvent(LOGOutgoing& event);
  bool takeEvents();
  void recoverOutboxes();
  void collectAnswers();
  void settle(const LOGOutgoing& event);
  void setAside(const LOGOutgoing& event);
  void lost();
  void blame();
  void drop();
  void failed(const char* why);
  void keepWhatHasToWait();
  bool hasInMemory(Clock::time_point& since);
  bool keep();
  bool keepInFlight();
  std::uint64_t oldestInMemory();
  bool cannotKeep();
  void farewell();
  void giveUpTheRest();
  void publish();
  void sayConnected();
  void sayUnreachable(const std::string& reason);
  Clock::duration nextDelay();

  LOGLogServer m_server;
  Clock::duration m_longestDelay;
  const I18NString m_name;
  const std::shared_ptr<LOGOutbox> m_outbox;
  const std::shared_ptr<VRKWakeUp> m_wakeUp;  // the outbox's

  LOGRecoveryFiles m_recovery;
  LOGOutboxFiles m_left;  // by others
  LOGRelpSession m_session;
  std::unique_ptr<LOGConnection> m_connection;
  Clock::time_point m_takenSince;  // what is taken from the outbox
  std::mt19937 m_random;
  Clock::duration m_delay;
  Clock::time_point m_nextAttempt;
  Clock::time_point m_nextKeeping;  // not before, because it has just failed
  Clock::time_point m_readySince;
  bool m_opened = false;    // the recovery files
  bool m_hasLeft = true;    // there may be outboxes of dead processes
  bool m_wasReady = false;  // this connection
  bool m_down = false;      // the last attempt failed, or the connection was lost
  bool m_hurries = false;   // there is more to do at once
  bool m_closing = false;   // the outbox is closed
  bool m_finished = false;
  std::vector<std::string> m_saidReasons;  // since the connection was lost
  I18NString m_saidAside;                  // where events were set aside last
  int m_breaks = 0;                        // of connections with the same event alone on its way
  int m_patience;                          // so many of them, and it is set aside
  std::uint64_t m_acknowledged = 0;
  std::uint64_t m_lost = 0;     // refused
  std::uint64_t m_dropped = 0;  // published
};
