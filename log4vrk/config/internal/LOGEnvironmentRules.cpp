#include "log4vrk/config/internal/LOGEnvironmentRules.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "log4vrk/appenders/internal/LOGByteSize.h"
#include "log4vrk/config/LOGDOMConfigurator.h"
#include "log4vrk/config/internal/LOGDOMChildren.h"
#include "log4vrk/net/internal/LOGRecoveryFiles.h"
#include "log4vrk/platform/VRKConfigurationFactory.h"
#include "log4vrk/platform/VRKFmDir.h"
#include "log4vrk/platform/internal/VRKDynamicLibrary.h"
#include "log4vrk/platform/internal/VRKFileAccess.h"
#include "log4vrk/platform/internal/VRKNameLookup.h"
#include "log4vrk/platform/internal/VRKStreamSocket.h"
#include "log4vrk/platform/internal/VRKWakeUp.h"

using Reader = LOGDOMConfigurator;
using Model = LOGDocumentModel;
using Clock = std::chrono::steady_clock;

namespace {

constexpr LOGFinding::Severity NOTE = LOGFinding::NOTE, WARNING = LOGFinding::WARNING, FAULT = LOGFinding::FAULT;
constexpr std::chrono::seconds LONGEST_LOOKUPS{2}, LONGEST_CONNECT{2};
constexpr char RECOVERY_DIRECTORY[] = "../logs/recovery/local", SETTINGS_FILE[] = "../configuration/logdebug.ini";

I18NString resolved(const std::string& name) {
  return VRKConfigurationFactory::getInstance().resolvePath(I18NString(name));
}

long millisecondsUntil(Clock::time_point end) {
  return static_cast<long>(
      std::chrono::duration_cast<std::chrono::milliseconds>(std::max(end - Clock::now(), Clock::duration::zero()))
          .count());
}

// As LOGLogLog finds it; empty when it is off.
std::string internalLogName() {
  const char* const variable = ::secure_getenv("LOG4VRK_INTERNAL_LOG");
  if (variable != nullptr && *variable != '\0') return variable;
  std::ifstream settings(SETTINGS_FILE);
  std::string debugSwitch, path;
  if (!settings) return {};
  settings >> debugSwitch >> path;
  return path.empty() ? "log4vrk.log" : path;
}

std::string portOf(const Model::Appender& appender) { return appender.value("Port"); }

}  // namespace

struct LOGEnvironmentRules::Host {
  const Appender* appender;
  std::string name;
  long port;
  std::unique_ptr<VRKNameLookup> lookup;
};

void LOGEnvironmentRules::check(bool connect) {
  for (const auto& each : m_model.appenders()) {
    if (!each->isReferred || !each->isKnown) continue;
    if (each->isFile() && !each->value("File").empty()) checkFile(*each);
    if (each->is("LOGTCPSocketAppender") && each->has("RemoteHost")) checkRecoveryDirectory(*each);
    if (each->is("LOGJournalAppender")) checkJournal(*each);
  }
  checkLibraries();
  checkHosts(connect);
  checkInternalLog();
}

void LOGEnvironmentRules::checkFile(const Appender& appender) {
  const std::string where = LOGFindings::appender(appender);
  const VRKIDOM_Element& at = appender.find("File")->element;
  const I18NString path = resolved(appender.value("File"));
  I18NString directory, file;
  VRKFmDir::splitPath(path, directory, file);
  const I18NString place = directory.isEmpty() ? I18NString(".") : directory;
  const std::filesystem::path name = path.toUtf8();
  std::error_code ignored;
  if (!VRKFmDir::exists(place, VRKFmDir::DIRECTORY)) {
    m_findings.add(FAULT, "directory-missing", at, where, place.toUtf8(),
                   "the directory is not there and is not made: events are lost until it is");
  } else if (std::filesystem::is_directory(name, ignored)) {
    m_findings.add(FAULT, "file-is-directory", at, where, path.toUtf8(), "it is a directory; nothing is written");
  } else if (std::filesystem::exists(name, ignored) ? !VRKFileAccess::mayWrite(path)
                                                    : !VRKFileAccess::mayWrite(place)) {
    m_findings.add(FAULT, "file-not-writable", at, where, path.toUtf8(),
                   "this user may not write there; nothing is written");
  } else {
    checkSpace(appender, place.toUtf8());
  }
}

