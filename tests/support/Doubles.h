// What the tests of loggers share: stand-ins for what a program brings along, and the usual includes.

#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "log4vrk/appenders/LOGAppenderSkeleton.h"
#include "log4vrk/core/LOGHierarchy.h"
#include "log4vrk/core/LOGHierarchyEventListener.h"
#include "log4vrk/core/LOGLogger.h"
#include "log4vrk/core/LOGLoggingEvent.h"
#include "log4vrk/core/LOGRootLogger.h"
#include "log4vrk/platform/VRKFault.h"
#include "log4vrk/platform/VRKThrowable.h"
#include "tests/support/InternalLog.h"
#include "tests/support/Process.h"

namespace vrktest {

using Texts = std::vector<std::string>;

/// What the event reads as, "(null)" when it renders to nothing.
inline std::string textOf(LOGLoggingEvent& event) {
  const std::unique_ptr<I18NString> text(event.getRenderedMessage());
  return text ? text->toUtf8() : "(null)";
}

/// Where the assertion stands that `operation` raises, and its text; "none" when it raises none.
template <typename Operation>
std::string assertionOf(Operation operation) {
  try {
    operation();
  } catch (const VRKAssertError& error) {
    return (error.getSource() + ": " + error.getText()).toUtf8();
  }
  return "none";
}

/// Keeps the texts that it was given; the hooks run where a program's own appender has its code.
class RecordingAppender : public LOGAppenderSkeleton {
 public:
  explicit RecordingAppender(const I18NString& name = I18NString()) { RecordingAppender::setName(name); }

  void activateOptions() override {
    if (onActivate) onActivate();
  }
  void append(LOGLoggingEvent* event) override {
    texts.push_back(textOf(*event));
    if (onAppend) onAppend(texts.back());
  }
  void close() override {
    if (onClose) onClose();
    setClosed(1);
    ++closings;
  }

  Texts texts;
  std::atomic<int> closings{0};
  std::function<void()> onActivate, onClose;
  std::function<void(const std::string&)> onAppend;
};

/// A message that runs the program's code when it is rendered, and when an event copies it.
class HookMessage : public LOGObject {
 public:
  using Hook = std::function<void()>;
  HookMessage(
      const I18NString& text, Hook onRender, Hook onClone = [] {})
      : LOGObject(text), m_onRender(std::move(onRender)), m_onClone(std::move(onClone)) {}
  const I18NString& toString() const override {
    m_onRender();
    return LOGObject::toString();
  }
  LOGObject* clone() const override {
    m_onClone();
    return new HookMessage(*this);
  }

 private:
  Hook m_onRender, m_onClone;
};

class HookListener : public LOGHierarchyEventListener {
 public:
  using Hook = std::function<void(LOGLogger*, LOGAppenderSkeleton*)>;
  explicit HookListener(Hook hook) : m_hook(std::move(hook)) {}
  void addAppenderEvent(LOGLogger* logger, LOGAppenderSkeleton* appender) override { m_hook(logger, appender); }

 private:
  Hook m_hook;
};

class HookFactory : public LOGLoggerFactory {
 public:
  using Hook = std::function<LOGLogger*(const I18NString&)>;
  explicit HookFactory(Hook hook) : m_hook(std::move(hook)) {}
  LOGLogger* makeNewLoggerInstance(const I18NString& name) override { return m_hook(name); }

 private:
  Hook m_hook;
};

/// A repository of the test's own. Declare what is attached to it before it: its destructor closes appenders.
class Tree : public LOGHierarchy {
 public:
  Tree() : LOGHierarchy(new LOGRootLogger(LOGLevel::DEBUG_OBJ)) {}
};

}  // namespace vrktest
