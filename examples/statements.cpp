// Every kind of log statement, and what it writes: the tables of docs/logging.md.

#include <cerrno>
#include <iomanip>
#include <ostream>
#include <thread>

#include "log4vrk/format.h"
#include "log4vrk/log4vrk.h"

namespace {

struct Order {
  int number;
};
std::ostream& operator<<(std::ostream& out, const Order& order) { return out << '#' << order.number; }

LOG4VRK_LEVEL(TRACE, 5000, 7)

// Everything that a program configures by calls: a logger, an appender, a layout, a level.
void configure() {
  static LOGPatternLayout layout("%-5p %c [%x] %m%n");
  static LOGConsoleAppender console(&layout);
  console.activateOptions();
  LOGManager::getRootLogger()->addAppender(&console);
  LOGManager::getRootLogger()->setLevel(LOGLevel::ALL_OBJ);
}

}  // namespace

int main() {
  configure();
  LOGLogger* const logger = LOGManager::getLogger("shop.orders");
  const Order order{17};

  logger->info("a text");
  logger->info(std::string("a std::string, and in UTF-16 ") + "or wide:");
  logger->info(u"also \u20ac");
  LOG4VRK_DEBUG(logger, "order " << order << " costs " << 17.5 << ", paid: " << true);
  LOG4VRK_INFO(logger, std::hex << std::setfill('0') << std::setw(4) << 255 << ' ' << std::dec << 255);
  LOG4VRK_INFO_F(logger, "order {} in {:.3f} s", order.number, 0.25);
  LOG4VRK_LOG(logger, TRACE(), "a level of the program's own");

  for (int i = 0; i < 5; ++i) {
    LOG4VRK_INFO_IF(logger, i == 3, "if: " << i);
    LOG4VRK_INFO_ONCE(logger, "once: " << i);
    LOG4VRK_INFO_EVERY_N(logger, 3, "every third: " << i);
    LOG4VRK_INFO_EVERY(logger, 60, "once a minute: " << i);
  }
  errno = ENOENT;
  LOG4VRK_WARN_ERRNO(logger, "cannot open orders.db");
  LOG4VRK_CHECK(logger, order.number > 0, "is not reached: " << order);

  LOGNDC::push("request 9");
  LOG4VRK_INFO(logger, "every line of this thread has the context now");
  std::thread([logger] { LOG4VRK_INFO(logger, "other threads have their own"); }).join();
  LOGNDC::pop();
  LOG4VRKConfigurator::shutdown();
}
