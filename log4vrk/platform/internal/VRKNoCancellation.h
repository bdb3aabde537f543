// Work that a cancelled thread still finishes.

#pragma once

/// Puts off the cancellation of the calling thread for the life of a scope: what runs in a destructor cannot be
/// unwound.
class VRKNoCancellation {
 public:
  VRKNoCancellation();
  ~VRKNoCancellation();
  VRKNoCancellation(const VRKNoCancellation&) = delete;
  VRKNoCancellation& operator=(const VRKNoCancellation&) = delete;

 private:
  int m_before;
};
