// Sockets of tests on loopback addresses.

#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdint>
#include <string>

namespace vrktest {

/// A socket of that type on `port`, or on any free one when that is 0: then `port` is the one that it has got. -1: it
/// cannot be had.
inline int boundSocket(int type, int& port, const std::string& address = "127.0.0.1") {
  sockaddr_in name{};
  socklen_t length = sizeof name;
  name.sin_family = AF_INET;
  name.sin_addr.s_addr = ::inet_addr(address.c_str());
  name.sin_port = htons(static_cast<std::uint16_t>(port));
  const int descriptor = ::socket(AF_INET, type | SOCK_CLOEXEC, 0);
  if (::bind(descriptor, reinterpret_cast<sockaddr*>(&name), length) != 0) return ::close(descriptor), -1;
  ::getsockname(descriptor, reinterpret_cast<sockaddr*>(&name), &length);
  port = ntohs(name.sin_port);
  return descriptor;
}

}  // namespace vrktest
