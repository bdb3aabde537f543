#include "log4vrk/net/internal/LOGRecoveryFiles.h"

#include <algorithm>
#include <cerrno>
#include <tuple>
#include <utility>

#include "log4vrk/core/LOGLogLog.h"
#include "log4vrk/net/internal/LOGRecoveryFile.h"
#include "log4vrk/net/internal/LOGRecoveryRecord.h"
#include "log4vrk/platform/VRKFmDir.h"
#include "log4vrk/platform/VRKThrowable.h"
#include "log4vrk/platform/internal/VRKProcess.h"

namespace {

// Each file takes a descriptor. So many are adopted at once, and so many make up the limit.
constexpr std::size_t MAX_FILES = 64;
constexpr std::int64_t MIN_FILE_BYTES = std::int64_t{1} << 20;  // unless the limit is low

I18NString count(std::uint64_t messages) {
  I18NString text;
  text += static_cast<unsigned long long>(messages);
  return text + (messages == 1 ? " message" : " messages");
}

}  // namespace

LOGRecoveryFiles::LOGRecoveryFiles(const I18NString& directory, std::int64_t limitBytes)
    : m_directory(VRKProcess::absolutePath(directory.isEmpty() ? "." : directory)),
      m_limit(limitBytes),
      m_fileLimit(
          std::min(limitBytes / 8, std::max(MIN_FILE_BYTES, limitBytes / static_cast<std::int64_t>(MAX_FILES)))) {}

LOGRecoveryFiles::~LOGRecoveryFiles() { close(); }

bool LOGRecoveryFiles::open() {
  close();
  if (!VRKFmDir::makeDirectories(m_directory)) {
    LOGLogLog::error("LOGRecoveryFiles -- there is no directory " + m_directory + " and it cannot be made");
    return false;
  }
  findSetAside();
  adopt(true);
  return true;
}

void LOGRecoveryFiles::adopt() { adopt(false); }

void LOGRecoveryFiles::adopt(bool report) {
  do {
    for (std::unique_ptr<LOGRecoveryFile>& file : findFree(report)) takeOver(std::move(file));
    measure();
    makeRoom(0);
  } while (m_moreFree && (m_files.empty() || isOver(0)));
}

// Looks at every file of the directory, so not for every message.
void LOGRecoveryFiles::measure() {
  std::int64_t all = 0;
  for (const I18NString& name : VRKFmDir::list(m_directory)) {
    const bool isOne = LOGRecoveryFile::isName(name.view()) || LOGRecoveryFile::isSetAside(name);
    if (isOne) all += VRKSpoolFile::sizeOf(pathOf(name));
  }
  m_others = std::max<std::int64_t>(all - m_bytes, 0);
}

void LOGRecoveryFiles::findSetAside() {
  for (const I18NString& name : VRKFmDir::list(m_directory)) {
    VRKSpoolFile file;
    if (!LOGRecoveryFile::isSetAside(name) || file.openFree(pathOf(name)) != VRKSpoolFile::OPENED) continue;
    m_setAside.push_back({pathOf(name), file.size()});
    m_bytes += file.size();
  }
  m_setAside.sort([](const SetAside& a, const SetAside& b) { return a.path < b.path; });
}

// In the order in which they were written. Names alone do not tell: local time goes back once a year. They are good
// enough to tell which go first when there are too many.
std::vector<std::unique_ptr<LOGRecoveryFile>> LOGRecoveryFiles::findFree(bool report) {
  std::vector<std::unique_ptr<LOGRecoveryFile>> files;
  std::vector<I18NString> names = VRKFmDir::list(m_directory);
  std::sort(names.begin(), names.end());
  m_moreFree = false;
  for (const I18NString& name : names) {
    if (!LOGRecoveryFile::isName(name.view())) continue;
    m_moreFree = m_files.size() + files.size() >= MAX_FILES;
    if (m_moreFree) break;
    auto file = std::make_unique<LOGRecoveryFile>(pathOf(name));
    const VRKSpoolFile::Result result = file->file.openFree(file->path);
    if (result == VRKSpoolFile::OPENED) {
      files.push_back(std::move(file));
    } else if (result == VRKSpoolFile::FAILED && report) {
      VRKSystemError error(file->file.getLastError(), file->path, VRK_HERE);
      LOGLogLog::error("LOGRecoveryFiles -- could not open a file", error);
    }
  }
  std::sort(files.begin(), files.end(), [](const auto& a, const auto& b) {
    return std::make_tuple(a->file.modified(), a->path.view()) < std::make_tuple(b->file.modified(), b->path.view());
  });
  return files;
}

void LOGRecoveryFiles::takeOver(std::unique_ptr<LOGRecoveryFile> file) {
  file->readThrough();
  if (file->damaged) {
    LOGLogLog::error("LOGRecoveryFiles -- damaged after " + count(file->messages) + ": " + file->path);
  }
  if (file->messages == 0) return leave(std::move(file));
  file->first = m_last + 1;
  m_files.push_back(std::move(file));
  m_writing = nullptr;  // only the last file is written to
  m_bytes += m_files.back()->file.size();
  m_last += m_files.back()->messages;
}

