#include "log4vrk/appenders/LOGWriterAppender.h"

#include "log4vrk/appenders/LOGQuietWriter.h"
#include "log4vrk/core/internal/LOGContainment.h"
#include "log4vrk/core/internal/LOGTaking.h"

LOGWriterAppender::LOGWriterAppender() { instance("LOGWriterAppender"); }

LOGWriterAppender::~LOGWriterAppender() = default;

void LOGWriterAppender::activateOptions() {}

void LOGWriterAppender::append(LOGLoggingEvent* event) {
  if (checkEntryConditions() == 0) return LOGTaking::refuse();
  subappend(event);
}

bool LOGWriterAppender::requiresLayout() { return false; }

void LOGWriterAppender::close() {
  if (getClosed() == 1) return;
  logContain("LOGWriterAppender::close -- unable to lock mutex", [&] {
    const LOGGuard guard(*this);
    if (getClosed() == 1) return;  // by the thread that had the lock
    setClosed(1);
    writeFooter();
    resetWriter();
  });
}

void LOGWriterAppender::closeWriter() {}

void LOGWriterAppender::resetWriter() { closeWriter(); }

void LOGWriterAppender::setWriter(LOGQuietWriter* writer) {
  logContain("LOGWriterAppender::setWriter -- unable to lock mutex", [&] {
    const LOGGuard guard(*this);
    // The same writer again is taken over as another would be, but not freed.
    if (writer == m_qw.get()) static_cast<void>(m_qw.release());
    resetWriter();
    m_qw.reset(writer);
    writeHeader();
  });
}

void LOGWriterAppender::setErrorHandler(LOGErrorHandler* handler) {
  logContain("LOGWriterAppender::setErrorHandler -- unable to lock mutex", [&] {
    const LOGGuard guard(*this);
    if (handler == nullptr) return;
    // The writer has a pointer of its own.
    replaceErrorHandler(handler);
    if (m_qw) m_qw->setErrorHandler(handler);
  });
}

I18NString LOGWriterAppender::getEncoding() const {
  const LOGGuard guard(*this);
  return m_encoding;
}

void LOGWriterAppender::setEncoding(const I18NString& encoding) {
  const LOGGuard guard(*this);
  m_encoding = encoding;
}
