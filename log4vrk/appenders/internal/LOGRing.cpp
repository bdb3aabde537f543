#include "log4vrk/appenders/internal/LOGRing.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "log4vrk/core/internal/LOGGate.h"

namespace {

using Format = LOGRingFormat;

constexpr std::int64_t FIRST_SECOND = -62135596800, LAST_SECOND = 253402300799;  // of the years 1 and 9999

// A pointer that this process has put into a record.
template <typename T>
T* pointerFrom(std::uint64_t record) {
  const auto bits = static_cast<std::uintptr_t>(record);
  T* pointer = nullptr;
  std::memcpy(&pointer, &bits, sizeof bits);
  return pointer;
}

std::int64_t distance(std::uint64_t from, std::uint64_t to) { return static_cast<std::int64_t>(to - from); }

std::uint64_t textBytes(const Format::Record& head) {
  return std::uint64_t{head.messageLength} + head.contextLength + head.loggerLength + head.restLength +
         head.threadLength;
}

template <std::size_t size>
void replaceText(char (&to)[size], std::uint32_t& length, std::string_view text) {
  length = text.size() <= size ? static_cast<std::uint32_t>(text.size()) : 0;
  std::memcpy(to, text.data(), length);
}

[[gnu::always_inline]] inline void fill(Format::Record& head, const LOGRingRecord& record, std::uint8_t kind) {
  head.seconds = record.seconds;
  head.logger = reinterpret_cast<std::uintptr_t>(record.logger);
  head.place = reinterpret_cast<std::uintptr_t>(record.place);
  head.nanoseconds = record.nanoseconds;
  head.rank = record.rank;
  head.messageLength = static_cast<std::uint32_t>(record.message.size());
  head.contextLength = static_cast<std::uint32_t>(record.context.size());
  head.restLength = static_cast<std::uint32_t>(record.rest.size());
  head.loggerLength = static_cast<std::uint16_t>(record.loggerName.size());
  head.threadLength = static_cast<std::uint8_t>(record.threadName.size());
  head.kind = kind;
}

}  // namespace

// Objects may be left when no dispatcher could be started. In a forked child they are the parent's.
LOGRing::~LOGRing() {
  if (m_data == nullptr || m_dead || m_forks != VRKThread::forks()) return;
  while (hasNext()) get();
}

std::uint64_t LOGRing::slotsFor(int events) {
  std::uint64_t slots = Format::FEWEST_SLOTS;
  while (slots < Format::MOST_SLOTS && distance(slots, static_cast<std::uint64_t>(std::max(events, 1))) > 0) slots *= 2;
  return slots;
}

void LOGRing::begin(VRKMappedFile& file, std::uint64_t slots, const std::string& name) {
  LOGQueueHeader::write(file.data(), Format::KIND, slots, name);
}

void LOGRing::use(std::unique_ptr<VRKMappedFile> file) {
  m_file = std::move(file);
  m_data = m_file->data();
  m_slots = m_available = header().units;
}

LOGRing::Condition LOGRing::open(std::unique_ptr<VRKMappedFile> file, std::string& finding) {
  m_file = std::move(file);
  m_data = m_file->data();
  m_dead = true;
  const std::size_t size = m_file->size();
  const Condition condition = LOGQueueHeader::examine(m_data, size, Format::KIND, finding);
  if (condition != WHOLE && condition != TRUNCATED) return condition;
  m_slots = header().units;
  m_available = std::min<std::uint64_t>((size - Format::SLOTS_AT) / Format::SLOT, m_slots);
  if (!positionsHold(finding)) return USELESS;
  m_position = control().head;
  delivered = m_position;
  return condition;
}

bool LOGRing::positionsHold(std::string& finding) const {
  const std::uint64_t head = control().head, written = control().written, tail = putSoFar();
  if (head <= written && written <= tail && tail - head <= m_slots) return true;
  finding = "its positions are damaged (head " + std::to_string(head) + ", written " + std::to_string(written) +
            ", tail " + std::to_string(tail) + ")";
  return false;
}

