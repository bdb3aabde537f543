#include <arpa/inet.h>
#include <netinet/in.h>

#include "tests/support/Tests.h"

namespace {

constexpr const char* OURS = "VOK_Crypto_Interface";

// "address port", or "none".
std::string textOf(const VRKSocketAddress& address) {
  char text[INET6_ADDRSTRLEN] = "";
  const bool v4 = address.getFamily() == AF_INET;
  if (!v4 && address.getFamily() != AF_INET6) return "none";
  const auto* const in = static_cast<const sockaddr_in*>(address.getAddress());
  const auto* const in6 = static_cast<const sockaddr_in6*>(address.getAddress());
  ::inet_ntop(address.getFamily(), v4 ? static_cast<const void*>(&in->sin_addr) : &in6->sin6_addr, text, sizeof text);
  return std::string(text) + " " + std::to_string(ntohs(in->sin_port));
}

TEST(VRKSocketAddressTest, ResolvesHostsOfBothFamiliesAndPrefersIPv4) {
  const struct {
    const char *interfaceName, *host;
    long port;
    bool passive;
    unsigned short family;
    const char* expected;
  } cases[] = {
      {OURS, "localhost", 514, false, 0, "127.0.0.1 514"},
      {OURS, "::1", 65535, false, 0, "::1 65535"},
      {OURS, "::1", 514, false, AF_INET, "none"},
      {OURS, "", 0, true, 0, "0.0.0.0 0"},
      {OURS, "", 0, true, AF_INET6, ":: 0"},
      {OURS, "", 7, false, 0, "127.0.0.1 7"},
      {OURS, "name.invalid", 514, false, 0, "none"},
      {OURS, "localhost", 65536, false, 0, "none"},
      {OURS, "localhost", -1, false, 0, "none"},
      {"another interface", "127.0.0.1", 514, false, 0, "none"},
  };
  for (const auto& c : cases) {
    VRKSocketAddress address(c.interfaceName);
    address.resolve("127.0.0.2", 1, false);  // a failure forgets the address before
    const bool found = address.resolve(c.host, c.port, c.passive, c.family);
    EXPECT_EQ(c.expected, textOf(address)) << c.host;
    EXPECT_TRUE(found == address.isValid() && found == (textOf(address) != "none")) << c.host;
  }
  bool loopback = false;
  for (const VRKSocketAddress& address : VRKSocketAddress::resolveAll(OURS, "localhost", 601)) {
    loopback = loopback || textOf(address) == "127.0.0.1 601";
  }
  EXPECT_TRUE(loopback);
}

}  // namespace
