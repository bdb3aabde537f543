// Where in the program a log call stands.

#pragma once

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

/// Log calls do not record where they stand, so nothing is known here: class, file, line and method are "?", and the
/// full information is empty.
///
/// Thread safety: immutable.
class LOG4VRK_EXPORT LOGLocationInfo {
 public:
  static const I18NString& m_NA;  // "?"

  LOGLocationInfo() = default;
  /// The class name is accepted for existing callers and not used.
  explicit LOGLocationInfo(const I18NString& /*fqnOfCallingClass*/) {}

  const I18NString& getClassName() const { return m_NA; }
  const I18NString& getFileName() const { return m_NA; }
  const I18NString& getLineNumber() const { return m_NA; }
  const I18NString& getMethodName() const { return m_NA; }
  const I18NString& getFullInfo() const { return m_fullInfo; }

 private:
  I18NString m_fullInfo;
};
