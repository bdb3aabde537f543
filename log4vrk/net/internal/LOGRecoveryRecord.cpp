#include "log4vrk/net/internal/LOGRecoveryRecord.h"

#include <array>

namespace {

constexpr std::size_t LENGTH = 0, CRC = 4, SEQUENCE = 8;  // where they stand in a record

constexpr std::array<std::uint32_t, 256> makeTable() {
  std::array<std::uint32_t, 256> table{};
  for (std::uint32_t byte = 0; byte < 256; ++byte) {
    std::uint32_t value = byte;
    for (int bit = 0; bit < 8; ++bit) value = value >> 1 ^ (value & 1 ? 0x82F63B78u : 0);
    table[byte] = value;
  }
  return table;
}

constexpr std::array<std::uint32_t, 256> TABLE = makeTable();

template <typename Number>
void putNumber(Number number, char* to) {
  for (std::size_t i = 0; i < sizeof number; ++i) to[i] = static_cast<char>(number >> 8 * i);
}

template <typename Number>
Number getNumber(const char* from) {
  Number number = 0;
  for (std::size_t i = 0; i < sizeof number; ++i) {
    number |= static_cast<Number>(static_cast<unsigned char>(from[i])) << 8 * i;
  }
  return number;
}

std::uint32_t crcOf(std::string_view record) {
  return LOGRecoveryRecord::crc32c(record.substr(SEQUENCE), LOGRecoveryRecord::crc32c(record.substr(LENGTH, CRC)));
}

}  // namespace

void LOGRecoveryRecord::appendTo(std::string& out) const {
  const std::size_t begin = out.size();
  out.append(HEADER, '\0').append(payload);
  putNumber(static_cast<std::uint32_t>(payload.size()), &out[begin + LENGTH]);
  putNumber(sequence, &out[begin + SEQUENCE]);
  putNumber(crcOf(std::string_view(out).substr(begin)), &out[begin + CRC]);
}

std::size_t LOGRecoveryRecord::lengthAt(std::string_view bytes) {
  const std::size_t length = getNumber<std::uint32_t>(&bytes[LENGTH]);
  return length <= MAX_PAYLOAD ? HEADER + length : 0;
}

bool LOGRecoveryRecord::parse(std::string_view bytes, LOGRecoveryRecord& record) {
  if (bytes.size() < HEADER) return false;
  const std::size_t length = lengthAt(bytes);
  if (length == 0 || length > bytes.size()) return false;
  bytes = bytes.substr(0, length);
  if (getNumber<std::uint32_t>(&bytes[CRC]) != crcOf(bytes)) return false;
  record = {getNumber<std::uint64_t>(&bytes[SEQUENCE]), bytes.substr(HEADER)};
  return true;
}

std::uint32_t LOGRecoveryRecord::crc32c(std::string_view bytes, std::uint32_t before) {
  std::uint32_t crc = ~before;
  for (const char byte : bytes) crc = crc >> 8 ^ TABLE[(crc ^ static_cast<unsigned char>(byte)) & 0xFF];
  return ~crc;
}
