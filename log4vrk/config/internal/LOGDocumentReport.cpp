#include "log4vrk/config/internal/LOGDocumentReport.h"

#include "log4vrk/config/internal/LOGEventTrial.h"
#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/core/LOGLevel.h"
#include "log4vrk/core/LOGLogger.h"
#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/core/internal/LOGProblems.h"
#include "log4vrk/net/LOGSyslogAppender.h"

using Model = LOGDocumentModel;
using Tables = LOGDocumentTables;

namespace {

constexpr char SAMPLE_LOGGER[] = "sample.logger", SAMPLE_MESSAGE[] = "a sample message";

std::string loggerName(const Model::Logger& logger) { return logger.isRoot ? "root" : logger.name; }

// A class as documents name it.
std::string shortName(const Model::Part& part) {
  const std::string name = part.className.toUtf8();
  return part.isKnown && name.rfind("LOG", 0) == 0 ? name.substr(3) : name;
}

// What is made of an unknown class.
std::string layoutName(const Model::Part& layout) { return layout.isKnown ? shortName(layout) : "SimpleLayout"; }

std::string parametersOf(const Model::Part& part) {
  std::string text;
  for (const Tables::Parameter& each : Tables::parameters()) {
    if (part.className != each.className) continue;
    const std::string value = part.value(each.name);
    if (!value.empty()) text += std::string(" ") + each.name + "=\"" + value + "\"";
  }
  return text;
}

std::string onOneLine(const std::string& text) {
  std::string line;
  for (const char c : text) {
    if (c == '\n') {
      line += "\\n";
    } else if (c == '\r') {
      line += "\\r";
    } else {
      line += c;
    }
  }
  return line;
}

std::string lineOf(const VRKIDOM_Element& element) { return "line " + std::to_string(element.getLineNumber()); }

}  // namespace

std::string LOGDocumentReport::explain(const std::string& loggerName, const LOGLevel& level) const {
  const Model::Logger& nearest = loggerName == "root" ? *m_model.loggers().front() : m_model.nearest(loggerName);
  const Model::Logger& source = m_model.levelSource(nearest);
  std::string text = loggerName + " at " + level.toString().toUtf8() + "\n";
  text +=
      "  level " + source.level->toString().toUtf8() + ", from " + ::loggerName(source) +
      (source.levelElement.isNull() ? std::string(", as it is at first") : " (" + lineOf(source.levelElement) + ")") +
      "\n";
  const LOGLevel& threshold = *m_model.threshold();
  if (level.toInt() < threshold.toInt()) {
    return text + "  dropped: below the threshold of the document, " + threshold.toString().toUtf8() + "\n";
  }
  if (level.toInt() < source.level->toInt()) return text + "  dropped: below the level\n";
  const std::vector<Model::Reached> reached = m_model.reachedFrom(nearest);
  if (reached.empty()) text += "  lost: no appender is reached\n";
  for (const Model::Reached& each : reached) {
    text += "  " + each.reference->name + ", of " + ::loggerName(*each.logger) + " (" +
            lineOf(each.reference->element) + "): ";
    explainAppender(*each.reference->appender, level, "    ", text);
  }
  return text;
}

void LOGDocumentReport::explainAppender(const Appender& appender, const LOGLevel& level, const std::string& indent,
                                        std::string& text) const {
  const LOGEventTrial::Filters filters = LOGEventTrial::filtersOf(appender);
  text += shortName(appender) + parametersOf(appender) + "\n" + indent + "threshold: none\n";
  LOGLevel asked(level);
  bool passes = filters.empty();
  for (const I18NString& message : LOGEventTrial::messagesFor(appender)) {
    if (filters.empty()) break;
    bool isDenied = false;
    const std::size_t by = LOGEventTrial::decide(filters, &asked, message, isDenied);
    passes = passes || !isDenied;
    const bool isAny = message == LOGEventTrial::messagesFor(appender).front();
    text += indent + (isAny ? std::string("a message") : "a message with \"" + message.toUtf8() + "\"") + ": " +
            (isDenied ? "denied" : "accepted");
    text += by < filters.size() ? " by filter " + std::to_string(by + 1) + ", " + shortName(appender.filters[by]) +
                                      " (" + lineOf(appender.filters[by].element) + ")\n"
                                : ", for no filter decides\n";
  }
  if (!passes) return;
  const Model::Part* const layout = appender.layout();
  if (appender.isContainer()) {
    const std::string count = std::to_string(appender.nested.size());
    text += indent + (appender.isAsync() ? "queued, and given to " + count + " appender(s)\n"
                                         : "given to the first of " + count + " appender(s) that takes it\n");
    for (const Model::Reference& nested : appender.nested) {
      text += indent + nested.name + ": ";
      if (nested.appender != nullptr) {
        explainAppender(*nested.appender, level, indent + "  ", text);
      } else {
        text += "there is none\n";
      }
    }
  } else if (layout != nullptr || appender.is("LOGTCPSocketAppender") || appender.is("LOGLocalUDPAppender")) {
    const bool writes = !appender.isFile() || !appender.value("File").empty();
    text += indent + (writes ? "written" : "lost: the appender has no file") +
            (writes && layout != nullptr ? ", by " + layoutName(*layout) + "\n" : "\n");
  } else {
    text += indent + "lost: the appender has no layout\n";
  }
}

