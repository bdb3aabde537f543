// A logger of the order server's own kind, which knows what orders are.

#pragma once

#include <atomic>

#include "examples/server/Order.h"
#include "log4vrk/core/LOGLogger.h"

class ShopLogger : public LOGLogger {
 public:
  explicit ShopLogger(const I18NString& name) : LOGLogger(name) { instance("ShopLogger"); }

  void step(const char* what, const Order& order) {
    ++m_steps;
    if (!isDebugEnabled()) return;
    OrderStep message(what, order);
    debug(&message);
  }
  long steps() const { return m_steps; }

 private:
  std::atomic<long> m_steps{0};
};
