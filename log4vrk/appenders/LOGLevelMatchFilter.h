// The filter for one level.

#pragma once

#include "log4vrk/core/LOGFilter.h"

class LOGLevel;

/// Accepts events of one level, or denies them when accept-on-match is 0. Neutral about others, and without a level.
class LOG4VRK_EXPORT LOGLevelMatchFilter : public LOGFilter {
 public:
  static const I18NString& LEVEL_TO_MATCH_OPTION;
  static const I18NString& ACCEPT_ON_MATCH_OPTION;

  LOGLevelMatchFilter();
  ~LOGLevelMatchFilter() override;

  int decide(LOGLoggingEvent* event) override;
  LOGLevelMatchFilter* clone() const override;

  /// As LOGOptionConverter::toLevel() reads it; an unknown name is no level.
  void setLevelToMatch(const I18NString& name);
  /// The level's name, new and owned by the caller; null without a level.
  I18NString* getLevelToMatch() const;
  void setAcceptOnMatch(int accept) { m_acceptOnMatch = accept; }
  int getAcceptOnMatch() const { return m_acceptOnMatch; }

 private:
  int m_acceptOnMatch = 1;
  LOGLevel* m_levelToMatch = nullptr;
};