std::string LOGDocumentReport::dump() const {
  std::string text = "threshold " + m_model.threshold()->toString().toUtf8() + "\n";
  for (const auto& logger : m_model.loggers()) {
    const Model::Logger& source = m_model.levelSource(*logger);
    text += (logger->isRoot ? "root" : "logger " + logger->name) + ": level " + source.level->toString().toUtf8();
    if (&source != logger.get()) text += " from " + loggerName(source);
    if (!logger->isRoot) text += logger->additive ? ", additive" : ", not additive";
    for (const Model::Reference& reference : logger->references) {
      text += (&reference == &logger->references.front() ? ", appenders " : " ") + reference.name;
      if (reference.appender == nullptr) text += " (missing)";
    }
    text += "\n";
  }
  for (const auto& appender : m_model.appenders()) {
    text += "appender " + appender->name + ": " + shortName(*appender) + parametersOf(*appender);
    text += !appender->isKnown ? " (unknown)" : !appender->isReferred || !appender->isFirst ? " (not made)" : "";
    text += "\n";
    if (const Model::Part* const layout = appender->layout()) {
      text += "  layout " + layoutName(*layout) + parametersOf(*layout) + "\n";
    }
    for (const Model::Part& filter : appender->filters) {
      text += "  filter " + (filter.isKnown ? shortName(filter) : "DenyAllFilter") + parametersOf(filter) + "\n";
    }
    for (const Model::Part& handler : appender->errorHandlers) {
      text += "  errorHandler " + (handler.isKnown ? handler.className.toUtf8() : "LOGErrorHandler") + "\n";
    }
    for (const Model::Reference& nested : appender->nested) text += "  appender-ref " + nested.name + "\n";
  }
  return text;
}

std::string LOGDocumentReport::sample() const {
  std::string text;
  for (const auto& appender : m_model.appenders()) text += appender->name + ": " + sampleOf(*appender) + "\n";
  return text;
}

std::string LOGDocumentReport::sampleOf(const Appender& appender) {
  if (!appender.isKnown) return "(nothing: the class is unknown)";
  if (appender.isContainer()) return "(gives events to the appenders that it refers to)";
  if (appender.is("LOGLocalUDPAppender")) return "(the message object, as its renderer writes it)";
  const Model::Part* const part = appender.layout();
  if (part == nullptr) {
    return appender.is("LOGTCPSocketAppender") ? SAMPLE_MESSAGE : "(nothing: there is no layout)";
  }
  const LOGProblems::Run apart{LOGProblems::Run::Apart()};
  const std::unique_ptr<LOGLayout> layout = Tables::makeLayout(part->className);
  for (const Model::Parameter& parameter : part->parameters) {
    if (parameter.counts()) parameter.known->set(*layout, I18NString(parameter.value));
  }
  LOGLogger logger(SAMPLE_LOGGER);
  LOGLoggingEvent event(I18NString(), &logger, LOGLevel::INFO_OBJ, nullptr);
  event.setRenderedMessage(SAMPLE_MESSAGE);
  const LOGGuard guard(*layout);
  std::string line = layout->format(&event).toUtf8();
  while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.pop_back();
  line = onOneLine(line);
  if (!appender.is("LOGSyslogAppender")) return line;
  const int facility = LOGSyslogAppender::getFacility(I18NString(appender.value("Facility")));
  return "<" + std::to_string(facility >= 0 ? facility : LOGSyslogAppender::getFacility("user")) + ">" + line;
}
