#include "log4vrk/appenders/LOGQuietWriter.h"

#include "log4vrk/appenders/LOGWriter.h"
#include "log4vrk/core/internal/LOGContainment.h"
#include "log4vrk/platform/VRKFmFile.h"
#include "log4vrk/platform/VRKThrowable.h"

LOGQuietWriter::LOGQuietWriter(LOGErrorHandler* errorHandler, VRKFmFile* file) : m_errorHandler(errorHandler) {
  setFile(file);
}

LOGQuietWriter::LOGQuietWriter(LOGWriter* writer, LOGErrorHandler* errorHandler)
    : m_errorHandler(errorHandler), m_writer(writer) {}

LOGQuietWriter::~LOGQuietWriter() = default;

namespace {

constexpr LOGFailureTexts WRITE_FAILURES = {"LOGQuietWriter::write -- I18nstring exception occurred",
                                            "LOGQuietWriter::write -- VRKThrowable exception occurred",
                                            "LOGQuietWriter::write -- Unknown error occurred"};

}  // namespace

void LOGQuietWriter::write(VRKFmFile* outStream, const I18NString& text) {
  logContain(WRITE_FAILURES, [&] {
    if (text.isEmpty()) return;
    VRK_ASSERT_AS(outStream != nullptr, "VRK_ASSERT(outStream != NULL);", __LINE__);
    const VRKThreadRWGuard guard(*this, VRKThreadRWGuard::WRITE);
    writeAtEnd(outStream, text);
  });
}

void LOGQuietWriter::writeUtf8(VRKFmFile* outStream, std::string_view text) {
  logContain(WRITE_FAILURES, [&] {
    if (!text.empty()) writeAtEnd(outStream, text);
  });
}

void LOGQuietWriter::release(VRKFmFile* outStream) {
  logContain(WRITE_FAILURES, [&] {
    if (outStream->release() == 0) throwFileError(outStream);
  });
}

void LOGQuietWriter::stWrite(VRKFmFile* outStream, const I18NString& text) { writeAndFlush(outStream, text); }
void LOGQuietWriter::stWriteUtf8(VRKFmFile* outStream, std::string_view text) { writeAndFlush(outStream, text); }

template <typename Text>
void LOGQuietWriter::writeAndFlush(VRKFmFile* outStream, const Text& text) {
  constexpr LOGFailureTexts FAILURES = {"LOGQuietWriter::stWrite -- I18nstring exception occurred",
                                        "LOGQuietWriter::stWrite -- VRKThrowable exception occurred",
                                        "LOGQuietWriter::stWrite -- Unknown error occurred"};
  logContain(FAILURES, [&] {
    if (text == Text()) return;
    VRK_ASSERT_AS(outStream != nullptr, "VRK_ASSERT(outStream != NULL);", __LINE__);
    writeAtEnd(outStream, text);
    if (outStream->flush() == 0) throwFileError(outStream);
  });
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
