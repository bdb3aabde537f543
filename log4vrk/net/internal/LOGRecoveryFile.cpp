#include "log4vrk/net/internal/LOGRecoveryFile.h"

#include <atomic>
#include <cstdio>
#include <ctime>

#include "log4vrk/platform/internal/VRKTime.h"

namespace {

constexpr std::size_t BLOCK_BYTES = std::size_t{64} << 10;  // read at once
constexpr std::size_t TIME_DIGITS = 14, NUMBER_DIGITS = 8, NAME_LENGTH = TIME_DIGITS + 1 + NUMBER_DIGITS;

std::atomic<unsigned> g_number{0};

}  // namespace

I18NString LOGRecoveryFile::newName() {
  const std::tm time = VRKTime::local(VRKTime::now().seconds);
  char name[96];
  std::snprintf(name, sizeof name, "%04d%02d%02d%02d%02d%02d-%08x", time.tm_year + 1900, time.tm_mon + 1, time.tm_mday,
                time.tm_hour, time.tm_min, time.tm_sec, g_number++);
  return name;
}

bool LOGRecoveryFile::isName(std::u16string_view name) {
  static constexpr std::u16string_view DIGITS = u"0123456789abcdef";
  if (name.size() != NAME_LENGTH || name[TIME_DIGITS] != u'-') return false;
  return name.substr(0, TIME_DIGITS).find_first_not_of(DIGITS.substr(0, 10)) == name.npos &&
         name.substr(TIME_DIGITS + 1).find_first_not_of(DIGITS) == name.npos;
}

bool LOGRecoveryFile::isSetAside(const I18NString& name) {
  if (!isName(name.view().substr(0, NAME_LENGTH))) return false;
  const I18NString begin = name.substring(0, NAME_LENGTH);
  return name == begin + DAMAGED || name == begin + REFUSED;
}

void LOGRecoveryFile::readThrough() {
  valid = file.size();
  LOGRecoveryReader reader(*this);
  for (LOGRecoveryRecord record; reader.next(record);) {
  }
  messages = reader.count();
  damaged = !reader.atEnd();
  valid = reader.offset();
}

bool LOGRecoveryReader::next(LOGRecoveryRecord& record) {
  const std::string_view header = bytes(LOGRecoveryRecord::HEADER);
  if (header.empty()) return false;
  const std::size_t length = LOGRecoveryRecord::lengthAt(header);
  if (length == 0 || !LOGRecoveryRecord::parse(bytes(length), record)) return false;
  m_offset += static_cast<std::int64_t>(length);
  ++m_count;
  return true;
}

// The next `count` bytes, or none when there are not so many.
std::string_view LOGRecoveryReader::bytes(std::size_t count) {
  const std::int64_t left = m_file.valid - m_offset;
  if (static_cast<std::int64_t>(count) > left) return {};
  std::size_t begin = static_cast<std::size_t>(m_offset - m_blockOffset);
  if (begin + count > m_block.size()) {
    m_block.resize(static_cast<std::size_t>(std::min<std::int64_t>(std::max(count, BLOCK_BYTES), left)));
    const long got = m_file.file.read(m_offset, m_block.data(), static_cast<long>(m_block.size()));
    m_block.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
    m_blockOffset = m_offset;
    begin = 0;
    if (count > m_block.size()) return {};
  }
  return std::string_view(m_block).substr(begin, count);
}
