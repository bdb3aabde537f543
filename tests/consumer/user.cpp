// What programs do with the library that some compiler, standard or other header has made difficult. Only compiled.

#include <chrono>
#include <filesystem>
#include <functional>
#include <iostream>
#include <mutex>
#include <sstream>
#include <thread>

// Other headers have these as macros, X11's and those of terminals among them.
#define Bool int
#define DEBUG 1
#define ERR (-1)
#define ERROR 0
#define FALSE 0
#define False 0
#define INFO 1
#define NONE 0L
#define None 0L
#define OK 0
#define Status int
#define Success 0
#define TRUE 1
#define True 1
#define UNKNOWN 1
#define WARN 1
#define major 1
#define minor 1
#define status int
#define unix 1

#include "log4vrk/log4vrk.h"

namespace shop {

class Order : public LOGObject {
 public:
  using LOGObject::LOGObject;
  bool operator==(const LOGObject& other) const override { return LOGObject::operator==(other); }
  bool operator!=(const LOGObject& other) const override { return !(*this == other); }
};

class Appender : public LOGAppenderSkeleton {
 public:
  void append(LOGLoggingEvent*) override {}
  void close() override {}
  bool requiresLayout() override { return false; }
};

class Logger : public LOGLogger {
 public:
  using LOGLogger::LOGLogger;
};

template <typename A, typename B>
bool compare(const A& a, const B& b) {
  return a == b && a != b && b == a && b != a;
}

bool compareAll() {
  const LOGObject object("text");
  const Order order("text");
  const Logger logger("shop");
  const Appender appender;
  const LOGConsoleAppender console;
  const LOGLocalUDPAppender datagrams;
  const I18NString text("text");
  return compare(object, object) && compare(order, order) && compare(order, object) && compare(logger, logger) &&
         compare(logger, *LOGManager::getRootLogger()) && compare(logger, order) && compare(appender, appender) &&
         compare(appender, console) && compare(datagrams, datagrams) && compare(datagrams, console) &&
         compare(console, object) && compare(text, text) && compare(text, "text") && compare(text, u"text") &&
         compare(*LOGLevel::DEBUG_OBJ, *LOGLevel::FATAL_OBJ) && text < "uvw";
}

void log(LOGLogger* logger, Order& order) {
  logger->info("text");
  logger->warn(&order);
  if (logger->isDebugEnabled()) LOG4VRK_DEBUG(logger, "order " << order << ' ' << 1 << std::string(3, '.'));
  LOG4VRK_INFO(logger, std::this_thread::get_id());
  LOG4VRK_WARN(logger, 1.5);
  LOG4VRK_ERROR(logger, "a" << u"b");
  LOG4VRK_LOG(logger, LOGLevel::FATAL_OBJ, true);
}

}  // namespace shop
