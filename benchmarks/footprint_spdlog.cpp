#include "benchmarks/Footprint.h"
#include "benchmarks/Peers.h"

int main(int argc, char** argv) {
  const auto logAll = [](const std::string& path, int threads, long events) {
    bench::SpdlogAsyncLog log(path, 8192);
    bench::seconds(
        threads, events, [&](long i) { log.log(i); }, [&] { log.close(); });
  };
  const auto setUp = [](const std::string& path) { bench::SpdlogLog(path, true).log(0); };
  return bench::footprint(argc, argv, logAll, setUp);
}
