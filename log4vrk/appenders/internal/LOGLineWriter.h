// How appenders of the library's own write a line through a quiet writer.

#pragma once

#include <string_view>
#include <typeinfo>

#include "log4vrk/appenders/LOGCountingQuietWriter.h"
#include "log4vrk/appenders/LOGQuietWriter.h"
#include "log4vrk/core/internal/LOGContainment.h"
#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKFmFile.h"

/// Lines are in UTF-8 already, and the writer is nearly always the one that the appender has made, whose steps are
/// known. A writer of a class of the program's own gets the text as it is stated, in UTF-16.
///
/// Failures are the same on every way: one line in the internal log for each event that is lost, with the text of the
/// writer in use.
struct LOGLineWriter {
  /// Marks a writer that nobody else can reach.
  static void makePrivate(LOGQuietWriter& writer) { writer.m_isPrivate = true; }

  /// write(file, line).
  [[gnu::always_inline]] static void write(LOGQuietWriter& writer, VRKFmFile& file, std::string_view line) {
    if (typeid(writer) == typeid(LOGQuietWriter)) {
      writeBy(writer, file, line, WRITE, nullptr);
    } else if (typeid(writer) == typeid(LOGCountingQuietWriter)) {
      auto& counting = static_cast<LOGCountingQuietWriter&>(writer);
      writeBy(writer, file, line, COUNTING_WRITE, &counting);
    } else {
      writer.write(&file, I18NString(line));
    }
  }
  /// stWrite(file, line).
  [[gnu::always_inline]] static void stWrite(LOGQuietWriter& writer, VRKFmFile& file, std::string_view line) {
    if (typeid(writer) == typeid(LOGQuietWriter)) {
      stWriteBy(writer, file, line);
    } else {
      writer.stWrite(&file, I18NString(line));
    }
  }
  /// Writes what the file has held back; with flush(), what it has buffered, too.
  static void release(LOGQuietWriter& writer, VRKFmFile& file) { writeOut(writer, file, &VRKFmFile::release); }
  static void flush(LOGQuietWriter& writer, VRKFmFile& file) { writeOut(writer, file, &VRKFmFile::flush); }

  // The steps of the writers' own operations.
  static const LOGFailureTexts WRITE, ST_WRITE, COUNTING_WRITE;
  template <typename Text>
  [[gnu::always_inline]] static void writeBy(LOGQuietWriter& writer, VRKFmFile& file, const Text& text,
                                             const LOGFailureTexts& failures, LOGCountingQuietWriter* counting) {
    logContain(failures, [&]() VRK_INLINED {
      if (text == Text()) return;
      if (writer.m_isPrivate) {
        append(writer, file, text, failures, counting);
      } else {
        const VRKThreadRWGuard guard(writer, VRKThreadRWGuard::WRITE);
        append(writer, file, text, failures, counting);
      }
    });
  }
  template <typename Text>
  [[gnu::always_inline]] static void stWriteBy(LOGQuietWriter& writer, VRKFmFile& file, const Text& text) {
    logContain(ST_WRITE, [&]() VRK_INLINED {
      if (text == Text()) return;
      append(writer, file, text, ST_WRITE, nullptr);
      if (file.flush() == 0) fail(writer, file, ST_WRITE);
    });
  }

 private:
  static void writeOut(LOGQuietWriter& writer, VRKFmFile& file, int (VRKFmFile::*operation)());
  template <typename Text>
  [[gnu::always_inline]] static void append(LOGQuietWriter& writer, VRKFmFile& file, const Text& text,
                                            const LOGFailureTexts& failures, LOGCountingQuietWriter* counting) {
    if (file.seekFromEnd(0) == -1) writer.throwFileError(&file);
    const std::int64_t before = file.written();
    const bool written = file.write(text) != -1;
    if (counting != nullptr) counting->count(file.written() - before);
    if (!written) fail(writer, file, failures);
  }
  /// Raises for one of the lost events, after a line for each of the others.
  [[noreturn, gnu::cold]] static void fail(LOGQuietWriter& writer, VRKFmFile& file, const LOGFailureTexts& failures);
};
