// A TCP connection.

#pragma once

#include <chrono>
#include <vector>

#include "log4vrk/platform/VRKSocketAddress.h"
#include "log4vrk/platform/internal/VRKStream.h"

/// Connects to the first of several addresses that answers. The connection notices a peer that has gone without a word:
/// it asks when idle, and gives up on bytes that nobody acknowledges.
///
/// Thread safety: not thread-safe.
class VRKStreamSocket : public VRKStream {
 public:
  /// For each address.
  static constexpr std::chrono::seconds LONGEST_ATTEMPT{10};

  explicit VRKStreamSocket(std::vector<VRKSocketAddress> addresses) : m_addresses(std::move(addresses)) {}

  ~VRKStreamSocket() override;

  Progress advance() override;
  long read(char* buffer, std::size_t size) override;
  long write(const char* bytes, std::size_t count) override;
  int descriptor() const override { return m_descriptor; }
  bool hasToWrite() const override { return !m_connected; }

 private:
  bool begin(const VRKSocketAddress& address);
  Progress attempt();
  long over(int error);
  void close();

  const std::vector<VRKSocketAddress> m_addresses;
  std::size_t m_next = 0;  // of the addresses
  std::chrono::steady_clock::time_point m_deadline;
  int m_descriptor = -1;
  bool m_connected = false;
};
