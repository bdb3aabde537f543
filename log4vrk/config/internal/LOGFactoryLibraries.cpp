#include "log4vrk/config/internal/LOGFactoryLibraries.h"

#include <atomic>
#include <map>

#include "log4vrk/platform/VRKConfigurationFactory.h"
#include "log4vrk/platform/VRKThrowable.h"
#include "log4vrk/platform/internal/VRKDynamicLibrary.h"

namespace {

using Function = LOGLoggerFactory* (*)();
using Factories = std::map<I18NString, LOGLoggerFactory*>;

Factories& g_factories = vrkImmortal<Factories>();
std::atomic<LOGLoggerFactory*> g_current{nullptr};

LOGLoggerFactory* load(const I18NString& className) {
  const I18NString path = VRKConfigurationFactory::getInstance().resolveLibrary("lib" + className + ".so");
  void* const function = VRKDynamicLibrary::symbol(VRKDynamicLibrary::open(path), "getLoggerFactory");
  VRK_ASSERT_AS(function != nullptr, "VRK_ASSERT_NAMED(function != NULL, \"getLoggerFactory\");", __LINE__);
  return reinterpret_cast<Function>(function)();
}

}  // namespace

void LOGFactoryLibraries::use(const I18NString& className) {
  auto known = g_factories.find(className);
  if (known == g_factories.end()) known = g_factories.emplace(className, load(className)).first;
  g_current = known->second;
}

LOGLoggerFactory* LOGFactoryLibraries::current() { return g_current; }
