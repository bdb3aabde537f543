// Documents from any bytes that do no harm, for the fuzz targets that apply them.

#pragma once

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "log4vrk/config/LOGDOMConfigurator.h"
#include "log4vrk/net/LOGSyslogWriter.h"
#include "log4vrk/platform/VRKThrowable.h"

namespace vrkfuzz {

// Nothing can be created in it, not even by root.
inline constexpr char NO_SUCH_FILE[] = "/proc/no-such-directory/log";
// The system refuses to send to it, because no socket of the library may broadcast.
inline constexpr char NOBODY[] = "255.255.255.255";

inline bool staysInside(const I18NString& appenderClass) {
  for (const char* name : {"ConsoleAppender", "ColorConsoleAppender", "FileAppender", "RollingFileAppender",
                           "TimeRollingFileAppender", "SyslogAppender", "LocalUDPAppender", "LogLocalUDPAppender"}) {
    if (LOGDOMConfigurator::subst(appenderClass) == name) return true;
  }
  return false;
}

// A document must not create files, send anything or load libraries.
inline void disarm(const VRKIDOM_Document& document) {
  const auto forEach = [&](const char* tag, auto&& change) {
    const VRKIDOM_NodeList elements = document.getElementsByTagName(tag);
    for (long i = 0; i < elements.getLength(); ++i) change(VRKIDOM_Element(elements.item(i)));
  };
  forEach("appender", [](VRKIDOM_Element appender) {
    if (!staysInside(appender.getAttribute("class"))) appender.setAttribute("class", "ConsoleAppender");
  });
  forEach("param", [](VRKIDOM_Element param) {
    if (param.getAttribute("value").isEmpty()) return;
    const I18NString name = param.getAttribute("name");
    if (name == "File") param.setAttribute("value", NO_SUCH_FILE);
    if (name == "Host") param.setAttribute("value", NOBODY);
    if (name == "Port") param.setAttribute("value", "0");
  });
  forEach("renderer",
          [](VRKIDOM_Element renderer) { renderer.setAttribute("renderingClass", "log4vrkNoSuchRenderer"); });
  forEach("categoryFactory", [](VRKIDOM_Element factory) { factory.setAttribute("class", "log4vrkNoSuchFactory"); });
}

// For the beginning of a target: console appenders write into the void, since the fuzzer reports on the error output,
// and syslog appenders without a host have one that nobody is.
inline void writeNowhere() {
  const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (nowhere < 0 || ::dup2(nowhere, STDOUT_FILENO) < 0) std::abort();
  const LOGSyslogWriter hostOfThoseWithoutOne(NOBODY);
}

// A file without a place on the disk.
class MemoryFile {
 public:
  MemoryFile(const void* bytes, std::size_t size) : m_descriptor(::memfd_create("document", MFD_CLOEXEC)) {
    if (m_descriptor < 0 || ::write(m_descriptor, bytes, size) != static_cast<ssize_t>(size)) std::abort();
  }
  ~MemoryFile() { ::close(m_descriptor); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  std::string path() const { return "/proc/self/fd/" + std::to_string(m_descriptor); }

 private:
  const int m_descriptor;
};

}  // namespace vrkfuzz
