#include "log4vrk/appenders/LOGQuietWriter.h"

#include "log4vrk/appenders/LOGWriter.h"
#include "log4vrk/appenders/internal/LOGLineWriter.h"
#include "log4vrk/platform/VRKThrowable.h"

const LOGFailureTexts LOGLineWriter::WRITE = {"LOGQuietWriter::write -- I18nstring exception occurred",
                                              "LOGQuietWriter::write -- VRKThrowable exception occurred",
                                              "LOGQuietWriter::write -- Unknown error occurred",
                                              LOGFailureTexts::EVENT_IS_LOST};
const LOGFailureTexts LOGLineWriter::ST_WRITE = {"LOGQuietWriter::stWrite -- I18nstring exception occurred",
                                                 "LOGQuietWriter::stWrite -- VRKThrowable exception occurred",
                                                 "LOGQuietWriter::stWrite -- Unknown error occurred",
                                                 LOGFailureTexts::EVENT_IS_LOST};

LOGQuietWriter::LOGQuietWriter(LOGErrorHandler* errorHandler, VRKFmFile* file) : m_errorHandler(errorHandler) {
  setFile(file);
}

LOGQuietWriter::LOGQuietWriter(LOGWriter* writer, LOGErrorHandler* errorHandler)
    : m_errorHandler(errorHandler), m_writer(writer) {}

LOGQuietWriter::~LOGQuietWriter() = default;

void LOGQuietWriter::write(VRKFmFile* outStream, const I18NString& text) {
  logContain(LOGLineWriter::WRITE, [&] {
    if (text.isEmpty()) return;
    VRK_ASSERT_AS(outStream != nullptr, "VRK_ASSERT(outStream != NULL);", __LINE__);
    LOGLineWriter::writeBy(*this, *outStream, text, LOGLineWriter::WRITE, nullptr);
  });
}

void LOGQuietWriter::stWrite(VRKFmFile* outStream, const I18NString& text) {
  logContain(LOGLineWriter::ST_WRITE, [&] {
    if (text.isEmpty()) return;
    VRK_ASSERT_AS(outStream != nullptr, "VRK_ASSERT(outStream != NULL);", __LINE__);
    LOGLineWriter::stWriteBy(*this, *outStream, text);
  });
}

// For what had been collected. The counting writer learns how much of it has reached the file, also when the rest has
// not.
void LOGLineWriter::writeOut(LOGQuietWriter& writer, VRKFmFile& file, int (VRKFmFile::*operation)()) {
  LOGCountingQuietWriter* const counting = dynamic_cast<LOGCountingQuietWriter*>(&writer);
  const LOGFailureTexts& failures = counting != nullptr ? COUNTING_WRITE : WRITE;
  logContain(failures, [&] {
    const std::int64_t before = file.written();
    const bool written = (file.*operation)() != 0;
    if (counting != nullptr) counting->count(file.written() - before);
    if (!written) fail(writer, file, failures);
  });
}

// One line in the internal log for each event that is lost, as if they had been written one by one. The last is the
// caller's to write.
void LOGLineWriter::fail(LOGQuietWriter& writer, VRKFmFile& file, const LOGFailureTexts& failures) {
  for (std::size_t others = file.takeLost(); others > 1; --others) {
    logContain(failures, [&] { writer.throwFileError(&file); });
  }
  writer.throwFileError(&file);
}

void LOGQuietWriter::throwFileError(VRKFmFile* file) {
  VRK_ASSERT_AS(file != nullptr, "VRK_ASSERT(file != NULL);", __LINE__);
  throw VRKSystemError(file->getLastError(), file->getName(), "LOGQuietWriter::throwFileError", __LINE__);
}

void LOGQuietWriter::flush(VRKFmFile* outStream) {
  VRK_ASSERT_AS(outStream != nullptr, "VRK_ASSERT(outStream != NULL);", __LINE__);
  outStream->flush();
}

void LOGQuietWriter::close(VRKFmFile* outStream) {
  VRK_ASSERT_AS(outStream != nullptr, "VRK_ASSERT(outStream != NULL);", __LINE__);
  outStream->close();
}

void LOGQuietWriter::write(const I18NString& text) {
  if (m_writer != nullptr && !text.isEmpty()) m_writer->write(text);
}

void LOGQuietWriter::flush() {
  if (m_writer != nullptr) m_writer->flush();
}

void LOGQuietWriter::close() {
  flush();
  if (m_writer != nullptr) m_writer->close();
}
