// A small order server: an intake thread reads orders, three workers take them from stock, and every step is logged.
// The renderers and the logger factory that the document names are libraries beside the program.
//
//   orders <log.xml> <orders.csv>

#include <condition_variable>
#include <deque>
#include <fstream>
#include <iostream>
#include <map>
#include <mutex>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "examples/server/Order.h"
#include "examples/server/ShopLogger.h"
#include "log4vrk/log4vrk.h"

namespace {

// The orders on their way from the intake to the workers.
class Queue {
 public:
  void put(Order order) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_orders.push_back(std::move(order));
    m_changed.notify_one();
  }

  void close() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_closed = true;
    m_changed.notify_all();
  }

  // The next order, or nothing when the shop is closed.
  std::optional<Order> take() {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return m_closed || !m_orders.empty(); });
    if (m_orders.empty()) return std::nullopt;
    Order order = std::move(m_orders.front());
    m_orders.pop_front();
    return order;
  }

 private:
  std::mutex m_mutex;
  std::condition_variable m_changed;
  std::deque<Order> m_orders;
  bool m_closed = false;
};

class Stock {
 public:
  bool take(const Order& order) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    const auto article = m_articles.find(order.article);
    if (article == m_articles.end()) {
      LOG4VRK_ERROR(m_logger, "no such article: " << order.article << ", ordered by " << order.customer);
      return false;
    }
    if (article->second < order.quantity) {
      LOG4VRK_WARN(m_logger,
                   "only " << article->second << " x " << order.article << " left, " << order.quantity << " wanted");
      return false;
    }
    article->second -= order.quantity;
    return true;
  }

 private:
  LOGLogger* const m_logger = LOGManager::getLogger("shop.stock");
  std::mutex m_mutex;
  std::map<std::string, int> m_articles{{"coffee", 30}, {"tea", 30},    {"mug", 20},   {"filter", 40},
                                        {"grinder", 4}, {"kettle", 10}, {"spoon", 50}, {"tray", 15}};
};

// The document makes this logger with the shop's own factory.
ShopLogger& shopLogger(const char* name) { return dynamic_cast<ShopLogger&>(*LOGManager::getLogger(name)); }

std::optional<Order> parse(const std::string& line) {
  std::istringstream fields(line);
  Order order;
  std::string quantity;
  std::getline(fields, order.number, ',');
  std::getline(fields, order.customer, ',');
  std::getline(fields, order.article, ',');
  std::getline(fields, quantity);
  if (quantity.empty() || quantity.find_first_not_of("0123456789") != std::string::npos) return std::nullopt;
  order.quantity = std::stoi(quantity);
  return order;
}

void readOrders(std::istream& file, Queue& queue) {
  ShopLogger& logger = shopLogger("shop.orders.intake");
  std::string line;
  std::getline(file, line);  // the column names
  for (int number = 2; std::getline(file, line); ++number) {
    if (std::optional<Order> order = parse(line)) {
      logger.step("read", *order);
      queue.put(std::move(*order));
    } else {
      LOG4VRK_WARN(&logger, "line " << number << " is no order: " << line);
    }
    if (number % 20 == 0) LOG4VRK_INFO(LOGManager::getLogger("shop.health"), "the shop is open");
  }
  queue.close();
}

void work(const std::string& name, Queue& queue, Stock& stock) {
  LOGNDC::push(name.c_str());
  ShopLogger& logger = shopLogger("shop.orders.worker");
  LOGLogger* const audit = LOGManager::getLogger("shop.audit");
  while (const std::optional<Order> order = queue.take()) {
    logger.step("working on", *order);
    if (!stock.take(*order)) continue;
    Purchase purchase(*order);
    audit->info(&purchase);
    logger.step("done with", *order);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: orders <log.xml> <orders.csv>\n";
    return 2;
  }
  const std::string program(argv[0]);
  VRKConfigurationFactory::getInstance().addLibraryDirectory(program.substr(0, program.rfind('/')).c_str());
  std::ifstream file(argv[2]);
  if (!file) {
    std::cerr << "orders: cannot read " << argv[2] << "\n";
    return 1;
  }
  if (LOG4VRKConfigurator::initialize(argv[1]) != 1) {
    std::cerr << LOG4VRKConfigurator::getProblems().toUtf8() << "orders: " << argv[1] << " was not applied\n";
    return 1;
  }

  LOGLogger* const logger = LOGManager::getLogger("shop");
  logger->info("opening the shop");
  Queue queue;
  Stock stock;
  std::vector<std::thread> threads;
  threads.emplace_back([&] { readOrders(file, queue); });
  for (int i = 0; i < 3; ++i) threads.emplace_back([&, i] { work("worker " + std::to_string(i + 1), queue, stock); });
  for (std::thread& thread : threads) thread.join();
  logger->info("closing the shop");
  LOG4VRKConfigurator::shutdown();
}
