// Where a socket is bound, or sends to.

#pragma once

#include <vector>

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"

/// An IPv4 or IPv6 address with a port. The interface that it is made with looks names up: BUILT_IN_INTERFACE asks the
/// system's resolver, any other knows no name at all.
///
/// Thread safety: not thread-safe; a copy is independent.
/// Errors: none is raised. What cannot be resolved has the family INVALID_FAMILY.
class LOG4VRK_EXPORT VRKSocketAddress {
 public:
  // ANY_FAMILY asks for either; INVALID_FAMILY is that of an address that has not been resolved.
  static constexpr unsigned short ANY_FAMILY = 0;
  static constexpr unsigned short INVALID_FAMILY = 0xFFFF;
  static constexpr const char* BUILT_IN_INTERFACE = "VOK_Crypto_Interface";

  explicit VRKSocketAddress(const I18NString& interfaceName) : m_interface(interfaceName) {}

  /// Looks a host up, a name or an address in digits, and stores what is found. May block as long as the system's
  /// resolver does. False, and no longer valid, when nothing is found. An empty host is the wildcard address when
  /// `passive`, else this machine. `port` is 0 to 65535. `family` may restrict the search to what getFamily() returns.
  ///
  /// Of several addresses it takes the first of IPv4, and one of IPv6 only where there is no other: nothing tells a
  /// sender of datagrams that nobody listens, and a listener on all addresses of IPv6 hears IPv4, too.
  bool resolve(const I18NString& host, long port, bool passive, unsigned short family = ANY_FAMILY);

  /// All addresses of a name, in the order in which the resolver would try them. For streams: a connection that is
  /// refused at one is tried at the next. Empty when there is none. May block.
  static std::vector<VRKSocketAddress> resolveAll(const I18NString& interfaceName, const I18NString& host, long port);

  bool isValid() const { return m_family != INVALID_FAMILY; }
  /// The system's number of the family.
  unsigned short getFamily() const { return m_family; }
  /// The system's form of the address; zeros when it is not valid.
  const void* getAddress() const { return m_bytes; }
  /// Bytes in use of getAddress(): 16 for IPv4, 28 for IPv6.
  unsigned getLength() const;

 private:
  static constexpr unsigned SPACE = 128;  // for an address of any family

  LOG4VRK_HIDDEN void store(const void* address, unsigned length, unsigned short family);

  I18NString m_interface;
  unsigned short m_family = INVALID_FAMILY;
  alignas(8) unsigned char m_bytes[SPACE] = {};
};
