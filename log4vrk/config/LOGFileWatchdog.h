// A thread that looks for changes of a file.

#pragma once

#include <cstdint>
#include <memory>

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"
#include "log4vrk/platform/VRKThread.h"

/// Looks at the file's time of modification again and again, and reacts when it is newer than the last one seen. The
/// period, the last time seen and the flag that ends the polling belong to all watchdogs together: making a watchdog
/// resets them, and one whose file cannot be examined stops all.
///
/// Thread safety: any thread.
/// Ownership: the program makes it, calls start(), and deletes it; deleting stops the thread, and from the thread
/// itself lets it run out. A derived class calls stop() first in its destructor, because the thread calls its
/// doOnChange().
class LOG4VRK_EXPORT LOGFileWatchdog : public VRKThread {
 public:
  static constexpr long m_DEFAULT_DELAY = 6000;

  /// Looks at the file at once. A reaction is left to the first poll, since doOnChange() belongs to a class that is not
  /// built yet.
  explicit LOGFileWatchdog(const I18NString& fileName);
  ~LOGFileWatchdog() override;

  /// For all watchdogs, in milliseconds; less than one counts as one.
  static void setDelay(long milliseconds);
  static long getDelay();

  /// One look at the file. Raises nothing.
  void checkAndConfigure();
  /// Polls until a file cannot be examined or the watchdog is stopped.
  void run() override;
  /// The reaction to a newer file; on the watchdog's thread, except for a check that somebody else has called.
  virtual void doOnChange() = 0;

 protected:
  struct LookLater {};
  /// Leaves the first look to the derived class's own constructor.
  LOGFileWatchdog(const I18NString& fileName, LookLater);

  const I18NString& fileName() const { return m_fileName; }
  /// Ends the polling and waits for it. May be repeated.
  void stop();

 private:
  LOG4VRK_HIDDEN bool examine(std::int64_t& modified);

  const I18NString m_fileName;
  const std::shared_ptr<VRKStopSignal> m_stop;  // the thread keeps it when doOnChange() deletes the watchdog
};
