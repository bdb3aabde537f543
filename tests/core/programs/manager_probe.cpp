// Uses LOGManager, whose state belongs to the whole process. Ends with 1 at the first thing that is not as it should
// be.
//
//   manager_probe first-lookup | shutdown-first | race | selector | guards | thoughtful-guard

#include <atomic>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "log4vrk/log4vrk.h"

#define CHECK(condition)                                        \
  do {                                                          \
    if (!(condition)) {                                         \
      std::cerr << __LINE__ << ": " << #condition << std::endl; \
      std::_Exit(1);                                            \
    }                                                           \
  } while (false)

namespace {

void firstLookup() {
  LOGLogger* const logger = LOGLogger::getLogger("a.b");
  CHECK(*LOGManager::getRootLogger()->getLevel() == *LOGLevel::DEBUG_OBJ);
  CHECK(LOGManager::getLoggerRepository()->getThreshold() == LOGLevel::ALL_OBJ);
  CHECK(logger->getParent() == LOGLogger::getRootLogger() && LOGLogger::exists("a.b") == logger);
  CHECK(LOGManager::exists("a") == nullptr);
  const std::unique_ptr<VRKList<LOGLogger*>> loggers(LOGManager::getCurrentLoggers());
  CHECK(loggers->size() == 1 && loggers->front() == logger);
  LOGLogger::shutdown();
  CHECK(LOGManager::getLogger("a.b") == logger);
}

void shutdownFirst() {
  LOGManager::shutdown();
  LOG4VRKConfigurator::shutdown();
  CHECK(!LOGManager::hasSelector());
  LOGManager::resetConfiguration();
  CHECK(LOGManager::hasSelector());
}

void race() {
  std::atomic<int> waiting{8};
  std::vector<LOGLogger*> roots(8), loggers(8);
  std::vector<std::thread> threads;
  for (std::size_t t = 0; t < 8; ++t) {
    threads.emplace_back([&, t] {
      --waiting;
      while (waiting > 0) {
      }
      loggers[t] = LOGManager::getLogger("x");
      roots[t] = LOGManager::getRootLogger();
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (std::size_t t = 0; t < 8; ++t) CHECK(roots[t] == roots[0] && loggers[t] == loggers[0]);
}

void selector() {
  LOGHierarchy mine(new LOGRootLogger(LOGLevel::WARN_OBJ)), other(new LOGRootLogger(LOGLevel::WARN_OBJ));
  LOGDefaultRepositorySelector toMine(&mine), toOther(&other);
  auto guard = std::make_unique<LOGObject>("guard");
  const auto current = [] { return LOGManager::getLoggerRepository(); };
  try {
    LOGManager::setRepositorySelector(&toMine, nullptr);
    CHECK(false);
  } catch (const VRKAssertError& error) {
    CHECK(error.getText() == "VRK_ASSERT(guard);" && error.getSource() == "LOGManager");
  }
  CHECK(!LOGManager::hasSelector());
  LOGObject nobody("nobody"), same("guard");
  LOGManager::setRepositorySelector(nullptr, &nobody);  // neither is kept
  LOGManager::setRepositorySelector(&toMine, guard.get());
  CHECK(current() == &mine && LOGManager::getLogger("a")->getRepository() == &mine);
  guard = nullptr;
  LOGManager::setRepositorySelector(&toOther, &nobody);
  CHECK(current() == &mine);
  LOGManager::setRepositorySelector(nullptr, &same);
  CHECK(current() == &mine);
  LOGManager::setRepositorySelector(&toOther, &same);
  CHECK(current() == &other);
  LOGManager::shutdown();
}

// A guard that cannot be cloned is remembered as it is.
void guards() {
  LOGHierarchy mine(new LOGRootLogger(LOGLevel::WARN_OBJ)), other(new LOGRootLogger(LOGLevel::WARN_OBJ));
  LOGDefaultRepositorySelector toMine(&mine), toOther(&other);
  LOGLogger guard("guard");
  LOGManager::setRepositorySelector(&toMine, &guard);
  LOGManager::setRepositorySelector(&toOther, &guard);
  CHECK(LOGManager::getLoggerRepository() == &other);
  LOGManager::setRepositorySelector(&toMine, LOGManager::getRootLogger());
}

// The program's own code runs when a guard is cloned or compared.
void thoughtfulGuard() {
  class Guard : public LOGObject {
   public:
    bool operator!=(const LOGObject& guard) const override {
      LOGManager::getLogger("guard")->info("compared");
      return LOGObject::operator!=(guard);
    }
    LOGObject* clone() const override {
      LOGManager::getLogger("guard")->info("cloned");
      return new Guard(*this);
    }
  };
  LOGHierarchy mine(new LOGRootLogger(LOGLevel::WARN_OBJ));
  LOGDefaultRepositorySelector toMine(&mine);
  Guard guard;
  LOGManager::setRepositorySelector(&toMine, &guard);
  LOGManager::setRepositorySelector(&toMine, &guard);
  CHECK(LOGManager::getLoggerRepository() == &mine);
}

}  // namespace

int main(int argc, char** argv) {
  const std::string what = argc == 2 ? argv[1] : "";
  for (const auto& [name, run] : {std::pair("first-lookup", &firstLookup),
                                  {"shutdown-first", &shutdownFirst},
                                  {"race", &race},
                                  {"selector", &selector},
                                  {"guards", &guards},
                                  {"thoughtful-guard", &thoughtfulGuard}}) {
    if (what != name) continue;
    run();
    return 0;
  }
  return 2;
}