bool LOGRecoveryFiles::append(std::uint64_t sequence, std::string_view payload) {
  try {
    const std::string record = recordOf(sequence, payload, m_limit);
    makeRoom(static_cast<std::int64_t>(record.size()));
    write(record);
  } catch (VRKSystemError& error) {
    if (!m_failing) LOGLogLog::error("LOGRecoveryFiles -- could not keep a message in " + m_directory, error);
    m_failing = true;
    return false;
  }
  if (m_failing) LOGLogLog::warn("LOGRecoveryFiles -- keeps messages again in " + m_directory);
  m_failing = false;
  return true;
}

bool LOGRecoveryFiles::appendTaken(std::uint64_t sequence, std::string_view payload, std::uint64_t& position) {
  if (!append(sequence, payload)) return false;
  const bool everythingBeforeIs = m_taken + 1 == m_last;
  if (everythingBeforeIs) m_taken = m_last;
  position = everythingBeforeIs ? m_last : 0;
  return true;
}

// Raises when it is too long.
std::string LOGRecoveryFiles::recordOf(std::uint64_t sequence, std::string_view payload, std::int64_t limit) {
  const LOGRecoveryRecord record = {sequence, payload};
  if (payload.size() > LOGRecoveryRecord::MAX_PAYLOAD || static_cast<std::int64_t>(record.size()) > limit) {
    throw VRKSystemError(EFBIG, "message", VRK_HERE);
  }
  std::string bytes;
  record.appendTo(bytes);
  return bytes;
}

// Raises when it fails. From the writing on nothing else can.
void LOGRecoveryFiles::write(std::string_view record) {
  const std::int64_t size = static_cast<std::int64_t>(record.size());
  if (m_writing == nullptr || m_writing->valid + size > m_fileLimit) {
    m_files.push_back(newFile(""));
    m_writing = m_files.back().get();
    m_writing->first = m_last + 1;
  }
  if (!m_writing->file.append(record)) {
    VRKSystemError error(m_writing->file.getLastError(), m_writing->path, VRK_HERE);
    if (m_writing->messages == 0) {
      m_writing = nullptr;
      std::unique_ptr<LOGRecoveryFile> empty = std::move(m_files.back());
      m_files.pop_back();
      leave(std::move(empty));
    }
    throw error;
  }
  m_writing->valid += size;
  ++m_writing->messages;
  m_bytes += size;
  ++m_last;
}

I18NString LOGRecoveryFiles::setAside(std::uint64_t sequence, std::string_view payload) {
  try {
    const std::string record = recordOf(sequence, payload, m_limit);
    const std::int64_t size = static_cast<std::int64_t>(record.size());
    if (m_refused && m_refused->file.size() + size > m_fileLimit) {
      m_setAside.push_back({m_refused->path, m_refused->file.size()});
      m_refused.reset();
    }
    makeRoom(size);
    if (!m_refused) m_refused = newFile(LOGRecoveryFile::REFUSED);
    if (!m_refused->file.append(record)) {
      throw VRKSystemError(m_refused->file.getLastError(), m_refused->path, VRK_HERE);
    }
    m_bytes += size;
    return m_refused->path;
  } catch (VRKSystemError& error) {
    LOGLogLog::error("LOGRecoveryFiles -- could not set a message aside in " + m_directory, error);
    return I18NString();
  }
}

std::unique_ptr<LOGRecoveryFile> LOGRecoveryFiles::newFile(const char* ending) {
  VRKFmDir::makeDirectories(m_directory);
  measure();
  for (;;) {
    auto file = std::make_unique<LOGRecoveryFile>(pathOf(LOGRecoveryFile::newName() + ending));
    const VRKSpoolFile::Result result = file->file.create(file->path);
    if (result == VRKSpoolFile::OPENED) return file;
    // In use: another process may take the same numbers. Gone: another one took the empty file for one without owner.
    if (result == VRKSpoolFile::OWNED_OR_GONE) continue;
    throw VRKSystemError(file->file.getLastError(), file->path, VRK_HERE);
  }
}

void LOGRecoveryFiles::makeRoom(std::int64_t bytes) {
  while (isOver(bytes) && !m_setAside.empty()) {
    VRKFmDir::removeFile(m_setAside.front().path);
    m_bytes -= m_setAside.front().bytes;
    m_setAside.pop_front();
  }
  if (isOver(bytes) && m_refused) {
    VRKFmDir::removeFile(m_refused->path);
    m_bytes -= m_refused->file.size();
    m_refused.reset();
  }
  // What other stores have is no reason to be left with nothing.
  while (isOver(bytes) && (m_files.size() > 1 || (m_bytes + bytes > m_limit && !m_files.empty()))) dropOldest();
}

