#include "log4vrk/net/internal/LOGOutboxFiles.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <random>
#include <system_error>

#include "log4vrk/appenders/internal/LOGRingFiles.h"
#include "log4vrk/core/LOGLogLog.h"
#include "log4vrk/platform/VRKThrowable.h"
#include "log4vrk/platform/internal/VRKErrorText.h"
#include "log4vrk/platform/internal/VRKProcess.h"

namespace {

// One directory has many names.
std::string nameOf(const I18NString& directory) {
  std::error_code unknown;
  const std::filesystem::path path = VRKProcess::absolutePath(directory).toUtf8();
  const std::filesystem::path real = std::filesystem::weakly_canonical(path, unknown);
  return (unknown ? path.lexically_normal() : real).string();
}

std::string newStream() {
  std::random_device random;
  char text[20];
  std::snprintf(text, sizeof text, "%08x%08x", random(), random());
  return text;
}

I18NString text(const std::string& utf8) { return I18NString(std::string_view(utf8)); }

}  // namespace

LOGOutboxFiles::LOGOutboxFiles(const I18NString& recoveryDirectory, I18NString reporter)
    : m_name(nameOf(recoveryDirectory)), m_reporter(std::move(reporter)) {}

std::unique_ptr<VRKMappedFile> LOGOutboxFiles::make(std::uint64_t bytes) const {
  const std::size_t size = LOGOutboxRing::fileSize(bytes);
  const auto begin = [&](VRKMappedFile& file) { LOGOutboxRing::begin(file, bytes, newStream()); };
  for (const I18NString& directory : LOGRingFiles::defaultDirectories()) {
    std::string why;
    auto file = LOGRingFiles::make(directory, m_name, size, begin, why, LOGRingFiles::OUTBOX);
    if (file) return file;
    LOGLogLog::warn(m_reporter + "no queue in " + directory + ": " + text(why));
  }
  LOGLogLog::warn(m_reporter + "events are in memory only for up to half a second, and a kill takes those along");
  auto memory = std::make_unique<VRKMappedFile>();
  if (!memory->makeAnonymous(size)) throw VRKSystemError(memory->getLastError(), "memory for a queue", VRK_HERE);
  begin(*memory);
  return memory;
}

bool LOGOutboxFiles::recover(LOGRecoveryFiles& to) {
  bool everything = true;
  for (const std::unique_ptr<LOGOutboxRing>& ring : openAll()) everything = everything && move(*ring, to);
  return everything;
}

std::vector<std::unique_ptr<LOGOutboxRing>> LOGOutboxFiles::openAll() {
  std::vector<std::unique_ptr<LOGOutboxRing>> all;
  for (const I18NString& directory : LOGRingFiles::defaultDirectories()) {
    LOGRingFiles::removeUnfinished(directory);
    for (const I18NString& path : LOGRingFiles::in(directory, m_name, LOGRingFiles::OUTBOX)) {
      if (std::unique_ptr<LOGOutboxRing> ring = open(path)) all.push_back(std::move(ring));
    }
  }
  std::sort(all.begin(), all.end(),
            [](const auto& a, const auto& b) { return a->header().created < b->header().created; });
  return all;
}

// Null when nothing can be got from it.
std::unique_ptr<LOGOutboxRing> LOGOutboxFiles::open(const I18NString& path) {
  auto file = std::make_unique<VRKMappedFile>();
  const VRKMappedFile::Result result = file->openFree(path);
  if (result == VRKMappedFile::OWNED_OR_GONE) return nullptr;
  const bool isOpen = result == VRKMappedFile::OPENED;
  std::string finding = isOpen ? "" : vrkErrorText(file->getLastError());
  auto ring = std::make_unique<LOGOutboxRing>();
  const LOGQueueHeader::Condition condition = isOpen ? ring->open(std::move(file), finding) : LOGQueueHeader::NEWER;
  const bool isSaid = std::find(m_said.begin(), m_said.end(), path) != m_said.end();
  if (!finding.empty() && !isSaid) {
    say(path, finding);
    m_said.push_back(path);
  }
  if (condition == LOGQueueHeader::USELESS) setAside(ring->file());
  if (condition == LOGQueueHeader::NEWER || condition == LOGQueueHeader::USELESS) return nullptr;
  return ring;
}

// Killed in between, the next one begins where this one was, and may repeat one event.
bool LOGOutboxFiles::move(LOGOutboxRing& ring, LOGRecoveryFiles& to) const {
  const std::uint64_t tail = ring.tail();
  std::uint64_t moved = 0;
  for (LOGEncodedEvent event; ring.get(event, tail); ++moved) {
    if (!to.append(event.sequence, event.text)) return false;
    ring.pass();
    ring.releasePassed();
  }
  VRKMappedFile& file = ring.file();
  if (moved > 0) {
    say(file.path(), "process " + std::to_string(ring.header().owner) +
                         " has ended with events that were in no recovery file, and now are: " + std::to_string(moved));
  }
  if (ring.damaged() > 0) say(file.path(), std::to_string(ring.damaged()) + " bytes of events are damaged");
  if (ring.damaged() > 0 || ring.isTruncated()) {
    setAside(file);
  } else {
    file.remove();
  }
  return true;
}

void LOGOutboxFiles::setAside(VRKMappedFile& file) const {
  const I18NString before = file.path();
  const I18NString path = LOGRingFiles::setAside(file);
  say(before, path.isEmpty() ? "it cannot be set aside" : "set aside as " + path.toUtf8());
}

void LOGOutboxFiles::say(const I18NString& path, const std::string& line) const {
  LOGLogLog::warn(m_reporter + path + ": " + text(line));
}
