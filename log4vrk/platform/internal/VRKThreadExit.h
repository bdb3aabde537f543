// What happens when a thread ends.

#pragma once

/// Calls `operation` with a value when the thread that set it ends, after all other destructors of that thread: those
/// may still log. A value set again while the thread ends is called for again. When the program has used up the keys of
/// the thread library, nothing is called: what the threads of such a program leave behind is lost memory, no more. For
/// the library's own use, as a static.
class VRKThreadExit {
 public:
  explicit VRKThreadExit(void (*operation)(void*));

  void set(void* value);

 private:
  unsigned m_key;
  bool m_hasKey;
};
