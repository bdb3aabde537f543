// Boost.Log, set up to write the same line. In a source of its own because its headers take long to compile.

#pragma once

#ifdef LOG4VRK_PEER_BOOST

#include <memory>
#include <string>

namespace bench {

/// Every event is in the kernel when the call returns.
class BoostLog {
 public:
  explicit BoostLog(const std::string& path);
  ~BoostLog();
  BoostLog(BoostLog&&) noexcept;

  void log(long i);

 private:
  struct State;
  std::unique_ptr<State> m_state;
};

}  // namespace bench

#endif
