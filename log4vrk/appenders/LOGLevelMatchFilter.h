// The filter that decides on the events of one level.

#pragma once

#include "log4vrk/core/LOGFilter.h"

class LOGLevel;

/// Accepts events of one level, or denies them when accept-on-match is 0. It is neutral about all others, and about
/// every event until a level is set. Two levels are the same when rank and syslog value are, whatever their names.
///
/// Thread safety: as LOGFilter.
/// Errors: once a level is set, an event that is null or has no level raises VRKAssertError.
class LOG4VRK_EXPORT LOGLevelMatchFilter : public LOGFilter {
 public:
  static const I18NString& LEVEL_TO_MATCH_OPTION;
  static const I18NString& ACCEPT_ON_MATCH_OPTION;

  LOGLevelMatchFilter();
  ~LOGLevelMatchFilter() override;

  int decide(LOGLoggingEvent* event) override;
  LOGLevelMatchFilter* clone() const override;

  /// Takes what LOGOptionConverter::toLevel() reads. An unknown name unsets the level.
  void setLevelToMatch(const I18NString& name);
  /// The level's name, new and owned by the caller; null without a level.
  I18NString* getLevelToMatch() const;
  void setAcceptOnMatch(int accept) { m_acceptOnMatch = accept; }
  int getAcceptOnMatch() const { return m_acceptOnMatch; }

 private:
  int m_acceptOnMatch = 1;
  LOGLevel* m_levelToMatch = nullptr;  // one of the library's own
};
