// libBoxOffice.so: a renderer and a factory of loggers. A document names both by the name of the library.

#include "examples/extending/Booking.h"
#include "log4vrk/core/LOGLoggerFactory.h"
#include "log4vrk/core/LOGObjectRenderer.h"

namespace {

// Several threads may render at once: there is nothing in it that changes.
class BookingRenderer : public LOGObjectRenderer {
 public:
  BookingRenderer() { instance("BookingRenderer"); }

  // The text is new, and the library deletes it.
  I18NString* doRender(LOGObject* object) override {
    const auto& booking = static_cast<const Booking&>(*object);
    return new I18NString((std::to_string(booking.seats()) + " seats for " + booking.film()).c_str());
  }
};

// The repository owns the loggers that it makes.
class BookingLoggerFactory : public LOGLoggerFactory {
 public:
  LOGLogger* makeNewLoggerInstance(const I18NString& name) override { return new BookingLogger(name); }
};

}  // namespace

// A new one for each document that names it; the library keeps it.
extern "C" LOG4VRK_EXPORT LOGObjectRenderer* getRenderer() { return new BookingRenderer; }

// The factory stays this library's.
extern "C" LOG4VRK_EXPORT LOGLoggerFactory* getLoggerFactory() {
  static BookingLoggerFactory factory;
  return &factory;
}
