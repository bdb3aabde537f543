// The name of a logger, in both encodings.

#pragma once

#include <atomic>
#include <string>

#include "log4vrk/platform/I18NString.h"

/// Shared by a logger and the copies of its events, which may outlive it; the last of them frees it. Immutable, but for
/// the number of those who share it. (A std::shared_ptr would do, if its header were not the heaviest of a file that
/// only logs.)
class LOGLoggerName {
 public:
  explicit LOGLoggerName(const I18NString& name) : text(name), utf8(name.toUtf8()) {}
  LOGLoggerName(const LOGLoggerName& other) : text(other.text), utf8(other.utf8) {}
  LOGLoggerName& operator=(const LOGLoggerName&) = delete;

  const I18NString text;
  const std::string utf8;

  /// One share. Null when it shares nothing.
  class Share {
   public:
    Share() = default;
    /// Takes over the first share of a name that has just been made.
    explicit Share(const LOGLoggerName* made) : m_name(made) {}
    Share(const Share& other) : m_name(other.m_name) {
      if (m_name != nullptr) m_name->m_users.fetch_add(1, std::memory_order_relaxed);
    }
    Share& operator=(Share other) {
      std::swap(m_name, other.m_name);
      return *this;
    }
    ~Share() {
      if (m_name != nullptr && m_name->m_users.fetch_sub(1, std::memory_order_acq_rel) == 1) delete m_name;
    }

    const LOGLoggerName* get() const { return m_name; }

   private:
    const LOGLoggerName* m_name = nullptr;
  };

 private:
  mutable std::atomic<int> m_users{1};
};
