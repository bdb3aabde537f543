#include <gtest/gtest.h>

#include <tuple>
#include <vector>

#include "log4vrk/net/internal/LOGRelpSession.h"

namespace {

using Parser = LOGRelpParser;

constexpr const char* OPENED =
    "1 rsp 93 200 OK\nrelp_version=0\nrelp_software=librelp,1.11.0,http://librelp.adiscon.com\ncommands=syslog\n";

LOGOutgoing event(const std::string& text) {
  LOGOutgoing result;
  result.text = text;
  return result;
}

std::string wire(LOGRelpSession& session) {
  std::string output(session.output());
  session.written(output.size());
  return output;
}

/// Opened, with an event sent.
struct Opened : LOGRelpSession {
  Opened() {
    begin();
    wire(*this);
    receive(OPENED);
    add(event("a"));
    wire(*this);
  }
};

TEST(LOGRelpParser, TakesFramesInPiecesOfAnySizeAndStopsAtWhatIsNone) {
  const std::tuple<std::string, Parser::Result, std::vector<std::string>> CASES[] = {
      {"1 rsp 6 200 OK\n2 rsp 0\n0 serverclose 0\n", Parser::NEEDS_MORE, {"1 rsp 200 OK", "2 rsp ", "0 serverclose "}},
      {"7 rsp 0 \n", Parser::NEEDS_MORE, {"7 rsp "}},
      {"1 rsp 6 200 O", Parser::NEEDS_MORE, {}},
      {"1 rsp 2 OK\nHTTP/1.1 400\n", Parser::BROKEN, {"1 rsp OK"}},
      {"1 rsp 1 OK\n", Parser::BROKEN, {}},
      {"1 rsp 2OK\n", Parser::BROKEN, {}},
      {"1  rsp 0\n", Parser::BROKEN, {}},
      {"1 rsp -1\n", Parser::BROKEN, {}},
      {"1 rsp 65537 ", Parser::BROKEN, {}},
      {"1000000000 rsp 0\n", Parser::BROKEN, {}},
      {"1 abcdefghijklmnopqrstuvwxyzabcdefg 0\n", Parser::BROKEN, {}},
      {"\x15\x03\x03", Parser::BROKEN, {}},
  };
  for (const auto& [bytes, last, expected] : CASES) {
    for (std::size_t step = 1; step <= bytes.size() + 1; ++step) {
      Parser parser;
      std::vector<std::string> frames;
      Parser::Result result = Parser::NEEDS_MORE;
      for (std::size_t at = 0; at < bytes.size(); at += step) {
        parser.add(bytes.substr(at, step));
        LOGRelpFrame frame;
        while ((result = parser.next(frame)) == Parser::FRAME) {
          frames.push_back(std::to_string(frame.number) + " " + frame.command + " " + frame.data);
        }
      }
      EXPECT_EQ(last, result) << bytes << " in steps of " << step;
      EXPECT_EQ(expected, frames) << bytes << " in steps of " << step;
    }
  }
}

TEST(LOGRelpFrame, HasACodeOnlyWhereOneStands) {
  const std::pair<const char*, int> cases[] = {{"200 OK", 200}, {"500", 500},  {"", 0},      {"20", 0},
                                               {"2000 no", 0},  {"OK 200", 0}, {"200", 200}, {"200\nx", 200}};
  for (const auto& [data, code] : cases) EXPECT_EQ(code, (LOGRelpFrame{1, "rsp", data}.code())) << data;
  EXPECT_EQ(1u, LOGRelpFrame::next(LOGRelpFrame::GREATEST_NUMBER));
}

TEST(LOGRelpSession, OpensSendsAndSaysGoodbye) {
  LOGRelpSession session;
  session.add(event("before"));
  EXPECT_EQ("", wire(session));
  session.begin();
  EXPECT_EQ("1 open 56 relp_version=0\nrelp_software=log4vrk,1,-\ncommands=syslog\n", wire(session));
  session.add(event("meanwhile"));
  EXPECT_EQ("", wire(session)) << "the server has not accepted the session";
  session.receive(OPENED);
  EXPECT_EQ("2 syslog 6 before\n3 syslog 9 meanwhile\n", wire(session));
  session.receive("2 rsp 6 200 OK\n3 rsp 6 200");
  LOGOutgoing done;
  EXPECT_TRUE(session.takeAnswered(done) && done.text == "before" && !session.takeAnswered(done));
  session.receive(" OK\n");
  EXPECT_TRUE(session.takeAnswered(done));
  session.close();
  EXPECT_EQ("4 close 0\n", wire(session));
  session.receive("4 rsp 0\n0 serverclose 0\n");
  EXPECT_EQ(LOGRelpSession::OVER, session.state());
  EXPECT_EQ("", session.reason());
}

TEST(LOGRelpSession, SaysWhyItIsOver) {
  constexpr const char *NO_SYSLOG = "the server accepts sessions, but no syslog messages",
                       *NO_RELP = "what answers there does not speak RELP",
                       *NOT_ASKED = "the server answered what it was not asked";
  const std::tuple<bool, const char*, const char*> CASES[] = {
      {false, "1 rsp 17 500 not\x01 allowed\n\n", "the server refused the session: \"500 not? allowed\""},
      {false, "1 rsp 22 200 OK\nrelp_version=0\n\n", NO_SYSLOG},
      {false, "1 rsp 32 200 OK\ncommands=syslogs,eventlog\n", NO_SYSLOG},
      {false, "0 serverclose 0\n", "the server closed the session instead of opening it"},
      {false, "220 mail.example ESMTP\n", NO_RELP},
      {false, "\x15\x03\x03\x00\x02", NO_RELP},
      {true, "0 serverclose 0\n", "the server closed the session"},
      {true, "9 rsp 6 200 OK\n", NOT_ASKED},
      {true, "0 rsp 6 200 OK\n", NOT_ASKED},
      {true, "2 rsp 6 200 OK\n2 rsp 6 200 OK\n", NOT_ASKED},
      {true, "?", "the server sent what is no RELP frame"},
  };
  for (const auto& [isOpened, bytes, reason] : CASES) {
    Opened opened;
    LOGRelpSession opening;
    opening.begin();
    LOGRelpSession& session = isOpened ? opened : opening;
    session.receive(bytes);
    EXPECT_EQ(LOGRelpSession::OVER, session.state()) << bytes;
    EXPECT_EQ(reason, session.reason());
  }
}

}  // namespace