void LOGRing::setTarget(std::string_view path, std::string_view pattern) {
  if (path == targetPath() && pattern == targetPattern()) return;
  Format::Target& target = this->target();
  target.valid = 0;
  replaceText(target.path, target.pathLength, path);
  replaceText(target.pattern, target.patternLength, pattern);
  target.valid.store(1, std::memory_order_release);
}

std::string LOGRing::targetPath() const {
  const Format::Target& target = this->target();
  if (target.valid != 1 || target.pathLength > sizeof target.path) return {};
  return {target.path, target.pathLength};
}

std::string LOGRing::targetPattern() const {
  const Format::Target& target = this->target();
  if (target.valid != 1 || target.patternLength > sizeof target.pattern) return {};
  return {target.pattern, target.patternLength};
}

// As LOGBoundedFIFO::claim(). Slots that lie behind the head have been read, and reading has to have happened before
// somebody else writes them: hence acquire and release for the copy of the head, too.
LOGRing::Outcome LOGRing::claim(std::uint64_t count, std::uint64_t& position) {
  Format::Control& control = this->control();
  std::uint64_t tail = control.tail.load(std::memory_order_acquire);
  for (;;) {
    if ((tail & Format::SEALED) != 0) return LOGBoundedFIFO::CLOSED;
    const std::int64_t room = static_cast<std::int64_t>(m_slots - count);
    if (distance(control.knownHead.load(std::memory_order_acquire), tail) > room) {
      const std::uint64_t head = control.head.load(std::memory_order_acquire);
      control.knownHead.store(head, std::memory_order_release);
      if (distance(head, tail) > room) return LOGBoundedFIFO::FULL;
    }
    if (control.tail.compare_exchange_weak(tail, tail + count, std::memory_order_acquire)) {
      position = tail;
      return LOGBoundedFIFO::QUEUED;
    }
  }
}

// Spreads texts over the slots of a record.
class LOGRing::Writer {
 public:
  Writer(LOGRing& ring, std::uint64_t position, char* to)
      : m_ring(ring), m_position(position), m_to(to), m_left(Format::FIRST_BYTES) {}

  void put(std::string_view text) {
    while (!text.empty()) {
      if (m_left == 0) {
        m_to = m_ring.slot(++m_position).bytes;
        m_left = Format::FURTHER_BYTES;
      }
      const std::size_t count = std::min(m_left, text.size());
      std::memcpy(m_to, text.data(), count);
      m_to += count;
      m_left -= count;
      text.remove_prefix(count);
    }
  }

 private:
  LOGRing& m_ring;
  std::uint64_t m_position;
  char* m_to;
  std::size_t m_left;
};

// The way of most events: nothing is put together but the slot.
[[gnu::always_inline]] inline bool LOGRing::putShort(const LOGRingRecord& record, Outcome& outcome) {
  if (record.textBytes() > Format::FIRST_BYTES) return false;
  std::uint64_t position = 0;
  outcome = claim(1, position);
  if (outcome != LOGBoundedFIFO::QUEUED) return true;
  char* to = slot(position).bytes;
  auto& head = *reinterpret_cast<Format::Record*>(to);
  fill(head, record, Format::EVENT);
  to = I18NUtf8Buffer::copy(to + sizeof head, record.threadName);
  to = I18NUtf8Buffer::copy(to, record.loggerName);
  I18NUtf8Buffer::copy(to, record.message);
  publish(position);
  return true;
}

LOGRing::Outcome LOGRing::put(LOGLoggingEvent& event, std::unique_ptr<LOGLoggingEvent>& copy, bool& lasts,
                              std::uint64_t& end) {
  LOGThreadState& thread = LOGThreadState::current();
  const LOGGate::Pass inside(thread);  // a fork finds no slot claimed and not published
  Outcome outcome;
  const bool isShort = LOGRingRecord::isOrdinary(event, thread) && !LOGRingRecord::hasFields(event);
  if (isShort && putShort(LOGRingRecord::ofOrdinary(event, thread), outcome)) return outcome;
  return putAny(event, thread, copy, lasts, end);
}

