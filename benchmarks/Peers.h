// Other loggers, set up to write the same line. Each is there when its Debian package is.

#pragma once

#include <memory>
#include <string>

#include "benchmarks/Line.h"

#ifdef LOG4VRK_PEER_SPDLOG
#include <spdlog/async.h>
#include <spdlog/logger.h>
#include <spdlog/sinks/basic_file_sink.h>
#endif
#ifdef LOG4VRK_PEER_GLOG
#include <glog/logging.h>
#endif

namespace bench {

#ifdef LOG4VRK_PEER_SPDLOG

/// A logger of spdlog before a sink.
class SpdlogLog {
 public:
  /// `flushed`: every event is in the kernel when the call returns.
  SpdlogLog(std::shared_ptr<spdlog::sinks::sink> sink, bool flushed) : m_logger(LOGGER, std::move(sink)) {
    m_logger.set_pattern(SPDLOG_PATTERN);
    if (flushed) m_logger.flush_on(spdlog::level::trace);
  }
  SpdlogLog(const std::string& path, bool flushed)
      : SpdlogLog(std::make_shared<spdlog::sinks::basic_file_sink_mt>(path, true), flushed) {}

  void log(long i) { m_logger.info("request {} from {} ok", number(i), HOST); }
  spdlog::logger& logger() { return m_logger; }

 private:
  spdlog::logger m_logger;
};

/// The same behind spdlog's queue and one thread.
class SpdlogAsyncLog {
 public:
  SpdlogAsyncLog(const std::string& path, std::size_t queueSize)
      : m_pool(std::make_shared<spdlog::details::thread_pool>(queueSize, 1)),
        m_logger(std::make_shared<spdlog::async_logger>(LOGGER,
                                                        std::make_shared<spdlog::sinks::basic_file_sink_mt>(path, true),
                                                        m_pool, spdlog::async_overflow_policy::block)) {
    m_logger->set_pattern(SPDLOG_PATTERN);
  }

  void log(long i) { m_logger->info("request {} from {} ok", number(i), HOST); }
  /// Writes what is queued.
  void close() {
    m_pool.reset();
    m_logger.reset();
  }

 private:
  std::shared_ptr<spdlog::details::thread_pool> m_pool;
  std::shared_ptr<spdlog::async_logger> m_logger;
};

#endif

#ifdef LOG4VRK_PEER_GLOG

/// glog, with the prefix of its own that it puts before each message; every event is in the kernel when the call
/// returns.
class GlogLog {
 public:
  explicit GlogLog(const std::string& path) {
    static const bool initialised = [] {
      FLAGS_logbuflevel = -1;
      FLAGS_stderrthreshold = google::GLOG_FATAL;
      FLAGS_timestamp_in_logfile_name = false;
      google::SetLogSymlink(google::GLOG_INFO, "");
      google::InitGoogleLogging("bench");
      return true;
    }();
    static_cast<void>(initialised);
    google::SetLogDestination(google::GLOG_INFO, path.c_str());
  }

  void log(long i) { LOG(INFO) << "request " << number(i) << " from " << HOST << " ok"; }
};

#endif

}  // namespace bench