void LOGRecoveryFiles::dropOldest() {
  LOGRecoveryFile& oldest = *m_files.front();
  if (m_full == 0) {
    LOGLogLog::error("LOGRecoveryFiles -- the oldest messages go, because the limit is reached: " + m_directory);
  }
  m_full += oldest.pending();
  m_dropped += oldest.pending();
  m_acknowledged += oldest.pending();
  m_taken = std::max(m_taken, m_acknowledged);
  oldest.damaged = false;  // there is no space to keep it
  removeOldest();
}

bool LOGRecoveryFiles::next(Record& record) {
  while (m_readIndex < m_files.size()) {
    LOGRecoveryFile& file = *m_files[m_readIndex];
    // It is ahead when the message that it has read was given back.
    if (m_reader && m_reader->count() > file.until(m_taken)) m_reader.reset();
    if (!m_reader) m_reader = std::make_unique<LOGRecoveryReader>(file);
    LOGRecoveryRecord read;
    if (m_reader->next(read)) {
      if (m_reader->count() <= file.until(m_taken)) continue;
      record.payload.assign(read.payload);
      record.sequence = read.sequence;
      record.position = ++m_taken;
      return true;
    }
    if (m_reader->count() < file.messages && file.until(m_taken) < file.messages) {
      cutOff(file);
    } else if (m_readIndex + 1 < m_files.size()) {
      startReading(m_readIndex + 1);
    } else {
      return false;  // more may be appended to this file
    }
  }
  return false;
}

// It was whole when it was opened: the disk fails, or somebody has changed it. What is taken from it its taker has.
void LOGRecoveryFiles::cutOff(LOGRecoveryFile& file) {
  const std::uint64_t left = std::max(m_reader->count(), file.until(m_taken));
  const std::uint64_t lost = file.messages - left;
  LOGLogLog::error("LOGRecoveryFiles -- " + count(lost) + " can no longer be read: " + file.path);
  m_dropped += lost;
  m_last -= lost;
  file.messages = left;
  for (std::size_t i = m_readIndex + 1; i < m_files.size(); ++i) m_files[i]->first -= lost;
  file.valid = m_reader->offset();
  file.damaged = true;
  if (m_writing == &file) m_writing = nullptr;
  removeDelivered();
}

void LOGRecoveryFiles::rewind() {
  m_taken = m_acknowledged;
  startReading(0);
}

void LOGRecoveryFiles::startReading(std::size_t index) {
  m_readIndex = index;
  m_reader.reset();
}

void LOGRecoveryFiles::acknowledge(std::uint64_t position) {
  const std::uint64_t until = std::min(position, m_taken);
  while (m_acknowledged < until) {
    LOGRecoveryFile& oldest = *m_files.front();
    const std::uint64_t delivered = std::min(until - m_acknowledged, oldest.pending());
    oldest.acknowledged += delivered;
    m_acknowledged += delivered;
    removeDelivered();
  }
}

void LOGRecoveryFiles::removeDelivered() {
  while (!m_files.empty() && m_files.front()->pending() == 0) removeOldest();
  if (pending() == 0) sayLost();
  if (m_files.empty() && m_moreFree) adopt();
}

void LOGRecoveryFiles::removeOldest() {
  std::unique_ptr<LOGRecoveryFile> oldest = std::move(m_files.front());
  m_files.pop_front();
  m_bytes -= oldest->file.size();
  if (m_writing == oldest.get()) m_writing = nullptr;
  if (m_readIndex > 0) {
    --m_readIndex;
  } else {
    m_reader.reset();
  }
  leave(std::move(oldest));
}

// Nothing in it is wanted any more.
void LOGRecoveryFiles::leave(std::unique_ptr<LOGRecoveryFile> file) {
  if (!file->damaged) {
    if (VRKFmDir::removeFile(file->path)) return;
    LOGLogLog::error("LOGRecoveryFiles -- could not remove " + file->path);
  } else {
    const I18NString name = file->path + LOGRecoveryFile::DAMAGED;
    if (VRKFmDir::renameFile(file->path, name)) {
      m_setAside.push_back({name, file->file.size()});
      m_bytes += file->file.size();
      return;
    }
    LOGLogLog::error("LOGRecoveryFiles -- could not rename " + file->path + " to " + name);
  }
  m_stuck.push_back(std::move(file));
}

void LOGRecoveryFiles::sayLost() {
  if (m_full > 0) LOGLogLog::error("LOGRecoveryFiles -- " + count(m_full) + " lost: " + m_directory);
  m_full = 0;
}

I18NString LOGRecoveryFiles::pathOf(const I18NString& name) const { return m_directory + "/" + name; }

void LOGRecoveryFiles::close() {
  sayLost();
  abandon();
}

void LOGRecoveryFiles::abandon() {
  m_failing = false;
  m_full = 0;
  startReading(0);
  m_writing = nullptr;
  m_files.clear();
  m_stuck.clear();
  m_setAside.clear();
  m_refused.reset();
  m_bytes = m_others = 0;
  m_moreFree = false;
  m_acknowledged = m_taken = m_last;
}
