#include "log4vrk/net/internal/LOGOutboxRing.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace {

using Record = LOGOutboxRing::Record;

std::uint64_t mixed(std::uint64_t value) {
  value = (value ^ value >> 32) * 0x9e3779b97f4a7c15;
  return value ^ value >> 29;
}

std::uint64_t checkOf(std::uint64_t position, const Record& record) {
  const std::uint64_t lengths = std::uint64_t{record.length} << 32 | record.stampAt;
  return mixed(mixed(mixed(position + 1) + record.sequence) + lengths);
}

std::uint64_t sizeFor(std::uint64_t length) {
  return (sizeof(Record) + length + LOGOutboxRing::STEP - 1) / LOGOutboxRing::STEP * LOGOutboxRing::STEP;
}

std::string nameIn(const LOGQueueHeader& header) {
  const std::string_view name(header.name, sizeof header.name);
  return std::string(name.substr(0, name.find('\0')));
}

bool isStream(const std::string& name) {
  return !name.empty() && name.find_first_not_of("0123456789abcdef") == name.npos;
}

}  // namespace

void LOGOutboxRing::begin(VRKMappedFile& file, std::uint64_t bytes, const std::string& stream) {
  LOGQueueHeader::write(file.data(), KIND, bytes, stream);
}

void LOGOutboxRing::use(std::unique_ptr<VRKMappedFile> file) {
  m_file = std::move(file);
  m_data = m_file->data();
  m_bytes = m_available = header().units;
  m_stream = nameIn(header());
}

LOGQueueHeader::Condition LOGOutboxRing::open(std::unique_ptr<VRKMappedFile> file, std::string& finding) {
  m_file = std::move(file);
  m_data = m_file->data();
  m_dead = true;
  const std::size_t size = m_file->size();
  const LOGQueueHeader::Condition condition = LOGQueueHeader::examine(m_data, size, KIND, finding);
  if (condition != LOGQueueHeader::WHOLE && condition != LOGQueueHeader::TRUNCATED) return condition;
  m_bytes = header().units;
  m_available = std::min<std::uint64_t>(size - BYTES_AT, m_bytes);
  const std::uint64_t head = control().head, tail = control().tail;
  m_position = m_next = head;
  m_stream = nameIn(header());
  const bool hold = head <= tail && tail - head <= m_bytes && head % STEP == 0;
  if (hold && isStream(m_stream)) return condition;
  finding = "its positions are damaged (head " + std::to_string(head) + ", tail " + std::to_string(tail) + ")";
  if (hold) finding = "its header is damaged";
  return LOGQueueHeader::USELESS;
}

// Behind the last byte comes the first.
void LOGOutboxRing::write(std::uint64_t position, const void* from, std::size_t count) {
  const auto at = static_cast<std::size_t>(position & (m_bytes - 1));
  const std::size_t first = std::min<std::size_t>(count, static_cast<std::size_t>(m_bytes) - at);
  std::memcpy(m_data + BYTES_AT + at, from, first);
  std::memcpy(m_data + BYTES_AT, static_cast<const char*>(from) + first, count - first);
}

void LOGOutboxRing::read(std::uint64_t position, void* to, std::size_t count) const {
  const auto at = static_cast<std::size_t>(position & (m_bytes - 1));
  const std::size_t first = std::min<std::size_t>(count, static_cast<std::size_t>(m_bytes) - at);
  std::memcpy(to, m_data + BYTES_AT + at, first);
  std::memcpy(static_cast<char*>(to) + first, m_data + BYTES_AT, count - first);
}

bool LOGOutboxRing::put(const LOGEncodedEvent& event, std::uint64_t sequence) {
  Control& control = this->control();
  const std::uint64_t size = sizeFor(event.text.size()), position = control.tail.load(std::memory_order_relaxed);
  if (position + size - m_knownHead > m_bytes) {
    m_knownHead = control.head.load(std::memory_order_acquire);
    if (position + size - m_knownHead > m_bytes) return false;
  }
  Record record = {0, sequence, static_cast<std::uint32_t>(event.text.size()),
                   static_cast<std::uint32_t>(event.stampAt)};
  record.check = checkOf(position, record);
  write(position, &record, sizeof record);
  write(position + sizeof record, event.text.data(), event.text.size());
  control.tail.store(position + size, std::memory_order_release);
  return true;
}

bool LOGOutboxRing::usesAtLeast(std::uint64_t bytes) {
  const std::uint64_t tail = control().tail.load(std::memory_order_relaxed);
  if (tail - m_knownHead < bytes) return false;
  m_knownHead = control().head.load(std::memory_order_acquire);
  return tail - m_knownHead >= bytes;
}

Record LOGOutboxRing::recordAt(std::uint64_t position) const {
  Record record{};
  if (isThere(position, sizeof record)) read(position, &record, sizeof record);
  return record;
}

// Of a truncated file only the first bytes are.
bool LOGOutboxRing::isThere(std::uint64_t position, std::uint64_t count) const {
  const std::uint64_t at = position & (m_bytes - 1);
  return m_available == m_bytes || at + count <= m_available;
}

bool LOGOutboxRing::isWhole(std::uint64_t position, const Record& record, std::uint64_t end) const {
  const std::uint64_t size = sizeFor(record.length);
  return record.check == checkOf(position, record) && record.length <= LOGEventEncoder::LONGEST &&
         record.stampAt <= record.length && size <= end - position && isThere(position, size);
}

// In a ring of the dead something may have been changed. Then the next event is looked for, at each place where one may
// begin.
bool LOGOutboxRing::get(LOGEncodedEvent& event, std::uint64_t end) {
  for (; m_position < end; m_position += STEP, m_damaged += STEP) {
    const Record record = recordAt(m_position);
    if (m_dead && !isWhole(m_position, record, end)) continue;
    event.text.reserve(record.length + LOGEventEncoder::LONGEST_STAMP);
    event.text.resize(record.length);
    read(m_position + sizeof record, event.text.data(), record.length);
    event.stampAt = record.stampAt;
    event.sequence = record.sequence;
    LOGEventEncoder::stamp(event, m_stream);
    m_next = m_position + sizeFor(record.length);
    return true;
  }
  m_next = m_position;
  return false;
}

void LOGOutboxRing::release(std::uint64_t before) {
  Control& control = this->control();
  std::uint64_t head = control.head.load(std::memory_order_relaxed);
  while (head < m_position) {
    const Record record = recordAt(head);
    if (record.sequence >= before) break;
    head += sizeFor(record.length);
  }
  control.head.store(head, std::memory_order_release);
}
