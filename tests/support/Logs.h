// Reads back what was logged.

#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "log4vrk/log4vrk.h"
#include "tests/support/TempDir.h"

namespace vrktest {

inline std::vector<std::string> linesOf(const std::string& path) { return linesIn(fileText(path)); }

/// The text with `with` for every `what`.
inline std::string replaced(std::string text, const std::string& what, const std::string& with) {
  for (std::size_t at = 0; (at = text.find(what, at)) != text.npos; at += with.size())
    text.replace(at, what.size(), with);
  return text;
}

/// The ways that an event may take: as a text to a layout that writes it without a lock, or as an object to one that
/// renders it.
enum class Way { FAST, ORDINARY };
constexpr Way WAYS[] = {Way::FAST, Way::ORDINARY};
inline void PrintTo(Way way, std::ostream* out) { *out << (way == Way::FAST ? "fast" : "ordinary"); }

/// A suite of tests that promise the same on both ways.
struct BothWays : testing::TestWithParam<Way> {};
#define LOG4VRK_ON_BOTH_WAYS(suite)                              \
  INSTANTIATE_TEST_SUITE_P(Ways, suite, testing::ValuesIn(WAYS), \
                           [](auto& way) { return std::string(way.param == Way::FAST ? "fast" : "ordinary"); })

inline std::string layoutOf(Way way) {
  return way == Way::FAST ? "<layout class='PatternLayout'><param name='ConversionPattern' value='%m%n'/></layout>"
                          : "<layout class='SimpleLayout'/>";
}

/// Logs "<writer> <number> end" by that way.
inline void logNumber(LOGLogger* logger, Way way, int writer, long number) {
  if (way == Way::FAST) {
    LOG4VRK_ERROR(logger, writer << " " << number << " end");
  } else {
    LOGObject message(I18NString() + writer + " " + number + " end");
    message.instance("Number");
    logger->error(&message);
  }
}

inline std::string parameter(const std::string& name, const std::string& value) {
  return "<param name='" + name + "' value='" + value + "'/>";
}

/// Writes a document with an appender of that class and those parameters, which are XML, for the root; returns its
/// path.
inline std::string rootDocument(const TempDir& dir, Way way, const std::string& appenderClass,
                                const std::string& parameters) {
  return dir.write("log.xml", "<log4j:configuration><appender name='file' class='" + appenderClass + "'>" + parameters +
                                  layoutOf(way) +
                                  "</appender><root><level value='INFO'/>"
                                  "<appender-ref ref='file'/></root></log4j:configuration>");
}

/// The same for the file all.log in that directory.
inline std::string fileDocument(const TempDir& dir, Way way = Way::ORDINARY) {
  return rootDocument(dir, way, "FileAppender", parameter("File", dir.file("all.log")));
}

/// The lines of a file and its numbered backups, oldest first.
inline std::vector<std::string> linesWithBackups(const std::string& path) {
  std::vector<std::string> lines;
  int oldest = 0;
  while (std::ifstream(path + "." + std::to_string(oldest + 1))) ++oldest;
  for (int i = oldest; i >= 0; --i) {
    const std::vector<std::string> more = linesOf(i == 0 ? path : path + "." + std::to_string(i));
    lines.insert(lines.end(), more.begin(), more.end());
  }
  return lines;
}

/// The last number of each writer, from lines of the form "<writer> <number> end". Every line is whole, and the
/// numbers of each writer go up from 1, once and in order.
inline void lastNumbers(const std::vector<std::string>& lines, std::map<int, long>& last) {
  for (const std::string& line : lines) {
    std::istringstream fields(line);
    int writer = -1;
    long number = -1;
    std::string end;
    fields >> writer >> number >> end;
    ASSERT_EQ("end", end) << "torn line: " << line;
    ASSERT_EQ(last[writer] + 1, number) << "writer " << writer;
    last[writer] = number;
  }
}

/// The same, where each of so many writers has written the numbers up to `each`.
inline void expectEachOnceInOrder(const std::vector<std::string>& lines, int writers, long each) {
  std::map<int, long> last;
  ASSERT_NO_FATAL_FAILURE(lastNumbers(lines, last));
  ASSERT_EQ(static_cast<std::size_t>(writers), last.size());
  for (const auto& [writer, number] : last) EXPECT_EQ(each, number) << "writer " << writer;
}

}  // namespace vrktest
