#include "log4vrk/platform/VRKSocketAddress.h"

#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>

namespace {

constexpr long LARGEST_PORT = 65535;

struct Free {
  void operator()(addrinfo* list) const { ::freeaddrinfo(list); }
};
using Addresses = std::unique_ptr<addrinfo, Free>;

struct Search {
  int type;
  bool passive;
  int family;
};

// Null when there is no such address.
Addresses find(const I18NString& interfaceName, const I18NString& host, long port, const Search& search) {
  if (interfaceName != VRKSocketAddress::BUILT_IN_INTERFACE || port < 0 || port > LARGEST_PORT) return nullptr;
  addrinfo hints = {};
  hints.ai_family = search.family;
  hints.ai_socktype = search.type;  // or every address would be found once for each type of socket
  hints.ai_flags = AI_NUMERICSERV | (search.passive ? AI_PASSIVE : 0);
  const std::string name = host.toUtf8();
  const std::string service = std::to_string(port);
  addrinfo* found = nullptr;
  if (::getaddrinfo(name.empty() ? nullptr : name.c_str(), service.c_str(), &hints, &found) != 0) return nullptr;
  return Addresses(found);
}

// The resolver may know other families, which getLength() does not.
bool isKnown(const addrinfo& address) { return address.ai_family == AF_INET || address.ai_family == AF_INET6; }

}  // namespace

bool VRKSocketAddress::resolve(const I18NString& host, long port, bool passive, unsigned short family) {
  m_family = INVALID_FAMILY;
  std::fill_n(m_bytes, SPACE, static_cast<unsigned char>(0));
  const Addresses found = find(m_interface, host, port, {SOCK_DGRAM, passive, family});
  const addrinfo* best = nullptr;
  for (const addrinfo* address = found.get(); address != nullptr; address = address->ai_next) {
    if (!isKnown(*address)) continue;
    if (best == nullptr || (best->ai_family != AF_INET && address->ai_family == AF_INET)) best = address;
  }
  if (best == nullptr) return false;
  store(best->ai_addr, best->ai_addrlen, static_cast<unsigned short>(best->ai_family));
  return true;
}

std::vector<VRKSocketAddress> VRKSocketAddress::resolveAll(const I18NString& interfaceName, const I18NString& host,
                                                           long port) {
  std::vector<VRKSocketAddress> all;
  const Addresses found = find(interfaceName, host, port, {SOCK_STREAM, false, AF_UNSPEC});
  for (const addrinfo* address = found.get(); address != nullptr; address = address->ai_next) {
    if (!isKnown(*address)) continue;
    all.emplace_back(interfaceName)
        .store(address->ai_addr, address->ai_addrlen, static_cast<unsigned short>(address->ai_family));
  }
  return all;
}

unsigned VRKSocketAddress::getLength() const {
  return m_family == AF_INET ? sizeof(sockaddr_in) : sizeof(sockaddr_in6);
}

void VRKSocketAddress::store(const void* address, unsigned length, unsigned short family) {
  std::memcpy(m_bytes, address, std::min(length, SPACE));
  m_family = family;
}
