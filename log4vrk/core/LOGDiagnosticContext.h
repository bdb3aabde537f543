// One entry of a thread's nested context.

#pragma once

#include "log4vrk/core/LOGObject.h"
#include "log4vrk/platform/VRKExport.h"

/// The entry's own text, and its full text: those of all entries below it and its own, oldest first, joined by blanks.
///
/// Thread safety: immutable.
class LOG4VRK_EXPORT LOGDiagnosticContext : public LOGObject {
 public:
  LOGDiagnosticContext(const I18NString& message, const I18NString& fullMessage);
  LOGDiagnosticContext(const LOGDiagnosticContext&) = default;
  LOGDiagnosticContext& operator=(const LOGDiagnosticContext&) = delete;
  ~LOGDiagnosticContext() override;

  const I18NString& getMessage() const { return m_message; }
  const I18NString& getFullMessage() const { return m_fullMessage; }
  LOGDiagnosticContext* clone() const override;

 private:
  const I18NString m_message;
  const I18NString m_fullMessage;
};
