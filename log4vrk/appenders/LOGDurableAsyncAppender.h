// The asynchronous appender whose queue outlives a kill.

#pragma once

#include <atomic>
#include <memory>
#include <vector>

#include "log4vrk/appenders/LOGAsyncAppender.h"

class LOGRing;
class LOGRingDispatcher;

/// An asynchronous appender with its queue in a file that is mapped into memory. An event whose log call has returned
/// outlives the process, however that ends: the next start with the same name delivers it before anything of its own.
/// See docs/durable-queue.md for what is promised, and what is not.
///
/// Of the appenders behind it the first that writes to a file gets every event exactly once, through kills and
/// roll-overs. It has to be the file's only writer. The others get every event at least once.
///
/// Name and context of the logging thread always go along. A message is rendered by the logging thread, so the
/// appenders get texts. An event that takes more than half of the queue is waited for until it has been delivered.
///
/// Thread safety, ownership, forks: as LOGAsyncAppender. Processes do not share a file.
/// Errors: where there is no room for the file, or its directory is not this user's alone, the internal log says so,
/// and the events are kept in memory only.
class LOG4VRK_EXPORT LOGDurableAsyncAppender : public LOGAsyncAppender {
 public:
  static constexpr int DEFAULT_BUFFER_SIZE = 8192;

  LOGDurableAsyncAppender();
  LOGDurableAsyncAppender(const LOGDurableAsyncAppender&) = delete;
  LOGDurableAsyncAppender& operator=(const LOGDurableAsyncAppender&) = delete;
  ~LOGDurableAsyncAppender() override;

  /// Makes the file and starts the dispatcher, which recovers what dead processes have left. Does nothing once the
  /// appender has been closed: it is not opened again.
  void activateOptions() override;
  void append(LOGLoggingEvent* event) override;
  void close() override;

  // These hold from the next start on.
  /// In slots of 192 bytes, 8192 at first; a power of two from 16 to 1048576, and any other number becomes the next of
  /// them. An event with up to about 100 bytes of text takes one slot.
  void setBufferSize(int size);
  int getBufferSize();
  /// By which the next start finds what this one has left. The appender's name while it is empty.
  void setQueueName(const I18NString& name);
  I18NString getQueueName();
  /// Where the file is. While it is empty: "log4vrk" in the user's run-time directory, or else
  /// "/dev/shm/log4vrk-<user>". A missing directory is made.
  void setDirectory(const I18NString& directory);
  I18NString getDirectory();

 private:
  LOG4VRK_HIDDEN static const LOGAppenderInternals INTERNALS;

  static bool appendFast(LOGAppenderSkeleton& appender, LOGLoggingEvent* event);
  static bool appendCall(LOGAppenderSkeleton& appender, LOGStatementCall& call);
  static bool drain(LOGAppenderSkeleton& appender);
  LOG4VRK_HIDDEN std::shared_ptr<LOGRing> ring();
  LOG4VRK_HIDDEN void put(LOGRing& ring, LOGLoggingEvent& event);
  LOG4VRK_HIDDEN std::vector<I18NString> directories() const VRK_REQUIRES(m_critSection);
  LOG4VRK_HIDDEN I18NString name() const VRK_REQUIRES(m_critSection);
  LOG4VRK_HIDDEN std::shared_ptr<LOGRing> makeRing(const std::vector<I18NString>& directories) const
      VRK_REQUIRES(m_critSection);
  LOG4VRK_HIDDEN void start() VRK_REQUIRES(m_critSection);
  LOG4VRK_HIDDEN std::unique_ptr<LOGRingDispatcher> takeRingDispatcher();

  std::atomic<LOGRing*> m_open{nullptr};  // the ring into which log calls put
  // The ring lives as long as the appender: a log call that has just read m_open must find a closed one, not a freed
  // one. A forked child makes another.
  std::shared_ptr<LOGRing> m_ring VRK_GUARDED_BY(m_critSection);
  std::unique_ptr<LOGRingDispatcher> m_ringDispatcher VRK_GUARDED_BY(m_critSection);
  int m_bufferSize VRK_GUARDED_BY(m_critSection) = DEFAULT_BUFFER_SIZE;
  I18NString m_queueName VRK_GUARDED_BY(m_critSection);
  I18NString m_directory VRK_GUARDED_BY(m_critSection);
};
