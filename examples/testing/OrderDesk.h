// A class that logs, for a test to look at: a desk that takes orders while there is stock.

#pragma once

#include <mutex>
#include <string>
#include <thread>

#include "log4vrk/log.h"

class OrderDesk {
 public:
  explicit OrderDesk(int stock) : m_stock(stock) {}

  bool take(const std::string& order, int quantity) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    LOG4VRK_CONTEXT("order", order);
    LOG4VRK_DEBUG(m_logger, "in stock: " << m_stock);
    if (quantity > m_stock) {
      LOG4VRK_WARN_KV(m_logger, "only " << m_stock << " left", "wanted", quantity);
      return false;
    }
    m_stock -= quantity;
    m_logger->info("taken");
    return true;
  }

  // Returns at once.
  std::thread refill(int quantity) {
    return std::thread([this, quantity] {
      const std::lock_guard<std::mutex> lock(m_mutex);
      m_stock += quantity;
      LOG4VRK_INFO(LOGManager::getLogger("shop.stock"), "refilled by " << quantity);
    });
  }

 private:
  LOGLogger* const m_logger = LOGManager::getLogger("shop.orders");
  std::mutex m_mutex;
  int m_stock;
};
