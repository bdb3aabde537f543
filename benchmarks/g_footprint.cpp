// g. Peak memory of a process that logs from four threads behind a queue, and of one that logs a line to a file; the
// library's text, and the time from main() to the first event on disk. Each process has one logger in it and nothing
// else.

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "benchmarks/Harness.h"
#include "benchmarks/Line.h"

namespace {

using bench::Comparison;

// The last number in the first column of what a command prints.
double numberFrom(const std::string& command) {
  FILE* const pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return 0;
  double number = 0;
  for (char line[256]; std::fgets(line, sizeof line, pipe) != nullptr;) {
    char* end = nullptr;
    const double found = std::strtod(line, &end);
    if (end != line) number = found;
  }
  pclose(pipe);
  return number;
}

std::string quoted(const std::string& text) { return " '" + text + "'"; }

void memory(const bench::Settings& settings, bench::Folder& folder) {
  const std::string events = " " + std::to_string(settings.count(100'000));
  const auto megabytes = [&](const std::string& program, const std::string& what) {
    return numberFrom(program + what + quoted(folder.newFile()) + (what == " memory" ? events : "")) / 1024;
  };
  const auto compare = [&](const std::string& item, const std::string& what, double limit, double stretch) {
    Comparison comparison(settings, {{item, "MB"}});
#ifdef FOOTPRINT_SPDLOG
    comparison.add("spdlog", [&] { return megabytes(FOOTPRINT_SPDLOG, what); });
#endif
    comparison.add("ours", [&] { return megabytes(FOOTPRINT_OURS, what); });
    comparison.gate(item, "ours", "", Comparison::AT_MOST, limit, stretch);
    comparison.run();
  };
  compare("g memory", " memory", 7.2, 5.4);
  compare("g small", " small", 5.0, 4.0);
}

void text(const bench::Settings& settings) {
  const auto kilobytes = [](const char* library) { return numberFrom("size" + quoted(library)) / 1000; };
  Comparison comparison(settings, {{"g text", "kB"}});
#ifdef FOOTPRINT_SPDLOG
  comparison.add("spdlog", [&] { return kilobytes(SPDLOG_LIBRARY); });
#endif
  comparison.add("ours", [&] { return kilobytes(OUR_LIBRARY); });
  comparison.gate("g text", "ours", "", Comparison::AT_MOST, 620, 400);
  comparison.run();
}

// A document that writes into a file beside itself.
std::string document(const std::string& path) {
  std::ofstream(path + ".xml") << "<log4j:configuration>\n<appender name=\"file\" class=\"FileAppender\">\n"
                               << "<param name=\"File\" value=\"" << path << "\"/>\n<layout class=\"PatternLayout\">"
                               << "<param name=\"ConversionPattern\" value=\"" << bench::OUR_PATTERN
                               << "\"/></layout>\n"
                               << "</appender>\n<root><level value=\"INFO\"/><appender-ref ref=\"file\"/></root>\n"
                               << "</log4j:configuration>\n";
  return path + ".xml";
}

void setUp(const bench::Settings& settings, bench::Folder& folder) {
  const auto microseconds = [](const char* program, const std::string& path) {
    return numberFrom(program + (" setup" + quoted(path))) / 1000;
  };
  Comparison comparison(settings, {{"g set-up", "us"}});
#ifdef FOOTPRINT_SPDLOG
  comparison.add("spdlog", [&] { return microseconds(FOOTPRINT_SPDLOG, folder.newFile()); });
#endif
  comparison.add("ours", [&] { return microseconds(FOOTPRINT_OURS, folder.newFile()); });
  comparison.add("ours (document)", [&] { return microseconds(FOOTPRINT_OURS, document(folder.newFile())); });
  comparison.gate("g set-up", "ours", "spdlog", Comparison::AT_MOST, 1.2, 0.8);
  comparison.run();
}

}  // namespace

int main(int argc, char** argv) {
  const bench::Settings settings(argc, argv);
  bench::Folder folder;
  memory(settings, folder);
  text(settings);
  setUp(settings, folder);
}
