#include "log4vrk/config/internal/LOGAppenderRules.h"

#include <algorithm>
#include <filesystem>

#include "log4vrk/appenders/LOGTimeRollingFileAppender.h"
#include "log4vrk/appenders/internal/LOGRollCalendar.h"
#include "log4vrk/config/LOGDOMConfigurator.h"
#include "log4vrk/config/internal/LOGDOMChildren.h"
#include "log4vrk/config/internal/LOGDocumentRules.h"
#include "log4vrk/config/internal/LOGEventTrial.h"
#include "log4vrk/core/internal/LOGProblems.h"
#include "log4vrk/net/LOGSyslogAppender.h"
#include "log4vrk/platform/VRKConfigurationFactory.h"

using Reader = LOGDOMConfigurator;
using Tables = LOGDocumentTables;
using Model = LOGDocumentModel;

namespace {

constexpr LOGFinding::Severity NOTE = LOGFinding::NOTE, WARNING = LOGFinding::WARNING, FAULT = LOGFinding::FAULT;

constexpr std::size_t LONGEST_SOCKET = 107;  // the path of a socket, in bytes: the system has room for no more

// Names as documents write them: without the prefix that the reader puts in front.
template <typename Base>
std::vector<std::string> namesOf(const std::vector<Tables::Class<Base>>& classes) {
  std::vector<std::string> names;
  for (const auto& each : classes) names.emplace_back(std::string_view(each.name).substr(3));
  return names;
}

template <typename Base>
std::string nearestClass(const Model::Part& part, const std::vector<Tables::Class<Base>>& classes) {
  std::string name = Model::attribute(part.element, Reader::CLASS_ATTR);
  while (!name.empty() && name.back() == '.') name.pop_back();
  name = Reader::subst(I18NString(name)).toUtf8();
  if (name.rfind("LOG", 0) == 0 || name.rfind("Log", 0) == 0) name.erase(0, 3);
  const std::vector<std::string> names = namesOf(classes);
  const bool isPlain = std::find(names.begin(), names.end(), name) != names.end();
  return isPlain ? name : logNearest(name, names);
}

std::string classText(const Model::Part& part) {
  return LOGFindings::quoted("class", Model::attribute(part.element, Reader::CLASS_ATTR));
}

// Whether a pattern has an item of one of these letters.
bool hasItem(const std::string& pattern, std::string_view letters) {
  for (std::size_t at = pattern.find('%'); at != pattern.npos; at = pattern.find('%', at + 1)) {
    const std::size_t letter = pattern.find_first_not_of("-.0123456789", at + 1);
    if (letter == pattern.npos) return false;
    if (letters.find(pattern[letter]) != letters.npos) return true;
    at = letter;
  }
  return false;
}

bool endsLine(const Model::Part* layout) {
  return layout != nullptr && (!layout->is("LOGPatternLayout") || hasItem(layout->value("ConversionPattern"), "n"));
}

std::string pathOf(const Model::Appender& appender) {
  const I18NString path = VRKConfigurationFactory::getInstance().resolvePath(I18NString(appender.value("File")));
  return std::filesystem::path(path.toUtf8()).lexically_normal().string();
}

}  // namespace

void LOGAppenderRules::check() {
  const LOGEventTrial trial(m_model);
  for (const auto& each : m_model.appenders()) {
    const Appender& appender = *each;
    checkName(appender);
    if (!checkClass(appender)) continue;
    checkParameters(appender, LOGFindings::appender(appender));
    if (appender.isFile()) checkFile(appender);
    if (appender.is("LOGRollingFileAppender")) checkRolling(appender);
    if (appender.is("LOGTimeRollingFileAppender")) checkTimeRolling(appender);
    if (appender.isContainer()) checkNested(appender);
    if (appender.isAsync()) checkAsync(appender);
    if (appender.is("LOGFallbackAppender")) checkFallback(appender);
    if (appender.is("LOGSyslogAppender")) checkSyslog(appender);
    if (appender.is("LOGJournalAppender")) checkSocket(appender);
    if (appender.is("LOGLocalUDPAppender") || appender.is("LOGTCPSocketAppender")) checkPort(appender, "Port");
    checkLayouts(appender);
    checkFilters(appender, (trial.reaching(appender) & trial.passing(appender)) == 0);
    checkErrorHandlers(appender);
    if (appender.isReferred) checkSilence(appender, trial);
  }
  checkSharedFiles();
}

