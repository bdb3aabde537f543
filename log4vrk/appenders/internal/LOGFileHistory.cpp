#include "log4vrk/appenders/internal/LOGFileHistory.h"

#include <cerrno>

#include "log4vrk/core/LOGLogLog.h"
#include "log4vrk/platform/VRKFmDir.h"
#include "log4vrk/platform/VRKThrowable.h"
#include "log4vrk/platform/internal/VRKCompressedFile.h"
#include "log4vrk/platform/internal/VRKErrorText.h"

namespace {

constexpr VRKCompressor::Format FORMATS[] = {VRKCompressor::GZIP, VRKCompressor::ZSTD};

std::int64_t sizeOf(const std::string& path) {
  VRKFileFacts facts;
  return VRKFileFacts::of(path, facts) ? facts.size : 0;
}

std::int64_t sizeOf(const LOGRolledFile& file) {
  std::int64_t size = file.isPlain ? sizeOf(file.path) : 0;
  for (const auto format : FORMATS) {
    if (file.isCompressed[format]) size += sizeOf(file.path + VRKCompressedFile::ending(format));
  }
  return size;
}

// It gets the times of the plain one before it gets its name, so it has been made from that, and whole.
bool isMadeFrom(const VRKFileClaim& plain, const std::string& compressed) {
  VRKFileFacts from, made;
  return VRKFileFacts::of(plain.descriptor(), from) && VRKFileFacts::of(compressed, made) && from.isSameTime(made);
}

}  // namespace

void LOGFailureOnce::failed(const std::string& text) {
  if (!m_said) LOGLogLog::error("LOGTimeRollingFileAppender -- " + I18NString(text));
  m_said = true;
}

bool LOGFileHistory::tidy(std::int64_t begin, const std::function<bool()>& isOver) {
  m_isDone = true;
  removeTooMany(begin);
  for (const LOGRolledFile& file : m_names.list()) {
    if (isOver()) return false;
    settle(file, isOver);
  }
  removeTooLarge();
  return m_isDone;
}

void LOGFileHistory::removeTooMany(std::int64_t begin) {
  if (m_limits.files <= 0 && m_limits.age <= 0) return;
  const LOGRollInterval& interval = m_names.calendar().interval();
  const std::vector<LOGRolledFile> files = m_names.list();
  for (std::size_t i = 0; i < files.size(); ++i) {
    const bool isTooMany = m_limits.files > 0 && files.size() - i > static_cast<std::size_t>(m_limits.files);
    const bool isTooOld = m_limits.age > 0 && interval.next(files[i].begin) + m_limits.age <= begin;
    if (isTooMany || isTooOld) remove(files[i]);
  }
}

// After the compression, so that a file which is about to become smaller pushes none away.
void LOGFileHistory::removeTooLarge() {
  if (m_limits.bytes <= 0) return;
  const std::vector<LOGRolledFile> files = m_names.list();
  std::int64_t total = 0;
  for (const LOGRolledFile& file : files) total += sizeOf(file);
  for (const LOGRolledFile& file : files) {
    if (total <= m_limits.bytes) break;
    total -= sizeOf(file);
    remove(file);
  }
}

// The claim on the plain file is what makes one process at a time compress it, and nobody who still writes to it lose
// an event. Who has it knows that temporary files are those of the dead.
void LOGFileHistory::settle(const LOGRolledFile& file, const std::function<bool()>& isOver) {
  const bool isUnfinished = file.isUnfinished[VRKCompressor::GZIP] || file.isUnfinished[VRKCompressor::ZSTD];
  if (!isUnfinished && !(file.isPlain && m_format)) return;
  const VRKFileClaim claim(file.path);
  if (file.isPlain && !claim.isOurs()) {
    m_isDone = false;
    return;
  }
  bool isCompressed = false;
  for (const auto format : FORMATS) {
    const std::string name = file.path + VRKCompressedFile::ending(format);
    if (file.isUnfinished[format]) VRKFmDir::removeFile(I18NString(name + ".tmp"));
    if (!file.isPlain || !file.isCompressed[format]) continue;
    isCompressed = true;
    if (isMadeFrom(claim, name)) removeName(file.path);
  }
  if (!file.isPlain || isCompressed || !m_format) return;
  try {
    switch (VRKCompressedFile::replace(claim, file.path, *m_format, isOver)) {
      case VRKCompressedFile::MADE:
        return m_compression.worked();
      case VRKCompressedFile::INTERRUPTED:
        break;
      case VRKCompressedFile::FAILED:
        m_compression.failed("could not compress [" + file.path + "]: " + vrkErrorText(errno));
    }
  } catch (const VRKThrowable& error) {
    m_compression.failed("could not compress [" + file.path + "]: " + error.getText().toUtf8());
  }
  m_isDone = false;
}

void LOGFileHistory::remove(const LOGRolledFile& file) {
  bool isRemoved = true;
  if (file.isPlain) {
    const VRKFileClaim claim(file.path);
    isRemoved = claim.isOurs() && removeName(file.path);
  }
  for (const auto format : FORMATS) {
    if (file.isCompressed[format]) {
      isRemoved = removeName(file.path + VRKCompressedFile::ending(format)) && isRemoved;
    }
  }
  if (!isRemoved) m_isDone = false;
}

bool LOGFileHistory::removeName(const std::string& path) {
  if (VRKFmDir::removeFile(I18NString(path))) {
    m_removal.worked();
    return true;
  }
  VRKFileFacts gone;
  if (!VRKFileFacts::of(path, gone)) return true;  // another process was first
  m_removal.failed("could not remove [" + path + "]");
  return false;
}
