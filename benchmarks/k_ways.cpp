// k. The ways from a log call to where it is kept, next to each other: what a call costs at 20,000 calls a second, and
// how many events a second one thread gets there. A log server takes part when one listens on port 2514 of this machine
// (examples/log-server/run-log-server.sh).

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <filesystem>
#include <thread>
#include <vector>

#include "benchmarks/Harness.h"
#include "benchmarks/Ours.h"

namespace {

class ServerLog {
 public:
  ServerLog() : m_appender(new LOGTCPSocketAppender), m_log(started(m_appender)) {}
  void log(long i) const { m_log.log(i); }
  /// When the server has all of them.
  void finish(long events) const {
    while (m_appender->getAcknowledged() < static_cast<std::uint64_t>(events)) {
      std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
  }

  static bool listens() {
    const int descriptor = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(LOGTCPSocketAppender::DEFAULT_PORT);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const bool connected = ::connect(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    ::close(descriptor);
    return connected;
  }

 private:
  static LOGAppenderSkeleton* started(LOGTCPSocketAppender* appender) {
    appender->setName("server");
    appender->setRemoteHost("127.0.0.1");
    appender->activateOptions();
    return appender;
  }

  LOGTCPSocketAppender* m_appender;  // m_log's
  bench::OurLog m_log;
};

struct QueueLog : bench::OurAsyncLog {
  using OurAsyncLog::OurAsyncLog;
  void finish(long /*events*/) { close(); }
};
struct FileLog : bench::OurLog {
  using OurLog::OurLog;
  void finish(long /*events*/) { close(); }
};

/// A file that has another to fall back on.
class FallbackLog {
 public:
  explicit FallbackLog(const std::string& path)
      : m_file(bench::OurLog::layout(), path.c_str(), 0),
        m_other(bench::OurLog::layout(), (path + ".other").c_str(), 0),
        m_log(attached(new LOGFallbackAppender)) {}
  void log(long i) const { m_log.log(i); }
  void finish(long /*events*/) { m_log.close(); }

 private:
  LOGAppenderSkeleton* attached(LOGFallbackAppender* fallback) {
    m_other.setName("other");
    fallback->addAppender(&m_file);
    fallback->addAppender(&m_other);
    return fallback;
  }

  LOGFileAppender m_file, m_other;
  bench::OurLog m_log;
};

template <typename Make>
std::vector<double> measured(const bench::Settings& settings, Make make) {
  std::vector<double> result;
  {
    auto log = make();
    const long events = settings.count(20'000);
    result = bench::pacedCalls(events, 50'000, [&](long i) { log->log(i); });
    log->finish(events);
  }
  auto log = make();
  const long events = settings.count(400'000);
  const double seconds = bench::seconds(
      1, events, [&](long i) { log->log(i); }, [&] { log->finish(events); });
  return {result[0], result[2], static_cast<double>(events) / seconds};
}

}  // namespace

int main(int argc, char** argv) {
  const bench::Settings settings(argc, argv);
  bench::Folder folder;
  std::filesystem::create_directories(folder.path() + "/run");
  std::filesystem::current_path(folder.path() + "/run");  // the recovery files are beside it
  bench::Comparison comparison(settings, {{"k p50", "ns/call"}, {"k p99", "ns/call"}, {"k1", "events/s"}});
  using bench::OurAsyncLog;
  comparison.add("file",
                 [&] { return measured(settings, [&] { return std::make_unique<FileLog>(folder.newFile()); }); });
  comparison.add("buffered file",
                 [&] { return measured(settings, [&] { return std::make_unique<FileLog>(folder.newFile(), 1); }); });
  comparison.add("file with a fallback",
                 [&] { return measured(settings, [&] { return std::make_unique<FallbackLog>(folder.newFile()); }); });
  for (const auto& [name, kind] :
       {std::pair{"queue", OurAsyncLog::ORDINARY}, {"durable queue", OurAsyncLog::DURABLE}}) {
    comparison.add(name, [&, kind = kind] {
      return measured(settings, [&] { return std::make_unique<QueueLog>(folder.newFile(), kind); });
    });
  }
  if (ServerLog::listens()) {
    comparison.add("log server", [&] { return measured(settings, [] { return std::make_unique<ServerLog>(); }); });
  }
  comparison.run();
}
