#include "log4vrk/platform/VRKTime.h"

#include <sys/stat.h>

VRKTime::Moment VRKTime::now() {
  timespec time;
  clock_gettime(CLOCK_REALTIME, &time);
  return {time.tv_sec, static_cast<std::int32_t>(time.tv_nsec)};
}

std::tm VRKTime::local(std::int64_t seconds) {
  const std::time_t time = static_cast<std::time_t>(seconds);
  std::tm result{};
  localtime_r(&time, &result);
  return result;
}

std::tm VRKTime::utc(std::int64_t seconds) {
  const std::time_t time = static_cast<std::time_t>(seconds);
  std::tm result{};
  gmtime_r(&time, &result);
  return result;
}

bool VRKTime::fileModified(const I18NString& path, std::int64_t& seconds) {
  struct stat status;
  if (::stat(path.toUtf8().c_str(), &status) != 0) return false;
  seconds = status.st_mtime;
  return true;
}
