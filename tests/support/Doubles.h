// Stand-ins for what a program supplies (appenders, factories, messages), which the tests of loggers share.

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

#include "log4vrk/log4vrk.h"
#include "log4vrk/platform/internal/VRKFault.h"
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
struct HookMessage : LOGObject {
  using Hook = std::function<void()>;
  explicit HookMessage(const I18NString& text, Hook render = nullptr, Hook copy = nullptr)
      : LOGObject(text), onRender(std::move(render)), onClone(std::move(copy)) {}
  const I18NString& toString() const override {
    if (onRender) onRender();
    return LOGObject::toString();
  }
  LOGObject* clone() const override {
    if (onClone) onClone();
    return new HookMessage(*this);
  }

  Hook onRender, onClone;
};

struct HookFilter : LOGFilter {
  explicit HookFilter(std::function<int()> hook) : onDecide(std::move(hook)) {}
  int decide(LOGLoggingEvent*) override { return onDecide(); }

  std::function<int()> onDecide;
};

struct HookListener : LOGHierarchyEventListener {
  using Hook = std::function<void(LOGLogger*, LOGAppenderSkeleton*)>;
  explicit HookListener(Hook hook) : onAdd(std::move(hook)) {}
  void addAppenderEvent(LOGLogger* logger, LOGAppenderSkeleton* appender) override { onAdd(logger, appender); }

  Hook onAdd;
};

struct HookFactory : LOGLoggerFactory {
  using Hook = std::function<LOGLogger*(const I18NString&)>;
  explicit HookFactory(Hook hook) : onMake(std::move(hook)) {}
  LOGLogger* makeNewLoggerInstance(const I18NString& name) override { return onMake(name); }

  Hook onMake;
};

/// A repository of the test's own. Declare what is attached to it before it: its destructor closes appenders.
class Tree : public LOGHierarchy {
 public:
  Tree() : LOGHierarchy(new LOGRootLogger(LOGLevel::DEBUG_OBJ)) {}
};

/// A tree with an appender at its root, and one more that a test may attach.
struct TreeTest : testing::Test {
  TreeTest() { tree.getRootLogger()->addAppender(&root); }

  const Deadline deadline{110};
  RecordingAppender root{"root"}, other{"other"};
  Tree tree;
  LOGLogger* const logger = tree.getLogger("a.b");
  const InternalLog log;
};

}  // namespace vrktest
