// The context of a thread as names and values: what it is busy with.

#pragma once

#include <string>
#include <string_view>

#include "log4vrk/core/internal/LOGFields.h"
#include "log4vrk/platform/VRKExport.h"

struct LOGThreadState;

/// Each thread has a context, and every event that it logs carries it: through queues, into the lines of layouts and to
/// log servers. LOG4VRK_CONTEXT adds to it until the block ends:
///
///   LOG4VRK_CONTEXT("order", order.id, "customer", order.customer);
///
/// Values keep their type: see LOGFields. Inside, a name that is there already hides the outer one. A new thread has an
/// empty context, unless it is given one:
///
///   std::thread([context = LOGContext::capture()] {
///     const LOGContext::Scope scope(context);
///     ...
///
/// An object of this class is a context that was captured.
///
/// Thread safety: any thread; each sees its own context only. An object is immutable but for assignment.
/// Failures: lack of memory leaves out what is added. capture() and get() raise std::bad_alloc.
class LOG4VRK_EXPORT LOGContext {
 public:
  LOGContext() = default;
  static LOGContext capture();
  bool isEmpty() const { return m_fields.empty(); }

  /// The value of that name in the calling thread's context, as text. Empty when there is none.
  static std::string get(std::string_view name);

  /// What is added stays until the object's end, on the thread that has made it. Scopes end in the reverse order.
  class LOG4VRK_EXPORT Scope {
   public:
    template <typename Name, typename Value, typename... Others>
    explicit Scope(const Name& name, const Value& value, const Others&... others) {
      LOGFields fields;
      fields.add(name, value, others...);
      begin(fields.bytes());
    }
    /// On top of what the thread has.
    explicit Scope(const LOGContext& captured) { begin(captured.m_fields); }
    ~Scope();
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

   private:
    void begin(std::string_view fields);

    const LOGThreadState* m_thread = nullptr;  // whose context has become longer
    std::size_t m_before = 0;                  // its length without this scope
  };

 private:
  std::string m_fields;
};

/// Adds names and values, in turn, to the context of the thread until the block ends. See LOGContext.
#define LOG4VRK_CONTEXT(...) const LOGContext::Scope LOG4VRK_SCOPE_NAME(log4vrkContext, __LINE__)(__VA_ARGS__)
/// @cond
#define LOG4VRK_SCOPE_NAME(name, line) LOG4VRK_SCOPE_NAME_OF(name, line)
#define LOG4VRK_SCOPE_NAME_OF(name, line) name##line
/// @endcond
