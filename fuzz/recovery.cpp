// Any bytes as a recovery file: exactly the valid records at its beginning are delivered, and nothing stops the next
// message.

#include <cstdint>
#include <fstream>
#include <string_view>

#include "fuzz/FuzzDirectory.h"
#include "log4vrk/net/internal/LOGRecoveryFiles.h"
#include "log4vrk/net/internal/LOGRecoveryRecord.h"

using namespace vrkfuzz;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Directory directory("fuzz_recovery");
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  std::ofstream(directory.path / "20260102030405-0000000a", std::ios::binary) << bytes << std::flush;

  LOGRecoveryFiles files(I18NString(directory.path.c_str()));
  expect(files.open(), "the store opens");
  expect(files.append(7, "next"), "the store takes messages");
  LOGRecoveryFiles::Record delivered;
  LOGRecoveryRecord record;
  for (std::size_t offset = 0; LOGRecoveryRecord::parse(bytes.substr(offset), record); offset += record.size()) {
    expect(files.next(delivered), "what is valid is delivered");
    expect(delivered.sequence == record.sequence && delivered.payload == record.payload, "a message is as it was");
  }
  expect(files.next(delivered) && delivered.payload == "next", "what is not valid is not delivered");
  expect(!files.next(delivered), "nothing is delivered twice");
  files.acknowledge(delivered.position);
  for (const auto& entry : std::filesystem::directory_iterator(directory.path)) {
    expect(entry.path().extension() == ".damaged", "delivered files are removed");
    std::filesystem::remove(entry.path());
  }
  return 0;
}