void LOGEnvironmentRules::checkJournal(const Appender& appender) {
  const std::string path = appender.value("Socket");
  std::error_code ignored;
  if (std::filesystem::is_socket(path, ignored)) return;
  m_findings.add(WARNING, "journal-missing", appender.element, LOGFindings::appender(appender), path,
                 "there is no journal now; events are lost until there is one");
}

void LOGEnvironmentRules::checkSpace(const Appender& appender, const std::string& directory) {
  double wanted = 0;
  if (appender.is("LOGRollingFileAppender")) {
    const long size = LOGDocumentTables::asInteger(I18NString(appender.value("MaximumFileSize")));
    const long backups = LOGDocumentTables::asInteger(I18NString(appender.value("MaxBackupIndex")));
    wanted = static_cast<double>(std::max(size, 0L)) * (static_cast<double>(std::max(backups, 0L)) + 1);
  } else if (appender.is("LOGTimeRollingFileAppender")) {
    std::int64_t total = 0;
    logReadByteSize(I18NString(appender.value("MaxTotalSize")), total);
    wanted = static_cast<double>(total);
  }
  const std::int64_t free = VRKFileAccess::freeBytes(I18NString(directory));
  if (free < 0 || wanted <= static_cast<double>(free)) return;
  m_findings.add(
      WARNING, "disk-too-small", appender.element, LOGFindings::appender(appender), directory,
      "the file and its backups may grow larger than what is free on the disk, " + std::to_string(free) + " bytes");
}

void LOGEnvironmentRules::checkRecoveryDirectory(const Appender& appender) {
  std::filesystem::path place = resolved(RECOVERY_DIRECTORY).toUtf8();
  std::error_code ignored;
  // The appender makes what is missing.
  while (!std::filesystem::exists(place, ignored) && place.has_relative_path()) {
    place = place.has_parent_path() ? place.parent_path() : ".";
  }
  const I18NString nearest(place.string());
  const std::string where = LOGFindings::appender(appender);
  if (!std::filesystem::is_directory(place, ignored) || !VRKFileAccess::mayWrite(nearest)) {
    m_findings.add(FAULT, "recovery-not-writable", appender.element, where, RECOVERY_DIRECTORY,
                   "events that the server has not acknowledged cannot be kept");
  } else if (const auto free = VRKFileAccess::freeBytes(nearest); free >= 0 && free < LOGRecoveryFiles::DEFAULT_LIMIT) {
    m_findings.add(WARNING, "disk-too-small", appender.element, where, RECOVERY_DIRECTORY,
                   "what is kept for the server may grow larger than what is free on the disk");
  }
}

void LOGEnvironmentRules::checkLibraries() {
  for (const VRKIDOM_Element& child : logChildElements(m_model.root())) {
    const I18NString tag = child.getTagName();
    if (tag == Reader::CATEGORY_FACTORY_TAG) {
      checkLibrary(child, Reader::subst(child.getAttribute(Reader::CLASS_ATTR)).toUtf8(), "getLoggerFactory", FAULT,
                   "factory-library", "the configuration ends there: no logger is configured");
    } else if (tag == Reader::RENDERER_TAG) {
      checkLibrary(child, Reader::subst(child.getAttribute(Reader::RENDERING_CLASS_ATTR)).toUtf8(), "getRenderer",
                   FAULT, "renderer-library", "objects print as their toString()");
    }
  }
}