bool LOGRing::putCall(LOGStatementCall& call) {
  LOGThreadState& thread = LOGThreadState::current();
  if (!LOGRingRecord::isOrdinary(call, thread)) return false;
  Outcome outcome;
  return putShort(LOGRingRecord::ofOrdinary(call, thread), outcome) && outcome == LOGBoundedFIFO::QUEUED;
}

void LOGRing::write(const LOGRingRecord& record, std::uint8_t kind, std::uint64_t position, std::uint64_t count) {
  char* const bytes = slot(position).bytes;
  auto& head = *reinterpret_cast<Format::Record*>(bytes);
  fill(head, record, kind);
  Writer writer(*this, position, bytes + sizeof head);
  for (const std::string_view text :
       {record.threadName, record.loggerName, record.message, record.context, record.rest}) {
    writer.put(text);
  }
  for (std::uint64_t each = position + 1; each < position + count; ++each) {
    slot(each).mark.store((each + 1) | Format::FURTHER, std::memory_order_release);
  }
  publish(position);
}

LOGRing::Outcome LOGRing::putAny(LOGLoggingEvent& event, LOGThreadState& thread, std::unique_ptr<LOGLoggingEvent>& copy,
                                 bool& lasts, std::uint64_t& end) {
  LOGRingRecord::Room room;
  const bool isOrdinary = LOGRingRecord::isOrdinary(event, thread);
  LOGRingRecord record =
      isOrdinary ? LOGRingRecord::ofOrdinary(event, thread, room) : LOGRingRecord::ofAny(event, room);
  std::uint64_t count = Format::slotsFor(record.textBytes());
  std::uint8_t kind = Format::EVENT;
  lasts = count <= m_slots / 2;
  if (!lasts) {
    event.getThreadName();  // of this thread, before the dispatcher asks
    event.getNDC();
    if (!copy) copy = std::make_unique<LOGLoggingEvent>(event);
    kind = Format::OBJECT;
    record = LOGRingRecord();
    count = 1;
  }
  std::uint64_t position = 0;
  const Outcome outcome = claim(count, position);
  if (outcome != LOGBoundedFIFO::QUEUED) return outcome;
  if (!lasts) record.logger = reinterpret_cast<LOGLogger*>(copy.release());
  write(record, kind, position, count);
  end = position + count;
  return outcome;
}

void LOGRing::close() { control().tail.fetch_or(Format::SEALED); }

// How many slots the record at a position takes, 0 when there is none. A record that is damaged counts as one, and in a
// ring of the dead nothing is believed that could lead out of it.
std::uint64_t LOGRing::readAt(std::uint64_t position) {
  const Format::Slot& first = slot(position);
  if (!hasSlot(position) || first.mark.load(std::memory_order_acquire) != position + 1) return 0;
  std::memcpy(&m_head, first.bytes, sizeof m_head);
  const std::uint64_t count = Format::slotsFor(textBytes(m_head));
  if (m_dead && !isWhole(position, m_head, count)) {
    ++m_damaged;
    return 0;
  }
  return count;
}

bool LOGRing::isWhole(std::uint64_t position, const Format::Record& head, std::uint64_t count) const {
  if (head.kind != Format::EVENT && head.kind != Format::OBJECT) return false;
  if (count > m_slots / 2 || position + count > putSoFar()) return false;
  if (head.nanoseconds < 0 || head.nanoseconds > 999999999 || head.seconds < FIRST_SECOND ||
      head.seconds > LAST_SECOND) {
    return head.kind == Format::OBJECT;
  }
  for (std::uint64_t each = position + 1; each < position + count; ++each) {
    if (!hasSlot(each) || slot(each).mark.load(std::memory_order_acquire) != ((each + 1) | Format::FURTHER)) {
      return false;
    }
  }
  return true;
}

