#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <string>

#include "log4vrk/platform/VRKSocketAddress.h"

namespace {

// "address port", or "none".
std::string textOf(const VRKSocketAddress& address) {
  char text[INET6_ADDRSTRLEN] = "";
  if (address.getFamily() == AF_INET) {
    const auto* const in = static_cast<const sockaddr_in*>(address.getAddress());
    ::inet_ntop(AF_INET, &in->sin_addr, text, sizeof(text));
    return std::string(text) + " " + std::to_string(ntohs(in->sin_port));
  }
  if (address.getFamily() == AF_INET6) {
    const auto* const in = static_cast<const sockaddr_in6*>(address.getAddress());
    ::inet_ntop(AF_INET6, &in->sin6_addr, text, sizeof(text));
    return std::string(text) + " " + std::to_string(ntohs(in->sin6_port));
  }
  return "none";
}

TEST(VRKSocketAddressTest, ResolvesHostsOfBothFamiliesAndPrefersIPv4) {
  struct {
    const char* interfaceName;
    const char* host;
    long port;
    bool passive;
    unsigned short family;
    const char* expected;
    unsigned length;
  } const cases[] = {
      {"VOK_Crypto_Interface", "localhost", 514, false, 0, "127.0.0.1 514", 16},
      {"VOK_Crypto_Interface", "127.0.0.2", 65535, false, 0, "127.0.0.2 65535", 16},
      {"VOK_Crypto_Interface", "::1", 514, false, 0, "::1 514", 28},
      {"VOK_Crypto_Interface", "::1", 514, false, AF_INET, "none", 28},
      {"VOK_Crypto_Interface", "", 0, true, 0, "0.0.0.0 0", 16},
      {"VOK_Crypto_Interface", "", 0, true, AF_INET6, ":: 0", 28},
      {"VOK_Crypto_Interface", "", 7, false, 0, "127.0.0.1 7", 16},
      {"VOK_Crypto_Interface", "name.invalid", 514, false, 0, "none", 28},
      {"VOK_Crypto_Interface", "localhost", 65536, false, 0, "none", 28},
      {"VOK_Crypto_Interface", "localhost", -1, false, 0, "none", 28},
      {"another interface", "127.0.0.1", 514, false, 0, "none", 28},
  };
  for (const auto& c : cases) {
    VRKSocketAddress address(c.interfaceName);
    ASSERT_EQ("none", textOf(address));
    const bool found = address.resolve(c.host, c.port, c.passive, c.family);
    EXPECT_EQ(c.expected, textOf(address)) << c.host;
    EXPECT_EQ(found, address.isValid()) << c.host;
    EXPECT_EQ(found, address.getFamily() != 0xFFFF) << c.host;
    EXPECT_EQ(c.length, address.getLength()) << c.host;
  }
}

TEST(VRKSocketAddressTest, AFailureForgetsTheAddressBefore) {
  VRKSocketAddress address("VOK_Crypto_Interface");
  ASSERT_TRUE(address.resolve("127.0.0.1", 514, false));
  EXPECT_FALSE(address.resolve("name.invalid", 514, false));
  EXPECT_EQ(0xFFFF, address.getFamily());
}

TEST(VRKSocketAddressTest, ListsTheAddressesOfANameForStreams) {
  EXPECT_TRUE(VRKSocketAddress::resolveAll("VOK_Crypto_Interface", "name.invalid", 601).empty());
  EXPECT_TRUE(VRKSocketAddress::resolveAll("another interface", "localhost", 601).empty());
  bool loopback = false;
  const auto all = VRKSocketAddress::resolveAll("VOK_Crypto_Interface", "localhost", 601);
  for (const VRKSocketAddress& address : all) loopback = loopback || textOf(address) == "127.0.0.1 601";
  EXPECT_TRUE(loopback);
}

}  // namespace
