// Events on their way to a log server, in memory that may outlive the process.

#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "log4vrk/appenders/internal/LOGQueueHeader.h"
#include "log4vrk/net/internal/LOGEventEncoder.h"
#include "log4vrk/platform/VRKExport.h"
#include "log4vrk/platform/internal/VRKMappedFile.h"

/// A ring of bytes in a VRKMappedFile. Page 0 is its header, whose name is the stream of the events, page 1 says how
/// far they are, and then come the bytes. Positions are those of bytes: they count on for ever, from 0.
///
/// An event is a record: what Record says, and the text, up to the next multiple of 8. One thread at a time puts, so
/// the end of the events, which is stored last, makes a record valid: of an event that a killed thread has begun
/// nothing counts.
///
/// Thread safety: one thread at a time puts, another one gets and releases.
/// Errors: what a dead process has left is checked before it is used, whoever wrote it.
class LOG4VRK_EXPORT_FOR_TESTS LOGOutboxRing {
 public:
  static constexpr std::size_t PAGE = 4096, BYTES_AT = 2 * PAGE;
  static constexpr std::uint64_t STEP = 8;  // records begin at its multiples
  static constexpr std::uint64_t FEWEST_BYTES = std::uint64_t{64} << 10, MOST_BYTES = std::uint64_t{64} << 20;
  static std::size_t fileSize(std::uint64_t bytes) { return BYTES_AT + static_cast<std::size_t>(bytes); }
  static constexpr LOGQueueHeader::Kind KIND = {
      {'l', 'o', 'g', 's', 'e', 'n', 'd', '\n'}, 1, 1, FEWEST_BYTES, MOST_BYTES, BYTES_AT, &fileSize};

  struct Control {
    alignas(64) std::atomic<std::uint64_t> tail;  // the end of the events
    alignas(64) std::atomic<std::uint64_t> head;  // what is before is not needed any more
  };
  struct Record {
    std::uint64_t check;  // of the others and the position
    std::uint64_t sequence;
    std::uint32_t length, stampAt;  // of the text; as in LOGEncodedEvent
  };

  /// Writes a ring without events into memory that is there already: zeros, as many bytes as fileSize() says.
  static void begin(VRKMappedFile& file, std::uint64_t bytes, const std::string& stream);
  /// Uses the ring that this process has begun there.
  void use(std::unique_ptr<VRKMappedFile> file);
  /// The ring that a dead process has left. `finding` becomes what is wrong with it.
  LOGQueueHeader::Condition open(std::unique_ptr<VRKMappedFile> file, std::string& finding);
  /// Gives the memory back; the file stays.
  void leave() { m_file.reset(); }

  VRKMappedFile& file() { return *m_file; }
  const LOGQueueHeader& header() const { return *reinterpret_cast<const LOGQueueHeader*>(m_data); }
  const std::string& stream() const { return m_stream; }

  /// False when there is no room.
  bool put(const LOGEncodedEvent& event, std::uint64_t sequence);
  std::uint64_t tail() const { return control().tail.load(std::memory_order_acquire); }
  /// How many bytes are in use.
  std::uint64_t used() const { return tail() - control().head.load(std::memory_order_acquire); }
  /// The same for the thread that puts, which so seldom has to look how far the other one is.
  bool usesAtLeast(std::uint64_t bytes);

  /// The first event that has not been passed, stamped with the stream. False when there is none before `end`; in a
  /// ring of the dead, what is damaged is left out.
  bool get(LOGEncodedEvent& event, std::uint64_t end);
  /// Passes the event that was got last.
  void pass() { m_position = m_next; }
  std::uint64_t position() const { return m_position; }
  /// The memory of passed events that come before this sequence is free.
  void release(std::uint64_t before);
  /// That of all passed events, and of what is damaged.
  void releasePassed() { control().head.store(m_position, std::memory_order_release); }
  bool isTruncated() const { return m_available < m_bytes; }
  /// Bytes that were no events, of those that have been passed.
  std::uint64_t damaged() const { return m_damaged; }

 private:
  LOG4VRK_HIDDEN Control& control() const { return *reinterpret_cast<Control*>(m_data + PAGE); }
  LOG4VRK_HIDDEN void write(std::uint64_t position, const void* from, std::size_t count);
  LOG4VRK_HIDDEN void read(std::uint64_t position, void* to, std::size_t count) const;
  LOG4VRK_HIDDEN Record recordAt(std::uint64_t position) const;
  LOG4VRK_HIDDEN bool isWhole(std::uint64_t position, const Record& record, std::uint64_t end) const;
  LOG4VRK_HIDDEN bool isThere(std::uint64_t position, std::uint64_t count) const;

  std::unique_ptr<VRKMappedFile> m_file;
  char* m_data = nullptr;
  std::uint64_t m_bytes = 0;
  std::uint64_t m_available = 0;  // the first of them; fewer than all when the file is truncated
  bool m_dead = false;            // of another process
  std::string m_stream;
  std::uint64_t m_knownHead = 0;  // what the head was at some time; the putting side's

  // The getting side's. What the other one reads is not in their cache line.
  alignas(64) std::uint64_t m_position = 0;
  std::uint64_t m_next = 0;  // behind the event that was got last
  std::uint64_t m_damaged = 0;
};
