// What a configuration document amounts to, in words.

#pragma once

#include <string>

#include "log4vrk/config/internal/LOGDocumentModel.h"

class LOGLevel;

/// The texts of LOGDocumentCheck.
///
/// Thread safety: not thread-safe.
class LOGDocumentReport {
 public:
  explicit LOGDocumentReport(const LOGDocumentModel& model) : m_model(model) {}

  std::string explain(const std::string& loggerName, const LOGLevel& level) const;
  std::string dump() const;
  std::string sample() const;

 private:
  using Appender = LOGDocumentModel::Appender;

  void explainAppender(const Appender& appender, const LOGLevel& level, const std::string& indent,
                       std::string& text) const;
  static std::string sampleOf(const Appender& appender);

  const LOGDocumentModel& m_model;
};
