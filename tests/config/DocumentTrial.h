// Applies a document for real and looks at what has become of it.

#pragma once

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "log4vrk/log4vrk.h"
#include "tests/support/InternalLog.h"

namespace vrktest {

/// One run of the library by a document, on a tree of its own, and events of all levels through every logger that the
/// document names.
class DocumentTrial {
 public:
  explicit DocumentTrial(const std::string& path) {
    m_configurator = std::make_unique<LOGDOMConfigurator>();
    m_result = m_configurator->doConfigure(path.c_str(), &m_hierarchy);
    try {
      m_document = VRKIDOM_Parser().parse(path.c_str());
    } catch (const VRKThrowable&) {
    }
    finish();
  }
  /// From a document in memory, without events.
  explicit DocumentTrial(const VRKIDOM_Document& document) : m_document(document) {
    m_configurator = std::make_unique<LOGDOMConfigurator>();
    m_result = m_configurator->doConfigure(document.getDocumentElement(), &m_hierarchy);
    m_problems = LOG4VRKConfigurator::getProblems().toUtf8();
  }
  ~DocumentTrial() { m_hierarchy.shutdownAppenders(); }

  int result() const { return m_result; }
  const std::string& problems() const { return m_problems; }
  /// What the internal log has got, of the run or of the events.
  bool isQuiet() const { return m_problems.empty() && m_complaints.empty(); }
  const std::string& complaints() const { return m_complaints; }

  /// Whether everything that the document refers to is there and has written an event.
  bool isWhole() const {
    if (m_result != 1 || !isQuiet()) return false;
    for (const VRKIDOM_Element& reference : elements("appender-ref")) {
      const std::string tag = parentTag(reference);
      if (tag != "root" && tag != "logger" && tag != "category") continue;
      if (!works(reference.getAttribute("ref").toUtf8())) return false;
    }
    return true;
  }

  /// Whether the appender is attached somewhere, has no problem and has written an event.
  bool works(const std::string& name) const {
    LOGAppenderSkeleton* const appender = find(name);
    if (appender == nullptr || m_problems.find("appender [" + name + "]") != std::string::npos) return false;
    if (auto* const file = dynamic_cast<LOGFileAppender*>(appender)) {
      std::error_code ignored;
      return std::filesystem::file_size(file->getFile().toUtf8(), ignored) > 0 && !ignored;
    }
    if (dynamic_cast<LOGConsoleAppender*>(appender) || dynamic_cast<LOGSyslogAppender*>(appender)) {
      return appender->getLayout() != nullptr && !deniesAll(*appender);
    }
    if (auto* const udp = dynamic_cast<LOGLocalUDPAppender*>(appender)) return isPort(udp->getPort());
    if (auto* const tcp = dynamic_cast<LOGTCPSocketAppender*>(appender)) {
      return isPort(tcp->getPort()) && !tcp->getRemoteHost().isEmpty();
    }
    auto* const queue = dynamic_cast<LOGAsyncAppender*>(appender);
    return queue != nullptr && queue->getBufferSize() > 0 && !nestedIn(*queue).empty();
  }

  /// Levels, additivity and appenders of all loggers.
  std::string state() {
    std::set<std::string> lines;
    const auto add = [&](LOGLogger& logger) {
      std::string line = logger.getName().toUtf8() + " ";
      line += logger.getLevel() != nullptr ? logger.getLevel()->toString().toUtf8() : "-";
      line += logger.getAdditivity() != 0 ? " +" : " -";
      for (LOGAppenderSkeleton* const appender : appendersOf(logger)) line += describe(*appender);
      lines.insert(line);
    };
    add(*m_hierarchy.getRootLogger());
    const std::unique_ptr<VRKList<LOGLogger*>> loggers(m_hierarchy.getCurrentLoggers());
    for (LOGLogger* const logger : *loggers) add(*logger);
    std::string all = std::to_string(m_result);
    for (const std::string& line : lines) all += "\n" + line;
    return all;
  }

 private:
  struct Hierarchy : LOGHierarchy {
    Hierarchy() : LOGHierarchy(new LOGRootLogger(LOGLevel::DEBUG_OBJ)) {}
    // shutdown() would close the internal log for good.
    void shutdownAppenders() {
      getRootLogger()->removeAllAppenders();
      const std::unique_ptr<VRKList<LOGLogger*>> loggers(getCurrentLoggers());
      for (LOGLogger* const logger : *loggers) logger->removeAllAppenders();
    }
  };

  static bool isPort(long port) { return port >= 1 && port <= 65535; }
  // Where there is nothing to read that it would have written.
  static bool deniesAll(LOGAppenderSkeleton& appender) {
    LOGFilter* const filter = appender.getFilter();
    return filter != nullptr && filter->instanceOf() == "LOGDenyAllFilter";
  }

