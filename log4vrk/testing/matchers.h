// Matchers of GoogleTest for what a LOGCapture has. A file that includes this needs GoogleMock (libgmock-dev; target
// GTest::gmock).
//
//   using namespace LOGMatchers;
//   EXPECT_THAT(logs.events(), ElementsAre(Logged(LOGLevel::WARN_OBJ, HasSubstr("stock"))));
//   EXPECT_THAT(logs.events(), Each(Not(HasLevel("ERROR"))));
//   EXPECT_THAT(logs.events(), Contains(AllOf(HasLevel("INFO"), HasField("order", "17"))));
//
// Each takes a LOGCapturedEvent, so that GoogleMock's matchers of containers say how many, and in which order. Where
// one has an argument, that is a value or a matcher of texts.

#pragma once

#include <gmock/gmock.h>

#include <ostream>
#include <string>

#include "log4vrk/core/LOGLevel.h"
#include "log4vrk/testing/LOGCapture.h"

/// What GoogleTest prints of an event when a matcher fails.
inline void PrintTo(const LOGCapturedEvent& event, std::ostream* out) {
  *out << event.level << ' ' << event.logger << " [" << event.thread << "] \"" << event.message << '"';
  if (!event.nested.empty()) *out << " nested " << event.nested;
  for (const auto& [name, value] : event.context) *out << ' ' << name << '=' << value;
  for (const auto& [name, value] : event.fields) *out << ' ' << name << '=' << value;
  if (!event.file.empty()) *out << " at " << event.file << ':' << event.line;
}

/// See log4vrk/testing/matchers.h.
namespace LOGMatchers {

/// The name of the level: "WARN".
template <typename Text>
auto HasLevel(const Text& level) {
  return testing::Field("level", &LOGCapturedEvent::level, level);
}
/// All of the logger's name.
template <typename Text>
auto HasLogger(const Text& logger) {
  return testing::Field("logger", &LOGCapturedEvent::logger, logger);
}
/// The message as a layout would print it.
template <typename Text>
auto HasMessage(const Text& message) {
  return testing::Field("message", &LOGCapturedEvent::message, message);
}
/// The name of the thread.
template <typename Text>
auto HasThread(const Text& thread) {
  return testing::Field("thread", &LOGCapturedEvent::thread, thread);
}
/// One of the statement's own fields.
template <typename Text>
auto HasField(const std::string& name, const Text& value) {
  return testing::Field("fields", &LOGCapturedEvent::fields, testing::Contains(testing::Pair(name, value)));
}
/// One of the names of the context (LOG4VRK_CONTEXT).
template <typename Text>
auto HasContext(const std::string& name, const Text& value) {
  return testing::Field("context", &LOGCapturedEvent::context, testing::Contains(testing::Pair(name, value)));
}
/// Level and message. Levels are equal when their ranks are.
template <typename Text>
auto Logged(const LOGLevel* level, const Text& message) {
  return testing::AllOf(testing::Field("rank", &LOGCapturedEvent::rank, level->toInt()), HasMessage(message));
}

}  // namespace LOGMatchers
