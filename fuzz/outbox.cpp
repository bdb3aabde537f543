// Any bytes as what a dead process has left on its way to a log server: recovering it ends, reads nothing outside of
// the file, invents no event, and either moves all events and removes the file or leaves it, perhaps under another
// name.
//
// The first byte says what the rest is: a file, or changes to a good one, each three bytes of place and one of value.
// With a change the sum in the header may be made to fit.

#include <cstdint>
#include <cstring>
#include <fstream>
#include <set>
#include <string_view>

#include "fuzz/FuzzDirectory.h"
#include "log4vrk/net/internal/LOGOutboxFiles.h"

using namespace vrkfuzz;

namespace {

constexpr std::uint64_t EVENTS = 5;

struct Left {
  Left() {
    ::setenv("XDG_RUNTIME_DIR", directory.path.c_str(), 1);
    LOGOutboxRing ring;
    ring.use(LOGOutboxFiles(recovery, "fuzz: ").make(LOGOutboxRing::FEWEST_BYTES));
    for (std::uint64_t n = 1; n <= EVENTS; ++n) {
      expect(ring.put({std::string(n * 100, 'x'), 1, 0}, n), "a good file has events");
    }
    path = ring.file().path().toUtf8();
    good.assign(ring.file().data(), ring.file().size());
  }

  std::string changed(bool fitsSum, std::string_view changes) const {
    std::string file = good;
    for (; changes.size() >= 4; changes.remove_prefix(4)) {
      std::uint32_t place = 0;
      std::memcpy(&place, changes.data(), 3);
      file[place % file.size()] = changes[3];
    }
    if (fitsSum) {
      const std::uint64_t sum = LOGQueueHeader::sumOf(file.data(), offsetof(LOGQueueHeader, check));
      std::memcpy(&file[offsetof(LOGQueueHeader, check)], &sum, sizeof sum);
    }
    if (!changes.empty()) file.resize(file.size() * static_cast<unsigned char>(changes[0]) / 255);
    return file;
  }

  const Directory directory{"fuzz_outbox"};
  const I18NString recovery{directory.file("recovery").c_str()};
  std::string path, good;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Left left;
  if (size == 0) return 0;
  const std::string_view rest(reinterpret_cast<const char*>(data) + 1, size - 1);
  const bool isChange = (data[0] & 1) == 0;
  std::ofstream(left.path, std::ios::binary)
      << (isChange ? left.changed((data[0] & 2) != 0, rest) : std::string(rest)) << std::flush;

  LOGRecoveryFiles files(left.recovery);
  expect(files.open(), "the store opens");
  expect(LOGOutboxFiles(left.recovery, "fuzz: ").recover(files), "the store takes everything");
  std::set<std::uint64_t> sequences;
  for (LOGRecoveryFiles::Record each; files.next(each); files.acknowledge(each.position)) {
    expect(each.payload.size() <= LOGEventEncoder::LONGEST + LOGEventEncoder::LONGEST_STAMP, "events have a length");
    expect(sequences.insert(each.sequence).second || !isChange, "no event is there twice");
    expect((each.sequence >= 1 && each.sequence <= EVENTS) || !isChange, "no event is invented");
  }
  const bool isLeft = std::filesystem::exists(left.path);
  expect(isLeft || isChange || std::filesystem::exists(left.path + ".damaged") || rest.size() >= left.good.size(),
         "what is no such file stays");
  std::filesystem::remove(left.path + ".damaged");
  return 0;
}
