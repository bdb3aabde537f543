// What happens when a thread ends.

#pragma once

/// Calls `operation` with a value when the thread that set it ends, after all other destructors of that thread: those
/// may still log. A value set again while the thread ends is called for again. For the library's own use, as a static.
class VRKThreadExit {
 public:
  explicit VRKThreadExit(void (*operation)(void*));

  void set(void* value);

 private:
  unsigned m_key;
};
