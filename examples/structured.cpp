// A context and fields of names and values, as text and as JSON: the output is in docs/structured.md.

#include <thread>

#include "log4vrk/log4vrk.h"

namespace {

void accept(LOGLogger* logger, int order) {
  LOG4VRK_CONTEXT("order", order, "customer", "anna");
  LOG4VRK_INFO_KV(logger, "accepted", "total", 17.5, "express", true);
  {
    LOG4VRK_CONTEXT("step", "payment");
    LOG4VRK_WARN(logger, "card " << 4711 << " refused\nby \"the bank\"");
  }
  std::thread([logger, context = LOGContext::capture()] {
    const LOGContext::Scope scope(context);
    LOG4VRK_INFO(logger, "packed by another thread");
  }).join();
}

}  // namespace

int main() {
  static LOGPatternLayout pattern("%-5p %e {%X} order %X{order}%n");
  static LOGJSONLayout json;
  json.setFields("level logger message context fields");  // without what is different in each run
  static LOGConsoleAppender text(&pattern), objects(&json);
  text.setName("text");
  objects.setName("objects");
  LOGLogger* const root = LOGManager::getRootLogger();
  root->setLevel(LOGLevel::INFO_OBJ);
  for (LOGConsoleAppender* const appender : {&text, &objects}) {
    appender->activateOptions();
    root->addAppender(appender);
  }
  LOGLogger* const logger = LOGManager::getLogger("shop.orders");
  accept(logger, 17);
  LOG4VRK_INFO(logger, "outside");
  LOG4VRKConfigurator::shutdown();
}
