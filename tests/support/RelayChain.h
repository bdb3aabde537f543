// Programs, a relay and a centre of examples/relay on this machine.

#pragma once

#include <chrono>
#include <map>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "tests/support/Rsyslog.h"

namespace vrktest {

/// What to change in the configurations of the daemons: each text by the other one.
using Edits = std::vector<std::pair<std::string, std::string>>;

/// The daemons of the example, started by its script in folders of their own.
///
/// Thread safety: not thread-safe; the daemons die with the thread that started them.
/// Errors: what fails adds a failure to the test.
class RelayChain {
 public:
  struct Load {
    int programs;
    long each;                        // events of a program
    int kills;                        // of each daemon
    std::chrono::microseconds pause;  // after each event
  };
  /// What the centre has, as one sees it who leaves repetitions out.
  struct Outcome {
    std::vector<std::string> messages;
    long repeated = 0, torn = 0;
  };

  /// Starts nothing. `relay` is what run.sh calls it. An edit that is for neither configuration adds a failure.
  explicit RelayChain(const std::string& relay = "relay", const Edits& edits = {});
  ~RelayChain();
  RelayChain(const RelayChain&) = delete;
  RelayChain& operator=(const RelayChain&) = delete;

  /// Programs log to the relay and end when it has acknowledged everything, while both daemons are killed: one after
  /// the other, the relay while the centre is away, both at once, and both after the centre has stood still. True when
  /// the centre has got everything; false when it gets nothing for five seconds, or a program lacks acknowledgements.
  /// Once.
  bool survive(const Load& load);
  Outcome outcome() const;

 private:
  enum Daemon { CENTRE, RELAY };

  void start(Daemon daemon);
  bool startAndWait(Daemon daemon);
  void kill(Daemon daemon);
  std::string folder(Daemon daemon) const;
  void readStored();

  const TempDir m_dir;
  const std::string m_names[2];  // as run.sh calls them
  const FreePort m_ports[2];
  pid_t m_processes[2] = {-1, -1};
  long m_read = 0;                                          // bytes of the centre's file that are in m_stored
  std::map<int, std::unordered_set<std::string>> m_stored;  // the different messages of each program
};

}  // namespace vrktest
