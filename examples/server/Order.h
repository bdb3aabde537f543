// What the order server logs: messages with fields, which renderers turn into text.

#pragma once

#include <string>
#include <utility>

#include "log4vrk/core/LOGObject.h"

struct Order {
  std::string number;
  std::string customer;
  std::string article;
  int quantity = 0;
};

// Something has happened to an order. A message class with fields of its own overrides clone(), because an event keeps
// a clone.
class OrderStep : public LOGObject {
 public:
  OrderStep(std::string what, Order order) : m_what(std::move(what)), m_order(std::move(order)) {
    instance("OrderStep");
  }

  OrderStep* clone() const override { return new OrderStep(*this); }
  const std::string& what() const { return m_what; }
  const Order& order() const { return m_order; }

 private:
  std::string m_what;
  Order m_order;
};

// An order has been sold; for the audit.
class Purchase : public LOGObject {
 public:
  explicit Purchase(Order order) : m_order(std::move(order)) { instance("Purchase"); }

  Purchase* clone() const override { return new Purchase(*this); }
  const Order& order() const { return m_order; }

 private:
  Order m_order;
};
