// j. What a line as JSON costs beside the same line of a pattern: synchronous, with a buffer of 64 KiB before the file.

#include "benchmarks/Harness.h"
#include "benchmarks/Ours.h"

namespace {

LOGJSONLayout* json(const char* parts) {
  auto* const layout = new LOGJSONLayout;
  layout->setFields(parts);
  return layout;
}

double nanoseconds(bench::Folder& folder, long events, LOGLayout* layout) {
  bench::OurLog log(new LOGFileAppender(layout, folder.newFile().c_str(), 0, 1, bench::BUFFER_SIZE));
  const double result = bench::seconds(1, events, [&](long i) { log.log(i); }) * 1e9 / static_cast<double>(events);
  log.close();
  folder.expectLines(events);
  return result;
}

// The same values, once as parts of the text and once as fields.
double withFields(bench::Folder& folder, long events, LOGLayout* layout) {
  bench::OurLog log(new LOGFileAppender(layout, folder.newFile().c_str(), 0, 1, bench::BUFFER_SIZE));
  const auto call = [&](long i) {
    LOG4VRK_INFO_KV(log.logger(), "request", "number", bench::number(i), "host", bench::HOST);
  };
  const double result = bench::seconds(1, events, call) * 1e9 / static_cast<double>(events);
  log.close();
  folder.expectLines(events);
  return result;
}

}  // namespace

int main(int argc, char** argv) {
  const bench::Settings settings(argc, argv);
  bench::Folder folder;
  const long events = settings.count(400'000);
  bench::Comparison comparison(settings, {{"j", "ns/event"}});
  comparison.add("pattern", [&] { return nanoseconds(folder, events, bench::OurLog::layout()); });
  // The parts that the pattern has, and all.
  LOGJSONLayout* const same = json("time level logger thread message");
  LOGJSONLayout* const all = json("");
  comparison.add("json", [&] { return nanoseconds(folder, events, same); });
  comparison.add("json-all", [&] { return nanoseconds(folder, events, all); });
  comparison.add("json-kv", [&] { return withFields(folder, events, all); });
  comparison.gate("j", "json", "pattern", bench::Comparison::AT_MOST, 1.5);
  comparison.run();
}
