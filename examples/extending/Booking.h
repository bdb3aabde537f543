// What the cinema logs: a message with fields of its own, and a logger that knows it.

#pragma once

#include <string>
#include <utility>

#include "log4vrk/core/LOGLogger.h"
#include "log4vrk/core/LOGObject.h"

// The name that instance() gives is the one that a document names as the rendered class. clone() is overridden because
// an event keeps a clone of its message.
class Booking : public LOGObject {
 public:
  Booking(std::string film, int seats) : m_film(std::move(film)), m_seats(seats) { instance("Booking"); }

  Booking* clone() const override { return new Booking(*this); }
  const std::string& film() const { return m_film; }
  int seats() const { return m_seats; }

 private:
  std::string m_film;
  int m_seats;
};

class BookingLogger : public LOGLogger {
 public:
  explicit BookingLogger(const I18NString& name) : LOGLogger(name) { instance("BookingLogger"); }

  void booked(const std::string& film, int seats) {
    if (!isInfoEnabled()) return;
    Booking booking(film, seats);
    info(&booking);
  }
};
