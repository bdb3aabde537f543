// What a thread is called in log lines.

#pragma once

#include <string>

#include "log4vrk/platform/I18NString.h"

/// The decimal number of a thread, as the system's tools show it, in both encodings. Made when somebody first asks.
///
/// Thread safety: each thread has its own.
class LOGThreadName {
 public:
  const I18NString& text() {
    if (m_text.isEmpty()) make();
    return m_text;
  }
  const std::string& utf8() {
    if (m_text.isEmpty()) make();
    return m_utf8;
  }
  /// Whether `text` is the very text that text() returns.
  bool owns(const I18NString& text) const { return &text == &m_text; }
  void forget() {
    m_text.clear();
    m_utf8.clear();
  }

 private:
  void make();

  I18NString m_text;
  std::string m_utf8;
};
