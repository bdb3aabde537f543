#include "log4vrk/core/LOGLevel.h"

#include <limits>
#include <set>

#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/platform/I18NLocale.h"
#include "log4vrk/platform/VRKThrowable.h"
#include "log4vrk/platform/internal/VRKMutex.h"

// A level that needs no constructor at run time and is never destroyed, so that static objects of a program can log in
// their constructors and destructors. Only its name is constructed, when the library is loaded, which is before any
// code of a program that is linked to it.
struct LOGLevelSingleton {
  union Storage {
    constexpr Storage(std::int32_t rank, const I18NString* name, std::int32_t syslog) : level(rank, name, syslog) {}
    ~Storage() {}
    LOGLevel level;
  };
};

namespace {

// A text that is never destroyed, and whose address is known before it is built.
union Name {
  explicit Name(const char* text) : value(text) {}
  ~Name() {}
  I18NString value;
};

extern Name g_all, g_debug, g_info, g_warn, g_error, g_fatal, g_off;

constexpr std::int32_t LOWEST = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t HIGHEST = std::numeric_limits<std::int32_t>::max();

LOGLevelSingleton::Storage g_allLevel{LOWEST, &g_all.value, 7};
LOGLevelSingleton::Storage g_debugLevel{LOGLevel::DEBUG_RANK, &g_debug.value, 7};
LOGLevelSingleton::Storage g_infoLevel{LOGLevel::INFO_RANK, &g_info.value, 6};
LOGLevelSingleton::Storage g_warnLevel{LOGLevel::WARN_RANK, &g_warn.value, 4};
LOGLevelSingleton::Storage g_errorLevel{LOGLevel::ERROR_RANK, &g_error.value, 3};
LOGLevelSingleton::Storage g_fatalLevel{LOGLevel::FATAL_RANK, &g_fatal.value, 0};
LOGLevelSingleton::Storage g_offLevel{HIGHEST, &g_off.value, 0};

Name g_all("ALL"), g_debug("DEBUG"), g_info("INFO"), g_warn("WARN"), g_error("ERROR"), g_fatal("FATAL"), g_off("OFF");

// In the order in which texts are compared.
constexpr LOGLevel* SINGLETONS[] = {&g_allLevel.level,   &g_debugLevel.level, &g_infoLevel.level, &g_warnLevel.level,
                                    &g_errorLevel.level, &g_fatalLevel.level, &g_offLevel.level};

const I18NString* keptName(const char* name) {
  static VRKMutex mutex;
  static std::set<I18NString>& names = vrkImmortal<std::set<I18NString>>();
  const LOGLeafGuard guard(mutex);
  return &*names.emplace(name).first;
}

}  // namespace

LOGLevel* const LOGLevel::ALL_OBJ = &g_allLevel.level;
LOGLevel* const LOGLevel::DEBUG_OBJ = &g_debugLevel.level;
LOGLevel* const LOGLevel::INFO_OBJ = &g_infoLevel.level;
LOGLevel* const LOGLevel::WARN_OBJ = &g_warnLevel.level;
LOGLevel* const LOGLevel::ERROR_OBJ = &g_errorLevel.level;
LOGLevel* const LOGLevel::FATAL_OBJ = &g_fatalLevel.level;
LOGLevel* const LOGLevel::OFF_OBJ = &g_offLevel.level;

// 50000 for the syslog priority too: on purpose, existing programs compare with it.
LOGLevel::LOGLevel() : LOGLevel(50000L, "", 50000L) {}

LOGLevel::LOGLevel(long level, const char* name, long syslogEquivalent)
    : m_level(static_cast<std::int32_t>(level)),
      m_syslogEquivalent(static_cast<std::int32_t>(syslogEquivalent)),
      m_name(keptName(name)) {}

LOGLevel::~LOGLevel() = default;

LOGLevel* LOGLevel::toLevel(const I18NString& name) { return toLevel(name, DEBUG_OBJ); }

LOGLevel* LOGLevel::toLevel(const I18NString& name, LOGLevel* defaultLevel) {
  for (LOGLevel* level : SINGLETONS) {
    if (vrkEqualIgnoringAsciiCase(name, level->toString())) return level;
  }
  return defaultLevel;
}

LOGLevel* LOGLevel::toLevel(long rank) { return toLevel(rank, DEBUG_OBJ); }

LOGLevel* LOGLevel::toLevel(long rank, LOGLevel* defaultLevel) {
  for (LOGLevel* level : SINGLETONS) {
    if (level->m_level == rank) return level;
  }
  return defaultLevel;
}

bool LOGLevel::isGreaterOrEqual(const LOGLevel* other) const {
  VRK_ASSERT_AS(other != nullptr, "VRK_ASSERT(otherLevel);", __LINE__);
  return m_level >= other->m_level;
}
