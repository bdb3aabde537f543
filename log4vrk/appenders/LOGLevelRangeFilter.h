// The filter that denies events outside a range of levels.

#pragma once

#include "log4vrk/core/LOGFilter.h"
#include "log4vrk/platform/VRKList.h"

class LOGLevel;

/// Denies events below the minimum and events above the maximum; a bound that is not set denies nothing. It is neutral
/// about the other events, or accepts them when accept-on-match is not 0.
///
/// Thread safety: as LOGFilter.
/// Ownership: both levels are lent, and must outlive the filter.
/// Errors: while a bound is set, an event that is null or has no level raises VRKAssertError.
class LOG4VRK_EXPORT LOGLevelRangeFilter : public LOGFilter {
 public:
  static const I18NString& LEVEL_MIN_OPTION;
  static const I18NString& LEVEL_MAX_OPTION;
  static const I18NString& ACCEPT_ON_MATCH_OPTION;

  LOGLevelRangeFilter();
  ~LOGLevelRangeFilter() override;

  int decide(LOGLoggingEvent* event) override;
  LOGLevelRangeFilter* clone() const override;

  /// Null unsets the bound.
  void setLevelMin(LOGLevel* level) { m_levelMin = level; }
  LOGLevel* getLevelMin() const { return m_levelMin; }
  /// Null unsets the bound.
  void setLevelMax(LOGLevel* level) { m_levelMax = level; }
  LOGLevel* getLevelMax() const { return m_levelMax; }
  void setAcceptOnMatch(int accept) { m_acceptOnMatch = accept; }
  int getAcceptOnMatch() const { return m_acceptOnMatch; }

  /// Does not do what the names say, on purpose, because existing programs rely on it: "LevelMin" sets the minimum,
  /// "LevelMax" the accept flag, "AcceptOnMatch" nothing, and any other name the maximum. Names count in any case. The
  /// setters above do what they say, and documents use those.
  void setOption(const I18NString& name, const I18NString& value);
  /// The names of the options, a new list owned by the caller.
  VRKList<I18NString>* getOptionStrings() const;

 private:
  int m_acceptOnMatch = 0;
  LOGLevel* m_levelMin = nullptr;
  LOGLevel* m_levelMax = nullptr;
};
