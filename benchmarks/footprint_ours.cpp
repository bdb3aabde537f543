#include "benchmarks/Footprint.h"
#include "benchmarks/Ours.h"

int main(int argc, char** argv) {
  const auto logAll = [](const std::string& path, int threads, long events) {
    bench::OurAsyncLog log(path);
    bench::seconds(
        threads, events, [&](long i) { log.log(i); }, [&] { log.close(); });
  };
  // By calls, or, when it is given a document, by that.
  const auto setUp = [](const std::string& path) {
    if (path.rfind(".xml") == std::string::npos) {
      const bench::OurLog log(path);
      log.log(0);
      return;
    }
    LOG4VRKConfigurator::initialize(path.c_str());
    LOG4VRK_INFO(LOGManager::getLogger(bench::LOGGER), "request " << 123456 << " from " << bench::HOST << " ok");
  };
  return bench::footprint(argc, argv, logAll, setUp);
}
