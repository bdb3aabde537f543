// i. How the cost grows: with the number of loggers, of threads, and with the length of the message. The contenders are
// the sizes; ./dev bench plot draws them.

#include <malloc.h>

#include <memory>
#include <string>
#include <vector>

#include "benchmarks/Floors.h"
#include "benchmarks/Harness.h"
#include "benchmarks/Ours.h"

namespace {

using bench::Comparison;

std::vector<I18NString> names(long count) {
  std::vector<I18NString> result;
  for (long i = 0; i < count; ++i) {
    I18NString name("com.acme.part");
    name += i % 100;
    name += ".component";
    name += i;
    result.push_back(std::move(name));
  }
  return result;
}

std::size_t allocated() {
  const auto info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

// Creation, memory, lookup and a disabled call in a tree of its own with `count` loggers. Looked up are the same few
// names whatever the size of the tree (lookup), and all in turn, from where the processor's cache ends (lookup all).
std::vector<double> treeCosts(const bench::Settings& settings, long count) {
  const std::vector<I18NString> all = names(count);
  const auto each = [](long calls, auto call) {
    return bench::seconds(1, calls, call) * 1e9 / static_cast<double>(calls);
  };
  const std::size_t before = allocated();
  LOGHierarchy tree(new LOGRootLogger(LOGLevel::INFO_OBJ));
  const double creation = each(count, [&](long i) { tree.getLogger(all[static_cast<std::size_t>(i)]); });
  const double memory = static_cast<double>(allocated() - before) / static_cast<double>(count);
  const long lookups = settings.count(200'000);
  const std::size_t stride = all.size() / 10;
  const double lookup = each(lookups, [&](long i) { tree.getLogger(all[static_cast<std::size_t>(i % 10) * stride]); });
  const double lookupAll =
      each(lookups, [&](long i) { tree.getLogger(all[static_cast<std::size_t>(i) * 7919 % all.size()]); });
  LOGLogger* const logger = tree.getLogger(all.back());
  const double disabled = each(settings.count(5'000'000), [&](long i) { LOG4VRK_DEBUG(logger, "number " << i); });
  return {creation, memory, lookup, lookupAll, disabled};
}

void loggers(const bench::Settings& settings) {
  Comparison comparison(settings, {{"i creation", "ns/logger"},
                                   {"i memory", "bytes/logger"},
                                   {"i lookup", "ns"},
                                   {"i lookup all", "ns"},
                                   {"i disabled call", "ns"}});
  for (const long count : {10L, 1000L, 100'000L}) {
    comparison.add(std::to_string(count), [&settings, count] { return treeCosts(settings, count); });
  }
  comparison.run();
}

void threads(const bench::Settings& settings, bench::Folder& folder) {
  const long events = settings.count(160'000);
  Comparison comparison(settings, {{"i file", "events/s"}, {"i buffered file", "events/s"}, {"i queue", "events/s"}});
  for (const int count : {1, 2, 4, 8}) {
    comparison.add(std::to_string(count), [&folder, events, count] {
      const auto perSecond = [&](auto&& log) {
        return static_cast<double>(events) /
               bench::seconds(
                   count, events / count, [&](long i) { log.log(i); }, [&] { log.close(); });
      };
      return std::vector<double>{perSecond(bench::OurLog(folder.newFile())),
                                 perSecond(bench::OurLog(folder.newFile(), 1)),
                                 perSecond(bench::OurAsyncLog(folder.newFile()))};
    });
  }
  comparison.run();
}

void messages(const bench::Settings& settings, bench::Folder& folder) {
  Comparison comparison(settings, {{"i message", "ns/event"}, {"i write of it", "ns/event"}});
  for (const std::size_t length : {10U, 100U, 1000U, 10'000U, 65'536U}) {
    comparison.add(std::to_string(length), [&settings, &folder, length] {
      const std::string text(length, 'x');
      const long events = settings.count(length > 1000 ? 2000 : 20'000);
      const auto each = [events](auto call) {
        return bench::seconds(1, events, call) * 1e9 / static_cast<double>(events);
      };
      const bench::OurLog log(folder.newFile());
      const double ours = each([&](long) { LOG4VRK_INFO(log.logger(), text); });
      bench::UnbufferedFile file(folder.newFile());
      return std::vector<double>{ours, each([&](long) { file.write(text); })};
    });
  }
  comparison.run();
}

}  // namespace

int main(int argc, char** argv) {
  const bench::Settings settings(argc, argv);
  bench::Folder folder;
  loggers(settings);
  threads(settings, folder);
  messages(settings, folder);
}
