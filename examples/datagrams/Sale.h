// What the till logs: a message with fields, which a renderer turns into text, or into bytes for a receiver of objects.

#pragma once

#include "log4vrk/core/LOGObject.h"
#include "log4vrk/platform/I18NString.h"

// A message class with fields of its own overrides clone(), because an event keeps a clone.
class Sale : public LOGObject {
 public:
  Sale(const I18NString& article, int quantity, long long cents)
      : m_article(article), m_quantity(quantity), m_cents(cents) {
    instance("Sale");
  }

  Sale* clone() const override { return new Sale(*this); }
  const I18NString& article() const { return m_article; }
  int quantity() const { return m_quantity; }
  long long cents() const { return m_cents; }

 private:
  I18NString m_article;
  int m_quantity;
  long long m_cents;
};
