// A queue of events in a file that outlives the process.

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "log4vrk/appenders/LOGBoundedFIFO.h"
#include "log4vrk/appenders/internal/LOGQueueProgress.h"
#include "log4vrk/appenders/internal/LOGRingFormat.h"
#include "log4vrk/appenders/internal/LOGRingRecord.h"
#include "log4vrk/platform/VRKThread.h"
#include "log4vrk/platform/internal/VRKFileJournal.h"
#include "log4vrk/platform/internal/VRKMappedFile.h"

/// The ring of one process or, once that is dead, of whoever recovers it. Positions are those of slots: they count on
/// for ever, and begin at 0.
///
/// Thread safety: put(), close() and the progress for any thread; the rest for one getting thread at a time.
/// Errors: what a file holds is checked before it is used, whoever wrote it.
class LOG4VRK_EXPORT LOGRing : public LOGQueueProgress {
 public:
  using Outcome = LOGBoundedFIFO::Outcome;

  LOGRing() = default;
  ~LOGRing() override;

  /// How many slots a ring has for so many events.
  static std::uint64_t slotsFor(int events);
  static std::size_t bytesFor(std::uint64_t slots) { return LOGRingFormat::bytesFor(slots); }

  /// Writes a new ring into memory that is there already: zeros, as many bytes as bytesFor() says.
  static void begin(VRKMappedFile& file, std::uint64_t slots, const std::string& name);
  /// Uses the ring that this process has begun there.
  void use(std::unique_ptr<VRKMappedFile> file);

  using Condition = LOGQueueHeader::Condition;
  static constexpr Condition WHOLE = LOGQueueHeader::WHOLE,
                             TRUNCATED = LOGQueueHeader::TRUNCATED,  // the outbox, and perhaps some slots
      NEWER = LOGQueueHeader::NEWER, USELESS = LOGQueueHeader::USELESS;
  /// The ring that a dead process has left. `finding` becomes what is wrong with it.
  Condition open(std::unique_ptr<VRKMappedFile> file, std::string& finding);

  VRKMappedFile& file() { return *m_file; }
  const VRKMappedFile& file() const { return *m_file; }
  /// Of the process that made it. Valid after use() and open(), unless that said NEWER or USELESS.
  const LOGRingFormat::Header& header() const { return *at<LOGRingFormat::Header>(0); }
  std::uint64_t slots() const { return m_slots; }

  /// Where the events of the ring go. Empty when that is not known.
  void setTarget(std::string_view path, std::string_view pattern);
  std::string targetPath() const;
  std::string targetPattern() const;

  /// Puts the event's record into the ring. It does not lock, allocate or ask the system for an event that is a text
  /// alone, of a thread without a context. A refusal is not reported. An event that takes more than half of the ring is
  /// made an object in `copy`, and goes with that: `lasts` is false then, and `end` is where its record ends.
  Outcome put(LOGLoggingEvent& event, std::unique_ptr<LOGLoggingEvent>& copy, bool& lasts, std::uint64_t& end);
  /// Puts the record of an event that has not been made. False when it has to be made: there is no room, or it takes
  /// more than one slot. Inside the gate.
  LOG4VRK_HIDDEN bool putCall(LOGStatementCall& call);
  /// From now on nothing can be put, for good.
  void close();
  std::uint64_t putSoFar() const override { return control().tail.load() & ~LOGRingFormat::SEALED; }

  /// Whether there is an event to get. In a ring of the dead it passes over what is not valid.
  bool hasNext();
  /// The next event, after hasNext(). Valid until the next call.
  LOGLoggingEvent* get();
  /// The position after the event that was got last.
  std::uint64_t position() const { return m_position; }
  /// Everything that has been got is delivered; its slots are free.
  void release();
  bool isEmpty() const { return m_position == putSoFar(); }
  /// How many records could not be read.
  std::uint64_t damaged() const { return m_damaged; }

  /// Up to where the events are in the log file already.
  std::uint64_t written() const { return control().written.load(); }

  // The outbox.
  struct Pending {
    std::uint64_t end;
    VRKFileJournal::Place place;
    std::string_view lines;
  };
  /// From here on whoever recovers the ring knows what has to be in the log file. False when the lines are too long
  /// for the memory there is: then nobody knows.
  bool announce(std::uint64_t end, const VRKFileJournal::Place& place, std::string_view lines);
  /// The lines are in the log file.
  void settle(std::uint64_t end);
  /// What was announced and not settled. False when there is nothing. `finding` becomes what is wrong with it, if
  /// anything is.
  bool pending(Pending& pending, std::string& finding);

 private:
  class Writer;

  template <typename T>
  T* at(std::size_t offset) const {
    return reinterpret_cast<T*>(m_data + offset);
  }
  LOGRingFormat::Control& control() const { return *at<LOGRingFormat::Control>(2 * LOGRingFormat::PAGE); }
  LOGRingFormat::Target& target() const { return *at<LOGRingFormat::Target>(LOGRingFormat::PAGE); }
  LOGRingFormat::Slot& slot(std::uint64_t position) const {
    return at<LOGRingFormat::Slot>(LOGRingFormat::SLOTS_AT)[position & (m_slots - 1)];
  }
  /// False when the record of an ordinary event does not fit into one slot. Inside the gate.
  LOG4VRK_HIDDEN bool putShort(const LOGRingRecord& record, Outcome& outcome);
  [[gnu::cold]] LOG4VRK_HIDDEN Outcome putAny(LOGLoggingEvent& event, LOGThreadState& thread,
                                              std::unique_ptr<LOGLoggingEvent>& copy, bool& lasts, std::uint64_t& end);
  void publish(std::uint64_t position) { slot(position).mark.store(position + 1, std::memory_order_release); }
  LOG4VRK_HIDDEN Outcome claim(std::uint64_t count, std::uint64_t& position);
  LOG4VRK_HIDDEN void write(const LOGRingRecord& record, std::uint8_t kind, std::uint64_t position,
                            std::uint64_t count);
  LOG4VRK_HIDDEN std::uint64_t readAt(std::uint64_t position);
  LOG4VRK_HIDDEN const char* gather(std::uint64_t first);
  LOG4VRK_HIDDEN bool isWhole(std::uint64_t position, const LOGRingFormat::Record& head, std::uint64_t count) const;
  bool hasSlot(std::uint64_t position) const { return (position & (m_slots - 1)) < m_available; }
  LOG4VRK_HIDDEN bool positionsHold(std::string& finding) const;

  // What putting threads read for every event, and nobody changes.
  alignas(64) std::unique_ptr<VRKMappedFile> m_file;
  char* m_data = nullptr;
  std::uint64_t m_slots = 0;
  std::uint64_t m_available = 0;  // the first of them; fewer than all when the file is truncated
  bool m_dead = false;            // of another process
  const unsigned m_forks = VRKThread::forks();

  // The getting side's.
  alignas(64) std::uint64_t m_position = 0;
  std::uint64_t m_next = 0;  // the position after the record that get() will return
  std::uint64_t m_damaged = 0;
  LOGRingFormat::Record m_head{};
  std::string m_texts;
  std::unique_ptr<LOGLoggingEvent> m_object;
  LOGRingRecord::Place m_place;
};
