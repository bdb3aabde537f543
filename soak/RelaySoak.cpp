// Programs log through a relay to a centre, and both daemons are killed again and again.

#include "soak/Soak.h"
#include "tests/support/RelayChain.h"

using namespace vrktest;

namespace {

constexpr int PROGRAMS = 10, ROUNDS = 20;

bool canRun(const char* name) {
  const std::string missing = Rsyslog::missing();
  if (!missing.empty()) std::printf("%s: skipped: %s\n", name, missing.c_str());
  return missing.empty();
}

// What other ways have in relay.conf, relay-queue.conf or centre.conf: omrelp instead of log4vrk-forward, and so on.
const Edits OMRELP = {
    {"load=\"omprog\"", "load=\"omrelp\""},
    {"%rawmsg%\\n", "%rawmsg%"},
    {"type=\"omprog\" binary=\"@FORWARD@ @HOST@ @TO@\"", "type=\"omrelp\" target=\"@HOST@\" port=\"@TO@\""},
    {" output=\"@FOLDER@/forward.log\"", ""},
    {"confirmMessages=\"on\" confirmTimeout=\"86400000\"", "action.resumeInterval=\"1\""}};
const Edits NO_TRANSACTIONS = {{" useTransactions=\"on\"", ""}};
const Edits SYNCHRONOUS = {{"queue.type=\"Disk\"", "queue.type=\"Disk\" queue.syncQueueFiles=\"on\""}};
const Edits CHECKPOINT_100 = {{"checkpointInterval=\"1\"", "checkpointInterval=\"100\""}};
const Edits CENTRE_IN_MEMORY = {
    {" queue.type=\"Direct\") {\n  action(type=\"mmpstrucdata\")", ") {\n  action(type=\"mmpstrucdata\")"}};
const Edits DISK_ASSISTED = {{"queue.type=\"Disk\"", "queue.type=\"LinkedList\""}};

Edits both(Edits all, const Edits& more) {
  all.insert(all.end(), more.begin(), more.end());
  return all;
}

}  // namespace

TEST(Soak, relay) {
  if (!canRun("relay")) return;
  const long each = scaled(10000);
  RelayChain chain;
  EXPECT_TRUE(chain.survive({PROGRAMS, each, ROUNDS, {}}));
  const RelayChain::Outcome outcome = chain.outcome();
  expectEachOnceInOrder(outcome.messages, PROGRAMS, each);
  report(text(PROGRAMS * each, " events of ", PROGRAMS, " programs, relay and centre killed ", ROUNDS,
              " times each: ", PROGRAMS * each - static_cast<long>(outcome.messages.size()), " lost, ",
              outcome.repeated, " repetitions left out, ", outcome.torn, " torn"));
}

// The same of relays and centres with other queues. Those that look as safe and are not may lose events, or be lucky.
TEST(Soak, queues) {
  if (!canRun("queues")) return;
  static const struct {
    const char *name, *relay;
    Edits edits;
  } WAYS[] = {
      {"relay.conf", "relay", {}},
      {"relay-queue.conf", "relay-queue", {}},
      {"relay-queue.conf, syncQueueFiles", "relay-queue", SYNCHRONOUS},
      {"relay-queue.conf, checkpointInterval 100", "relay-queue", CHECKPOINT_100},
      {"relay-queue.conf, LinkedList", "relay-queue", DISK_ASSISTED},
      {"relay.conf, omrelp", "relay", OMRELP},
      {"relay-queue.conf, omrelp", "relay-queue", both(OMRELP, NO_TRANSACTIONS)},
      {"relay.conf, main queue of the centre", "relay", CENTRE_IN_MEMORY},
  };
  constexpr int KILLS = 8;
  std::string figures;
  for (const auto& way : WAYS) {
    for (const int pause : {0, 20000}) {
      const long each = scaled(pause == 0 ? 10000 : 1000);  // most are still to come when daemons are killed
      RelayChain chain(way.relay, way.edits);
      const bool complete = chain.survive({PROGRAMS, each, KILLS, std::chrono::microseconds(pause)});
      const RelayChain::Outcome outcome = chain.outcome();
      const long lost = PROGRAMS * each - static_cast<long>(outcome.messages.size());
      if (&way == WAYS) {
        EXPECT_TRUE(complete);
        EXPECT_EQ(0, lost);
      }
      figures += text("\n  ", way.name, pause == 0 ? ", as fast as it goes: " : ", 500 a second: ", lost, " of ",
                      PROGRAMS * each, " lost, ", outcome.repeated, " repeated");
    }
  }
  report(text(KILLS, " kills each", figures, "\n "));
}
