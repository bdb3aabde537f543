#include "log4vrk/platform/VRKThrowable.h"

#include <cstring>
#include <string>

namespace {

// Made at load: who asks for it may have no memory.
const I18NString& g_none = vrkImmortal<I18NString>();

std::string_view withoutExtension(const char* source) {
  std::string_view name(source);
  return name.substr(0, name.rfind('.'));
}

// A description is one line of a log, whatever a text in it holds.
void appendOnOneLine(std::string& out, std::string_view text) {
  for (char c : text) out += (c == '\n' || c == '\r') ? ' ' : c;
}

// In English whatever the locale, so that a text can be looked up and is valid UTF-8.
std::string systemErrorText(int errorCode, const I18NString& subject) {
  const char* const description = strerrordesc_np(errorCode);
  return subject.toUtf8() + ": " + (description != nullptr ? description : "Unknown error") + " (" +
         std::to_string(errorCode) + ")";
}

}  // namespace

struct VRKThrowable::Details {
  Details(const char* className, const I18NString& what, const char* place, int at)
      : text(what), source(withoutExtension(place)), line(at) {
    description = className;
    description += ": ";
    appendOnOneLine(description, text.toUtf8());
    addPlace("at", place, at);
  }

  void addPlace(const char* entry, const char* place, int at) {
    description += ", ";
    description += entry;
    description += ' ';
    description += withoutExtension(place);
    description += ':';
    description += std::to_string(at);
  }

  I18NString text;
  I18NString source;
  int line;
  std::string description;
};

VRKThrowable::VRKThrowable(const I18NString& text, const char* source, int line)
    : VRKThrowable("VRKThrowable", text, source, line) {}

VRKThrowable::VRKThrowable(const char* className, const I18NString& text, const char* source, int line) noexcept
    : m_className(className) {
  describe(text, source, line);
}

VRKThrowable::VRKThrowable(const char* className, const char* utf8Text, const char* source, int line) noexcept
    : m_className(className) {
  describe(utf8Text, source, line);
}

// An error often comes of a shortage. What cannot be told then is left out, since raising another error from here would
// end the process.
template <typename Text>
void VRKThrowable::describe(const Text& text, const char* source, int line) noexcept {
  try {
    m_details = std::make_shared<Details>(m_className, text, source, line);
  } catch (const std::exception&) {
    // No memory, or a text too long to convert.
  }
}

VRKThrowable::~VRKThrowable() = default;

const char* VRKThrowable::what() const noexcept { return m_details ? m_details->description.c_str() : m_className; }

const I18NString& VRKThrowable::getText() const noexcept { return m_details ? m_details->text : g_none; }

const I18NString& VRKThrowable::getSource() const noexcept { return m_details ? m_details->source : g_none; }

int VRKThrowable::getLine() const noexcept { return m_details ? m_details->line : 0; }

void VRKThrowable::addBackTrace(const char* entry, const char* source, int line) noexcept {
  if (!m_details) return;
  try {
    m_details->addPlace(entry, source, line);
  } catch (const std::exception&) {
    // A shorter trace is better than a second error.
  }
}

I18NRuntimeError::I18NRuntimeError(const I18NString& text, const char* source, int line)
    : VRKThrowable("I18NRuntimeError", text, source, line) {}
I18NRuntimeError::~I18NRuntimeError() = default;

VRKAssertError::VRKAssertError(const I18NString& text, const char* source, int line)
    : VRKThrowable("VRKAssertError", text, source, line) {}
VRKAssertError::~VRKAssertError() = default;

VRKAssertError::VRKAssertError(const char* text, const char* source, int line) noexcept
    : VRKThrowable("VRKAssertError", text, source, line) {}

void VRKAssertError::raise(const char* text, const char* source, int line) { throw VRKAssertError(text, source, line); }

VRKOutOfMemoryError::VRKOutOfMemoryError(const char* source, int line) noexcept
    : VRKThrowable("VRKOutOfMemoryError", "out of memory", source, line) {}
VRKOutOfMemoryError::~VRKOutOfMemoryError() = default;

VRKStdExceptionError::VRKStdExceptionError(const std::exception& cause, const char* source, int line) noexcept
    : VRKThrowable("VRKStdExceptionError", cause.what(), source, line) {}
VRKStdExceptionError::~VRKStdExceptionError() = default;

VRKSystemError::VRKSystemError(int errorCode, const I18NString& subject, const char* location, int line)
    : VRKThrowable("VRKSystemError", I18NString(std::string_view(systemErrorText(errorCode, subject))), location, line),
      m_errorCode(errorCode) {}
VRKSystemError::~VRKSystemError() = default;

void vrkRaiseTranslated(const char* source, int line) {
  try {
    throw;
  } catch (VRKThrowable& error) {
    error.addBackTrace("VRK_RETHROW", source, line);
    throw;
  } catch (const std::bad_alloc&) {
    throw VRKOutOfMemoryError(source, line);
  } catch (const std::exception& error) {
    throw VRKStdExceptionError(error, source, line);
  }
}
