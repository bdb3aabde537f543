// One of the recovery files, its names, and its reader.

#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "log4vrk/net/internal/LOGRecoveryRecord.h"
#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/internal/VRKSpoolFile.h"

/// A row of messages that its store delivers from the first to the last, and what the store knows of it. The name of
/// the file is a time and a number, with an ending when nobody delivers it any more.
///
/// Thread safety: not thread-safe, but for newName().
struct LOGRecoveryFile {
  static constexpr const char *DAMAGED = ".damaged", *REFUSED = ".refused";

  explicit LOGRecoveryFile(I18NString where) : path(std::move(where)) {}

  /// Not used yet by this process.
  static I18NString newName();
  static bool isName(std::u16string_view name);
  /// Whether it is a name with an ending.
  static bool isSetAside(const I18NString& name);

  /// Counts the messages of a file that has been opened, and finds out where damage begins.
  void readThrough();

  std::uint64_t pending() const { return messages - acknowledged; }
  /// How many of its messages are at or before a position.
  std::uint64_t until(std::uint64_t position) const {
    return position < first ? 0 : std::min(position - first + 1, messages);
  }

  const I18NString path;
  VRKSpoolFile file;
  std::int64_t valid = 0;   // bytes before the damage, or all
  std::uint64_t first = 0;  // position of its first message
  std::uint64_t messages = 0, acknowledged = 0;
  bool damaged = false;
};

/// Goes through the messages of a file, which is lent. More may be appended meanwhile.
class LOGRecoveryReader {
 public:
  explicit LOGRecoveryReader(LOGRecoveryFile& file) : m_file(file) {}

  /// False at the end and at damage. The payload lives until the next call.
  bool next(LOGRecoveryRecord& record);
  bool atEnd() const { return m_offset == m_file.valid; }
  /// How far it has read: in bytes, and in messages.
  std::int64_t offset() const { return m_offset; }
  std::uint64_t count() const { return m_count; }

 private:
  std::string_view bytes(std::size_t count);

  LOGRecoveryFile& m_file;
  std::int64_t m_offset = 0;
  std::uint64_t m_count = 0;
  std::string m_block;
  std::int64_t m_blockOffset = 0;
};
