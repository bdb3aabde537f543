#include "log4vrk/appenders/LOGCountingQuietWriter.h"

#include <algorithm>
#include <limits>

#include "log4vrk/core/internal/LOGContainment.h"
#include "log4vrk/platform/VRKFmFile.h"
#include "log4vrk/platform/VRKThrowable.h"

LOGCountingQuietWriter::~LOGCountingQuietWriter() = default;

namespace {

constexpr LOGFailureTexts FAILURES = {"LOGCountingQuietWriter::write -- I18nstring exception occurred",
                                      "LOGCountingQuietWriter::write -- VRKThrowable exception occurred",
                                      "LOGCountingQuietWriter::write -- Unknown error occurred"};

}  // namespace

void LOGCountingQuietWriter::write(VRKFmFile* outStream, const I18NString& text) {
  logContain(FAILURES, [&] {
    if (text.isEmpty()) return;
    VRK_ASSERT_AS(outStream != nullptr, "VRK_ASSERT(outStream != NULL);", __LINE__);
    const VRKThreadRWGuard guard(*this, VRKThreadRWGuard::WRITE);
    m_count += writeAtEnd(outStream, text);
  });
}

void LOGCountingQuietWriter::writeUtf8(VRKFmFile* outStream, std::string_view text) {
  logContain(FAILURES, [&] {
    if (text.empty()) return;
    m_count.store(m_count.load(std::memory_order_relaxed) + writeAtEnd(outStream, text), std::memory_order_relaxed);
  });
}

long LOGCountingQuietWriter::getCount() const {
  constexpr std::int64_t MOST = std::numeric_limits<long>::max();
  return static_cast<long>(std::min(m_count.load(), MOST));
}

void LOGCountingQuietWriter::setCountToSizeOf(VRKFmFile* file) { m_count = file->size(); }
