// The filter for a text within the message.

#pragma once

#include "log4vrk/core/LOGFilter.h"
#include "log4vrk/platform/VRKList.h"

/// Accepts events whose rendered message contains a text, or denies them when accept-on-match is 0; is neutral about
/// all others. Case matters. Without a text to look for every event is neutral.
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

  /// By the names above, in any case; others are ignored.
  void setOption(const I18NString& name, const I18NString& value);
  /// The names of the options, a new list owned by the caller.
  VRKList<I18NString>* getOptionStrings() const;

 private:
  int m_acceptOnMatch = 1;
  I18NString m_stringToMatch;
};