void LOGEnvironmentRules::checkLibrary(const VRKIDOM_Element& element, const std::string& className,
                                       const char* function, LOGFinding::Severity severity, const char* name,
                                       const std::string& effect) {
  if (className.empty()) return;
  const std::string library = "lib" + className + ".so";
  void* const handle =
      VRKDynamicLibrary::open(VRKConfigurationFactory::getInstance().resolveLibrary(I18NString(library)));
  const bool hasFunction = VRKDynamicLibrary::symbol(handle, function) != nullptr;
  if (handle != nullptr) VRKDynamicLibrary::close(handle);
  if (hasFunction) return;
  m_findings.add(
      severity, name, element, element.getTagName().toUtf8(), library,
      (handle == nullptr ? "the library is not found; " : std::string("it has no ") + function + "(); ") + effect);
}

// All names at once, since each may take as long as the system's resolver does.
void LOGEnvironmentRules::checkHosts(bool connect) {
  std::vector<Host> hosts;
  const auto wakeUp = std::make_shared<VRKWakeUp>();
  for (const auto& each : m_model.appenders()) {
    const bool isTcp = each->is("LOGTCPSocketAppender");
    if (!each->isReferred || !(isTcp || each->is("LOGSyslogAppender"))) continue;
    const std::string name = each->value(isTcp ? "RemoteHost" : "Host");
    const long port = isTcp ? LOGDocumentTables::asInteger(I18NString(portOf(*each))) : 514;
    if (name.empty() || port < 1 || port > 65535) continue;
    hosts.push_back({each.get(), name, port, std::make_unique<VRKNameLookup>(I18NString(name), port, wakeUp)});
  }
  const Clock::time_point end = Clock::now() + LONGEST_LOOKUPS;
  const auto areDone = [&] {
    return std::all_of(hosts.begin(), hosts.end(), [](const Host& host) { return host.lookup->isDone(); });
  };
  while (!areDone() && Clock::now() < end) wakeUp->wait(-1, false, millisecondsUntil(end));
  for (const Host& host : hosts) {
    const std::string where = LOGFindings::appender(*host.appender);
    const bool isDone = host.lookup->isDone();
    const std::vector<VRKSocketAddress> addresses =
        isDone ? host.lookup->takeAddresses() : std::vector<VRKSocketAddress>();
    if (addresses.empty()) {
      m_findings.add(isDone ? FAULT : WARNING, isDone ? "host-unknown" : "host-slow", host.appender->element, where,
                     host.name,
                     isDone ? "the name of the host is not known; nothing is sent"
                            : "the name of the host was not found in two seconds");
    } else if (connect && host.appender->is("LOGTCPSocketAppender")) {
      VRKStreamSocket socket(addresses);
      const Clock::time_point limit = Clock::now() + LONGEST_CONNECT;
      VRKStream::Progress progress = socket.advance();
      while (progress == VRKStream::PENDING && Clock::now() < limit) {
        wakeUp->wait(socket.descriptor(), socket.hasToWrite(), millisecondsUntil(limit));
        progress = socket.advance();
      }
      if (progress == VRKStream::READY) continue;
      m_findings.add(WARNING, "server-silent", host.appender->element, where,
                     host.name + ":" + std::to_string(host.port),
                     "the log server does not answer: " +
                         (socket.failure().empty() ? std::string("no connection in two seconds") : socket.failure()));
    }
  }
}

void LOGEnvironmentRules::checkInternalLog() {
  if (VRKFmDir::exists(SETTINGS_FILE, VRKFmDir::REGULAR_FILE)) {
    m_findings.add(NOTE, "internal-log-on", m_model.root(), "", SETTINGS_FILE,
                   "the file is there, so the internal log is on, whatever it says");
  }
  const std::string name = internalLogName();
  if (name.empty()) return;
  std::error_code ignored;
  const auto log = std::filesystem::weakly_canonical(name, ignored);
  for (const auto& each : m_model.appenders()) {
    if (!each->isReferred || !each->isFile() || each->value("File").empty()) continue;
    if (std::filesystem::weakly_canonical(resolved(each->value("File")).toUtf8(), ignored) != log) continue;
    m_findings.add(WARNING, "file-is-internal-log", each->find("File")->element, LOGFindings::appender(*each),
                   log.string(), "the internal log goes to the same file");
  }
}
