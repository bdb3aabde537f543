// The beginning of a file that holds a queue.

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

/// Says what the file is, and whose. Written before anybody else can see the file, and constant from then on. Numbers
/// are in the machine's own form: the memory that holds such files does not leave the machine.
///
/// Thread safety: without state; any thread.
struct LOGQueueHeader {
  /// What kinds of such files differ in.
  struct Kind {
    char magic[8];
    std::uint32_t version;
    std::uint32_t unit;                        // in bytes
    std::uint64_t fewest, most;                // units, always a power of two
    std::size_t at;                            // where the units begin
    std::size_t (*size)(std::uint64_t units);  // of a whole file
  };
  enum Condition {
    WHOLE,
    TRUNCATED,  // the end is missing; the rest can be read
    NEWER,      // than this program
    USELESS     // nothing can be made of it
  };

  /// Writes a header of this process and moment into memory.
  static void write(char* memory, const Kind& kind, std::uint64_t units, const std::string& name);
  /// Looks at so many bytes that anybody may have written. `finding` becomes what is wrong with them.
  static Condition examine(const char* memory, std::size_t bytes, const Kind& kind, std::string& finding);
  static std::uint64_t sumOf(const char* bytes, std::size_t count) {
    std::uint64_t sum = 0xcbf29ce484222325;  // FNV-1a
    for (std::size_t i = 0; i < count; ++i) sum = (sum ^ static_cast<unsigned char>(bytes[i])) * 0x100000001b3;
    return sum;
  }

  char magic[8];
  std::uint32_t version;
  std::uint32_t unit;
  std::uint64_t units;
  std::int64_t owner;    // the number of the process
  std::int64_t created;  // in nanoseconds since 1970
  char program[64];      // its name, and that of the queue: ended by a zero, cut off when they are longer
  char name[128];
  std::uint64_t check;  // sumOf() the bytes before
};
