// Keeps a thread from being cancelled in the middle of something.

#pragma once

/// Puts off the cancellation (pthread_cancel) of the calling thread for the life of a scope. For destructors: a
/// cancellation unwinds the stack like an exception, and one that leaves a destructor ends the process.
class VRKNoCancellation {
 public:
  VRKNoCancellation();
  ~VRKNoCancellation();
  VRKNoCancellation(const VRKNoCancellation&) = delete;
  VRKNoCancellation& operator=(const VRKNoCancellation&) = delete;

 private:
  int m_before;  // the state to go back to: scopes may be nested
};
