// The socket of the system's journal.

#pragma once

#include <string>
#include <string_view>

/// Sends entries to the journal, each as one datagram, or in a sealed file in memory when it is too large for one.
///
/// Thread safety: not thread-safe; the caller holds the lock of the socket's owner. A forked child may go on sending.
/// Ownership: the descriptor is this object's, and is closed by an exec.
/// Errors: operations return an errno value, 0 when they succeed; none is raised.
class VRKJournalSocket {
 public:
  VRKJournalSocket() = default;
  ~VRKJournalSocket();
  VRKJournalSocket(const VRKJournalSocket&) = delete;
  VRKJournalSocket& operator=(const VRKJournalSocket&) = delete;

  /// Sends an entry to the socket of that path, which may be another each time. EAGAIN: the journal has taken nothing
  /// for two seconds, or still takes nothing after such a time.
  int send(const std::string& path, std::string_view entry);
  /// May be repeated. The next send() opens again.
  void close();

 private:
  int sendOnce(const std::string& path, std::string_view entry, int file) const;
  int sendInFile(const std::string& path, std::string_view entry) const;

  int m_descriptor = -1;
  bool m_isStuck = false;  // it has been waited for in vain
};
