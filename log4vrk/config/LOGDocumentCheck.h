// Says what is wrong with a configuration document, before it is applied.

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

class LOGDocumentModel;
class LOGLevel;

/// Something that the author of a document should know. Texts are in UTF-8; those that do not apply are empty.
struct LOGFinding {
  enum Severity {
    NOTE,     // as it is meant to be, and surprising
    WARNING,  // probably not what was meant
    FAULT,    // something is not configured, or events are lost
  };
  Severity severity = NOTE;
  std::string name;  // of the kind, for programs: "appender-missing"; these names stay
  // Where the element begins, counted from 1; 0 when it is about the whole file.
  long line = 0;
  long column = 0;
  std::string where;       // "appender [file], param [File]"
  std::string text;        // what is written there
  std::string effect;      // what will happen
  std::string suggestion;  // the nearest right spelling
};

/// Reads a document as the configurator does, by the same tables, and applies nothing: no appender is made, no file is
/// opened for writing, and neither the internal log nor LOG4VRKConfigurator::getProblems() changes.
///
/// Thread safety: not thread-safe; checks of their own may run at once.
/// Errors: a file that cannot be read, or is no document, is a finding. VRKOutOfMemoryError and std::bad_alloc are
/// raised.
class LOG4VRK_EXPORT LOGDocumentCheck {
 public:
  /// How far a check looks beyond the document.
  struct Settings {
    /// Looks at directories, files, disks, libraries and the names of hosts, as this process sees them. Libraries that
    /// the document names are loaded for that, and names are waited for, two seconds in all.
    bool environment = true;
    /// Connects to the log servers too, and sends nothing. Two seconds for each. Only with `environment`.
    bool connect = false;
  };

  explicit LOGDocumentCheck(const I18NString& fileName);
  LOGDocumentCheck(const I18NString& fileName, Settings settings);
  ~LOGDocumentCheck();
  LOGDocumentCheck(const LOGDocumentCheck&) = delete;
  LOGDocumentCheck& operator=(const LOGDocumentCheck&) = delete;

  /// In the order of the document.
  const std::vector<LOGFinding>& findings() const { return m_findings; }
  /// How many are as severe as that or more.
  long count(LOGFinding::Severity severity) const;

  // Texts of several lines for people, empty when there is no document.

  /// What becomes of an event of that logger at that level: the level that counts and where it comes from, and each
  /// appender in the order in which it gets the event.
  std::string explain(const std::string& loggerName, const LOGLevel& level) const;
  /// All loggers and appenders, with defaults filled in.
  std::string dump() const;
  /// For each appender what it would write of an event.
  std::string sample() const;

 private:
  LOG4VRK_HIDDEN void run(const I18NString& fileName, Settings settings);

  std::vector<LOGFinding> m_findings;
  std::unique_ptr<const LOGDocumentModel> m_model;  // null when there is no document
};
