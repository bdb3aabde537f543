// Uses LOGManager, whose state belongs to the whole process. Ends with 1 at the first thing that is not as it should be.
//
//   manager_probe shutdown-first | race | selector | guards

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

void shutdownFirst() {
  LOGManager::shutdown();
  LOG4VRKConfigurator::shutdown();
  CHECK(!LOGManager::hasSelector());
}

void race() {
  std::atomic<int> waiting{8};
  std::vector<LOGLogger*> roots(8), loggers(8);
  std::vector<std::thread> threads;
  for (std::size_t t = 0; t < 8; ++t) {
    threads.emplace_back([&, t] {
      --waiting;
      while (waiting > 0) std::this_thread::yield();
      loggers[t] = LOGManager::getLogger("x");
      roots[t] = LOGManager::getRootLogger();
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (std::size_t t = 0; t < 8; ++t) CHECK(roots[t] == roots[0] && loggers[t] == loggers[0]);
  CHECK(*roots[0]->getLevel() == *LOGLevel::DEBUG_OBJ && loggers[0]->getParent() == roots[0]);
  LOGLogger::shutdown();
  CHECK(LOGLogger::getLogger("x") == loggers[0] && LOGLogger::exists("x") == loggers[0]);
}

struct Repositories {
  LOGHierarchy mine{new LOGRootLogger(nullptr)}, other{new LOGRootLogger(nullptr)};
  LOGDefaultRepositorySelector toMine{&mine}, toOther{&other};
};

void selector() {
  Repositories repositories;
  auto& [mine, other, toMine, toOther] = repositories;
  const auto current = [] { return LOGManager::getLoggerRepository(); };
  try {
    LOGManager::setRepositorySelector(&toMine, nullptr);
    CHECK(false);
  } catch (const VRKAssertError&) {
  }
  LOGObject stranger("stranger"), same("guard");
  LOGManager::setRepositorySelector(nullptr, &stranger);  // neither is kept
  CHECK(!LOGManager::hasSelector());
  LOGManager::setRepositorySelector(&toMine, std::make_unique<LOGObject>("guard").get());
  CHECK(current() == &mine && LOGManager::getLogger("a")->getRepository() == &mine);
  LOGManager::setRepositorySelector(&toOther, &stranger);
  LOGManager::setRepositorySelector(nullptr, &same);
  CHECK(current() == &mine);
  LOGManager::setRepositorySelector(&toOther, &same);
  CHECK(current() == &other);
}

// A guard that cannot be cloned is kept as it is, and the code of a guard may use the library.
void guards() {
  class Guard : public LOGLogger {
   public:
    bool operator!=(const LOGObject& guard) const override {
      LOGManager::getLogger("guard")->info("compared");
      return LOGObject::operator!=(guard);
    }
    LOGObject* clone() const override {
      LOGManager::getLogger("guard")->info("cloned");
      return LOGLogger::clone();
    }
  } guard;
  Repositories repositories;
  LOGManager::setRepositorySelector(&repositories.toMine, &guard);
  LOGManager::setRepositorySelector(&repositories.toOther, &guard);
  CHECK(LOGManager::getLoggerRepository() == &repositories.other);
}

}  // namespace

int main(int argc, char** argv) {
  const std::string what = argc == 2 ? argv[1] : "";
  for (const auto& [name, run] :
       {std::pair("shutdown-first", &shutdownFirst), {"race", &race}, {"selector", &selector}, {"guards", &guards}}) {
    if (what != name) continue;
    run();
    return 0;
  }
  return 2;
}
