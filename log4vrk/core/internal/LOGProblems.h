// What goes wrong in a configuration run, for the program.

#pragma once

#include <exception>
#include <string>
#include <string_view>

#include "log4vrk/platform/I18NString.h"

/// Collects the warnings and errors that a configuration run writes to the internal log, whether or not that is
/// switched on, each with its place in the document.
///
/// Thread safety: any thread. A run collects what its own thread writes.
class LOGProblems {
 public:
  class Place;

  /// While it lives, a run is going on. One inside another is part of it.
  class Run {
   public:
    /// `fileName()` is how lines begin: empty for a document that was made by calls.
    template <typename FileName>
    explicit Run(FileName fileName) noexcept : m_isOutermost(s_run == nullptr) {
      if (!m_isOutermost) return;
      s_run = this;
      try {
        m_file = fileName().toUtf8();
      } catch (const std::exception&) {
        // Without memory, or with a name that is no text, lines begin with what they say.
      }
    }
    struct Apart {};
    /// Nothing of what follows reaches the internal log or the program: it is for lines() alone.
    explicit Run(Apart) noexcept : m_before(s_run), m_isOutermost(true), m_isApart(true) { s_run = this; }
    const std::string& lines() const { return m_lines; }
    /// What has been collected takes the place of what the run before has left.
    ~Run();
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

   private:
    friend class LOGProblems;

    std::string m_file;
    const Place* m_place = nullptr;  // the innermost
    std::string m_failedAt;          // where the error that is on its way was raised
    std::string m_lines;
    int m_pauses = 0;
    Run* const m_before = nullptr;
    const bool m_isOutermost;
    const bool m_isApart = false;
  };

  /// While it lives, the run reads this part of the document.
  class Place {
   public:
    /// `line` is 0 when it is not known. `kind` is what carries the name ("appender"), null when nothing does; a part
    /// of something else that has a name ("param") is told with that.
    explicit Place(long line, const char* kind = nullptr, const I18NString& name = I18NString(), bool isPart = false);
    ~Place();
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

   private:
    friend class LOGProblems;

    Run* const m_run;
    const Place* const m_outer;
    const long m_line;
    const char* const m_kind;
    const I18NString m_name;
    const bool m_isPart;
    const int m_exceptions;
  };

  /// From begin() until it is destroyed, what the thread writes belongs to something else.
  class Pause {
   public:
    Pause() = default;
    ~Pause();
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;
    void begin();

   private:
    Run* m_run = nullptr;
  };

  static bool areCollected() { return s_run != nullptr && s_run->m_pauses == 0; }
  static bool areApart() { return s_run != nullptr && s_run->m_isApart; }
  /// For LOGLogLog. An empty text is none; what there is no memory for is lost.
  static void add(std::string_view text) noexcept;

  /// Of the last run that has ended: a line each, empty when there were none.
  static I18NString ofLastRun();

 private:
  static std::string describe(const Run& run);

  static __thread Run* s_run __attribute__((tls_model("initial-exec")));
};
