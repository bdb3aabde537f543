#include "log4vrk/net/internal/LOGSyslogHosts.h"

#include <algorithm>
#include <map>

#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/core/internal/LOGTimeLimit.h"
#include "log4vrk/core/internal/LOGWaiting.h"
#include "log4vrk/platform/VRKThrowable.h"
#include "log4vrk/platform/internal/VRKNameLookup.h"
#include "log4vrk/platform/internal/VRKWakeUp.h"

namespace {

// What is known ahead, by the texts of the hosts.
struct Ahead {
  VRKMutex mutex;
  std::map<std::string, VRKSocketAddress> addresses VRK_GUARDED_BY(mutex);
};

// Made at load, because it is asked for in a destructor, where there must be no need of memory.
Ahead& g_ahead = vrkImmortal<Ahead>();

bool findAhead(const I18NString& host, VRKSocketAddress& address) {
  const std::string text = host.toUtf8();
  const LOGLeafGuard guard(g_ahead.mutex);
  const auto found = g_ahead.addresses.find(text);
  if (found == g_ahead.addresses.end()) return false;
  address = found->second;
  return true;
}

// Nobody is asked for such a one.
bool isNumeric(const std::string& host) {
  return host.find(':') != host.npos || host.find_first_not_of("0123456789.") == host.npos;
}

}  // namespace

struct LOGSyslogHosts::Lookup {
  Lookup(const I18NString& name, long port) : host(name), answer(name, port, std::make_shared<VRKWakeUp>()) {}

  bool wait(LOGTimeLimit::Clock::time_point until) {
    return logWaitUntil(until, [this] { return answer.isDone(); });
  }
  // As VRKSocketAddress::resolve(): the first of IPv4, which are the short ones, or else the first.
  bool take(VRKSocketAddress& address) {
    const std::vector<VRKSocketAddress> all = answer.takeAddresses();
    const auto best = std::min_element(all.begin(), all.end(), [](const auto& left, const auto& right) {
      return left.getLength() < right.getLength();
    });
    if (best == all.end()) return false;
    address = *best;
    return true;
  }

  const I18NString host;
  VRKNameLookup answer;
};

LOGSyslogHosts::LOGSyslogHosts(const std::vector<I18NString>& hosts) {
  for (const I18NString& host : hosts) {
    try {
      if (!isNumeric(host.toUtf8())) m_lookups.push_back(std::make_unique<Lookup>(host, PORT));
    } catch (const std::exception&) {
      // Then it is looked up when it is needed.
    }
  }
}

LOGSyslogHosts::~LOGSyslogHosts() {
  const LOGLeafGuard guard(g_ahead.mutex);
  g_ahead.addresses.clear();
}

void LOGSyslogHosts::wait() {
  const LOGTimeLimit::Clock::time_point until = LOGTimeLimit::until(std::chrono::hours(1));
  for (const std::unique_ptr<Lookup>& lookup : m_lookups) {
    VRKSocketAddress address(VRKSocketAddress::BUILT_IN_INTERFACE);
    if (!lookup->wait(until) || !lookup->take(address)) continue;
    try {
      std::string text = lookup->host.toUtf8();
      const LOGLeafGuard guard(g_ahead.mutex);
      g_ahead.addresses.insert_or_assign(std::move(text), address);
    } catch (const std::bad_alloc&) {
      // As if there had been no time.
    }
  }
}

bool LOGSyslogHosts::find(const I18NString& host, VRKSocketAddress& address) {
  if (!LOGTimeLimit::isSet() || isNumeric(host.toUtf8())) return address.resolve(host, PORT, false);
  if (findAhead(host, address)) return true;
  try {
    Lookup lookup(host, PORT);
    return lookup.wait(LOGTimeLimit::until(std::chrono::hours(1))) && lookup.take(address);
  } catch (const VRKThrowable&) {
    return false;
  }
}
