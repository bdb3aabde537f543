#include "log4vrk/appenders/internal/LOGRingRecovery.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "log4vrk/appenders/internal/LOGRingDelivery.h"
#include "log4vrk/appenders/internal/LOGRingFiles.h"
#include "log4vrk/core/LOGLogLog.h"
#include "log4vrk/core/LOGObject.h"
#include "log4vrk/platform/internal/VRKErrorText.h"
#include "log4vrk/platform/internal/VRKFault.h"
#include "log4vrk/platform/internal/VRKLogTail.h"

namespace {

I18NString lineOf(const std::string& reporter, const I18NString& path, const std::string& text) {
  return I18NString(std::string_view(reporter)) + path + ": " + I18NString(std::string_view(text));
}

}  // namespace

void LOGRingRecovery::report(const LOGRing& ring, const std::string& text) const {
  LOGLogLog::error(lineOf(m_reporter, ring.file().path(), text));
}

void LOGRingRecovery::setAside(VRKMappedFile& file) const {
  const I18NString before = file.path();
  const I18NString path = LOGRingFiles::setAside(file);
  LOGLogLog::warn(
      lineOf(m_reporter, before, path.isEmpty() ? "it cannot be set aside" : "set aside as " + path.toUtf8()));
}

std::unique_ptr<LOGRingRecovery::Left> LOGRingRecovery::open(const I18NString& path) {
  auto file = std::make_unique<VRKMappedFile>();
  const VRKMappedFile::Result result = file->openFree(path);
  if (result == VRKMappedFile::FAILED) {
    LOGLogLog::error(lineOf(m_reporter, path, vrkErrorText(file->getLastError())));
    ++m_unreadable;
  }
  if (result != VRKMappedFile::OPENED) return nullptr;
  auto left = std::make_unique<Left>();
  left->ring = std::make_unique<LOGRing>();
  std::string finding;
  left->condition = left->ring->open(std::move(file), finding);
  if (!finding.empty()) report(*left->ring, finding);
  if (left->condition == LOGRing::USELESS) setAside(left->ring->file());
  const bool readable = left->condition == LOGRing::WHOLE || left->condition == LOGRing::TRUNCATED;
  if (!readable) ++m_unreadable;
  return readable ? std::move(left) : nullptr;
}

std::vector<std::unique_ptr<LOGRingRecovery::Left>> LOGRingRecovery::openAll(const std::vector<I18NString>& paths) {
  std::vector<std::unique_ptr<Left>> all;
  for (const I18NString& path : paths) {
    if (std::unique_ptr<Left> left = open(path)) all.push_back(std::move(left));
  }
  std::sort(all.begin(), all.end(),
            [](const auto& a, const auto& b) { return a->ring->header().created < b->ring->header().created; });
  return all;
}

bool LOGRingRecovery::completeLines(Left& left) {
  LOGRing& ring = *left.ring;
  LOGRing::Pending pending;
  std::string finding;
  const std::string path = ring.targetPath();
  if (!ring.pending(pending, finding)) {
    if (finding.empty()) return true;
  } else if (path.empty()) {
    finding = "the log file is not known";
  } else {
    switch (VRKLogTail::complete(path, pending.place, pending.lines)) {
      case VRKLogTail::FAILED:
        report(ring, path + ": " + vrkErrorText(errno));
        return false;
      case VRKLogTail::REPEATED:
        report(ring, path + " is not as it was left, so lines may be there twice");
        break;
      default:
        break;
    }
    VRKFault::mayDie(VRKFault::QUEUE_RECOVERED);
    ring.settle(pending.end);
    return true;
  }
  report(ring, finding + "; lines may be there twice");
  left.condition = LOGRing::TRUNCATED;
  return true;
}

bool LOGRingRecovery::deliver(Left& left, LOGRingDelivery& delivery) {
  LOGRing& ring = *left.ring;
  const std::uint64_t first = ring.position();
  while (delivery.isReady() && delivery.deliverSome(ring)) {
  }
  if (ring.hasNext()) return false;  // the appenders have been removed meanwhile
  ring.release();
  if (ring.position() > first) {
    LOGLogLog::warn(lineOf(
        m_reporter, ring.file().path(),
        "the events of process " + std::to_string(ring.header().owner) + " that had not been delivered have been"));
  }
  if (ring.damaged() > 0) report(ring, std::to_string(ring.damaged()) + " events are damaged");
  const bool isWhole = ring.damaged() == 0 && left.condition == LOGRing::WHOLE;
  if (isWhole) {
    ring.file().remove();
  } else {
    setAside(ring.file());
  }
  return isWhole;
}
