// The part of LOGAppenderRules that is about parameters.

#include <algorithm>
#include <sstream>

#include "log4vrk/config/internal/LOGAppenderRules.h"
#include "log4vrk/core/LOGLevel.h"
#include "log4vrk/core/LOGOptionConverter.h"
#include "log4vrk/platform/I18NLocale.h"

using Tables = LOGDocumentTables;

namespace {

constexpr long FEW_BYTES = 1024, MANY_BACKUPS = 1000;
constexpr LOGFinding::Severity NOTE = LOGFinding::NOTE, WARNING = LOGFinding::WARNING, FAULT = LOGFinding::FAULT;

}  // namespace

void LOGAppenderRules::addOf(LOGFinding::Severity severity, const char* name, const Parameter& parameter,
                             const std::string& where, const std::string& effect, const std::string& suggestion) {
  m_findings.add(severity, name, parameter.element, LOGFindings::parameter(where, parameter.name),
                 LOGFindings::quoted("value", parameter.value), effect, suggestion);
}

void LOGAppenderRules::checkParameters(const Part& part, const std::string& where) {
  std::set<std::string> seen;
  for (const Parameter& parameter : part.parameters) {
    checkParameter(part, parameter, where);
    if (parameter.counts() && !seen.insert(parameter.known->name).second) {
      addOf(WARNING, "param-twice", parameter, where, "the last value counts");
    }
  }
}

void LOGAppenderRules::checkParameter(const Part& part, const Parameter& parameter, const std::string& where) {
  if (parameter.known == nullptr) return checkIgnored(part, parameter, where);
  if (!parameter.problem.empty()) {
    return addOf(FAULT, "variable-value", parameter, where, parameter.problem + "; the parameter is ignored");
  }
  if (!m_model.hasVariables() && parameter.value.find("${") != std::string::npos) {
    addOf(NOTE, "variables-off", parameter, where,
          "it is taken as it is: the root element does not say substitute=\"true\"");
  }
  if (!parameter.counts()) {
    return addOf(WARNING, "param-empty", parameter, where, "a parameter without a value is ignored");
  }
  switch (parameter.known->type) {
    case Tables::BOOLEAN:
      return checkBoolean(parameter, where);
    case Tables::NUMBER:
      return checkNumber(parameter, where);
    case Tables::LEVEL:
      return checkLevel(parameter, where);
    case Tables::TEXT:
      return checkText(parameter, where);
  }
}

void LOGAppenderRules::checkIgnored(const Part& part, const Parameter& parameter, const std::string& where) {
  std::vector<std::string> names;
  for (const Tables::Parameter& each : Tables::parameters()) {
    if (part.isKnown && part.className == each.className) names.emplace_back(each.name);
  }
  const std::string nearest = logNearest(parameter.name, names);
  const bool isCase = !nearest.empty() && vrkEqualIgnoringCase(I18NString(nearest), I18NString(parameter.name));
  m_findings.add(WARNING, isCase ? "param-case" : "param-ignored", parameter.element,
                 LOGFindings::parameter(where, parameter.name), LOGFindings::quoted("name", parameter.name),
                 isCase ? "case matters: the parameter is ignored" : "the class has no such parameter; it is ignored",
                 nearest);
}

void LOGAppenderRules::checkBoolean(const Parameter& parameter, const std::string& where) {
  const I18NString value(parameter.value);
  if (vrkEqualIgnoringCase(value, "true") || vrkEqualIgnoringCase(value, "false")) return;
  addOf(WARNING, "boolean-value", parameter, where, "it is true: only false is not",
        logNearest(parameter.value, {"false", "true"}));
}

void LOGAppenderRules::checkNumber(const Parameter& parameter, const std::string& where) {
  const std::string name = parameter.known->name;
  const long number = Tables::asInteger(I18NString(parameter.value));
  if (name == "MaximumFileSize" && number < FEW_BYTES) {
    addOf(FAULT, "file-size", parameter, where,
          "the size is " + std::to_string(number) +
              " bytes, for there are no suffixes: the file is rolled over after nearly every event");
  } else if (name == "MaxBackupIndex" && number <= 0) {
    addOf(WARNING, "no-backups", parameter, where, "no older file is kept: each roll-over discards what there is");
  } else if (name == "MaxBackupIndex" && number > MANY_BACKUPS) {
    addOf(WARNING, "many-backups", parameter, where, "a roll-over renames as many files, which takes long");
  } else if (name == "BufferSize" && (number <= 0 || static_cast<int>(number) != number)) {
    addOf(FAULT, "queue-size", parameter, where, "the queue has no room: every event is dropped");
  } else if ((name == "MaxEvents" || name == "Seconds") && number <= 0) {
    addOf(WARNING, "filter-without-effect", parameter, where, "it has to be 1 or more; the filter limits nothing");
  } else if (!LOGFindings::isNumber(parameter.value)) {
    addOf(WARNING, "number-value", parameter, where, "it is taken for " + std::to_string(number),
          std::to_string(number));
  } else if (name == "ReconnectionDelay" && number <= 0) {
    addOf(WARNING, "number-value", parameter, where, "there is no time between two attempts to connect");
  } else if (name == "RetryDelay" && number <= 0) {
    addOf(WARNING, "number-value", parameter, where, "each event is offered to appenders that take none");
  }
}

void LOGAppenderRules::checkLevel(const Parameter& parameter, const std::string& where) {
  const std::string name = parameter.known->name;
  const I18NString value(parameter.value);
  const bool isKnown = name == "LevelToMatch" ? LOGOptionConverter::toLevel(value, nullptr) != nullptr
                                              : LOGLevel::toLevel(value, nullptr) != nullptr;
  if (isKnown) return;
  const char* const effect = name == "LevelToMatch" ? "there is no such level; the filter decides on nothing"
                             : name == "LevelMax"   ? "there is no such level; DEBUG is taken, so that higher levels "
                                                      "are dropped"
                                                    : "there is no such level; DEBUG is taken";
  addOf(WARNING, "filter-level-unknown", parameter, where, effect, logNearest(parameter.value, Tables::levelNames()));
}

void LOGAppenderRules::checkText(const Parameter& parameter, const std::string& where) {
  const I18NString value(parameter.value);
  std::vector<std::string> values;
  std::istringstream all(parameter.known->values);
  for (std::string one; std::getline(all, one, '|');) values.push_back(one);
  const bool isAny = values.empty() && parameter.known->takes == nullptr;
  const bool isOne = std::any_of(values.begin(), values.end(), [&](const std::string& each) {
    return vrkEqualIgnoringCase(value, I18NString(each));
  });
  if (isAny || isOne || (parameter.known->takes != nullptr && parameter.known->takes(value))) return;
  addOf(WARNING, "value-unknown", parameter, where, "it is not understood; the setting stays as it was",
        logNearest(parameter.value, values));
}
