// What becomes of the rings that dead processes have left.

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "log4vrk/appenders/internal/LOGRing.h"

class LOGRingDelivery;

/// Delivers what is left in a ring and removes its file. It may be killed at any step: then the next one goes on.
///
/// Thread safety: one thread at a time.
/// Errors: a line in the internal log each, with the file's name. What cannot be recovered stays or is set aside, with
/// the ending ".damaged"; nothing of it is removed.
class LOG4VRK_EXPORT LOGRingRecovery {
 public:
  /// `reporter` is what lines in the internal log begin with.
  explicit LOGRingRecovery(std::string reporter) : m_reporter(std::move(reporter)) {}

  struct Left {
    std::unique_ptr<LOGRing> ring;
    LOGRing::Condition condition;
  };
  /// Opens the ring at a path. Nothing when it has an owner, is gone, or cannot be read; the last is reported, and the
  /// file set aside unless a newer program can read it.
  std::unique_ptr<Left> open(const I18NString& path);
  /// How many files could not be read or opened, so that something is left.
  int unreadable() const { return m_unreadable; }
  /// Those at several paths, the oldest first.
  std::vector<std::unique_ptr<Left>> openAll(const std::vector<I18NString>& paths);

  /// The two steps. The first brings the log file up to what the ring had announced and needs nothing but the file. The
  /// second delivers the rest and removes the ring. False when something is left.
  bool completeLines(Left& left);
  bool deliver(Left& left, LOGRingDelivery& delivery);

 private:
  LOG4VRK_HIDDEN void report(const LOGRing& ring, const std::string& text) const;
  LOG4VRK_HIDDEN void setAside(VRKMappedFile& file) const;

  const std::string m_reporter;
  int m_unreadable = 0;
};
