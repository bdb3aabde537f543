// This library as a program would set it up: a pattern layout, an appender at the root, a logger two levels below.

#pragma once

#include <memory>
#include <string>

#include "benchmarks/Line.h"
#include "log4vrk/log4vrk.h"

namespace bench {

constexpr long BUFFER_SIZE = 65536;
constexpr int QUEUE_SIZE = 8192;

/// The appender takes part from here to close().
class OurLog {
 public:
  explicit OurLog(const std::string& path, int bufferedIO = 0)
      : OurLog(bufferedIO == 1 ? new LOGFileAppender(layout(), path.c_str(), 0, 1, BUFFER_SIZE)
                               : new LOGFileAppender(layout(), path.c_str(), 0)) {}
  /// Takes the appender over. Its layout is layout().
  explicit OurLog(LOGAppenderSkeleton* appender) : m_appender(appender) {
    LOGLogger* const root = LOGManager::getRootLogger();
    root->setLevel(LOGLevel::INFO_OBJ);
    LOGManager::getLogger("com.acme");
    m_logger = LOGManager::getLogger(LOGGER);
    root->addAppender(appender);
  }
  ~OurLog() { close(); }
  OurLog(const OurLog&) = delete;
  OurLog& operator=(const OurLog&) = delete;

  static LOGPatternLayout* layout() {
    static LOGPatternLayout pattern(OUR_PATTERN);
    return &pattern;
  }

  void log(long i) const { LOG4VRK_INFO(m_logger, "request " << number(i) << " from " << HOST << " ok"); }
  LOGLogger* logger() const { return m_logger; }

  /// What is buffered or queued is in the kernel afterwards.
  void close() {
    if (!m_appender) return;
    m_appender->close();
    LOGManager::getRootLogger()->removeAppender(m_appender.get());
    m_appender.reset();
  }

 private:
  std::unique_ptr<LOGAppenderSkeleton> m_appender;
  LOGLogger* m_logger = nullptr;
};

/// The same behind a queue: an ordinary one, one before a file with a buffer, or one that outlives a kill.
class OurAsyncLog {
 public:
  enum Kind { ORDINARY, BUFFERED, DURABLE };

  explicit OurAsyncLog(const std::string& path, Kind kind = ORDINARY)
      : m_file(kind == BUFFERED ? new LOGFileAppender(OurLog::layout(), path.c_str(), 0, 1, BUFFER_SIZE)
                                : new LOGFileAppender(OurLog::layout(), path.c_str(), 0)),
        m_log(kind == DURABLE ? started(new LOGDurableAsyncAppender) : started(new LOGAsyncAppender)) {}
  ~OurAsyncLog() { close(); }
  OurAsyncLog(const OurAsyncLog&) = delete;
  OurAsyncLog& operator=(const OurAsyncLog&) = delete;

  void log(long i) const { m_log.log(i); }
  LOGLogger* logger() const { return m_log.logger(); }
  void close() {
    m_log.close();
    m_file->close();
  }

 private:
  template <typename Queue>
  LOGAppenderSkeleton* started(Queue* queue) {
    queue->setName("benchmark");
    queue->setBufferSize(QUEUE_SIZE);
    queue->addAppender(m_file.get());
    queue->activateOptions();
    return queue;
  }

  std::unique_ptr<LOGFileAppender> m_file;  // made before the queue
  OurLog m_log;
};

}  // namespace bench
