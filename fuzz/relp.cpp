// Any bytes as what a log server sends: to the parser in pieces of two sizes, and to a session.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "log4vrk/net/internal/LOGRelpSession.h"

namespace {

constexpr int EVENTS = 5;

void expect(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", what);
  std::abort();
}

struct Parsed {
  std::string frames;  // as they are written
  bool broken = false;
};

Parsed parse(std::string_view bytes, std::size_t step) {
  Parsed result;
  LOGRelpParser parser;
  for (std::size_t at = 0; at < bytes.size(); at += step) {
    parser.add(bytes.substr(at, step));
    LOGRelpFrame frame;
    LOGRelpParser::Result next;
    while ((next = parser.next(frame)) == LOGRelpParser::FRAME) {
      expect(frame.data.size() <= LOGRelpParser::LONGEST_DATA, "data are bounded");
      expect(frame.code() >= 0 && frame.code() <= 999, "codes have three digits");
      LOGRelpFrame::append(result.frames, frame.number, frame.command, frame.data);
    }
    result.broken = next == LOGRelpParser::BROKEN;
  }
  return result;
}

void tryParser(std::string_view bytes, std::size_t step) {
  const Parsed whole = parse(bytes, std::max<std::size_t>(bytes.size(), 1)), pieces = parse(bytes, step);
  expect(whole.frames == pieces.frames && whole.broken == pieces.broken, "the size of the pieces does not matter");
  const Parsed again = parse(whole.frames, step);
  expect(!again.broken && again.frames == whole.frames, "what was written is read back");
}

void trySession(std::string_view bytes, std::size_t step) {
  LOGRelpSession session;
  int taken = 0;
  for (int i = 0; i < EVENTS; ++i) {
    LOGOutgoing event;
    event.text = std::to_string(i);
    session.add(std::move(event));
  }
  session.begin();
  session.receive("1 rsp 22 200 OK\ncommands=syslog\n");
  for (std::size_t at = 0; at < bytes.size() && session.state() != LOGRelpSession::OVER; at += step) {
    session.receive(bytes.substr(at, step));
    session.written(session.output().size());
    for (LOGOutgoing done; session.takeAnswered(done); ++taken) {
      expect(done.text == std::to_string(taken), "events leave in their order, each once");
    }
  }
  expect(taken + static_cast<int>(session.unanswered().size()) == EVENTS, "no event is lost");
  session.begin();
  expect(session.state() == LOGRelpSession::OPENING, "a new connection begins anew");
  session.receive(bytes);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
  const std::size_t step = data[0] % 16 + 1u;
  tryParser(bytes, step);
  trySession(bytes, step);
  return 0;
}
