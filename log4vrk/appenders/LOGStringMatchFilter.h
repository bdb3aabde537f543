// The filter that decides on events whose message contains a text.

#pragma once

#include "log4vrk/core/LOGFilter.h"
#include "log4vrk/platform/VRKList.h"

/// Accepts events whose rendered message contains a text, or denies them when accept-on-match is 0. It is neutral about
/// all others, and about every event until a text is set. Case matters.
///
/// Thread safety: as LOGFilter. The message is rendered for it, which may run application code.
/// Errors: a null event raises VRKAssertError; what rendering raises goes to the caller.
class LOG4VRK_EXPORT LOGStringMatchFilter : public LOGFilter {
 public:
  static const I18NString& STRING_TO_MATCH_OPTION;
  static const I18NString& ACCEPT_ON_MATCH_OPTION;

  LOGStringMatchFilter();
  ~LOGStringMatchFilter() override;

  int decide(LOGLoggingEvent* event) override;
  LOGStringMatchFilter* clone() const override;

  void setStringToMatch(const I18NString& text) { m_stringToMatch = text; }
  const I18NString& getStringToMatch() const { return m_stringToMatch; }
  void setAcceptOnMatch(int accept) { m_acceptOnMatch = accept; }
  int getAcceptOnMatch() const { return m_acceptOnMatch; }

  /// Takes the two names above, in any case. The flag is "true" or "false" in any case; another text leaves it alone.
  /// Other names are ignored.
  void setOption(const I18NString& name, const I18NString& value);
  /// The names of the options, a new list owned by the caller.
  VRKList<I18NString>* getOptionStrings() const;

 private:
  int m_acceptOnMatch = 1;
  I18NString m_stringToMatch;
};
