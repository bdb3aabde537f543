#include "log4vrk/core/internal/LOGAppenderBundle.h"

#include "log4vrk/core/LOGAppenderSkeleton.h"
#include "log4vrk/core/LOGErrorHandler.h"
#include "log4vrk/core/LOGFilter.h"
#include "log4vrk/core/LOGLayout.h"
#include "log4vrk/platform/internal/VRKNoCancellation.h"

std::shared_ptr<LOGAppenderBundle> LOGAppenderBundle::make(std::unique_ptr<LOGAppenderSkeleton> appender) {
  std::shared_ptr<LOGAppenderBundle> bundle(new LOGAppenderBundle(std::move(appender)));
  bundle->m_appender->m_bundle = bundle;
  return bundle;
}

LOGAppenderBundle::LOGAppenderBundle(std::unique_ptr<LOGAppenderSkeleton> appender) : m_appender(std::move(appender)) {}

LOGAppenderBundle::~LOGAppenderBundle() {
  const VRKNoCancellation finished;
  try {
    m_appender->finalize();
  } catch (...) {
    // close() has written its line, and nobody is left to raise it to.
  }
}

void LOGAppenderBundle::own(std::unique_ptr<LOGLayout> layout) { m_layouts.push_back(std::move(layout)); }

void LOGAppenderBundle::own(std::unique_ptr<LOGFilter> filter) { m_filters.push_back(std::move(filter)); }

void LOGAppenderBundle::own(std::shared_ptr<LOGErrorHandler> handler) { m_handlers.push_back(std::move(handler)); }

void LOGAppenderBundle::own(std::shared_ptr<LOGAppenderBundle> other) { m_others.push_back(std::move(other)); }

std::shared_ptr<LOGErrorHandler> LOGAppenderBundle::find(const LOGErrorHandler* handler) const {
  for (const std::shared_ptr<LOGErrorHandler>& mine : m_handlers) {
    if (mine.get() == handler) return mine;
  }
  return nullptr;
}