void LOGAppenderRules::checkName(const Appender& appender) {
  const std::string where = LOGFindings::appender(appender);
  if (!appender.isFirst) {
    add(WARNING, "appender-name-twice", appender, where, LOGFindings::quoted("name", appender.name),
        "the first appender of that name counts; this one is never made");
  } else if (!appender.isReferred && appender.isKnown) {
    add(WARNING, "appender-unused", appender, where, "", "nothing refers to it, so it is never made");
  }
  if (appender.name.empty()) {
    add(WARNING, "appender-without-name", appender, where, "", "only a reference without a name leads to it");
  }
}

bool LOGAppenderRules::checkClass(const Appender& appender) {
  if (appender.isKnown) return true;
  add(FAULT, "appender-class-unknown", appender, LOGFindings::appender(appender), classText(appender),
      "there is no such class; no appender is made, and the internal log does not name it",
      nearestClass(appender, Tables::appenders()));
  return false;
}

void LOGAppenderRules::checkFile(const Appender& appender) {
  const std::string where = LOGFindings::appender(appender);
  const std::string file = appender.value("File");
  if (file.empty()) {
    add(FAULT, "file-missing", appender, where, "", "without a File the appender writes nothing");
    return;
  }
  const Parameter& parameter = *appender.find("File");
  if (file[0] != '/') {
    addOf(NOTE, "file-relative", parameter, where,
          "the path starts at the program's working directory, or at its base directory if it has set one");
  }
  const Parameter* const append = appender.find("Append");
  if (append != nullptr && Tables::asBoolean(I18NString(append->value)) == 0) {
    addOf(NOTE, "file-emptied", *append, where, "the file is emptied at every start and with every new configuration");
  }
}

void LOGAppenderRules::checkRolling(const Appender& appender) {
  if (appender.find("MaxBackupIndex") != nullptr) return;
  add(NOTE, "one-backup", appender, LOGFindings::appender(appender), "",
      "MaxBackupIndex is 1 by default: one older file is kept");
}

// The appender itself says what it does not understand. It opens nothing until it is activated.
void LOGAppenderRules::checkTimeRolling(const Appender& appender) {
  constexpr std::int64_t FEW_BYTES = 1024;
  const std::string where = LOGFindings::appender(appender);
  LOGTimeRollingFileAppender trial;
  for (const Parameter& parameter : appender.parameters) {
    if (!parameter.counts()) continue;
    const LOGProblems::Run apart{LOGProblems::Run::Apart()};
    parameter.known->set(trial, I18NString(parameter.value));
    const std::string& said = apart.lines();
    if (said.empty()) continue;
    const bool isZone = parameter.known->name == std::string_view("TimeZone");
    const std::size_t from = said.find("] ") + 2;
    addOf(WARNING, isZone ? "time-zone-unknown" : "rolling-value", parameter, where,
          said.substr(from, said.find('\n') - from));
  }
  const std::int64_t size = trial.getMaximumFileSize();
  if (size > 0 && size < FEW_BYTES) {
    addOf(WARNING, "rolling-value", *appender.find("MaximumFileSize"), where,
          "the file is rolled over after nearly every event");
  }
  std::string problem;
  LOGRollCalendar::make(trial.getInterval(), trial.getDatePattern(), nullptr, problem);
  if (!problem.empty()) addOf(WARNING, "date-pattern", *appender.find("DatePattern"), where, problem);
  if (trial.getMaxHistory() > 0 || trial.getMaxAge() > 0 || trial.getMaxTotalSize() > 0) return;
  add(NOTE, "history-unlimited", appender, where, "",
      "without MaxHistory, MaxAge or MaxTotalSize no finished file is ever removed");
}

void LOGAppenderRules::checkNested(const Appender& appender) {
  const std::string where = LOGFindings::appender(appender);
  for (const Model::Reference& reference : appender.nested) {
    if (appender.isReferred) logCheckReference(m_model, reference, where, m_findings);
  }
  if (!appender.nested.empty()) return;
  add(FAULT, appender.isAsync() ? "queue-without-appender" : "fallback-without-appender", appender, where, "",
      "it refers to no appender: events are swallowed");
}

void LOGAppenderRules::checkAsync(const Appender& appender) {
  const std::string where = LOGFindings::appender(appender);
  for (const Model::Reference& reference : appender.nested) {
    if (reference.appender != nullptr) checkNamesBehindQueue(appender, *reference.appender);
  }
  if (appender.nested.empty() || appender.is("LOGDurableAsyncAppender")) return;
  add(NOTE, "queue-needs-shutdown", appender, where, "",
      "when the queue is full, logging waits; what is queued when the process is killed or leaves by _exit() is lost");
}

