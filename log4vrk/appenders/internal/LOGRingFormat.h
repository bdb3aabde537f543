// How the file of a durable queue is laid out.

#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "log4vrk/appenders/internal/LOGQueueHeader.h"

/// Page 0 says what the file is, page 1 which log file its events go to, page 2 how far they are. Then come the slots,
/// and at the next page the outbox, which reaches to the end of the file. Numbers are in the machine's own form: the
/// memory that holds such files does not leave the machine.
///
/// An event is a record. It takes one slot or, when its texts are longer, several in a row; behind the last slot comes
/// the first. Each slot begins with a mark: the position of the slot, which counts on for ever, plus 1, and in the
/// further slots of a record the bit FURTHER. The mark of the first slot is stored last and makes the record valid. So
/// what a killed thread has begun is recognised, and nothing that a text holds can look like a record.
///
/// The outbox holds lines that are about to be written to the log file. It counts while `pending` is `written` + 1:
/// then the lines are those of the records from `written` up to `end`, and belong at `offset` of the file.
struct LOGRingFormat {
  static constexpr std::size_t PAGE = 4096;
  static constexpr std::size_t SLOTS_AT = 3 * PAGE;
  static constexpr std::size_t SLOT = 192;
  static constexpr std::uint64_t FEWEST_SLOTS = 16, MOST_SLOTS = std::uint64_t{1} << 20;  // always a power of two
  /// What a batch may grow to before it is written, and one more line. A longer line makes the file grow.
  static constexpr std::size_t OUTBOX = (64 + 16) * 1024;

  static constexpr std::uint64_t FURTHER = std::uint64_t{1} << 63;  // in a mark
  static constexpr std::uint64_t SEALED = std::uint64_t{1} << 63;   // in the tail: nothing is put any more

  static constexpr std::size_t outboxAt(std::uint64_t slots) {
    return (SLOTS_AT + static_cast<std::size_t>(slots) * SLOT + PAGE - 1) / PAGE * PAGE;
  }
  static std::size_t bytesFor(std::uint64_t slots) { return outboxAt(slots) + OUTBOX; }
  static constexpr LOGQueueHeader::Kind KIND = {
      {'l', 'o', 'g', 'r', 'i', 'n', 'g', '\n'}, 1, SLOT, FEWEST_SLOTS, MOST_SLOTS, SLOTS_AT, &bytesFor};

  using Header = LOGQueueHeader;

  /// Lengths of 0 stand for what is not known or too long.
  struct Target {
    std::atomic<std::uint32_t> valid;  // 0 while the rest changes
    std::uint32_t pathLength, patternLength;
    char path[2040], pattern[2040];  // the pattern is that of the layout, as LOGPatternLayout takes it
  };

  struct Control {
    // What threads that put use.
    alignas(64) std::atomic<std::uint64_t> tail;  // the position that is claimed next; may be SEALED
    std::atomic<std::uint64_t> knownHead;         // what the head was at some time
    // What the getting side changes. What is before `head` has been delivered; what is before `written` is in the log
    // file, but other appenders may not have it.
    alignas(64) std::atomic<std::uint64_t> head;
    std::atomic<std::uint64_t> written;
    // The outbox.
    alignas(64) std::atomic<std::uint64_t> pending;
    std::uint64_t end, length, device, inode;
    std::int64_t offset;
  };

  struct Slot {
    std::atomic<std::uint64_t> mark;
    char bytes[SLOT - sizeof(std::uint64_t)];
  };

  enum Kind : std::uint8_t {
    EVENT = 1,
    OBJECT = 2  // too long for the ring: `logger` is an event in the memory of the process, which a kill takes along
  };

  /// The beginning of the first slot's bytes. The texts follow: thread, logger, message, context, rest.
  struct Record {
    std::int64_t seconds;
    std::uint64_t logger, place;  // pointers, for the process that has put the record
    std::int32_t nanoseconds;
    std::int32_t rank;
    std::uint32_t messageLength, contextLength, restLength;
    std::uint16_t loggerLength;
    std::uint8_t threadLength;
    std::uint8_t kind;
  };
  static constexpr std::size_t FIRST_BYTES = sizeof(Slot::bytes) - sizeof(Record), FURTHER_BYTES = sizeof(Slot::bytes);

  /// What few events have, in the rest: a tag, the length of a text in 4 bytes, the text. Readers pass over tags that
  /// they do not know.
  /// A level that is none of the library's own is its syslog priority in 4 bytes and its name.
  /// Context and fields are rows of bytes, as LOGFields has them.
  enum Tag : char { THROWABLE = 1, LEVEL = 2, CONTEXT_FIELDS = 3, OWN_FIELDS = 4 };

  static constexpr std::uint64_t slotsFor(std::uint64_t textBytes) {
    return textBytes <= FIRST_BYTES ? 1 : 1 + (textBytes - FIRST_BYTES + FURTHER_BYTES - 1) / FURTHER_BYTES;
  }
};

static_assert(sizeof(LOGRingFormat::Slot) == LOGRingFormat::SLOT);
static_assert(sizeof(LOGRingFormat::Record) == 48);
static_assert(sizeof(LOGRingFormat::Target) <= LOGRingFormat::PAGE);
static_assert(std::atomic<std::uint64_t>::is_always_lock_free, "marks and positions are shared without locks");