// In a ring of the dead an object is gone, and its log call had not returned. A slot that is not valid is passed over
// alone: the next may be the beginning of another thread's record.
bool LOGRing::hasNext() {
  if (!m_dead) {
    const std::uint64_t count = readAt(m_position);
    m_next = m_position + count;
    return count > 0;
  }
  for (const std::uint64_t tail = putSoFar(); m_position < tail;) {
    const std::uint64_t count = readAt(m_position);
    m_next = m_position + std::max<std::uint64_t>(count, 1);
    if (count > 0 && m_head.kind == Format::EVENT) return true;
    m_position = m_next;
  }
  return false;
}

LOGLoggingEvent* LOGRing::get() {
  const std::uint64_t first = std::exchange(m_position, m_next);
  m_object.reset();
  if (m_head.kind == Format::OBJECT) {
    m_object.reset(pointerFrom<LOGLoggingEvent>(m_head.logger));
    return m_object.get();
  }
  const char* texts = m_next == first + 1 ? slot(first).bytes + sizeof m_head : gather(first);
  const auto take = [&](std::size_t length) { return std::string_view(std::exchange(texts, texts + length), length); };
  LOGRingRecord record;
  record.seconds = m_head.seconds;
  record.nanoseconds = m_head.nanoseconds;
  record.rank = m_head.rank;
  if (!m_dead) {
    record.logger = pointerFrom<LOGLogger>(m_head.logger);
    record.place = pointerFrom<const LOGSourceLocation>(m_head.place);
  }
  record.threadName = take(m_head.threadLength);
  record.loggerName = take(m_head.loggerLength);
  record.message = take(m_head.messageLength);
  record.context = take(m_head.contextLength);
  record.rest = take(m_head.restLength);
  return m_place.fill(record);
}

// The texts of a record of several slots, in a row.
const char* LOGRing::gather(std::uint64_t first) {
  const auto bytes = static_cast<std::size_t>(textBytes(m_head));
  m_texts.assign(slot(first).bytes + sizeof m_head, Format::FIRST_BYTES);
  for (std::uint64_t each = first + 1; each < m_next; ++each) {
    m_texts.append(slot(each).bytes, std::min(bytes - m_texts.size(), Format::FURTHER_BYTES));
  }
  return m_texts.data();
}

void LOGRing::release() {
  Format::Control& control = this->control();
  if (control.written.load(std::memory_order_relaxed) < m_position) {
    control.written.store(m_position, std::memory_order_release);
  }
  control.head.store(m_position, std::memory_order_release);
  delivered.store(m_position);
}

// In this order: until `pending` is stored nothing counts, and from then on everything does.
bool LOGRing::announce(std::uint64_t end, const VRKFileJournal::Place& place, std::string_view lines) {
  const std::size_t offset = Format::outboxAt(m_slots);
  if (offset + lines.size() > m_file->size() && !m_file->growTo(offset + lines.size())) return false;
  Format::Control& control = this->control();
  std::memcpy(m_data + offset, lines.data(), lines.size());
  control.end = end;
  control.length = lines.size();
  control.device = place.device;
  control.inode = place.inode;
  control.offset = place.size;
  control.pending.store(control.written.load(std::memory_order_relaxed) + 1, std::memory_order_release);
  return true;
}

void LOGRing::settle(std::uint64_t end) {
  Format::Control& control = this->control();
  if (control.written.load(std::memory_order_relaxed) < end) control.written.store(end, std::memory_order_release);
  control.pending.store(0, std::memory_order_release);
}

bool LOGRing::pending(Pending& pending, std::string& finding) {
  const Format::Control& control = this->control();
  if (control.pending != control.written + 1) return false;
  const std::size_t offset = Format::outboxAt(m_slots);
  if (m_file->size() < offset || control.length > m_file->size() - offset || control.end < control.written ||
      control.end > putSoFar() || control.offset < 0) {
    finding = "what was about to be written is damaged (" + std::to_string(control.length) + " bytes at " +
              std::to_string(control.offset) + ", events up to " + std::to_string(control.end) + ")";
    return false;
  }
  pending.end = control.end;
  pending.place = {control.device, control.inode, control.offset};
  pending.lines = {m_data + offset, static_cast<std::size_t>(control.length)};
  return true;
}
