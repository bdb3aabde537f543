#include "log4vrk/platform/internal/VRKNameLookup.h"

#include <atomic>

#include "log4vrk/platform/VRKThread.h"
#include "log4vrk/platform/VRKThrowable.h"
#include "log4vrk/platform/internal/VRKWakeUp.h"

struct VRKNameLookup::Answer {
  std::atomic<bool> done{false};
  std::vector<VRKSocketAddress> addresses;  // the thread's until it is done
};

// Deletes itself when it has the answer.
class VRKNameLookup::Thread : public VRKThread {
 public:
  Thread(const I18NString& host, long port, std::shared_ptr<VRKWakeUp> whenDone, std::shared_ptr<Answer> answer)
      : m_host(host), m_port(port), m_whenDone(std::move(whenDone)), m_answer(std::move(answer)) {}

  void run() override {
    const std::unique_ptr<Thread> self(this);
    try {
      m_answer->addresses = VRKSocketAddress::resolveAll(VRKSocketAddress::BUILT_IN_INTERFACE, m_host, m_port);
    } catch (const std::exception&) {
      // Then the name is not known.
    }
    m_answer->done = true;
    m_whenDone->wake();
  }

 private:
  const I18NString m_host;
  const long m_port;
  const std::shared_ptr<VRKWakeUp> m_whenDone;
  const std::shared_ptr<Answer> m_answer;
};

VRKNameLookup::VRKNameLookup(const I18NString& host, long port, std::shared_ptr<VRKWakeUp> whenDone)
    : m_answer(std::make_shared<Answer>()) {
  auto thread = std::make_unique<Thread>(host, port, std::move(whenDone), m_answer);
  thread->start();
  static_cast<void>(thread.release());
}

VRKNameLookup::~VRKNameLookup() = default;

bool VRKNameLookup::isDone() const { return m_answer->done; }

std::vector<VRKSocketAddress> VRKNameLookup::takeAddresses() { return std::move(m_answer->addresses); }
