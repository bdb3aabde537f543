// The least that an asynchronous logger could do: rings of records, and a thread that formats and writes them.

#pragma once

#include <array>
#include <atomic>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "benchmarks/Floors.h"
#include "benchmarks/Line.h"

namespace bench {

/// Each logging thread has a ring of its own with 64-byte records. Nobody is woken: the consumer polls, and a producer
/// that finds its ring full yields.
///
/// Thread safety: log() with a number for each thread.
class RingFloor {
 public:
  RingFloor(const std::string& path, int threads, std::size_t records) : m_file(path) {
    for (int t = 0; t < threads; ++t) m_rings.push_back(std::make_unique<Ring>(records));
    m_consumer = std::thread([this] { consume(); });
  }
  ~RingFloor() { close(); }
  RingFloor(const RingFloor&) = delete;
  RingFloor& operator=(const RingFloor&) = delete;

  void log(long i, int thread = 0) {
    Ring& ring = *m_rings[static_cast<std::size_t>(thread)];
    const std::uint64_t tail = ring.tail.load(std::memory_order_relaxed);
    while (tail - ring.knownHead >= ring.records.size()) {
      ring.knownHead = ring.head.load(std::memory_order_acquire);
      if (tail - ring.knownHead >= ring.records.size()) std::this_thread::yield();
    }
    Record& record = ring.records[tail % ring.records.size()];
    clock_gettime(CLOCK_REALTIME, &record.time);
    record.thread = thread;
    record.number = number(i);
    record.hostLength = static_cast<std::uint32_t>(HOST.size());
    std::memcpy(record.host, HOST.data(), HOST.size());
    ring.tail.store(tail + 1, std::memory_order_release);
  }

  /// Everything is in the kernel afterwards.
  void close() {
    m_closing = true;
    if (m_consumer.joinable()) m_consumer.join();
    m_file.flush();
  }

 private:
  struct alignas(64) Record {
    timespec time;
    int thread;
    int number;
    std::uint32_t hostLength;
    char host[36];
  };

  struct Ring {
    explicit Ring(std::size_t size) : records(size) {}

    std::vector<Record> records;  // a power of two
    alignas(64) std::atomic<std::uint64_t> head{0};
    alignas(64) std::atomic<std::uint64_t> tail{0};
    std::uint64_t knownHead = 0;  // the producer's
  };

  void consume() {
    for (;;) {
      const bool last = m_closing;
      bool found = false;
      for (const std::unique_ptr<Ring>& ring : m_rings) found = drain(*ring) || found;
      if (found) continue;
      m_file.flush();
      if (last) return;
      std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
  }

  bool drain(Ring& ring) {
    const std::uint64_t head = ring.head.load(std::memory_order_relaxed);
    const std::uint64_t tail = ring.tail.load(std::memory_order_acquire);
    for (std::uint64_t i = head; i < tail; ++i) {
      write(ring.records[i % ring.records.size()]);
      // Now and then, so that a waiting producer does not wait for the whole ring.
      if (i % 256 == 0) ring.head.store(i + 1, std::memory_order_release);
    }
    ring.head.store(tail, std::memory_order_release);
    return tail > head;
  }

  void write(const Record& record) {
    if (record.time.tv_sec != m_second) {
      m_second = record.time.tv_sec;
      tm calendar{};
      localtime_r(&m_second, &calendar);
      strftime(m_date.data(), m_date.size(), "%Y-%m-%d %H:%M:%S.", &calendar);
    }
    char line[128];
    char* end = line;
    const auto text = [&](std::string_view part) {
      std::memcpy(end, part.data(), part.size());
      end += part.size();
    };
    text({m_date.data(), 20});
    const long milliseconds = record.time.tv_nsec / 1'000'000;
    *end++ = static_cast<char>('0' + milliseconds / 100);
    *end++ = static_cast<char>('0' + milliseconds / 10 % 10);
    *end++ = static_cast<char>('0' + milliseconds % 10);
    text(" [");
    end = std::to_chars(end, end + 12, 10000 + record.thread).ptr;
    text("] INFO  com.acme.Server - request ");
    end = std::to_chars(end, end + 12, record.number).ptr;
    text(" from ");
    text({record.host, record.hostLength});
    text(" ok\n");
    m_file.write({line, static_cast<std::size_t>(end - line)});
  }

  std::vector<std::unique_ptr<Ring>> m_rings;
  BufferedFile m_file;
  time_t m_second = 0;
  std::array<char, 32> m_date{};
  std::atomic<bool> m_closing{false};
  std::thread m_consumer;
};

}  // namespace bench
