// Any bytes as the file of a durable queue: recovering it ends, reads nothing outside of the file, invents no more
// events than there is room for, and either delivers and removes the file or leaves it, perhaps under another name.
//
// The first byte says what the rest is: a file, or changes to a good one, each three bytes of place and one of value.
// With a change the sum in the header may be made to fit.

#include <cstdint>
#include <cstring>
#include <fstream>
#include <string>
#include <string_view>

#include "fuzz/FuzzDirectory.h"
#include "log4vrk/appenders/internal/LOGRing.h"
#include "log4vrk/appenders/internal/LOGRingDelivery.h"
#include "log4vrk/appenders/internal/LOGRingRecovery.h"
#include "log4vrk/log4vrk.h"

using namespace vrkfuzz;

namespace {

using Format = LOGRingFormat;

constexpr std::uint64_t SLOTS = 16;

struct Counting : LOGAppenderSkeleton {
  void append(LOGLoggingEvent* event) override {
    ++count;
    layout.format(event);
  }
  std::uint64_t count = 0;
  LOGPatternLayout layout{"%d{ISO8601} %r %p %c{2} %t %x %X %m%n"};
};

// The file of a queue that has been killed with events in it, short ones and one of several slots, and lines that were
// being written.
std::string goodFile(const Directory& directory) {
  VRKMappedFile memory;
  expect(memory.makeAnonymous(LOGRing::bytesFor(SLOTS)), "there is memory");
  LOGRing::begin(memory, SLOTS, "fuzz");
  auto file = std::make_unique<VRKMappedFile>();
  file->makeAnonymous(memory.size());
  std::memcpy(file->data(), memory.data(), memory.size());
  VRKMappedFile& used = *file;
  LOGRing ring;
  ring.use(std::move(file));
  ring.setTarget(directory.file("log"), "%m%n");
  LOGNDC::push("context");
  LOG4VRK_CONTEXT("order", 17, "customer", "anna");
  for (const std::size_t length : {5, 100, 500, 0, 20}) {
    LOGObject text(I18NString(std::string_view(std::string(length, 'x'))));
    LOGLoggingEvent event(LOGLogger::m_FQCN, LOGManager::getLogger("fuzz"), LOGLevel::WARN_OBJ, &text);
    std::unique_ptr<LOGLoggingEvent> copy;
    bool lasts;
    std::uint64_t end;
    expect(ring.put(event, copy, lasts, end) == LOGBoundedFIFO::QUEUED, "a good file has events");
  }
  LOGNDC::remove();
  ring.announce(1, {1, 1, 0}, "xxxxx\n");
  return {used.data(), used.size()};
}

std::string changed(std::string file, bool fitsSum, std::string_view changes) {
  for (; changes.size() >= 4; changes.remove_prefix(4)) {
    std::uint32_t place = 0;
    std::memcpy(&place, changes.data(), 3);
    file[place % file.size()] = changes[3];
  }
  if (fitsSum) {
    const std::uint64_t sum = LOGQueueHeader::sumOf(file.data(), offsetof(Format::Header, check));
    std::memcpy(&file[offsetof(Format::Header, check)], &sum, sizeof sum);
  }
  if (!changes.empty()) file.resize(file.size() * static_cast<unsigned char>(changes[0]) / 255);
  return file;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Directory directory("fuzz_ring");
  static const std::string good = goodFile(directory);
  if (size == 0) return 0;
  const std::string_view rest(reinterpret_cast<const char*>(data) + 1, size - 1);
  const std::string path = directory.file("fuzz-1-0.ring");
  const std::string file = (data[0] & 1) != 0 ? std::string(rest) : changed(good, (data[0] & 2) != 0, rest);
  std::ofstream(path, std::ios::binary) << file << std::flush;

  Counting appender;
  const auto container = std::make_shared<LOGAppenderAttachableImpl>();
  container->addAppender(&appender);
  LOGRingDelivery delivery(container);
  LOGRingRecovery recovery("fuzz: ");
  bool isWhole = false;
  if (const auto left = recovery.open(I18NString(std::string_view(path)))) {
    const std::uint64_t slots = left->ring->slots();
    // Any other log file is somebody's.
    if (left->ring->targetPath() == directory.file("log")) recovery.completeLines(*left);
    isWhole = recovery.deliver(*left, delivery);
    expect(appender.count <= slots, "there are no more events than slots");
  }
  expect(!isWhole || !std::filesystem::exists(path), "what has been delivered is removed");
  expect(isWhole || std::filesystem::exists(path) || std::filesystem::exists(path + ".damaged"),
         "nothing is thrown away");
  container->removeAppender(&appender);
  for (const auto& entry : std::filesystem::directory_iterator(directory.path)) std::filesystem::remove(entry.path());
  return 0;
}
