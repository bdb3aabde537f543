// Uses the internal log, whose settings are read once in a process. The last line on the standard output is its two flags.
//
//   internal_log_probe levels | flags | shutdown | shutdown-first | fault | threads

#include <iostream>
#include <string>
#include <thread>
#include <vector>

#include "log4vrk/core/LOGLogLog.h"
#include "log4vrk/platform/VRKFault.h"
#include "log4vrk/platform/VRKThrowable.h"

int main(int argc, char** argv) {
  const std::string what = argc == 2 ? argv[1] : "";
  if (what == "levels") {
    VRKThrowable error("cause", "Place.cpp", 7);
    LOGLogLog::debug("debug");
    LOGLogLog::warn("Gr\xC3\xBC\xC3\x9F");
    for (const char* text : {"error", ""}) LOGLogLog::error(text);
    LOGLogLog::warn("");
    LOGLogLog::debug("debug", error);
    LOGLogLog::warn("ends in a blank ", error);
    LOGLogLog::error("error", error);
    LOGLogLog::error(error);
  } else if (what == "flags") {
    LOGLogLog::setQuietMode(1);
    LOGLogLog::init();
  } else if (what == "shutdown") {
    LOGLogLog::setQuietMode(1);
    LOGLogLog::setInternalDebugging(0);
    LOGLogLog::debug("before");
    LOGLogLog::shutdown();
    LOGLogLog::debug("after");
    LOGLogLog::init();
    LOGLogLog::error("after");
  } else if (what == "shutdown-first") {
    LOGLogLog::shutdown();
    LOGLogLog::debug("after");
  } else if (what == "fault") {
    VRKFault::arm(VRKFault::TEXT_CONVERSION);
    LOGLogLog::debug("nowhere");
    VRKFault::disarm();
    LOGLogLog::debug("nowhere either");
  } else if (what == "threads") {
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
      threads.emplace_back([t] {
        for (int i = 1; i <= 500; ++i) LOGLogLog::debug(I18NString() + t + " " + i + " end");
      });
    }
    for (std::thread& thread : threads) thread.join();
  } else {
    return 2;
  }
  std::cout << LOGLogLog::getInternalDebugging() << LOGLogLog::getQuietMode();
}
