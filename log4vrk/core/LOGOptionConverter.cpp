#include "log4vrk/core/LOGOptionConverter.h"

#include "log4vrk/core/LOGLevel.h"
#include "log4vrk/core/LOGLogLog.h"
#include "log4vrk/platform/I18NLocale.h"
#include "log4vrk/platform/VRKThrowable.h"

int LOGOptionConverter::toBoolean(const I18NString& value, int defaultValue) {
  if (vrkEqualIgnoringCase(value, "TRUE")) return 1;
  if (vrkEqualIgnoringCase(value, "FALSE")) return 0;
  return defaultValue;
}

LOGLevel* LOGOptionConverter::toLevel(const I18NString& value, LOGLevel* defaultLevel) {
  if (value.isEmpty()) return defaultLevel;
  const std::size_t hash = value.findLast("#");
  const I18NString level = value.substring(0, hash);
  if (vrkEqualIgnoringCase(level, "NULL")) return nullptr;
  if (hash == I18NString::npos) return LOGLevel::toLevel(value, defaultLevel);

  const I18NString levelClass = value.substring(hash + 1);
  LOGLogLog::debug("toLevel:class=[" + levelClass + "]:pri=[" + level + "]");
  if (levelClass != "LOGLevel") return nullptr;
  try {
    return LOGLevel::toLevel(level);
  }
  VRK_RETHROW_FORCED_UNWIND
  catch (...) {
    LOGLogLog::warn("custom level class [" + levelClass + "] not found.");
    return defaultLevel;
  }
}
