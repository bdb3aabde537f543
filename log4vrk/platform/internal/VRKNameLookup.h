// A name looked up without waiting for it.

#pragma once

#include <memory>
#include <vector>

#include "log4vrk/platform/VRKSocketAddress.h"

class VRKWakeUp;

/// Asks the system's resolver on a thread of its own, because the resolver may take minutes and cannot be interrupted.
/// Whoever destroys the object does not wait for the answer.
///
/// Thread safety: not thread-safe.
/// Errors: the constructor raises VRKSystemError when the system has no thread to give, and std::bad_alloc.
class VRKNameLookup {
 public:
  /// Wakes `whenDone` when the answer is there.
  VRKNameLookup(const I18NString& host, long port, std::shared_ptr<VRKWakeUp> whenDone);
  ~VRKNameLookup();
  VRKNameLookup(const VRKNameLookup&) = delete;
  VRKNameLookup& operator=(const VRKNameLookup&) = delete;

  bool isDone() const;
  /// None when the name is not known. Once, when it is done.
  std::vector<VRKSocketAddress> takeAddresses();

 private:
  struct Answer;
  class Thread;

  const std::shared_ptr<Answer> m_answer;  // shared with the thread, which may outlive this object
};
