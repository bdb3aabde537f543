#include <netinet/in.h>

#include "tests/support/Tests.h"

// That the addresses are right is seen in the tests of the appenders, which send something there.
TEST(VRKSocketAddressTest, ResolvesHostsOfBothFamiliesAndPrefersIPv4) {
  constexpr const char* OURS = "VOK_Crypto_Interface";
  constexpr unsigned short NONE = 0xFFFF;
  const std::tuple<const char*, const char*, long, bool, unsigned short, unsigned short> CASES[] = {
      {OURS, "localhost", 514, false, 0, AF_INET}, {OURS, "::1", 65535, false, 0, AF_INET6},
      {OURS, "::1", 514, false, AF_INET, NONE},    {OURS, "", 0, true, 0, AF_INET},
      {OURS, "", 0, true, AF_INET6, AF_INET6},     {OURS, "name.invalid", 514, false, 0, NONE},
      {OURS, "localhost", 65536, false, 0, NONE},  {"another interface", "127.0.0.1", 514, false, 0, NONE},
  };
  for (const auto& [interfaceName, host, port, passive, family, expected] : CASES) {
    VRKSocketAddress address(interfaceName);
    address.resolve("127.0.0.2", 1, false);  // a failure forgets the address before
    EXPECT_EQ(expected != NONE, address.resolve(host, port, passive, family)) << host;
    EXPECT_EQ(expected, address.getFamily()) << host;
    EXPECT_EQ(expected == AF_INET ? sizeof(sockaddr_in) : sizeof(sockaddr_in6), address.getLength()) << host;
  }
}
