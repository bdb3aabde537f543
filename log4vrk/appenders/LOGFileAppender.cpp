#include "log4vrk/appenders/LOGFileAppender.h"

#include <typeinfo>
#include <utility>

#include "log4vrk/appenders/LOGCountingQuietWriter.h"
#include "log4vrk/appenders/LOGQuietWriter.h"
#include "log4vrk/appenders/internal/LOGFileLine.h"
#include "log4vrk/core/LOGLayout.h"
#include "log4vrk/core/internal/LOGAppendLine.h"
#include "log4vrk/core/internal/LOGExitSteps.h"
#include "log4vrk/platform/VRKConfigurationFactory.h"
#include "log4vrk/platform/VRKFmDir.h"
#include "log4vrk/platform/VRKFmFile.h"

namespace {

// The gate is closed only when something is buffered: otherwise a thread that is stuck in a log call would hold up the
// exit for nothing.
void writeBuffers(LOGExitSteps::Clock::time_point until) {
  if (!VRKFmFile::anyBuffered()) return;
  const LOGGate::FullClosure alone(until);
  VRKFmFile::writeBuffers();
}

[[maybe_unused]] const bool g_writesBuffersAtExit = LOGExitSteps::set(LOGExitSteps::BUFFERS, &writeBuffers);

}  // namespace

// On purpose the texts of setFile() name setFileOptions(), and those of setFileOptions() name setFile(): readers of the
// internal log know them so.
const LOGFileAppender::Identity LOGFileAppender::IDENTITY = {
    "LOGFileAppender",
    "LOGFileAppender::setFile -- ",
    {"LOGFileAppender::setFileOptions -- some i18nstring exception occurred",
     "LOGFileAppender::setFileOptions -- some VRKThrowable exception occurred",
     "LOGFileAppender::setFileOptions -- generic exception happened"}};

const LOGAppenderInternals LOGFileAppender::INTERNALS = {&typeid(LOGFileAppender), false, &LOGFileAppender::appendFast,
                                                         &LOGFileAppender::holdBack, &LOGFileAppender::release};

LOGFileAppender::LOGFileAppender() {
  setIdentity(IDENTITY, INTERNALS);
  setClosed(1);
}

void LOGFileAppender::setIdentity(const Identity& identity, const LOGAppenderInternals& internals) {
  m_identity = &identity;
  instance(identity.className);
  LOGAppenderInternals::set(*this, internals);
}

LOGFileAppender::LOGFileAppender(LOGLayout* layout, const I18NString& fileName, int append)
    : LOGFileAppender(layout, fileName, append, 0, DEFAULT_BUFFER_SIZE) {}

LOGFileAppender::LOGFileAppender(LOGLayout* layout, const I18NString& fileName, int append, int bufferedIO,
                                 long bufferSize)
    : LOGFileAppender() {
  setLayout(layout);
  LOGFileAppender::setFile(fileName, append, bufferedIO, bufferSize);
}

LOGFileAppender::~LOGFileAppender() = default;

void LOGFileAppender::activateOptions() {
  if (getOpen() == 1) return;
  logContain(m_identity->setFileFailures, [&] {
    const LOGGuard guard(*this);
    if (getOpen() != 1 && !m_fileName.isEmpty()) setFile(m_fileName, m_append, m_bufferedIO, m_bufferSize);
  });
}

void LOGFileAppender::setFile(const I18NString& name, int append, int bufferedIO, long bufferSize) {
  if (getClosed() == 0) return;
  logContain(m_identity->setFileFailures, [&] {
    const LOGGuard guard(*this);
    // It may have been opened by the thread that had the lock.
    if (getClosed() != 0) setFileOptions(name, append, bufferedIO, bufferSize);
  });
}

void LOGFileAppender::setFileOptions(const I18NString& name, int append, int bufferedIO, long bufferSize) {
  constexpr LOGFailureTexts FAILURES = {"LOGFileAppender::setFile -- some i18nstring exception occurred",
                                        "LOGFileAppender::setFile -- some VRKThrowable exception occurred",
                                        "LOGFileAppender::setFile -- generic exception happened"};
  if (getClosed() == 0) return;
  logContain(FAILURES, [&]() VRK_NO_THREAD_SAFETY_ANALYSIS { openFile(name, append, bufferedIO, bufferSize); });
}

bool LOGFileAppender::openFile(const I18NString& name, int append, int bufferedIO, long bufferSize) {
  const Change change(*this);
  // First, because `name` may be the field that resetWriter() clears.
  I18NString path = VRKConfigurationFactory::getInstance().resolvePath(name);
  // Others read the class name without a lock, so it is left alone when it is right.
  if (instanceOf() != m_identity->className) instance(m_identity->className);
  if (bufferedIO == 1) setImmediateFlush(0);
  resetWriter();
  m_fileName = std::move(path);
  m_append = append;
  m_bufferedIO = bufferedIO;
  m_bufferSize = bufferSize;

  if (!hasDirectory()) return false;
  if (!m_file) m_file.reset(vrkNew<VRKFmFile>(VRK_HERE));
  const bool opened = m_file->open(m_fileName, append == 1 ? VRKFmFile::EXISTING : VRKFmFile::TRUNCATE) ||
                      m_file->open(m_fileName, VRKFmFile::CREATE_EXCLUSIVE);
  if (!opened) return false;
  m_file->setBuffer(bufferedIO == 1 && bufferSize > 0 ? static_cast<std::size_t>(bufferSize) : 0);
  setQWForFiles();
  VRK_ASSERT(m_qw);
  writeHeader();
  m_qw->flush(m_file.get());
  return true;
}

