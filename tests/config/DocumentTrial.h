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
    for (const VRKIDOM_Element& logger : loggerElements()) {
      const VRKIDOM_NodeList children = logger.getChildNodes();
      for (long i = 0; i < children.getLength(); ++i) {
        const VRKIDOM_Element child(children.item(i));
        const bool isReference = !child.isNull() && child.getTagName() == "appender-ref";
        if (isReference && !works(child.getAttribute("ref").toUtf8())) return false;
      }
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
    return queue != nullptr && queue->getBufferSize() > 0 && !appendersOf(*queue).empty();
  }

  /// Levels, additivity and appenders of all loggers.
  std::string state() {
    std::set<std::string> lines;
    for (LOGLogger* const logger : m_hierarchy.all()) {
      std::string line = logger->getName().toUtf8() + " ";
      line += logger->getLevel() != nullptr ? logger->getLevel()->toString().toUtf8() : "-";
      line += logger->getAdditivity() != 0 ? " +" : " -";
      for (LOGAppenderSkeleton* const appender : appendersOf(*logger)) line += describe(*appender);
      lines.insert(line);
    }
    std::string all = std::to_string(m_result);
    for (const std::string& line : lines) all += "\n" + line;
    return all;
  }

 private:
  struct Hierarchy : LOGHierarchy {
    Hierarchy() : LOGHierarchy(new LOGRootLogger(LOGLevel::DEBUG_OBJ)) {}
    // shutdown() would close the internal log for good.
    void shutdownAppenders() {
      for (LOGLogger* const logger : all()) logger->removeAllAppenders();
    }
    std::vector<LOGLogger*> all() {
      const std::unique_ptr<VRKList<LOGLogger*>> loggers(getCurrentLoggers());
      std::vector<LOGLogger*> found(loggers->begin(), loggers->end());
      found.push_back(getRootLogger());
      return found;
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
    for (const VRKIDOM_Element& element : loggerElements()) {
      const I18NString name = element.getAttribute("name");
      if (name.length() > 1000) continue;
      const bool isRoot = element.getTagName() == "root";
      LOGLogger* const logger = isRoot ? m_hierarchy.getRootLogger() : m_hierarchy.exists(name);
      for (const std::string& message : messages) {
        for (const char* level : {"DEBUG", "INFO", "WARN", "ERROR", "FATAL"}) {
          if (logger != nullptr) logger->log(LOGLevel::toLevel(level), message);
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
  std::vector<VRKIDOM_Element> loggerElements() const {
    std::vector<VRKIDOM_Element> all = elements("root");
    for (const char* tag : {"logger", "category"}) {
      for (const VRKIDOM_Element& element : elements(tag)) all.push_back(element);
    }
    return all;
  }

  /// Of a logger or a queue.
  template <typename Owner>
  static std::vector<LOGAppenderSkeleton*> appendersOf(Owner& owner) {
    std::vector<LOGAppenderSkeleton*> all;
    for (auto each = owner.getAllAppenders(); !each.atEnd(); ++each) all.push_back(*each);
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
        if (LOGAppenderSkeleton* const nested = queue ? self(appendersOf(*queue), self) : nullptr) return nested;
      }
      return nullptr;
    };
    for (LOGLogger* const logger : m_hierarchy.all()) {
      if (auto* const found = in(appendersOf(*logger), in)) return found;
    }
    return nullptr;
  }

  mutable Hierarchy m_hierarchy;
  std::unique_ptr<LOGDOMConfigurator> m_configurator;
  VRKIDOM_Document m_document;
  int m_result = 0;
  std::string m_problems, m_complaints;
};

}  // namespace vrktest
