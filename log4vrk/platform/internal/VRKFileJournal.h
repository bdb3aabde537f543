// Who has to know of a write before it happens.

#pragma once

#include <cstdint>
#include <string_view>

/// Told by a file about what it has collected for somebody who can give the same bytes again. So a process that is
/// killed in the middle of a write leaves behind what it was about to write, and where.
///
/// Thread safety: called by whoever holds the lock of the file's owner.
/// Errors: none is raised.
class VRKFileJournal {
 public:
  /// Where the bytes go: a file of the system, and how long it is before.
  struct Place {
    std::uint64_t device;
    std::uint64_t inode;
    std::int64_t size;
  };

  virtual ~VRKFileJournal() = default;
  /// A piece is in the file's own memory now, to be written with what comes later.
  virtual void collected() = 0;
  /// Everything that has been collected is about to be written.
  virtual void writes(const Place& place, std::string_view bytes) = 0;
  /// It has been, as far as that was possible.
  virtual void wrote() = 0;
};
