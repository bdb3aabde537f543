// The filter for a range of levels.

#pragma once

#include "log4vrk/core/LOGFilter.h"
#include "log4vrk/platform/VRKList.h"

class LOGLevel;

/// Denies events below the minimum and above the maximum, where these are set. Is neutral about the others, or accepts
/// them when accept-on-match is not 0.
class LOG4VRK_EXPORT LOGLevelRangeFilter : public LOGFilter {
 public:
  static const I18NString& LEVEL_MIN_OPTION;
  static const I18NString& LEVEL_MAX_OPTION;
  static const I18NString& ACCEPT_ON_MATCH_OPTION;

  LOGLevelRangeFilter();
  ~LOGLevelRangeFilter() override;

  int decide(LOGLoggingEvent* event) override;
  LOGLevelRangeFilter* clone() const override;

  void setLevelMin(LOGLevel* level) { m_levelMin = level; }
  LOGLevel* getLevelMin() const { return m_levelMin; }
  void setLevelMax(LOGLevel* level) { m_levelMax = level; }
  LOGLevel* getLevelMax() const { return m_levelMax; }
  void setAcceptOnMatch(int accept) { m_acceptOnMatch = accept; }
  int getAcceptOnMatch() const { return m_acceptOnMatch; }

  /// Uneven on purpose, existing programs rely on it: "LevelMin" sets the minimum, "LevelMax" the accept flag,
  /// "AcceptOnMatch" nothing, any other name the maximum. The setters above do what they say.
  void setOption(const I18NString& name, const I18NString& value);
  /// The names of the options, a new list owned by the caller.
  VRKList<I18NString>* getOptionStrings() const;

 private:
  int m_acceptOnMatch = 0;
  LOGLevel* m_levelMin = nullptr;
  LOGLevel* m_levelMax = nullptr;
};