// Whoever takes everything leaves nothing to those behind it.
void LOGAppenderRules::checkFallback(const Appender& appender) {
  const std::string where = LOGFindings::appender(appender);
  for (const Model::Reference& reference : appender.nested) {
    if (reference.appender == nullptr) continue;
    const Appender& nested = *reference.appender;
    const bool isLast = &reference == &appender.nested.back();
    const char* what = nullptr;
    if (nested.isAsync()) what = "a queue takes every event, whatever becomes of those behind it";
    if (nested.is("LOGTCPSocketAppender")) what = "it takes events while the server is away, until its queue is full";
    if (nested.is("LOGSyslogAppender") || nested.is("LOGLocalUDPAppender")) {
      what = "datagrams are taken though nobody receives them";
    }
    if (nested.has("BufferedIO") && Tables::asBoolean(I18NString(nested.value("BufferedIO"))) != 0) {
      what = "with BufferedIO it takes events that it loses later, when the buffer cannot be written";
    }
    if (what == nullptr || isLast) continue;
    m_findings.add(WARNING, "fallback-takes-all", reference.element, where, LOGFindings::appender(nested), what);
  }
  if (appender.nested.size() != 1) return;
  add(WARNING, "fallback-alone", appender, where, "", "it refers to one appender, and has none to fall back on");
}

void LOGAppenderRules::checkNamesBehindQueue(const Appender& queue, const Appender& appender) {
  if (queue.is("LOGDurableAsyncAppender")) return;  // which always takes them along
  if (Tables::asBoolean(I18NString(queue.value("LocationInfo"))) != 0) return;
  const Part* const layout = appender.layout();
  if (layout == nullptr) return;
  const std::string parts = layout->value("Fields");
  const bool printsAll = layout->is("LOGJSONLayout") && parts.empty();
  const bool prints = printsAll || parts.find("thread") != parts.npos || parts.find("nested") != parts.npos ||
                      layout->is("LOGTTCCLayout") || layout->is("LOGXMLLayout") || layout->is("LOGHTMLLayout") ||
                      (layout->is("LOGPatternLayout") && hasItem(layout->value("ConversionPattern"), "tx"));
  if (!prints) return;
  add(WARNING, "queue-hides-thread", queue, LOGFindings::appender(queue), LOGFindings::appender(appender),
      "its layout prints the thread of the queue and no context, unless LocationInfo of the queue is true");
}

void LOGAppenderRules::checkSyslog(const Appender& appender) {
  const std::string where = LOGFindings::appender(appender);
  add(NOTE, "syslog-severity", appender, where, "",
      "every message has severity 0, emergency; text outside of ASCII loses its end");
  if (endsLine(appender.layout())) {
    add(NOTE, "syslog-line-end", appender, where, "", "daemons write the line feed at the end as #012");
  }
  for (const auto& other : m_model.appenders()) {
    const bool isOther =
        other->is("LOGSyslogAppender") && other->isReferred && other->value("Host") != appender.value("Host");
    if (!isOther || !appender.isReferred) continue;
    add(NOTE, "syslog-hosts", appender, where, LOGFindings::quoted("Host", appender.value("Host")),
        "one without a Host sends to the host that was set last, whichever appender that is");
    break;
  }
  const Parameter* const facility = appender.find("Facility");
  if (facility == nullptr || LOGSyslogAppender::getFacility(I18NString(facility->value)) >= 0) return;
  std::vector<std::string> names;
  for (int code = 0; code <= 184; code += 8) {
    if (std::string name = LOGSyslogAppender::getFacilityString(code).toUtf8(); !name.empty()) names.push_back(name);
  }
  addOf(WARNING, "facility-unknown", *facility, where, "there is no such facility; user is taken",
        logNearest(facility->value, names));
}

void LOGAppenderRules::checkPort(const Appender& appender, const char* parameter) {
  const std::string where = LOGFindings::appender(appender);
  const Parameter* const port = appender.find(parameter);
  const long number = Tables::asInteger(I18NString(appender.value(parameter)));
  if (port != nullptr && (number < 1 || number > 65535)) {
    addOf(FAULT, "port-range", *port, where, "ports are 1 to 65535; nothing is sent");
  }
  if (appender.is("LOGTCPSocketAppender")) {
    if (appender.find("RemoteHost") != nullptr) return;
    add(FAULT, "host-missing", appender, where, "", "without a RemoteHost the appender stays closed");
    return;
  }
  bool hasRenderer = false;
  for (const VRKIDOM_Element& child : logChildElements(m_model.root())) {
    hasRenderer = hasRenderer || child.getTagName() == Reader::RENDERER_TAG;
  }
  if (hasRenderer) return;
  add(WARNING, "datagrams-without-renderer", appender, where, "",
      "messages without a renderer of their class arrive without their text");
}

