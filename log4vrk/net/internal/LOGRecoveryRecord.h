// One message in a recovery file.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "log4vrk/platform/VRKExport.h"

/// A message as it stands in a file: 4 bytes length of the payload, 4 bytes CRC-32C of all the others, 8 bytes
/// sequence, the payload. Numbers are little-endian. A file is a row of such records and nothing else.
///
/// Thread safety: without state; any thread.
struct LOG4VRK_EXPORT_FOR_TESTS LOGRecoveryRecord {
  static constexpr std::size_t HEADER = 16;
  static constexpr std::size_t MAX_PAYLOAD = std::size_t{1} << 20;

  std::uint64_t sequence;
  std::string_view payload;

  std::size_t size() const { return HEADER + payload.size(); }

  /// Adds the record to `out`. The payload has at most MAX_PAYLOAD bytes.
  void appendTo(std::string& out) const;
  /// The length of a record of which `bytes` has at least the header, 0 when no record begins like this.
  static std::size_t lengthAt(std::string_view bytes);
  /// The record at the beginning of `bytes`, whose payload points into them; false when there is no valid one.
  static bool parse(std::string_view bytes, LOGRecoveryRecord& record);

  /// The CRC with the Castagnoli polynomial, as in RFC 3720. `before` is the CRC of what precedes the bytes.
  static std::uint32_t crc32c(std::string_view bytes, std::uint32_t before = 0);
};
