// Comparison of texts that ignores case.

#pragma once

#include "log4vrk/platform/I18NString.h"

/// A language's rules for comparing text. Ignoring case is the same in every locale (full case folding), so that option
/// names match whatever the language of the machine.
///
/// Thread safety: immutable after construction.
class LOG4VRK_EXPORT I18NLocale {
 public:
  /// Null stands for the default locale. The name is kept for the caller; no comparison depends on it.
  explicit I18NLocale(const char* name = nullptr) : m_name(name) {}

  const I18NString& getName() const { return m_name; }

  /// Negative, zero or positive as `a` sorts before, with or after `b`, in code unit order.
  int compare(const I18NString& a, const I18NString& b) const { return a.view().compare(b.view()); }
  int compareIgnoreCase(const I18NString& a, const I18NString& b) const;

 private:
  I18NString m_name;
};

/// True when the texts differ in case at most.
LOG4VRK_EXPORT bool vrkEqualIgnoringCase(const I18NString& a, const I18NString& b);
/// True when the texts differ in the case of ASCII letters at most.
LOG4VRK_EXPORT bool vrkEqualIgnoringAsciiCase(const I18NString& a, const I18NString& b);
