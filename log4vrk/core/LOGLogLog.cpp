#include "log4vrk/core/LOGLogLog.h"

#include <atomic>
#include <cstdlib>
#include <string>

#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/core/internal/LOGProblems.h"
#include "log4vrk/platform/VRKFmDir.h"
#include "log4vrk/platform/VRKFmFile.h"
#include "log4vrk/platform/VRKThrowable.h"
#include "log4vrk/platform/internal/VRKMutex.h"
#include "log4vrk/platform/internal/VRKNoCancellation.h"

namespace {

constexpr char SETTINGS_FILE[] = "../configuration/logdebug.ini";
constexpr char VARIABLE[] = "LOG4VRK_INTERNAL_LOG";
constexpr int STANDARD_ERROR = 2;
constexpr char DEFAULT_LOG_FILE[] = "log4vrk.log";

constexpr char PREFIX[] = "log4vrk: ";
constexpr char WARN_PREFIX[] = "log4vrk:WARN ";
constexpr char ERROR_PREFIX[] = "log4vrk:ERROR ";

std::atomic<int> g_debugEnabled{0};
std::atomic<int> g_quietMode{0};

// True when messages can be passed over without the lock, because the settings have been read and there is no file.
// That is so in most programs, and messages are written even on the path of log calls.
std::atomic<bool> g_silent{false};

// The last lock of all: nothing but file operations happens under it.
VRKMutex g_mutex;
bool g_initialized VRK_GUARDED_BY(g_mutex) = false;
VRKFmFile* g_file VRK_GUARDED_BY(g_mutex) = nullptr;  // while messages are written

bool openLog(const I18NString& path, int flagsWhenThere) VRK_REQUIRES(g_mutex) {
  auto file = std::make_unique<VRKFmFile>();
  const bool there = VRKFmDir::exists(path, VRKFmDir::REGULAR_FILE);
  if (!file->open(path, there ? flagsWhenThere : VRKFmFile::CREATE_EXCLUSIVE)) return false;
  g_file = file.release();
  return true;
}

// The file is continued and never emptied: child processes inherit the variable, and must not wipe what their parent
// has written.
void openLogOfVariable(const std::string& value) VRK_REQUIRES(g_mutex) {
  if (value != "stderr") {
    const I18NString path{std::string_view(value)};
    // Twice: when the file is missing another process may be faster to make it, and then it is there.
    if (!openLog(path, VRKFmFile::EXISTING)) openLog(path, VRKFmFile::EXISTING);
    return;
  }
  auto file = std::make_unique<VRKFmFile>();
  if (file->attach(STANDARD_ERROR)) g_file = file.release();
}

void readSettings(bool mayOpenLog) VRK_REQUIRES(g_mutex) {
  VRKFmFile settings;
  if (!settings.openForReading(SETTINGS_FILE)) return;
  std::string debugSwitch, path;
  settings.readWord(debugSwitch);
  settings.readWord(path);
  if (settings.getLastError() != 0) return;
  if (debugSwitch == "1") g_debugEnabled = 1;
  if (!mayOpenLog) return;
  openLog(path.empty() ? I18NString(DEFAULT_LOG_FILE) : I18NString(std::string_view(path)), VRKFmFile::TRUNCATE);
}

void writeLine(const std::string& line) VRK_REQUIRES(g_mutex) {
  if (g_file == nullptr) return;
  g_file->seekFromEnd(0);
  g_file->write(std::string_view(line));
  g_file->flush();
}

void initialize() VRK_REQUIRES(g_mutex) {
  if (g_initialized) return;
  // Set first, so that a failure below is not met again; its message finds no file, as it always does.
  g_initialized = true;
  g_quietMode = 0;
  const char* failure = nullptr;
  try {
    // Null in set-user-id programs, which must not write where their caller says.
    const char* const variable = ::secure_getenv(VARIABLE);
    const bool isSet = variable != nullptr && *variable != '\0';
    readSettings(!isSet);
    if (isSet) openLogOfVariable(variable);
  } catch (const I18NRuntimeError&) {
    failure = "LOGLogLog::init - I18nstring exception occurred during log file initialization";
  } catch (const VRKThrowable&) {
    failure = "LOGLogLog::init - VRKThrowable exception occurred during log file initialization";
  }
  VRK_RETHROW_FORCED_UNWIND
  catch (...) {
    failure = "LOGLogLog::init - Unknown error occurred during log file initialization";
  }
  if (failure != nullptr) writeLine(std::string(ERROR_PREFIX) + failure + "\n");
  g_silent = g_file == nullptr;
}

// Warnings and errors of a configuration run are kept for the program too.
template <typename Text>
void collect(const Text& appendText) {
  try {
    std::string text;
    appendText(text);
    LOGProblems::add(text);
  }
  VRK_RETHROW_FORCED_UNWIND
  catch (...) {
    // There is nobody left to tell.
  }
}

template <typename Text>
void writeMessage(const char* prefix, const Text& appendText) {
  if (prefix != PREFIX && LOGProblems::areCollected()) collect(appendText);
  if (LOGProblems::areApart()) return;
  if (g_silent.load(std::memory_order_relaxed)) return;
  // A failure is written while its exception is handled. A cancellation that comes then would end the process.
  const VRKNoCancellation finished;
  try {
    const LOGLeafGuard guard(g_mutex);
    initialize();
    if (g_file == nullptr) return;
    std::string line(prefix);
    const std::size_t empty = line.size();
    appendText(line);
    if (line.size() == empty) return;
    line += '\n';
    writeLine(line);
  }
  VRK_RETHROW_FORCED_UNWIND
  catch (...) {
    // There is nobody left to tell.
  }
}

void append(const I18NString& message, std::string& line) { message.appendUtf8To(line); }
// A plain text is not made into an I18NString first: what that raises without memory would reach the caller.
void append(const char* message, std::string& line) { line += message; }

template <typename Text>
void write(const char* prefix, const Text& message) {
  writeMessage(prefix, [&](std::string& line) { append(message, line); });
}

template <typename Text>
void write(const char* prefix, const Text& message, const VRKThrowable& error) {
  writeMessage(prefix, [&](std::string& line) {
    append(message, line);
    if (line.empty() || line.back() != ' ') line += ' ';
    line += error.what();
  });
}

}  // namespace

