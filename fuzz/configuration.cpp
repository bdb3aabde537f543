// Any bytes as a configuration document: read, applied to a hierarchy of its own, and logged to.

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include "log4vrk/config/LOGDOMConfigurator.h"
#include "log4vrk/core/LOGHierarchy.h"
#include "log4vrk/core/LOGRootLogger.h"
#include "log4vrk/net/LOGSyslogWriter.h"
#include "log4vrk/platform/VRKThrowable.h"

namespace {

// Nothing can be created in it, not even by root.
constexpr char NO_SUCH_FILE[] = "/proc/no-such-directory/log";
// The system refuses to send to it, because no socket of the library may broadcast.
constexpr char NOBODY[] = "255.255.255.255";

bool staysInside(const I18NString& appenderClass) {
  for (const char* name : {"ConsoleAppender", "FileAppender", "RollingFileAppender", "SyslogAppender",
                           "LocalUDPAppender", "LogLocalUDPAppender"}) {
    if (LOGDOMConfigurator::subst(appenderClass) == name) return true;
  }
  return false;
}

// A document must not create files, send anything or load libraries.
void disarm(const VRKIDOM_Document& document) {
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

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  // Console appenders write into the void. The fuzzer reports on the error output.
  const int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (nowhere < 0 || ::dup2(nowhere, STDOUT_FILENO) < 0) std::abort();
  const LOGSyslogWriter hostOfThoseWithoutOne(NOBODY);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const MemoryFile file(data, size);
  VRKIDOM_Document document;
  try {
    document = VRKIDOM_Parser().parse(file.path().c_str());
    disarm(document);
  } catch (const VRKThrowable&) {
    return 0;
  }
  LOGHierarchy hierarchy(new LOGRootLogger(LOGLevel::DEBUG_OBJ));
  LOGDOMConfigurator configurator;
  for (int run = 0; run < 2; ++run) {
    configurator.doConfigure(document.getDocumentElement(), &hierarchy);
    hierarchy.getRootLogger()->error("root");
    hierarchy.getLogger("shop.orders")->warn("below");
  }
  return 0;
}
