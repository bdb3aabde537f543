#include "log4vrk/config/internal/LOGEventTrial.h"

#include <algorithm>

#include "log4vrk/core/LOGLevel.h"
#include "log4vrk/core/LOGLogger.h"
#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/platform/VRKThrowable.h"

using Model = LOGDocumentModel;

const std::vector<LOGLevel*>& LOGEventTrial::levels() {
  static const auto& all = vrkImmortal<std::vector<LOGLevel*>>(std::initializer_list<LOGLevel*>{
      LOGLevel::DEBUG_OBJ, LOGLevel::INFO_OBJ, LOGLevel::WARN_OBJ, LOGLevel::ERROR_OBJ, LOGLevel::FATAL_OBJ});
  return all;
}

LOGEventTrial::LOGEventTrial(const Model& model) {
  for (const auto& logger : model.loggers()) {
    const int lowest = std::max(model.levelSource(*logger).level->toInt(), model.threshold()->toInt());
    Levels enabled = 0;
    for (std::size_t i = 0; i < levels().size(); ++i) {
      if (levels()[i]->toInt() >= lowest) enabled |= 1U << i;
    }
    for (const Model::Reached& each : model.reachedFrom(*logger)) arrive(*each.reference->appender, enabled);
  }
}

// Ends, because what has arrived before is not passed on again.
void LOGEventTrial::arrive(const Appender& appender, Levels levels) {
  const Levels before = m_reaching[&appender];
  if ((levels & ~before) == 0) return;
  m_reaching[&appender] = before | levels;
  if (!appender.isContainer()) return;
  for (const Model::Reference& nested : appender.nested) {
    if (nested.appender != nullptr) arrive(*nested.appender, (before | levels) & passing(appender));
  }
}

LOGEventTrial::Levels LOGEventTrial::reaching(const Appender& appender) const {
  const auto found = m_reaching.find(&appender);
  return found != m_reaching.end() ? found->second : 0;
}

LOGEventTrial::Levels LOGEventTrial::passing(const Appender& appender) const {
  const auto known = m_passing.find(&appender);
  if (known != m_passing.end()) return known->second;
  const Filters filters = filtersOf(appender);
  Levels passing = filters.empty() ? ~0U : 0;
  for (std::size_t i = 0; i < levels().size() && !filters.empty(); ++i) {
    for (const I18NString& message : messagesFor(appender)) {
      bool isDenied = false;
      decide(filters, levels()[i], message, isDenied);
      if (!isDenied) passing |= 1U << i;
    }
  }
  return m_passing[&appender] = passing;
}

LOGEventTrial::Filters LOGEventTrial::filtersOf(const Appender& appender) {
  Filters filters;
  for (const Model::Part& part : appender.filters) {
    filters.push_back(LOGDocumentTables::makeFilter(part.className));
    for (const Model::Parameter& parameter : part.parameters) {
      if (parameter.counts()) parameter.known->set(*filters.back(), I18NString(parameter.value));
    }
  }
  return filters;
}

std::size_t LOGEventTrial::decide(const Filters& filters, LOGLevel* level, const I18NString& message, bool& isDenied) {
  LOGLogger logger("trial");
  LOGLoggingEvent event(I18NString(), &logger, level, nullptr);
  event.setRenderedMessage(message);
  isDenied = false;
  for (std::size_t i = 0; i < filters.size(); ++i) {
    // A copy, so that a filter that counts finds each event the first.
    const std::unique_ptr<LOGFilter> fresh(filters[i]->clone());
    const int decision = fresh->decide(&event);
    if (decision == LOGFilter::m_NEUTRAL) continue;
    isDenied = decision == LOGFilter::m_DENY;
    return i;
  }
  return filters.size();
}

std::vector<I18NString> LOGEventTrial::messagesFor(const Appender& appender) {
  std::vector<I18NString> messages{"a message"};
  for (const Model::Part& filter : appender.filters) {
    if (filter.is("LOGStringMatchFilter")) messages.emplace_back(filter.value("StringToMatch"));
  }
  return messages;
}
