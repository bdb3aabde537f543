// Uses the internal log as the words say, one after the other, and prints its two flags at the end. It is a program,
// because a process reads the settings of the internal log only once.
//
//   internal_log_probe <word>...

#include <cstdlib>
#include <functional>
#include <iostream>
#include <map>
#include <string>

#include "log4vrk/core/LOGLogLog.h"
#include "log4vrk/platform/VRKThrowable.h"
#include "log4vrk/platform/internal/VRKFault.h"
#include "tests/support/Threads.h"

namespace {

void logAtEveryLevel() {
  VRKThrowable error("cause", "Place.cpp", 7);
  LOGLogLog::debug("debug");
  LOGLogLog::warn("Gr\xC3\xBC\xC3\x9F");
  for (const char* text : {"error", ""}) LOGLogLog::error(text);
  LOGLogLog::warn("");
  LOGLogLog::debug("debug", error);
  LOGLogLog::warn("ends in a blank ", error);
  LOGLogLog::error("error", error);
  LOGLogLog::error(error);
}

void logFromThreads() {
  vrktest::onThreads(4, [](int t) {
    for (int i = 1; i <= 500; ++i) LOGLogLog::debug(I18NString() + t + " " + i + " end");
  });
}

}  // namespace

int main(int argc, char** argv) {
  const std::map<std::string, std::function<void()>> WORDS = {
      {"debug", [] { LOGLogLog::debug("debug"); }},
      {"fault", [] { VRKFault::arm(VRKFault::TEXT_CONVERSION); }},
      {"init", [] { LOGLogLog::init(); }},
      {"leave", [] { std::_Exit(0); }},  // for where the leak check at exit cannot look
      {"levels", logAtEveryLevel},
      {"off", [] { LOGLogLog::setInternalDebugging(0); }},
      {"quiet", [] { LOGLogLog::setQuietMode(1); }},
      {"shutdown", [] { LOGLogLog::shutdown(); }},
      {"threads", logFromThreads}};
  for (int i = 1; i < argc; ++i) WORDS.at(argv[i])();
  std::cout << LOGLogLog::getInternalDebugging() << LOGLogLog::getQuietMode();
}
