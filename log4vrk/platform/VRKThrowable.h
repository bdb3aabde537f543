// The errors of the library and the assertions that raise them.

#pragma once

#include <cxxabi.h>

#include <exception>
#include <memory>
#include <new>
#include <utility>

#include "log4vrk/platform/I18NString.h"
#include "log4vrk/platform/VRKExport.h"
#include "log4vrk/platform/internal/VRKFault.h"

/// The root of everything that the library raises. Copies share their details, so that copying never fails. An error
/// can be made when there is no memory left: then its description is the class name alone, and text and place are
/// empty.
///
/// Thread safety: not thread-safe; an error belongs to the thread that caught it.
class LOG4VRK_EXPORT VRKThrowable : public std::exception {
 public:
  VRKThrowable(const I18NString& text, const char* source, int line);
  VRKThrowable(const VRKThrowable&) noexcept = default;
  VRKThrowable& operator=(const VRKThrowable&) noexcept = default;
  ~VRKThrowable() override;

  /// The whole description on one line, in UTF-8: class, text, place, and the places it passed through.
  const char* what() const noexcept override;
  /// The text alone.
  const I18NString& getText() const noexcept;
  /// The name of the source file without its extension.
  const I18NString& getSource() const noexcept;
  int getLine() const noexcept;

  /// Notes that the error passed through a place; `entry` says how ("VRK_RETHROW").
  void addBackTrace(const char* entry, const char* source, int line) noexcept;

 protected:
  // `className` lives as long as the program.
  VRKThrowable(const char* className, const I18NString& text, const char* source, int line) noexcept;
  VRKThrowable(const char* className, const char* utf8Text, const char* source, int line) noexcept;

 private:
  struct Details;
  template <typename Text>
  void describe(const Text& text, const char* source, int line) noexcept;

  const char* m_className;
  std::shared_ptr<Details> m_details;  // null when there was no memory even for this
};

/// A text could not be converted.
class LOG4VRK_EXPORT I18NRuntimeError : public VRKThrowable {
 public:
  I18NRuntimeError(const I18NString& text, const char* source, int line);
  ~I18NRuntimeError() override;
};

/// A precondition does not hold; the text is the assertion as written.
class LOG4VRK_EXPORT VRKAssertError : public VRKThrowable {
 public:
  VRKAssertError(const I18NString& text, const char* source, int line);
  VRKAssertError(const char* text, const char* source, int line) noexcept;
  ~VRKAssertError() override;

  [[noreturn]] static void raise(const char* text, const char* source, int line);
};

/// There was no memory for what was to be done.
class LOG4VRK_EXPORT VRKOutOfMemoryError : public VRKThrowable {
 public:
  VRKOutOfMemoryError(const char* source, int line) noexcept;
  ~VRKOutOfMemoryError() override;
};

/// A standard exception that came out of a lower layer.
class LOG4VRK_EXPORT VRKStdExceptionError : public VRKThrowable {
 public:
  VRKStdExceptionError(const std::exception& cause, const char* source, int line) noexcept;
  ~VRKStdExceptionError() override;
};

/// The operating system refused something.
class LOG4VRK_EXPORT VRKSystemError : public VRKThrowable {
 public:
  /// `errorCode` is an errno value; `subject` names what it is about, such as a file.
  VRKSystemError(int errorCode, const I18NString& subject, const char* location, int line);
  ~VRKSystemError() override;

  int getErrorCode() const noexcept { return m_errorCode; }

 private:
  int m_errorCode;
};

/// The file name in `path` without directories; its extension is dropped when an error is made from it.
constexpr const char* vrkSourceName(const char* path) {
  const char* name = path;
  for (const char* p = path; *p != '\0'; ++p) {
    if (*p == '/') name = p + 1;
  }
  return name;
}

/// The name of the file in which it is written, without directories.
#define VRK_SOURCE vrkSourceName(__FILE__)
/// The place where it is written, as the two arguments `source, line`.
#define VRK_HERE VRK_SOURCE, __LINE__

/// Raises VRKAssertError unless the expression holds. Its text is the assertion as written.
#define VRK_ASSERT(expression)                                                                      \
  do {                                                                                              \
    if (!(expression)) VRKAssertError::raise("VRK_ASSERT(" #expression ");", VRK_SOURCE, __LINE__); \
  } while (false)

/// As VRK_ASSERT, with a name for what is asserted, a literal, which the text shows in its quotes.
#define VRK_ASSERT_NAMED(expression, name)                                                                           \
  do {                                                                                                               \
    if (!(expression)) VRKAssertError::raise("VRK_ASSERT_NAMED(" #expression ", " #name ");", VRK_SOURCE, __LINE__); \
  } while (false)

/// Raises an error of a class whose constructor takes `...`, then source and line: `VRK_THROW(VRKThrowable, "text");`.
#define VRK_THROW(ErrorClass, ...) throw ErrorClass(__VA_ARGS__, VRK_HERE)

/// For an assertion whose text or line is fixed and differs from what stands in the source.
#define VRK_ASSERT_AS(condition, text, line)                         \
  do {                                                               \
    if (!(condition)) VRKAssertError::raise(text, VRK_SOURCE, line); \
  } while (false)

/// Must stand before every catch (...) that does not rethrow: a cancelled thread unwinds through it.
#define VRK_RETHROW_FORCED_UNWIND \
  catch (abi::__forced_unwind&) { \
    throw;                        \
  }

/// Raises the error that is being handled again as vrkTranslateErrors does. Out of line, so that each use costs one
/// call.
[[noreturn]] LOG4VRK_EXPORT void vrkRaiseTranslated(const char* source, int line);

/// Runs `operation` and lets only the library's own errors out: a VRKThrowable gets a back-trace entry, memory shortage
/// becomes VRKOutOfMemoryError, any other standard exception VRKStdExceptionError.
template <typename Operation>
auto vrkTranslateErrors(const char* source, int line, Operation&& operation) -> decltype(operation()) {
  try {
    return operation();
  } catch (...) {
    vrkRaiseTranslated(source, line);
  }
}

/// `new T(arguments...)` under the rule of vrkTranslateErrors: `vrkNew<T>(VRK_HERE, arguments...)`.
template <typename T, typename... Arguments>
T* vrkNew(const char* source, int line, Arguments&&... arguments) {
  if (VRKFault::hit(VRKFault::ALLOCATION)) throw VRKOutOfMemoryError(source, line);
  return vrkTranslateErrors(source, line, [&] { return new T(std::forward<Arguments>(arguments)...); });
}

/// An object that is made on first use or at load and never destroyed, so that threads and static destructors that
/// still run at the process's exit find it in place.
template <typename T, typename... Arguments>
T& vrkImmortal(Arguments&&... arguments) {
  return *new T(std::forward<Arguments>(arguments)...);
}
