#include "log4vrk/appenders/LOGConsoleAppender.h"

#include <typeinfo>

#include "log4vrk/appenders/LOGQuietWriter.h"
#include "log4vrk/appenders/internal/LOGLineWriter.h"
#include "log4vrk/core/LOGLayout.h"
#include "log4vrk/core/internal/LOGAppendLine.h"
#include "log4vrk/core/internal/LOGTaking.h"
#include "log4vrk/platform/I18NLocale.h"
#include "log4vrk/platform/VRKFmFile.h"

namespace {

constexpr LOGFailureTexts APPEND_FAILURE = LOGFailureTexts::ofLostEvent("LOGAppenderSkeleton::subAppend -- ");

// The descriptor of a target, or -1.
int descriptorOf(const I18NString& target) {
  if (vrkEqualIgnoringCase(target, "out")) return 1;
  if (vrkEqualIgnoringCase(target, "err")) return 2;
  return -1;
}

}  // namespace

LOGConsoleAppender::LOGConsoleAppender() : m_target("out") {
  instance("LOGConsoleAppender");
  LOGAppenderInternals::set(*this, INTERNALS);
  setClosed(1);
}

LOGConsoleAppender::LOGConsoleAppender(LOGLayout* layout) : LOGConsoleAppender() { setLayout(layout); }

LOGConsoleAppender::LOGConsoleAppender(LOGLayout* layout, const I18NString& target) : LOGConsoleAppender(layout) {
  // Keeps a valid target, and lets go of its stream again until activateOptions().
  setTarget(target);
  LOGConsoleAppender::closeWriter();
  setOpen(0);
}

LOGConsoleAppender::~LOGConsoleAppender() { LOGConsoleAppender::closeWriter(); }

void LOGConsoleAppender::activateOptions() {
  constexpr LOGFailureTexts FAILURES = {"LOGConsoleAppender::activateOptions -- some i18nstring exception occurred",
                                        "LOGConsoleAppender::activateOptions -- some VRKThrowable exception occurred",
                                        "LOGConsoleAppender::activateOptions -- generic exception happened"};
  if (getOpen() == 1) return;
  logContain(FAILURES, [&] {
    const LOGGuard guard(*this);
    if (getOpen() != 1) setTarget(m_target);
  });
}

void LOGConsoleAppender::setTarget(const I18NString& value) {
  constexpr LOGFailureTexts FAILURES = {"LOGConsoleAppender::setTarget -- some i18nstring exception occurred",
                                        "LOGConsoleAppender::setTarget -- some VRKThrowable exception occurred",
                                        "LOGConsoleAppender::setTarget -- generic exception happened"};
  logContain(FAILURES, [&] {
    const LOGGuard guard(*this);
    const int descriptor = descriptorOf(value);
    if (descriptor < 0) {
      targetWarn(value);
      return;
    }
    m_target = value;
    takeStream(descriptor);
  });
}

void LOGConsoleAppender::takeStream(int descriptor) {
  setOpen(0);
  m_qw.reset();
  m_outFile.reset(vrkNew<VRKFmFile>(VRK_HERE));
  if (!m_outFile->attach(descriptor)) {
    setClosed(1);
    return;
  }
  setQWForFiles();
  setClosed(0);
  setOpen(1);
}

void LOGConsoleAppender::targetWarn(const I18NString&) {
  LOGLogLog::warn("LOGConsoleAppender::targetWarn -- possible values are out and err");
  LOGLogLog::warn("LOGConsoleAppender::targetWarn -- using out (default)");
}

void LOGConsoleAppender::setQWForFiles() {
  m_qw.reset();
  VRK_ASSERT(m_outFile);
  m_qw.reset(vrkNew<LOGQuietWriter>(VRK_HERE, nullptr, m_outFile.get()));
}

int LOGConsoleAppender::checkEntryConditions() { return getClosed() != 1 && getLayout() != nullptr ? 1 : 0; }

void LOGConsoleAppender::subappend(LOGLoggingEvent* event) {
  if (getOpen() == 0) return LOGTaking::refuse();
  LOGLayout* const layout = getLayout();
  if (layout == nullptr) {
    LOGLogLog::error("LOGConsoleAppender::subappend -- NULL layout");
    VRKAssertError::raise("VRK_ASSERT(m_layout);", VRK_HERE);
  }
  logContain(APPEND_FAILURE, [&]() VRK_NO_THREAD_SAFETY_ANALYSIS {
    const VRKThreadGuard guard(layout->criticalSection());  // the appender's own brings the rest
    writeLine(LOGLayoutInternals::formatUtf8(*layout, event));
  });
}

[[gnu::always_inline]] inline void LOGConsoleAppender::writeLine(std::string_view line) {
  if (getOpen() == 0) return LOGTaking::refuse();
  VRK_ASSERT(m_qw);
  LOGLineWriter::stWrite(*m_qw, *m_outFile, line);
}

const LOGAppenderInternals LOGConsoleAppender::INTERNALS = {
    &typeid(LOGConsoleAppender), false, [](LOGAppenderSkeleton& appender, LOGLoggingEvent* event) {
      auto& self = static_cast<LOGConsoleAppender&>(appender);
      return LOGAppenderInternals::appendLine(
          self, event, [&](std::string_view line) VRK_INLINED VRK_NO_THREAD_SAFETY_ANALYSIS {
            logContain(APPEND_FAILURE, [&]() VRK_INLINED VRK_NO_THREAD_SAFETY_ANALYSIS { self.writeLine(line); });
          });
    }};

void LOGConsoleAppender::closeWriter() {
  m_qw.reset();
  m_outFile.reset();
  setClosed(1);
}

I18NString LOGConsoleAppender::getTarget() const {
  const LOGGuard guard(*this);
  return m_target;
}
