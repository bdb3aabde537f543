#include <netinet/in.h>

#include "tests/support/Tests.h"

// That what is found is right is seen where something is sent there.
TEST(VRKSocketAddressTest, ResolvesHostsOfBothFamiliesAndPrefersIPv4) {
  constexpr const char* OURS = "VOK_Crypto_Interface";
  constexpr unsigned short NONE = 0xFFFF;
  const struct {
    const char *interfaceName, *host;
    long port;
    bool passive;
    unsigned short family, expected;
  } cases[] = {
      {OURS, "localhost", 514, false, 0, AF_INET}, {OURS, "::1", 65535, false, 0, AF_INET6},
      {OURS, "::1", 514, false, AF_INET, NONE},    {OURS, "", 0, true, 0, AF_INET},
      {OURS, "", 0, true, AF_INET6, AF_INET6},     {OURS, "name.invalid", 514, false, 0, NONE},
      {OURS, "localhost", 65536, false, 0, NONE},  {"another interface", "127.0.0.1", 514, false, 0, NONE},
  };
  for (const auto& c : cases) {
    VRKSocketAddress address(c.interfaceName);
    address.resolve("127.0.0.2", 1, false);  // a failure forgets the address before
    EXPECT_EQ(c.expected != NONE, address.resolve(c.host, c.port, c.passive, c.family)) << c.host;
    EXPECT_EQ(c.expected, address.getFamily()) << c.host;
    EXPECT_EQ(c.expected == AF_INET ? sizeof(sockaddr_in) : sizeof(sockaddr_in6), address.getLength()) << c.host;
  }
}
