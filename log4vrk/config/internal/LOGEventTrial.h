// Tries which events come to the appenders of a document, and what their filters do with them.

#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "log4vrk/config/internal/LOGDocumentModel.h"
#include "log4vrk/core/LOGFilter.h"

class LOGLevel;

/// The filters are made as the reader makes them and asked for real.
///
/// Thread safety: not thread-safe.
class LOGEventTrial {
 public:
  using Appender = LOGDocumentModel::Appender;
  using Filters = std::vector<std::unique_ptr<LOGFilter>>;
  using Levels = unsigned;  // a bit for each of logLevels()

  explicit LOGEventTrial(const LOGDocumentModel& model);

  /// The levels of which events of some logger come to the appender.
  Levels reaching(const Appender& appender) const;
  /// The levels of which its filters let some event pass.
  Levels passing(const Appender& appender) const;

  /// Those that programs log at, the lowest first.
  static const std::vector<LOGLevel*>& levels();
  static Filters filtersOf(const Appender& appender);
  /// The number of the filter that decides, or that of all when none does; `isDenied` is the decision.
  static std::size_t decide(const Filters& filters, LOGLevel* level, const I18NString& message, bool& isDenied);
  /// The texts that filters of the appender look for, and one that is none of them.
  static std::vector<I18NString> messagesFor(const Appender& appender);

 private:
  void arrive(const Appender& appender, Levels levels);

  std::map<const Appender*, Levels> m_reaching;
  mutable std::map<const Appender*, Levels> m_passing;
};