void LOGLogLog::init() {
  const VRKNoCancellation finished;
  const LOGLeafGuard guard(g_mutex);
  initialize();
}

void LOGLogLog::debug(const I18NString& message) { write(PREFIX, message); }
void LOGLogLog::debug(const char* message) { write(PREFIX, message); }
void LOGLogLog::debug(const I18NString& message, VRKThrowable& error) { write(PREFIX, message, error); }
void LOGLogLog::warn(const I18NString& message) { write(WARN_PREFIX, message); }
void LOGLogLog::warn(const I18NString& message, VRKThrowable& error) { write(WARN_PREFIX, message, error); }
void LOGLogLog::error(const I18NString& message) { write(ERROR_PREFIX, message); }
void LOGLogLog::error(const I18NString& message, VRKThrowable& error) { write(ERROR_PREFIX, message, error); }
void LOGLogLog::error(const char* message) { write(ERROR_PREFIX, message); }
void LOGLogLog::error(const char* message, VRKThrowable& error) { write(ERROR_PREFIX, message, error); }
void LOGLogLog::error(VRKThrowable& error) {
  writeMessage(ERROR_PREFIX, [&](std::string& line) { line += error.what(); });
}

void LOGLogLog::setInternalDebugging(int enabled) { g_debugEnabled = enabled; }
int LOGLogLog::getInternalDebugging() { return g_debugEnabled; }
void LOGLogLog::setQuietMode(int enabled) { g_quietMode = enabled; }
int LOGLogLog::getQuietMode() { return g_quietMode; }

void LOGLogLog::shutdown() {
  const VRKNoCancellation finished;
  const LOGLeafGuard guard(g_mutex);
  g_initialized = true;
  delete g_file;
  g_file = nullptr;
  g_silent = true;
}
