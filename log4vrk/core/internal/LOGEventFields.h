// The fields of an event, and those of the context in which it was logged.

#pragma once

#include <string_view>

#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/core/internal/LOGFields.h"

/// Both as rows of bytes (see LOGFields), valid as long as the event and the context.
struct LOGEventFields {
  explicit LOGEventFields(const LOGLoggingEvent& event) : context(event.contextBytes()), own(event.m_fields) {}

  bool isEmpty() const { return context.empty() && own.empty(); }

  /// visit(field) for those that count: of several with the same name the last, and the event's own before the
  /// context's.
  template <typename Visit>
  void eachOfContext(Visit visit) const {
    each(context, own, visit);
  }
  template <typename Visit>
  void eachOwn(Visit visit) const {
    each(own, {}, visit);
  }
  /// False when there is none of that name.
  bool find(std::string_view name, LOGFields::Field& found) const;

  const std::string_view context, own;

 private:
  static bool has(LOGFields::Reader reader, std::string_view name);

  // There are few fields, so that looking through those behind each is quicker than any table of names.
  template <typename Visit>
  static void each(std::string_view bytes, std::string_view behind, Visit visit) {
    LOGFields::Reader reader(bytes);
    for (LOGFields::Field field; reader.next(field);) {
      if (!has(reader, field.name) && !has(LOGFields::Reader(behind), field.name)) visit(field);
    }
  }
};
