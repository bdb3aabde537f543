#include "log4vrk/appenders/LOGCountingQuietWriter.h"

#include <algorithm>
#include <limits>

#include "log4vrk/appenders/internal/LOGLineWriter.h"
#include "log4vrk/platform/VRKThrowable.h"

const LOGFailureTexts LOGLineWriter::COUNTING_WRITE = {
    "LOGCountingQuietWriter::write -- I18nstring exception occurred",
    "LOGCountingQuietWriter::write -- VRKThrowable exception occurred",
    "LOGCountingQuietWriter::write -- Unknown error occurred", LOGFailureTexts::EVENT_IS_LOST};

LOGCountingQuietWriter::~LOGCountingQuietWriter() = default;

void LOGCountingQuietWriter::write(VRKFmFile* outStream, const I18NString& text) {
  logContain(LOGLineWriter::COUNTING_WRITE, [&] {
    if (text.isEmpty()) return;
    VRK_ASSERT_AS(outStream != nullptr, "VRK_ASSERT(outStream != NULL);", __LINE__);
    LOGLineWriter::writeBy(*this, *outStream, text, LOGLineWriter::COUNTING_WRITE, this);
  });
}

long LOGCountingQuietWriter::getCount() const {
  constexpr std::int64_t MOST = std::numeric_limits<long>::max();
  return static_cast<long>(std::min(m_count.load(), MOST));
}

void LOGCountingQuietWriter::setCountToSizeOf(VRKFmFile* file) { m_count = file->size(); }
