// Files of which one process at a time is the owner.

#pragma once

#include "log4vrk/platform/I18NString.h"

struct stat;

/// The steps that all kinds of such files share. The owner is whoever holds the descriptor's lock; the system ends that
/// when the last process that has the descriptor does.
///
/// Thread safety: without state; any thread.
/// Errors: returned, with errno set.
struct VRKOwnedFile {
  enum Result { OPENED, OWNED_OR_GONE, FAILED };

  /// Makes a file that only its user may read (mode 0600). OWNED_OR_GONE when the name is in use.
  static Result create(const I18NString& path, int& descriptor);
  /// Opens one that is there; symbolic links are not followed. OWNED_OR_GONE when there is none. It is opened for
  /// writing, also by those who only read: a network file system locks nothing else.
  static Result open(const I18NString& path, int& descriptor);
  /// One more descriptor, for a purpose of its own; negative when it cannot be had. `flags` are those of open().
  static int openPlainly(const I18NString& path, int flags);
  /// Takes the lock, and looks at the file: FAILED when it is no regular one, OWNED_OR_GONE when somebody else has it
  /// or its owner removed it before the lock was had.
  static Result own(int descriptor, struct stat& status);
};
