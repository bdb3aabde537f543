#include "log4vrk/appenders/LOGRollingFileAppender.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <typeinfo>

#include "log4vrk/appenders/LOGCountingQuietWriter.h"
#include "log4vrk/appenders/internal/LOGFileLine.h"
#include "log4vrk/platform/VRKFmDir.h"
#include "log4vrk/platform/VRKFmFile.h"

namespace {

bool isBackup(const I18NString& name) { return VRKFmDir::exists(name, VRKFmDir::REGULAR_FILE); }

void renameOrReport(const I18NString& from, const I18NString& to) {
  if (VRKFmDir::renameFile(from, to)) return;
  LOGLogLog::error("LOGRollingFileAppender::rollOver ---- Could not rename [" + from + "] to [" + to + "]");
}

// The number that `digits` spells as backupName() does, or 0 when it is none or not below `limit`.
long indexBelow(long limit, std::u16string_view digits) {
  if (digits.empty() || digits[0] == u'0') return 0;
  long index = 0;
  for (char16_t c : digits) {
    if (c < u'0' || c > u'9' || index > (std::numeric_limits<long>::max() - 9) / 10) return 0;
    index = 10 * index + (c - u'0');
  }
  return index < limit ? index : 0;
}

}  // namespace

// One set of texts for setFile() and setFileOptions(), unlike those of the base.
const LOGFileAppender::Identity LOGRollingFileAppender::IDENTITY = {
    "LOGRollingFileAppender",
    "LOGRollingFileAppender::setFile -- ",
    {"LOGRollingFileAppender::setFile -- some i18nstring exception occurred",
     "LOGRollingFileAppender::setFile -- some VRKThrowable exception occurred",
     "LOGRollingFileAppender::setFile -- generic exception happened"}};

const LOGAppenderInternals LOGRollingFileAppender::INTERNALS = {&typeid(LOGRollingFileAppender), false,
                                                                &LOGRollingFileAppender::appendFast,
                                                                &LOGFileAppender::holdBack, &LOGFileAppender::release};

LOGRollingFileAppender::LOGRollingFileAppender() { setIdentity(IDENTITY, INTERNALS); }

// It opens the file itself. Opened by the base's constructor the file would get the base's writer, which does not
// count, since virtual calls there end in the base.
LOGRollingFileAppender::LOGRollingFileAppender(LOGLayout* layout, const I18NString& fileName, int append)
    : LOGRollingFileAppender() {
  setLayout(layout);
  LOGRollingFileAppender::setFile(fileName, append, 0, DEFAULT_BUFFER_SIZE);
}

LOGRollingFileAppender::~LOGRollingFileAppender() = default;

void LOGRollingFileAppender::setFileOptions(const I18NString& name, int append, int bufferedIO, long bufferSize) {
  logContain(IDENTITY.setFileFailures, [&]() VRK_NO_THREAD_SAFETY_ANALYSIS {
    const bool opened = openFile(name, append, bufferedIO, bufferSize);
    if (opened && append != 0 && counter() != nullptr) counter()->setCountToSizeOf(m_file.get());
  });
}

void LOGRollingFileAppender::setQWForFiles() { makeWriter<LOGCountingQuietWriter>(); }

LOGCountingQuietWriter* LOGRollingFileAppender::counter() const {
  LOGQuietWriter* const writer = m_qw.get();
  if (writer == nullptr) return nullptr;
  const bool isOwn = typeid(*writer) == typeid(LOGCountingQuietWriter);  // nearly always, and then there is no search
  return isOwn ? static_cast<LOGCountingQuietWriter*>(writer) : dynamic_cast<LOGCountingQuietWriter*>(writer);
}

void LOGRollingFileAppender::subappend(LOGLoggingEvent* event) {
  LOGFileAppender::subappend(event);
  rollOverIfFull();
}

bool LOGRollingFileAppender::appendFast(LOGAppenderSkeleton& appender, LOGLoggingEvent* event) {
  auto& self = static_cast<LOGRollingFileAppender&>(appender);
  return LOGAppenderInternals::appendLine(self, event,
                                          [&](std::string_view line) VRK_INLINED VRK_NO_THREAD_SAFETY_ANALYSIS {
                                            self.writeLine(line);
                                            self.rollOverIfFull();
                                          });
}

// Bytes that are collected but not written do not count: on a full disk they will be lost, and roll-overs for their
// sake would push good backups out. So when the file would be full with them they are written first, and then it is
// looked at again.
void LOGRollingFileAppender::rollOverIfFull() {
  LOGCountingQuietWriter* const counting = counter();
  if (m_fileName.isEmpty() || counting == nullptr) return;
  const std::int64_t written = counting->getCount();
  if (written + static_cast<std::int64_t>(m_file->pending()) < m_maximumFileSize) return;
  if (m_file->pending() > 0) LOGLineWriter::flush(*counting, *m_file);
  if (counting->getCount() >= m_maximumFileSize) rollOver();
}

// The backups move first, from the oldest on, so that no rename overwrites a file that is still to be moved. What fails
// is reported and does not stop the rest: a program must be able to log although its old logs cannot be moved.
void LOGRollingFileAppender::rollOver() {
  VRK_ASSERT(m_qw);
  const Change change(*this);
  const long oldest = m_maxBackupIndex;
  LOGLogLog::debug(I18NString("LOGRollingFileAppender::rollOver count ") +
                   (counter() != nullptr ? counter()->getCount() : 0));
  LOGLogLog::debug(I18NString("LOGRollingFileAppender::rollOver maxBackupIndex ") + oldest);
  if (oldest >= 1) {
    shiftBackups(oldest);
    closeFile();
    renameOrReport(m_fileName, backupName(1));
  }
  setFileOptions(m_fileName, 0, getBufferedIO(), getBufferSize());
}

void LOGRollingFileAppender::shiftBackups(long oldest) {
  const I18NString oldestName = backupName(oldest);
  if (isBackup(oldestName) && !VRKFmDir::removeFile(oldestName)) {
    LOGLogLog::error("LOGRollingFileAppender::rollOver ---- Could not remove the file: " + oldestName);
  }
  for (long index : backupsBelow(oldest)) renameOrReport(backupName(index), backupName(index + 1));
}

// In descending order. The directory is read, because a try of every index would take for ever when `oldest` is large,
// and a search that ends at the first gap would leave backups behind it where they are.
std::vector<long> LOGRollingFileAppender::backupsBelow(long oldest) const {
  I18NString directory, file;
  VRKFmDir::splitPath(m_fileName, directory, file);
  const I18NString prefix = file + ".";
  std::vector<long> indices;
  const std::vector<I18NString> names = VRKFmDir::list(directory);
  for (const I18NString& name : names) {
    if (!name.startsWith(prefix)) continue;
    const long index = indexBelow(oldest, name.view().substr(prefix.length()));
    if (index > 0 && isBackup(backupName(index))) indices.push_back(index);
  }
  if (names.empty()) {
    // The directory may be written to but not read: the backups up to the first gap have to do.
    for (long index = 1; index < oldest && isBackup(backupName(index)); ++index) indices.push_back(index);
  }
  std::sort(indices.begin(), indices.end(), std::greater<>());
  return indices;
}

I18NString LOGRollingFileAppender::backupName(long index) const {
  I18NString name = m_fileName;
  name += '.';
  name += index;
  return name;
}