void LOGAppenderRules::checkSocket(const Appender& appender) {
  const Parameter* const socket = appender.find("Socket");
  if (socket == nullptr) return;
  const std::string where = LOGFindings::appender(appender);
  if (socket->value.size() > LONGEST_SOCKET) {
    addOf(FAULT, "socket-path", *socket, where,
          "the path has more than " + std::to_string(LONGEST_SOCKET) + " bytes; nothing is sent");
  } else if (socket->value[0] != '/') {
    addOf(WARNING, "socket-path", *socket, where, "the path starts at the program's working directory");
  }
}

void LOGAppenderRules::checkLayouts(const Appender& appender) {
  const std::string where = LOGFindings::appender(appender);
  const bool isUnused = appender.isContainer() || appender.is("LOGLocalUDPAppender");
  const bool isNeeded = !isUnused && !appender.is("LOGTCPSocketAppender") && !appender.is("LOGJournalAppender");
  if (appender.layouts.empty()) {
    if (isNeeded) add(FAULT, "layout-missing", appender, where, "", "without a layout nothing is written");
    return;
  }
  for (const Part& layout : appender.layouts) checkLayout(appender, layout);
  const Part& last = appender.layouts.back();
  if (appender.layouts.size() > 1) {
    add(WARNING, "layout-twice", last, where, classText(last), "the last layout counts");
  }
  if (isUnused) add(WARNING, "layout-unused", last, where, classText(last), "the appender does not use a layout");
}

void LOGAppenderRules::checkLayout(const Appender& appender, const Part& layout) {
  const std::string where = LOGFindings::appender(appender);
  if (!layout.isKnown) {
    add(WARNING, "layout-class-unknown", layout, where, classText(layout),
        "there is no such class; the plain message is written", nearestClass(layout, Tables::layouts()));
  }
  checkParameters(layout, where);
  const bool isXml = layout.is("LOGXMLLayout"), isHtml = layout.is("LOGHTMLLayout");
  if (isXml) {
    add(NOTE, "xml-fragments", layout, where, classText(layout),
        "elements without a root element, with a prefix that nothing declares; times are whole seconds");
  }
  if (isHtml) add(NOTE, "html-rows", layout, where, classText(layout), "rows only: neither header nor footer");
  if ((isXml || isHtml) && Tables::asBoolean(I18NString(layout.value("LocationInfo"))) != 0) {
    add(NOTE, "location-unknown", layout, where, classText(layout), "the place of the log call is always \"?\"");
  }
  // The layout itself says what it does not understand.
  for (const Parameter& parameter : layout.parameters) {
    if (!parameter.counts() || parameter.known->type != Tables::TEXT) continue;
    const LOGProblems::Run apart{LOGProblems::Run::Apart()};
    parameter.known->set(*Tables::makeLayout(layout.className), I18NString(parameter.value));
    if (apart.lines().empty()) continue;
    const bool isZone = parameter.known->name == std::string_view("TimeZone");
    if (isZone) {
      addOf(WARNING, "time-zone-unknown", parameter, where, "there is no such time zone; local time is used");
    } else if (layout.is("LOGJSONLayout")) {
      addOf(FAULT, "json-setting", parameter, where, apart.lines().substr(0, apart.lines().find('\n')));
    } else {
      addOf(FAULT, "pattern-item", parameter, where, apart.lines().substr(0, apart.lines().size() - 1));
    }
  }
  const std::string pattern = layout.value("ConversionPattern");
  const bool isLine = appender.isFile() || appender.is("LOGConsoleAppender") || appender.is("LOGColorConsoleAppender");
  if (layout.is("LOGPatternLayout") && isLine && !hasItem(pattern, "n") && pattern.find('\n') == pattern.npos) {
    add(WARNING, "pattern-without-line-end", layout, where, pattern, "lines end only where the pattern has %n");
  }
}

