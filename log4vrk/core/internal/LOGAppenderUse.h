// Who is delivering to which appenders, so that an appender can be deleted as soon as it has been removed.

#pragma once

#include <atomic>
#include <chrono>
#include <memory>
#include <vector>

#include "log4vrk/platform/internal/VRKAsymmetricFence.h"

struct LOGAppenderList;
struct LOGThreadState;

/// A delivery takes no lock to read which appenders there are. It says which list of appenders it uses, by one store to
/// a place of the thread's own, and looks whether that list is still the current one. Whoever removes an appender puts
/// a shorter list in place and then waits for the threads that use an earlier one, and for nobody else: threads that
/// keep logging use the new list.
class LOGAppenderUse {
 public:
  using List = LOGAppenderList;
  using Lists = std::vector<std::shared_ptr<const List>>;
  using Place = std::atomic<const List*>;

  /// What others may ask of a thread: the list that it delivers to, and one that it looks something up in meanwhile.
  struct Thread {
    std::atomic<const List*> delivering{nullptr};
    std::atomic<const List*> looking{nullptr};
  };

  /// Uses the list that is at `place`, which may be null, for the life of a scope. `mine` is free.
  LOGAppenderUse(Place& mine, const Place& place) : m_mine(mine), m_list(place.load(std::memory_order_acquire)) {
    // The list may have been replaced, and freed, before the store was seen. Then the second look finds another.
    while (m_list != nullptr) {
      VRKAsymmetricFence::store(m_mine, m_list);
      const List* const again = place.load(std::memory_order_acquire);
      if (again == m_list) break;
      m_list = again;
    }
  }
  ~LOGAppenderUse() { m_mine.store(nullptr, std::memory_order_release); }
  LOGAppenderUse(const LOGAppenderUse&) = delete;
  LOGAppenderUse& operator=(const LOGAppenderUse&) = delete;

  const List* list() const { return m_list; }

  /// Frees `earlier`, lists that have been replaced, when no other thread uses them any more. Returns then, so that the
  /// caller may delete appenders that it has removed; but in the middle of a library call it returns at once, since it
  /// might be waited for: then the lists go when the outermost call on the thread has ended. On a thread that serves a
  /// queue they go when it next finds them unused.
  static void letGo(Lists earlier);
  /// letGo() for the lists that a thread has put off. On a thread that serves a queue `earlier` keeps those that are
  /// still in use. Other threads wait for two seconds and then leave them.
  static void finish(LOGThreadState& thread, Lists& earlier);
  /// Keeps lists until they are found unused when this is called again.
  static void leave(Lists& lists);

 private:
  static bool isUsed(const LOGThreadState& self, const List* list);
  template <typename IsUnused>
  static void dropUnused(Lists& lists, IsUnused isUnused);

  Place& m_mine;
  const List* m_list;
};
