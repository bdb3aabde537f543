// What a configuration document says, as the reader takes it.

#pragma once

#include <map>
#include <string>
#include <vector>

#include "log4vrk/config/internal/LOGDocumentTables.h"
#include "log4vrk/config/internal/LOGVariables.h"
#include "log4vrk/platform/VRKIDOM.h"

class LOGLevel;

/// A document with its references followed, its classes looked up and its loggers joined by name, without anything
/// being made: no file is opened and no name is looked up.
///
/// Thread safety: not thread-safe. Texts are in UTF-8.
/// Ownership: keeps the document.
class LOGDocumentModel {
 public:
  struct Parameter {
    VRKIDOM_Element element;
    std::string name;
    std::string value;                          // with its variables put in
    const LOGDocumentTables::Parameter* known;  // null: ignored
    std::string problem;                        // with a variable, for which it is ignored
    bool counts() const {
      return known != nullptr && problem.empty() && (!value.empty() || LOGDocumentTables::mayBeEmpty(I18NString(name)));
    }
  };

  /// Something of a class: an appender, layout, filter or error handler.
  struct Part {
    VRKIDOM_Element element;
    std::string name;
    I18NString className;  // as the reader takes it, known or not
    bool isKnown = false;
    std::vector<Parameter> parameters;
    bool is(const char* otherClass) const { return isKnown && className == otherClass; }
    /// As it is in the end: the last that counts, or the default.
    std::string value(const char* parameter) const;
    bool has(const char* parameter) const { return find(parameter) != nullptr; }
    /// The last that counts, or null.
    const Parameter* find(const char* parameter) const;
  };

  struct Appender;
  struct Reference {
    VRKIDOM_Element element;
    std::string name;
    Appender* appender;  // null: nothing is attached
  };

  struct Appender : Part {
    std::vector<Part> layouts, filters, errorHandlers;
    std::vector<Reference> nested;   // of one that isContainer(); of others they are refused
    std::vector<Reference> backups;  // of error handlers
    bool isReferred = false;         // so it is made
    bool isFirst = true;             // of those of its name

    bool isAsync() const { return is("LOGAsyncAppender") || is("LOGDurableAsyncAppender"); }
    /// Whether it gives its events to other appenders.
    bool isContainer() const { return isAsync() || is("LOGFallbackAppender"); }
    bool isFile() const {
      return is("LOGFileAppender") || is("LOGRollingFileAppender") || is("LOGTimeRollingFileAppender");
    }
    /// The one that counts, or null.
    const Part* layout() const { return layouts.empty() ? nullptr : &layouts.back(); }
  };

  struct Logger {
    std::string name;  // "root" for the root, which always stands first
    bool isRoot = false;
    std::vector<VRKIDOM_Element> elements;
    bool additive = true;
    const LOGLevel* level = nullptr;  // null: inherited
    VRKIDOM_Element levelElement;
    std::vector<Reference> references;  // of the last element, which takes away what the others have attached
  };

  /// An appender that a logger's events come to, and the logger that has it.
  struct Reached {
    const Logger* logger;
    const Reference* reference;
  };

  explicit LOGDocumentModel(const VRKIDOM_Document& document);
  LOGDocumentModel(const LOGDocumentModel&) = delete;
  LOGDocumentModel& operator=(const LOGDocumentModel&) = delete;

  const VRKIDOM_Document& document() const { return m_document; }
  const VRKIDOM_Element& root() const { return m_root; }
  bool isConfiguration() const;
  const std::vector<std::unique_ptr<Appender>>& appenders() const { return m_appenders; }
  /// Those that are configured; the root first, whether or not it is in the document.
  const std::vector<std::unique_ptr<Logger>>& loggers() const { return m_loggers; }
  const LOGLevel* threshold() const { return m_threshold; }

  bool hasVariables() const { return m_hasVariables; }
  /// See LOGVariables.
  I18NString valueOf(const VRKIDOM_Element& element, std::string& problem) const {
    return LOGVariables::valueOf(element, m_hasVariables, problem);
  }

  /// The nearest logger of the document: that one, an ancestor, or the root.
  const Logger& nearest(const std::string& name) const;
  const Logger& parentOf(const Logger& logger) const;
  /// The one whose level counts for the logger.
  const Logger& levelSource(const Logger& logger) const;
  std::vector<Reached> reachedFrom(const Logger& logger) const;

  static std::string attribute(const VRKIDOM_Element& element, const I18NString& name) {
    return element.getAttribute(name).toUtf8();
  }

 private:
  void readAppenders();
  void readAppender(const VRKIDOM_Element& element);
  void readLogger(const VRKIDOM_Element& element, bool isRoot);
  void readLevel(const VRKIDOM_Element& element, Logger& logger);
  Reference readReference(const VRKIDOM_Element& element) const;
  void readPart(const VRKIDOM_Element& element, Part& part) const;
  void follow(Appender& appender, std::vector<const Appender*>& path);
  Logger& loggerOf(const std::string& name, bool isRoot);

  VRKIDOM_Document m_document;
  VRKIDOM_Element m_root;
  std::vector<std::unique_ptr<Appender>> m_appenders;
  std::map<std::string, Appender*> m_appendersByName;
  std::vector<std::unique_ptr<Logger>> m_loggers;
  std::map<std::string, Logger*> m_loggersByName;
  const LOGLevel* m_threshold;
  bool m_hasFactory = false;
  const bool m_hasVariables;
};
