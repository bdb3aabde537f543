// Logs at the edges of a process's life: from a static object before and after main(), and from an object of a thread
// when the thread ends.

#include <thread>

#include "log4vrk/log4vrk.h"

namespace {

struct Loud {
  explicit Loud(const char* where) : m_where(where) { LOGManager::getLogger("loud")->info(m_where + " begins"); }
  ~Loud() { LOGManager::getLogger("loud." + m_where)->info(m_where + " ends"); }
  const I18NString m_where;
};

const int g_installed = (LOGManager::getRootLogger()->addAppender(new LOGConsoleAppender(new LOGLayout)), 0);
const Loud g_loud("static");

}  // namespace

int main() {
  thread_local const Loud ofMain("main");
  static_cast<void>(&ofMain);
  std::thread([] {
    thread_local const Loud ofThread("thread");
    static_cast<void>(&ofThread);
  }).join();
}
