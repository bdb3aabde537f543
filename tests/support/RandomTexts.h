// Random messages of every kind of UTF-16, and what they read as.

#pragma once

#include <cstdio>
#include <fstream>
#include <random>
#include <string>

#include "log4vrk/log4vrk.h"
#include "tests/support/Process.h"
#include "tests/support/TempDir.h"

namespace vrktest {

/// Up to 60 units, of which about each third is a letter, and many may mean something to a reader of lines.
inline std::u16string randomText(std::mt19937& random) {
  static constexpr std::u16string_view SPECIAL =
      u"\"\\/"
      u"\b\f\n\r\t\x1b\x7f\u0085\u009b\u00a0\u061c\u200e\u200f\u2028\u2029\u202e\u2066\u2069\u206a\ufeff\ufffd\ufffe";
  std::u16string text(random() % 61, u'\0');
  for (char16_t& unit : text) {
    const std::uint32_t bits = static_cast<std::uint32_t>(random()), letter = u'a' + bits % 26;
    const std::uint32_t kinds[] = {bits % 0x20, SPECIAL[bits % SPECIAL.size()], 0xD800 + bits % 0x800, bits, letter,
                                   letter};
    unit = static_cast<char16_t>(kinds[random() % std::size(kinds)]);
  }
  return text;
}

/// The numbers of its characters as JSON has a list; unpaired surrogates are U+FFFD.
inline std::string characterList(const std::u16string& text) {
  std::string list = "[";
  for (std::size_t i = 0; i < text.size(); ++i) {
    unsigned character = text[i];
    if ((character & 0xFC00) == 0xD800 && i + 1 < text.size() && (text[i + 1] & 0xFC00) == 0xDC00) {
      character = 0x10000 + ((character & 0x3FF) << 10) + (text[++i] & 0x3FF);
    } else if ((character & 0xF800) == 0xD800) {
      character = 0xFFFD;
    }
    list += (list.size() > 1 ? "," : "") + std::to_string(character);
  }
  return list + "]";
}

/// What `line` was before it was made safe text.
inline std::string undone(std::string_view line) {
  std::string text;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] != '\\' || ++i == line.size()) {
      text += line.substr(i, 1);
      continue;
    }
    const std::size_t plain = std::string_view("\\tnr").find(line[i]), digits = line[i] == 'x' ? 2 : 4;
    if (plain != std::string_view::npos) {
      text += std::string_view("\\\t\n\r").substr(plain, 1);
    } else {
      const char16_t unit = static_cast<char16_t>(std::stoi(std::string(line.substr(i + 1, digits)), nullptr, 16));
      text += I18NString(std::u16string_view(&unit, 1)).toUtf8();
      i += digits;
    }
  }
  return text;
}

/// Logs so many random messages by JSON layouts of all presets, with their text as a field and in the context, too, and
/// has Python and jq read what is in the file.
inline void expectParsersToRead(long count) {
  const auto run = [](const std::string& script) { return statusOf(startProgram({"bash", "-c", script})); };
  if (run("command -v python3 jq | wc -l | grep -qx 2") != 0) GTEST_SKIP() << "needs python3 and jq";
  const TempDir dir;
  LOGJSONLayout layout;
  LOGFileAppender file(&layout, dir.file("lines").c_str(), 0, 1, 65536);
  LOGLogger* const logger = LOGManager::getLogger("random");
  logger->setAdditivity(0);
  logger->setLevel(LOGLevel::ALL_OBJ);
  logger->addAppender(&file);
  std::ofstream expected(dir.file("expected"));
  std::mt19937 random(17);
  for (long i = 0; i < count; ++i) {
    if (i * 3 % count < 3) layout.setPreset(i * 3 < count ? "plain" : i * 3 < 2 * count ? "ecs" : "gcp");
    const std::u16string text = randomText(random);
    expected << characterList(text) << '\n';
    LOG4VRK_CONTEXT("text", text, "n", i);
    if (i % 2 == 0) {
      LOG4VRK_INFO_KV(logger, text, "field", text, "n", i, "message", text, "_message", 17.5, "message", text);
    } else {
      logger->info(I18NString(std::u16string_view(text)));
    }
  }
  logger->removeAppender(&file);
  file.close();
  expected.close();
  const std::string lines = dir.file("lines"), list = dir.file("expected"), read = dir.file("read");
  EXPECT_EQ(0, run("python3 " LOG4VRK_SOURCE_DIR "/tests/layouts/read_json.py '" + lines + "' '" + list + "'"));
  EXPECT_EQ(0, run("jq -c '.message | explode' '" + lines + "' >'" + read + "' && cmp '" + read + "' '" + list + "'"));
}

/// Logs so many random messages as safe text: as many lines, and each says what the message was.
inline void expectOneLineEach(long count) {
  const TempDir dir;
  LOGPatternLayout layout("%m %t%n");
  layout.setSafeText(true);
  LOGFileAppender file(&layout, dir.file("lines").c_str(), 0, 1, 65536);
  LOGLogger* const logger = LOGManager::getLogger("random");
  logger->setAdditivity(0);
  logger->setLevel(LOGLevel::ALL_OBJ);
  logger->addAppender(&file);
  std::mt19937 random(17);
  for (long i = 0; i < count; ++i) logger->info(randomText(random));
  logger->removeAppender(&file);
  file.close();
  std::ifstream in(dir.file("lines"), std::ios::binary);
  random.seed(17);
  long lines = 0, different = 0;
  for (std::string line; std::getline(in, line); ++lines) {
    for (const unsigned char byte : line) different += byte < 0x20 || byte == 0x7F ? 1 : 0;
    const std::string expected = I18NString(std::u16string_view(randomText(random))).toUtf8();
    if (undone(line.substr(0, line.rfind(' '))) != expected) ++different;
  }
  EXPECT_EQ(count, lines);
  EXPECT_EQ(0, different);
}

}  // namespace vrktest
