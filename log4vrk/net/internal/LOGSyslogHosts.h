// The hosts of the syslog appenders of a document, looked up before the document is applied.

#pragma once

#include <memory>
#include <vector>

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKSocketAddress.h"

/// While a document is applied, those who log wait. So its names are looked up before, all at once, each on a thread of
/// its own; for the life of the object, find() knows what was found.
///
/// Thread safety: made by one thread at a time, which holds the configuration lock. find(): any thread.
/// Errors: none is raised. A name that there was no thread, memory or time for is not known.
class LOGSyslogHosts {
 public:
  /// Begins to look them up.
  explicit LOGSyslogHosts(const std::vector<I18NString>& hosts);
  ~LOGSyslogHosts();
  LOGSyslogHosts(const LOGSyslogHosts&) = delete;
  LOGSyslogHosts& operator=(const LOGSyslogHosts&) = delete;

  /// Waits for the answers, as long as the thread's LOGTimeLimit allows.
  void wait();

  /// Where datagrams for a host go; false when it is not known. May block as long as the system's resolver does, unless
  /// the thread has a LOGTimeLimit.
  static bool find(const I18NString& host, VRKSocketAddress& address);

 private:
  static constexpr long PORT = 514;

  struct Lookup;

  std::vector<std::unique_ptr<Lookup>> m_lookups;
};
