// Comparison of texts that ignores case.

#pragma once

#include "log4vrk/platform/I18NString.h"

/// Compares texts. No comparison depends on the language: "ignoring case" is Unicode's full case folding in every
/// locale, so that the names of options match on a Turkish machine, too.
///
/// Thread safety: immutable.
class LOG4VRK_EXPORT I18NLocale {
 public:
  /// The name is only kept for getName(). Null stands for the default locale and gives the empty name.
  explicit I18NLocale(const char* name = nullptr) : m_name(name) {}

  const I18NString& getName() const { return m_name; }

  /// Negative, zero or positive when `a` sorts before, with or after `b` in the order of UTF-16 units.
  int compare(const I18NString& a, const I18NString& b) const { return a.view().compare(b.view()); }
  /// The same of the case-folded texts.
  int compareIgnoreCase(const I18NString& a, const I18NString& b) const;

 private:
  I18NString m_name;
};

/// True when the texts are equal but for case, by full case folding.
LOG4VRK_EXPORT bool vrkEqualIgnoringCase(const I18NString& a, const I18NString& b);
/// True when the texts are equal but for the case of ASCII letters, as strcasecmp finds in the C locale.
LOG4VRK_EXPORT bool vrkEqualIgnoringAsciiCase(const I18NString& a, const I18NString& b);
