// A log server that does as a test says, where a real one cannot be brought to it.

#pragma once

#include <poll.h>

#include <atomic>
#include <deque>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "log4vrk/net/internal/LOGRelpFrames.h"
#include "tests/support/Sockets.h"

namespace vrktest {

/// Speaks RELP on a port of 127.0.0.1, to one client at a time, on a thread of its own.
///
/// Thread safety: any thread.
class ScriptedLogServer {
 public:
  enum Answer { ACCEPT, HOLD, REFUSE, BREAK };
  /// What becomes of an event with this text; called on the server's thread.
  using Script = std::function<Answer(const std::string& text)>;

  explicit ScriptedLogServer(Script script) : m_script(std::move(script)) {
    if (::listen(m_listener, 16) != 0) throw std::runtime_error("listen");
    m_thread = std::thread([this] { serve(); });
  }
  ~ScriptedLogServer() {
    m_over = true;
    m_thread.join();
    hangUp();
    ::close(m_listener);
  }
  ScriptedLogServer(const ScriptedLogServer&) = delete;
  ScriptedLogServer& operator=(const ScriptedLogServer&) = delete;

  int port() const { return m_port; }
  /// While it is away, it ends every connection at once.
  std::atomic<bool> away{false};
  /// It accepts so many of the events that it holds, the oldest first.
  std::atomic<std::size_t> lets{0};
  static constexpr std::size_t ALL = ~std::size_t{0};
  /// Sends nothing but hints, as fast as they are read.
  std::atomic<bool> hints{false};

  /// How many events of this connection it holds.
  std::size_t held() const { return m_heldCount; }
  /// The texts of all events that have come in, in order.
  std::vector<std::string> received() const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_received;
  }

 private:
  void serve() {
    std::string hint;
    while (hint.size() < 65536) LOGRelpFrame::append(hint, 0, "hint", "");  // small ones take longest to read
    for (; !m_over; m_heldCount = m_held.size()) {
      pollfd waiting[] = {{m_listener, POLLIN, 0},
                          {m_client, static_cast<short>(hints ? POLLIN | POLLOUT : POLLIN), 0}};
      ::poll(waiting, 2, 2);
      if (waiting[0].revents != 0) acceptClient();
      if (m_client < 0) continue;
      if (away || ((waiting[1].revents & POLLIN) != 0 && !listenToClient())) hangUp();
      if (hints && m_client >= 0) ::send(m_client, hint.data(), hint.size(), MSG_NOSIGNAL);
      for (; lets > 0 && !m_held.empty(); m_held.pop_front()) {
        answer(m_held.front(), "200 OK");
        if (lets != ALL) --lets;
      }
    }
  }

  void acceptClient() {
    hangUp();
    m_client = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
    m_parser = LOGRelpParser();
  }

  void hangUp() {
    if (m_client >= 0) ::close(m_client);
    m_client = -1;
    m_held.clear();
  }

  // False when the connection is to end.
  bool listenToClient() {
    char bytes[65536];
    const ssize_t count = ::recv(m_client, bytes, sizeof bytes, 0);
    if (count <= 0) return false;
    m_parser.add({bytes, static_cast<std::size_t>(count)});
    for (LOGRelpFrame frame; m_parser.next(frame) == LOGRelpParser::FRAME;) {
      if (frame.command == "open") answer(frame.number, "200 OK\ncommands=syslog");
      if (frame.command == "close") answer(frame.number, "");
      if (frame.command == "syslog" && !takeEvent(frame)) return false;
    }
    return true;
  }

  bool takeEvent(const LOGRelpFrame& frame) {
    const std::string text = frame.data.substr(frame.data.find("\"] ") + 3);
    {
      const std::lock_guard<std::mutex> guard(m_mutex);
      m_received.push_back(text);
    }
    const Answer decided = m_script(text);
    if (decided == HOLD) {
      m_held.push_back(frame.number);
    } else if (decided != BREAK) {
      answer(frame.number, decided == ACCEPT ? "200 OK" : "500 no");
    }
    return decided != BREAK;
  }

  void answer(std::uint32_t number, const std::string& data) {
    std::string frame;
    LOGRelpFrame::append(frame, number, "rsp", data);
    ::send(m_client, frame.data(), frame.size(), MSG_NOSIGNAL);
  }

  const Script m_script;
  int m_port = 0;
  const int m_listener = boundSocket(SOCK_STREAM, m_port);
  std::atomic<bool> m_over{false};
  std::atomic<std::size_t> m_heldCount{0};
  mutable std::mutex m_mutex;
  std::vector<std::string> m_received;  // guarded by it

  // The thread's.
  int m_client = -1;
  LOGRelpParser m_parser;
  std::deque<std::uint32_t> m_held;

  std::thread m_thread;
};

}  // namespace vrktest
