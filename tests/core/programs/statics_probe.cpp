// Logs with the life of the process: from a static before and after main(), and from a thread's own object at the
// thread's end.

#include <cstdio>
#include <memory>
#include <thread>

#include "log4vrk/log4vrk.h"

namespace {

class Printing : public LOGAppenderSkeleton {
 public:
  void append(LOGLoggingEvent* event) override {
    const std::unique_ptr<I18NString> text(event->getRenderedMessage());
    std::puts(text->toUtf8().c_str());
    std::fflush(stdout);
  }
};

struct Installed {
  Installed() { LOGManager::getRootLogger()->addAppender(new Printing); }
} g_installed;

struct Loud {
  explicit Loud(const char* where) : m_where(where) {
    LOGManager::getLogger("loud")->info(I18NString(m_where) + " begins");
  }
  ~Loud() { LOGManager::getLogger(I18NString("loud.") + m_where)->info(I18NString(m_where) + " ends"); }
  const char* m_where;
};

Loud g_loud("static");

}  // namespace

int main() {
  thread_local Loud ofMain("main");
  static_cast<void>(&ofMain);
  std::thread([] {
    thread_local Loud ofThread("thread");
    static_cast<void>(&ofThread);
  }).join();
}
