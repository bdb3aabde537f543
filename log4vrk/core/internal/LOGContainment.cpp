#include "log4vrk/core/internal/LOGContainment.h"

#include "log4vrk/core/LOGLogLog.h"
#include "log4vrk/platform/VRKThrowable.h"

namespace {

// Writes the error that is being handled. False when it is none of the library's.
bool write(const LOGFailureTexts& texts) {
  try {
    throw;
  } catch (I18NRuntimeError& error) {
    LOGLogLog::error(texts.textError, error);
  } catch (VRKThrowable& error) {
    LOGLogLog::error(texts.throwable, error);
  }
  VRK_RETHROW_FORCED_UNWIND
  catch (...) {
    LOGLogLog::error(texts.unknown);
    return false;
  }
  return true;
}

}  // namespace

void logFailureContained(const LOGFailureTexts& texts) {
  if (!write(texts)) throw;
}

void logFailureContainedAll(const LOGFailureTexts& texts) { write(texts); }

void logFailureReported(const char* text) {
  write({text, text, text});
  throw;
}
