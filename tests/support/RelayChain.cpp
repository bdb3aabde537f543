#include "tests/support/RelayChain.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <random>

#include "log4vrk/log4vrk.h"
#include "log4vrk/net/LOGTCPSocketAppender.h"
#include "tests/support/Logs.h"
#include "tests/support/Process.h"

namespace vrktest {

namespace {

constexpr const char* EXAMPLE = LOG4VRK_SOURCE_DIR "/examples/relay";

void logNumbersTo(int port, int program, const RelayChain::Load& load) {
  const long count = load.each;
  const TempDir dir;
  VRKConfigurationFactory::getInstance().setBaseDirectory(dir.file("work").c_str());
  LOGTCPSocketAppender appender;
  appender.setName("relay");
  appender.setRemoteHost("127.0.0.1");
  appender.setPort(port);
  appender.setReconnectionDelay(200);
  LOGLogger* const logger = LOGManager::getLogger("program");
  logger->addAppender(&appender);
  // A log call that finds no space for long drops its event.
  for (long n = 1; n <= count; ++n) {
    LOG4VRK_INFO(logger, program << " " << n << " end");
    const auto logged = static_cast<std::uint64_t>(n);
    if (load.pause.count() > 0) std::this_thread::sleep_for(load.pause);
    if (n % 256 == 0) eventually([&] { return logged < appender.getAcknowledged() + 2048; }, 60);
  }
  const bool complete = eventually([&] { return appender.getAcknowledged() >= static_cast<std::uint64_t>(count); }, 20);
  if (!complete) ::_exit(EXIT_FAILURE);
  logger->removeAppender(&appender);
}

std::string messageOf(const std::string& line) {
  const std::string begin = "\"message\":\"";
  const std::size_t message = line.rfind(begin) + begin.size();
  return line.substr(message, line.find('"', message) - message);
}

}  // namespace

RelayChain::RelayChain(const std::string& relay, const Edits& edits) : m_names{"centre", relay} {
  std::filesystem::copy(EXAMPLE, m_dir.file("example"));
  for (const auto& [from, to] : edits) {
    bool found = false;
    for (const std::string& name : m_names) {
      const std::string file = "example/" + name + ".conf", text = m_dir.read(file);
      if (text.find(from) == text.npos) continue;
      m_dir.write(file, replaced(text, from, to));
      found = true;
    }
    EXPECT_TRUE(found) << from;
  }
}

RelayChain::~RelayChain() {
  for (const Daemon daemon : {CENTRE, RELAY}) {
    if (m_processes[daemon] > 0) kill(daemon);
  }
}

std::string RelayChain::folder(Daemon daemon) const { return m_dir.file(m_names[daemon]); }

void RelayChain::start(Daemon daemon) {
  m_processes[daemon] = startProgram(
      {"/bin/sh", "-c",
       "LOG4VRK_FORWARD='" LOG4VRK_BINARY_DIR "/tools/log4vrk-forward' exec \"$0\" \"$@\" 2>>" + m_dir.file("errors"),
       m_dir.file("example/run.sh"), m_names[daemon], folder(daemon), m_ports[daemon].text(), "127.0.0.1",
       m_ports[CENTRE].text()});
}

bool RelayChain::startAndWait(Daemon daemon) {
  start(daemon);
  const bool ready = eventually([&] { return m_ports[daemon].isOpen(); });
  EXPECT_TRUE(ready) << m_names[daemon] << " is not ready: " << m_dir.read("errors");
  return ready;
}

void RelayChain::kill(Daemon daemon) {
  EXPECT_EQ(0, ::kill(m_processes[daemon], SIGKILL));
  EXPECT_EQ(-SIGKILL, statusOf(m_processes[daemon])) << m_names[daemon] << " ended by itself: " << m_dir.read("errors");
  m_processes[daemon] = -1;
}

void RelayChain::readStored() {
  std::ifstream in(m_dir.file("centre/events.log"), std::ios::binary);
  in.seekg(m_read);
  for (std::string line; std::getline(in, line) && !in.eof();) {
    m_read += static_cast<long>(line.size()) + 1;
    const std::string message = messageOf(line);
    m_stored[std::atoi(message.c_str())].insert(message);
  }
}

RelayChain::Outcome RelayChain::outcome() const {
  Outcome all;
  const std::string command = "'" LOG4VRK_BINARY_DIR "/examples/relay/once' <'" + m_dir.file("centre/events.log") +
                              "' >'" + m_dir.file("once") + "' 2>'" + m_dir.file("counts") + "'";
  EXPECT_EQ(0, std::system(command.c_str()));
  for (const std::string& line : linesOf(m_dir.file("once"))) all.messages.push_back(messageOf(line));
  const std::string counts = m_dir.read("counts");
  EXPECT_EQ(2, std::sscanf(counts.c_str(), "%*d events, %ld repetitions left out, %ld", &all.repeated, &all.torn));
  return all;
}

bool RelayChain::survive(const Load& load) {
  if (!startAndWait(CENTRE) || !startAndWait(RELAY)) return false;
  std::vector<pid_t> children;
  for (int program = 0; program < load.programs; ++program)
    children.push_back(startChild([&] { logNumbersTo(m_ports[RELAY].number(), program, load); }));
  std::mt19937 random(20261122);
  const auto pause = [&] { std::this_thread::sleep_for(std::chrono::milliseconds(random() % 100)); };
  // Waits until each program has got on since the last time, and has so many events stored; or until there are no more
  // for five seconds, and then no longer. An appender sets an event aside that was alone when three connections broke.
  bool goesOn = true;
  std::vector<long> before(static_cast<std::size_t>(load.programs));
  const auto reaches = [&](long count) {
    const auto lacks = [&](int program) {
      const auto stored = static_cast<long>(m_stored[program].size());
      return stored < load.each && (stored < count || stored == before[static_cast<std::size_t>(program)]);
    };
    for (int program = 0; program < load.programs; ++program) {
      while (goesOn && lacks(program)) {
        const long read = m_read;
        goesOn = eventually([&] { return readStored(), m_read > read; }, 5);
      }
    }
    for (int program = 0; program < load.programs; ++program)
      before[static_cast<std::size_t>(program)] = static_cast<long>(m_stored[program].size());
    return goesOn;
  };
  for (int round = 0; round < load.kills; ++round) {
    reaches(load.each * (2 * round + 1) / (2 * load.kills + 1));
    pause();
    if (round % 4 == 0) {
      kill(RELAY);
      start(RELAY);
      reaches(load.each * (2 * round + 2) / (2 * load.kills + 1));
      kill(CENTRE);
      start(CENTRE);
    } else {
      if (round % 4 == 3) {
        EXPECT_EQ(0, ::kill(m_processes[CENTRE], SIGSTOP));
        pause();
      }
      kill(CENTRE);
      if (round % 4 == 1) pause();
      kill(RELAY);
      start(RELAY);
      pause();
      start(CENTRE);
    }
  }
  bool acknowledged = true;
  for (const pid_t child : children) acknowledged = statusOf(child) == 0 && acknowledged;
  return reaches(load.each) && acknowledged;
}

}  // namespace vrktest
