// The findings of a check as they come together.

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "log4vrk/config/LOGDocumentCheck.h"
#include "log4vrk/config/internal/LOGDocumentModel.h"

/// Thread safety: not thread-safe.
class LOGFindings {
 public:
  explicit LOGFindings(std::vector<LOGFinding>& findings) : m_findings(findings) {}

  void add(LOGFinding::Severity severity, const char* name, const VRKIDOM_Element& at, std::string where,
           std::string text, std::string effect, std::string suggestion = {}) {
    m_findings.push_back({severity, name, at.getLineNumber(), at.getColumnNumber(), std::move(where), std::move(text),
                          std::move(effect), std::move(suggestion)});
  }

  static std::string appender(const LOGDocumentModel::Part& part) { return "appender [" + part.name + "]"; }
  static std::string quoted(const std::string& name, const std::string& value) { return name + "=\"" + value + "\""; }
  /// Whether nothing but a number is there.
  static bool isNumber(std::string_view text);
  static std::string parameter(const std::string& owner, const std::string& name) {
    return owner + ", param [" + name + "]";
  }

 private:
  std::vector<LOGFinding>& m_findings;
};

/// The one of `words` that `text` was probably meant to be; empty when none is near. Case counts less than letters.
std::string logNearest(std::string_view text, const std::vector<std::string>& words);