  void finish() {
    m_problems = LOG4VRKConfigurator::getProblems().toUtf8();
    if (m_result != 1) return;
    const InternalLog log;
    std::vector<std::string> messages{std::string(2000, 'm')};
    for (const VRKIDOM_Element& param : elements("param")) {
      if (param.getAttribute("name") == "StringToMatch") messages.push_back(param.getAttribute("value").toUtf8());
    }
    for (const char* tag : {"root", "logger", "category"}) {
      for (const VRKIDOM_Element& element : elements(tag)) {
        if (element.getAttribute("name").length() > 1000) continue;
        LOGLogger* const logger =
            std::string(tag) == "root" ? m_hierarchy.getRootLogger() : m_hierarchy.exists(element.getAttribute("name"));
        for (const std::string& message : messages) {
          for (const char* level : {"DEBUG", "INFO", "WARN", "ERROR", "FATAL"}) {
            if (logger != nullptr) logger->log(LOGLevel::toLevel(level), message);
          }
        }
      }
    }
    m_hierarchy.drainAppenders();
    for (const std::string& line : log.lines()) {
      if (line.find("log4vrk:WARN ") == 0 || line.find("log4vrk:ERROR ") == 0) m_complaints += line + "\n";
    }
  }

  std::vector<VRKIDOM_Element> elements(const char* tag) const {
    std::vector<VRKIDOM_Element> all;
    const VRKIDOM_NodeList list = m_document.getElementsByTagName(tag);
    for (long i = 0; i < list.getLength(); ++i) all.emplace_back(list.item(i));
    return all;
  }
  // Elements know no parents; their places tell them apart.
  std::string parentTag(const VRKIDOM_Element& child) const {
    for (const VRKIDOM_Element& parent : elements("*")) {
      const VRKIDOM_NodeList children = parent.getChildNodes();
      for (long i = 0; i < children.getLength(); ++i) {
        const VRKIDOM_Node node = children.item(i);
        const bool isSame = node.getNodeType() == VRKIDOM_Node::ELEMENT_NODE &&
                            node.getLineNumber() == child.getLineNumber() &&
                            node.getColumnNumber() == child.getColumnNumber();
        if (isSame) return parent.getTagName().toUtf8();
      }
    }
    return "";
  }

  static std::vector<LOGAppenderSkeleton*> appendersOf(LOGLogger& logger) {
    std::vector<LOGAppenderSkeleton*> all;
    for (auto each = logger.getAllAppenders(); !each.atEnd(); ++each) all.push_back(*each);
    return all;
  }
  static std::vector<LOGAppenderSkeleton*> nestedIn(LOGAsyncAppender& queue) {
    std::vector<LOGAppenderSkeleton*> all;
    for (auto each = queue.getAllAppenders(); !each.atEnd(); ++each) all.push_back(*each);
    return all;
  }
  static std::string describe(LOGAppenderSkeleton& appender) {
    std::string text = " " + appender.instanceOf().toUtf8() + "[" + appender.getName().toUtf8();
    if (LOGLayout* const layout = appender.getLayout()) text += " " + layout->instanceOf().toUtf8();
    for (LOGFilter* filter = appender.getFilter(); filter != nullptr; filter = filter->getNext()) {
      text += " " + filter->instanceOf().toUtf8();
    }
    if (auto* const file = dynamic_cast<LOGFileAppender*>(&appender)) text += " " + file->getFile().toUtf8();
    return text + "]";
  }

  LOGAppenderSkeleton* find(const std::string& name) const {
    const auto in = [&](const std::vector<LOGAppenderSkeleton*>& all, auto&& self) -> LOGAppenderSkeleton* {
      for (LOGAppenderSkeleton* const each : all) {
        if (each->getName() == I18NString(name)) return each;
        auto* const queue = dynamic_cast<LOGAsyncAppender*>(each);
        if (LOGAppenderSkeleton* const nested = queue ? self(nestedIn(*queue), self) : nullptr) return nested;
      }
      return nullptr;
    };
    auto& hierarchy = const_cast<Hierarchy&>(m_hierarchy);
    if (auto* const found = in(appendersOf(*hierarchy.getRootLogger()), in)) return found;
    const std::unique_ptr<VRKList<LOGLogger*>> loggers(hierarchy.getCurrentLoggers());
    for (LOGLogger* const logger : *loggers) {
      if (auto* const found = in(appendersOf(*logger), in)) return found;
    }
    return nullptr;
  }

  Hierarchy m_hierarchy;
  std::unique_ptr<LOGDOMConfigurator> m_configurator;
  VRKIDOM_Document m_document;
  int m_result = 0;
  std::string m_problems, m_complaints;
};

}  // namespace vrktest
