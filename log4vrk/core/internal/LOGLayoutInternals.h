// What the layouts of the library's own classes can do for the library alone.

#pragma once

#include <string_view>
#include <typeinfo>

#include "log4vrk/core/LOGLayout.h"

class LOGLoggingEvent;

/// A table of functions, for the reason that LOGAppenderInternals gives. They count for layouts of exactly that class.
struct LOGLayoutInternals {
  const std::type_info* type;
  /// format() in UTF-8, as appenders write it. The text is valid until the thread or the layout formats again. The
  /// caller holds the layout's lock.
  std::string_view (*format)(LOGLayout& layout, LOGLoggingEvent* event);
  /// The same of an event whose message is a text and nothing else, without the layout's lock, in memory of the
  /// thread's.
  std::string_view (*formatFast)(LOGLayout& layout, LOGLoggingEvent& event);
  /// The conversion pattern by which a pattern layout writes the same. Null: there is none.
  I18NString (*pattern)(LOGLayout& layout) = nullptr;

  /// Larger texts give their memory back once they have been used. In bytes.
  static constexpr std::size_t MOST_KEPT = 32 * 1024;

  /// For the constructors of these classes.
  static void set(LOGLayout& layout, const LOGLayoutInternals& internals) { layout.m_internals = &internals; }
  /// Null when the layout has only format().
  static const LOGLayoutInternals* of(const LOGLayout& layout) {
    const LOGLayoutInternals* const internals = layout.m_internals;
    return internals != nullptr && typeid(layout) == *internals->type ? internals : nullptr;
  }
  /// format() of any layout, in UTF-8. The caller holds the layout's lock until the text has been used.
  static std::string_view formatUtf8(LOGLayout& layout, LOGLoggingEvent* event);
};
