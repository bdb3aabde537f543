#include "log4vrk/net/internal/LOGRelpSession.h"

#include <algorithm>

namespace {

constexpr int OK = 200;
constexpr std::string_view OFFER = "relp_version=0\nrelp_software=log4vrk,1,-\ncommands=syslog";
constexpr std::size_t LONGEST_QUOTE = 100;
constexpr std::size_t LONGEST_FRAME_HEAD = 64;
constexpr std::size_t MOST_WRITTEN = 65536;  // bytes that are kept although they have been written

// The first line of what a server says, fit to be shown.
std::string quoted(const std::string& data) {
  std::string line = data.substr(0, std::min(data.find('\n'), LONGEST_QUOTE));
  for (char& c : line) {
    if (c < ' ' || c > '~') c = '?';
  }
  return "\"" + line + "\"";
}

// Whether the answer to `open` names the command among those it accepts: commands=a,b,c
bool offers(const std::string& data, std::string_view command) {
  constexpr std::string_view NAME = "\ncommands=";
  const std::size_t found = data.find(NAME);
  if (found == std::string::npos) return false;
  const std::size_t begin = found + NAME.size();
  const std::string list = "," + data.substr(begin, data.find('\n', begin) - begin) + ",";
  return list.find("," + std::string(command) + ",") != std::string::npos;
}

}  // namespace

void LOGRelpSession::begin() {
  m_state = OPENING;
  m_reason.clear();
  m_parser = LOGRelpParser();
  m_output.clear();
  m_written = 0;
  m_number = m_closeNumber = 0;
  m_onTheirWay = 0;
  for (LOGOutgoing& event : m_unanswered) event.number = 0;
  send("open", OFFER);
}

void LOGRelpSession::written(std::size_t count) {
  m_written += count;
  if (m_written < m_output.size() && m_written < MOST_WRITTEN) return;
  m_output.erase(0, m_written);
  m_written = 0;
}

void LOGRelpSession::send(std::string_view command, std::string_view data) {
  m_number = LOGRelpFrame::next(m_number);
  LOGRelpFrame::append(m_output, m_number, command, data);
}

void LOGRelpSession::send(LOGOutgoing& event) {
  send("syslog", event.text);
  if (event.number == 0) ++m_onTheirWay;
  event.number = m_number;
  ++m_sent;
}

void LOGRelpSession::sendWhatMayGo() {
  for (LOGOutgoing& event : m_unanswered) {
    if (m_onTheirWay >= m_window) return;
    if (event.number == 0 && !event.isAnswered()) send(event);
  }
}

// Memory first: after that nothing raises.
void LOGRelpSession::add(LOGOutgoing&& event) {
  m_output.reserve(m_output.size() + event.text.size() + LONGEST_FRAME_HEAD);
  m_unanswered.emplace_back();
  LOGOutgoing& added = m_unanswered.back();
  added = std::move(event);
  m_bytes += added.text.size();
  added.number = 0;
  added.answer = LOGOutgoing::NONE;
  if (m_state == READY && m_onTheirWay < m_window) send(added);
}

void LOGRelpSession::interrupt() {
  m_state = IDLE;
  if (m_onTheirWay > 0) m_window = 1;
  m_onTheirWay = 0;
}

void LOGRelpSession::refuse() {
  const auto first = std::find_if(m_unanswered.begin(), m_unanswered.end(),
                                  [](const LOGOutgoing& each) { return each.number != 0 && !each.isAnswered(); });
  if (first != m_unanswered.end()) settle(*first, LOGOutgoing::REFUSED);
}

bool LOGRelpSession::takeAnswered(LOGOutgoing& event) {
  if (m_unanswered.empty() || !m_unanswered.front().isAnswered()) return false;
  event = std::move(m_unanswered.front());
  m_unanswered.pop_front();
  m_bytes -= event.text.size();
  return true;
}

void LOGRelpSession::close() {
  if (m_state != READY) return;
  m_state = CLOSING;
  send("close", {});
  m_closeNumber = m_number;
}

void LOGRelpSession::forget() {
  m_unanswered.clear();
  m_bytes = m_onTheirWay = 0;
}

void LOGRelpSession::receive(std::string_view bytes) {
  m_parser.add(bytes);
  LOGRelpFrame frame;
  while (m_state != OVER) {
    switch (m_parser.next(frame)) {
      case LOGRelpParser::FRAME:
        handle(frame);
        break;
      case LOGRelpParser::NEEDS_MORE:
        return;
      case LOGRelpParser::BROKEN:
        end(m_state == OPENING ? "what answers there does not speak RELP" : "the server sent what is no RELP frame");
        return;
    }
  }
}

void LOGRelpSession::handle(const LOGRelpFrame& frame) {
  const bool closes = frame.command == "serverclose";
  const bool answers = frame.command == "rsp";
  if ((closes && m_state == CLOSING) || (answers && m_closeNumber != 0 && frame.number == m_closeNumber)) {
    end("");
  } else if (closes) {
    end(m_state == OPENING ? "the server closed the session instead of opening it" : "the server closed the session");
  } else if (!answers) {
    return;  // a hint that asks for nothing
  } else if (m_state == OPENING) {
    answerToOpen(frame);
  } else {
    answerToEvent(frame);
  }
}

void LOGRelpSession::answerToOpen(const LOGRelpFrame& frame) {
  if (frame.number != m_number || frame.code() != OK) {
    end("the server refused the session: " + quoted(frame.data));
  } else if (!offers(frame.data, "syslog")) {
    end("the server accepts sessions, but no syslog messages");
  } else {
    m_state = READY;
    ++m_answers;
    sendWhatMayGo();
  }
}

void LOGRelpSession::answerToEvent(const LOGRelpFrame& frame) {
  const auto event = std::find_if(m_unanswered.begin(), m_unanswered.end(), [&](const LOGOutgoing& each) {
    return !each.isAnswered() && each.number == frame.number;
  });
  if (event == m_unanswered.end() || frame.number == 0) {
    end("the server answered what it was not asked");
  } else if (frame.code() == OK) {
    m_window = std::min(m_window * 2, WINDOW);
    settle(*event, LOGOutgoing::ACCEPTED);
  } else if (event->answer == LOGOutgoing::NONE && m_state == READY) {
    ++m_answers;
    event->answer = LOGOutgoing::REFUSED_ONCE;
    send(*event);
  } else {
    settle(*event, LOGOutgoing::REFUSED);
  }
}

void LOGRelpSession::settle(LOGOutgoing& event, LOGOutgoing::Answer answer) {
  ++m_answers;
  --m_onTheirWay;
  event.answer = answer;
  if (m_state == READY) sendWhatMayGo();
}

void LOGRelpSession::end(const std::string& reason) {
  m_state = OVER;
  m_reason = reason;
}