// Behind a filter that accepts, one that denies everything is common.
void LOGAppenderRules::checkFilters(const Appender& appender, bool isSilent) {
  const std::string where = LOGFindings::appender(appender);
  for (const Part& filter : appender.filters) {
    if (!filter.isKnown) {
      add(isSilent ? FAULT : WARNING, "filter-class-unknown", filter, where, classText(filter),
          "there is no such class; events that come to the filter are denied", nearestClass(filter, Tables::filters()));
    }
    checkParameters(filter, where);
    const bool counts = filter.is("LOGRateLimitFilter")
                            ? filter.has("MaxEvents")
                            : std::any_of(filter.parameters.begin(), filter.parameters.end(),
                                          [](const Parameter& each) { return each.counts(); });
    if (filter.isKnown && !counts && !filter.is("LOGDenyAllFilter")) {
      add(WARNING, "filter-without-effect", filter, where, classText(filter),
          "without its parameter it decides nothing");
    }
  }
}

void LOGAppenderRules::checkErrorHandlers(const Appender& appender) {
  const std::string where = LOGFindings::appender(appender);
  for (const Part& handler : appender.errorHandlers) {
    if (!handler.isKnown) {
      add(WARNING, "error-handler-class", handler, where, classText(handler),
          "a handler that does nothing is made, with a warning", Tables::ERROR_HANDLER);
    } else if (!appender.is("LOGSyslogAppender")) {
      add(NOTE, "error-handler-unused", handler, where, classText(handler), "the appender never calls its handler");
    }
    checkParameters(handler, where);
  }
  if (appender.errorHandlers.size() > 1) {
    add(WARNING, "error-handler-twice", appender.errorHandlers.back(), where, "", "the last handler counts");
  }
  for (const Model::Reference& backup : appender.backups) {
    if (appender.isReferred) logCheckReference(m_model, backup, where, m_findings);
    if (backup.appender == nullptr) continue;
    m_findings.add(WARNING, "backup-unused", backup.element, where, LOGFindings::quoted("ref", backup.name),
                   "the backup appender is made, which may empty its file, and never used");
  }
  if (appender.isContainer()) return;
  for (const Model::Reference& reference : appender.nested) {
    m_findings.add(
        FAULT, "appender-ref-refused", reference.element, where, LOGFindings::quoted("ref", reference.name),
        "only an AsyncAppender, DurableAsyncAppender or FallbackAppender refers to appenders; nothing is attached");
  }
}

// Backups belong to the appender that makes them.
void LOGAppenderRules::checkSharedFiles() {
  std::map<std::string, const Appender*> owners;
  const auto used = [&](const Appender& appender) {
    return appender.isFile() && appender.isReferred && appender.isFirst && !appender.value("File").empty();
  };
  for (const auto& each : m_model.appenders()) {
    if (!used(*each)) continue;
    const auto [owner, isNew] = owners.emplace(pathOf(*each), each.get());
    if (isNew) continue;
    addOf(WARNING, "file-shared", *each->find("File"), LOGFindings::appender(*each),
          "the lines of " + LOGFindings::appender(*owner->second) +
              " go there too; a roll-over of the one renames the file under the other");
  }
  for (const auto& each : m_model.appenders()) {
    if (!used(*each) || !each->is("LOGRollingFileAppender")) continue;
    const std::string prefix = pathOf(*each) + ".";
    const long last = Tables::asInteger(I18NString(each->value("MaxBackupIndex")));
    for (auto other = owners.lower_bound(prefix); other != owners.end(); ++other) {
      if (other->first.compare(0, prefix.size(), prefix) != 0) break;
      const std::string index = other->first.substr(prefix.size());
      const bool isBackup = LOGFindings::isNumber(index) && index[0] != '0' &&
                            Tables::asInteger(I18NString(index)) <= last && Tables::asInteger(I18NString(index)) > 0;
      if (!isBackup) continue;
      addOf(WARNING, "file-is-backup", *other->second->find("File"), LOGFindings::appender(*other->second),
            "it is the name of a backup of " + LOGFindings::appender(*each) + ", which will replace the file");
    }
  }
}

void LOGAppenderRules::checkSilence(const Appender& appender, const LOGEventTrial& trial) {
  const LOGEventTrial::Levels reaching = trial.reaching(appender), passing = trial.passing(appender);
  const bool isTold =
      std::any_of(appender.filters.begin(), appender.filters.end(), [](const Part& filter) { return !filter.isKnown; });
  if (reaching == 0) {
    add(WARNING, "appender-silent", appender, LOGFindings::appender(appender), "",
        "no event comes to it, by the levels of the loggers, the threshold and the filters of queues");
  } else if ((reaching & passing) == 0 && !isTold) {
    add(FAULT, "filters-deny-all", appender, LOGFindings::appender(appender), "",
        passing == 0 ? "its filters deny every event" : "its filters deny every event of the levels that come to it");
  }
}
