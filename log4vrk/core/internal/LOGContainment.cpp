#include "log4vrk/core/internal/LOGContainment.h"

#include "log4vrk/core/LOGLogLog.h"
#include "log4vrk/core/internal/LOGTaking.h"
#include "log4vrk/platform/VRKThrowable.h"
#include "log4vrk/platform/internal/VRKNoCancellation.h"

namespace {

// Writes the error that is being handled. False when it is none of the library's.
bool write(const LOGFailureTexts& texts) {
  if (texts.effect == LOGFailureTexts::EVENT_IS_LOST) LOGTaking::refuse();
  // A cancellation is an exception that ends the process when it is caught, even to be passed on, while another one is
  // being handled. So the thread ends after its line has been written.
  const VRKNoCancellation finished;
  try {
    throw;
  } catch (I18NRuntimeError& error) {
    LOGLogLog::error(texts.textError, error);
  } catch (VRKThrowable& error) {
    LOGLogLog::error(texts.throwable, error);
  }
  VRK_RETHROW_FORCED_UNWIND  // one that the operation itself has met
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