bool LOGFileAppender::hasDirectory() const {
  I18NString directory, file;
  VRKFmDir::splitPath(m_fileName, directory, file);
  if (directory.isEmpty() || VRKFmDir::exists(directory, VRKFmDir::DIRECTORY)) return true;
  LOGLogLog::debug(m_identity->messagePrefix + directory + " directory does not exist");
  return false;
}

template <typename Writer>
void LOGFileAppender::makeWriter() {
  m_qw.reset();
  m_qw.reset(vrkNew<Writer>(VRK_HERE, nullptr, m_file.get()));
  if (LOGAppenderInternals::ofWhole(*this) != nullptr) LOGLineWriter::makePrivate(*m_qw);
}

template void LOGFileAppender::makeWriter<LOGCountingQuietWriter>();

void LOGFileAppender::setQWForFiles() { makeWriter<LOGQuietWriter>(); }

int LOGFileAppender::checkEntryConditions() { return getClosed() != 1 && m_qw ? 1 : 0; }

void LOGFileAppender::subappend(LOGLoggingEvent* event) {
  if (getOpen() != 1) return LOGTaking::refuse();
  VRK_ASSERT(m_qw);
  if (LOGLayout* const layout = getLayout()) {
    // Written from the layout's own buffer: a copy would cost every event, and help only appenders that share a layout.
    const VRKThreadGuard guard(layout->criticalSection());  // the appender's own brings the rest
    writeLine(LOGLayoutInternals::formatUtf8(*layout, event));
    return;
  }
  LOGTaking::refuse();
  if (getImmediateFlush() == 1) m_qw->flush(m_file.get());
}

bool LOGFileAppender::appendFast(LOGAppenderSkeleton& appender, LOGLoggingEvent* event) {
  auto& self = static_cast<LOGFileAppender&>(appender);
  return LOGAppenderInternals::appendLine(
      self, event, [&](std::string_view line) VRK_INLINED VRK_NO_THREAD_SAFETY_ANALYSIS { self.writeLine(line); });
}

// Only one thread at a time holds back. A second queue in front of the same file writes at once; otherwise its lines
// would wait for the first one's release.
void LOGFileAppender::holdBack(LOGAppenderSkeleton& appender) {
  auto& self = static_cast<LOGFileAppender&>(appender);
  const LOGGuard guard(self);
  if (self.m_holder == nullptr) self.m_holder = &LOGThreadState::current();
}

void LOGFileAppender::release(LOGAppenderSkeleton& appender) {
  auto& self = static_cast<LOGFileAppender&>(appender);
  logContain("LOGFileAppender::release -- unable to lock mutex", [&] {
    const LOGGuard guard(self);
    const bool held = self.m_holder == &LOGThreadState::current();
    if (held) self.m_holder = nullptr;
    if (self.m_file && self.m_qw) LOGLineWriter::release(*self.m_qw, *self.m_file);
    if (held && self.m_file) self.m_file->setJournal(nullptr);
  });
}

bool LOGFileAppender::keepJournal(VRKFileJournal& journal, I18NString& path) {
  const LOGGuard guard(*this);
  if (m_holder != &LOGThreadState::current() || !m_file || !m_file->isOpen()) return false;
  m_file->setJournal(&journal);
  if (path != m_file->getName()) path = m_file->getName();
  return true;
}

void LOGFileAppender::closeFile() {
  if (m_file && m_file->isOpen()) {
    if (m_file->flush() == 0) {
      LOGLogLog::error("LOGFileAppender::closeFile -- what was buffered could not be written to " + m_fileName);
    }
    m_file->close();
  }
  if (m_changing) return;
  setOpen(0);
  setClosed(1);
}

void LOGFileAppender::resetWriter() {
  closeFile();
  m_fileName.clear();
  LOGWriterAppender::resetWriter();
}

void LOGFileAppender::setFile(const I18NString& name) {
  const LOGGuard guard(*this);
  m_fileName = name;
}

I18NString LOGFileAppender::getFile() const {
  const LOGGuard guard(*this);
  return m_fileName;
}

void LOGFileAppender::setBufferedIO(int on) {
  m_bufferedIO = on;
  if (on == 1) setImmediateFlush(0);
}

LOGFileAppender::Change::Change(LOGFileAppender& appender) : m_appender(appender), m_nested(appender.m_changing) {
  m_appender.m_changing = true;
}

LOGFileAppender::Change::~Change() {
  if (m_nested) return;
  m_appender.m_changing = false;
  if (m_appender.m_qw && m_appender.m_file && m_appender.m_file->isOpen()) {
    m_appender.setClosed(0);
    m_appender.setOpen(1);
  } else {
    m_appender.setOpen(0);
    m_appender.setClosed(1);
  }
}
