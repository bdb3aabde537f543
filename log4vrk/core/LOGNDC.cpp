#include "log4vrk/core/LOGNDC.h"

#include <atomic>
#include <map>
#include <memory>

#include "log4vrk/core/LOGDiagnosticContext.h"
#include "log4vrk/core/LOGGuard.h"
#include "log4vrk/core/LOGStack.h"
#include "log4vrk/core/internal/LOGThreadState.h"
#include "log4vrk/platform/VRKThrowable.h"
#include "log4vrk/platform/internal/VRKMutex.h"

LOGDiagnosticContext::LOGDiagnosticContext(const I18NString& message, const I18NString& fullMessage)
    : m_message(message), m_fullMessage(fullMessage) {
  instance("LOGDiagnosticContext");
}

LOGDiagnosticContext::~LOGDiagnosticContext() = default;

LOGDiagnosticContext* LOGDiagnosticContext::clone() const { return vrkNew<LOGDiagnosticContext>(VRK_HERE, *this); }

namespace {

// Nobody can free the stacks of other threads while these use them. So dropping them all begins a new generation: a
// stack of an earlier one counts as dropped, and its thread frees it when it next looks, or ends.
std::atomic<unsigned> g_generation{0};

using Inherited = std::map<LOGStack*, std::weak_ptr<LOGStack>>;

VRKMutex g_inheritedMutex;
Inherited& g_inherited VRK_GUARDED_BY(g_inheritedMutex) = vrkImmortal<Inherited>();

// Owns a stack that threads were given. Without a stack it owns nothing.
struct InheritedStack {
  InheritedStack() = default;
  ~InheritedStack() {
    if (stack == nullptr) return;
    {
      const LOGLeafGuard guard(g_inheritedMutex);
      g_inherited.erase(stack);
    }
    delete stack;
  }
  InheritedStack(const InheritedStack&) = delete;
  InheritedStack& operator=(const InheritedStack&) = delete;

  LOGStack* stack = nullptr;
};

// All threads that were given the same stack share one owner, and the last of them frees it. Steps that may fail come
// before the owner has the stack: when one does, the stack is still the caller's.
std::shared_ptr<LOGStack> ownerOf(LOGStack* stack) {
  const auto made = std::make_shared<InheritedStack>();
  const LOGLeafGuard guard(g_inheritedMutex);
  std::weak_ptr<LOGStack>& known = g_inherited[stack];
  if (std::shared_ptr<LOGStack> owner = known.lock()) return owner;
  made->stack = stack;
  std::shared_ptr<LOGStack> owner(made, stack);
  known = owner;
  return owner;
}

void setStack(std::shared_ptr<LOGStack> stack) { LOGThreadState::current().context = {std::move(stack), g_generation}; }

// The thread's stack, or null.
LOGStack* currentStack() {
  LOGThreadContext& context = LOGThreadState::current().context;
  if (context.stack && context.generation != g_generation) context.stack.reset();
  return context.stack.get();
}

const LOGDiagnosticContext& asContext(const LOGObject& entry) {
  return static_cast<const LOGDiagnosticContext&>(entry);
}

// Null without a context.
std::shared_ptr<LOGObject> top() {
  std::shared_ptr<LOGObject> peekObj;
  const LOGStack* const stack = currentStack();
  if (stack == nullptr || !stack->peekShared(peekObj)) return nullptr;
  VRK_ASSERT(peekObj);
  return peekObj;
}

}  // namespace

LOGNDC::LOGNDC() { instance("LOGNDC"); }

LOGNDC::~LOGNDC() { lazyRemove(); }

// The full text is put together once, here, and not for every event that prints it.
void LOGNDC::push(const I18NString& message) {
  vrkTranslateErrors(VRK_HERE, [&] {
    const std::shared_ptr<LOGObject> below = top();
    const I18NString fullMessage = below ? asContext(*below).getFullMessage() + " " + message : message;
    if (currentStack() == nullptr) setStack(std::shared_ptr<LOGStack>(vrkNew<LOGStack>(VRK_HERE)));
    LOGThreadState::current().context.stack->push(std::make_shared<LOGDiagnosticContext>(message, fullMessage));
  });
}

I18NString LOGNDC::pop() {
  return vrkTranslateErrors(VRK_HERE, [] {
    I18NString message = peek();  // first: a text that could not be copied is not lost
    std::shared_ptr<LOGObject> popObj;
    if (LOGStack* const stack = currentStack()) stack->popShared(popObj);
    return message;
  });
}

I18NString LOGNDC::get() {
  return vrkTranslateErrors(VRK_HERE, [] {
    const std::shared_ptr<LOGObject> entry = top();
    return entry ? asContext(*entry).getFullMessage() : I18NString();
  });
}

I18NString LOGNDC::peek() {
  return vrkTranslateErrors(VRK_HERE, [] {
    const std::shared_ptr<LOGObject> entry = top();
    return entry ? asContext(*entry).getMessage() : I18NString();
  });
}

int LOGNDC::getDepth() {
  const LOGStack* const stack = currentStack();
  return stack != nullptr ? stack->size() : 0;
}

void LOGNDC::clear() {
  if (LOGStack* const stack = currentStack()) stack->setSize(0);
}

void LOGNDC::setMaxDepth(int maxDepth) {
  LOGStack* const stack = currentStack();
  if (stack != nullptr && maxDepth < stack->size()) stack->setSize(maxDepth);
}

void LOGNDC::remove() { setStack(nullptr); }

void LOGNDC::lazyRemove() { ++g_generation; }

LOGStack* LOGNDC::cloneStack() {
  const LOGStack* const stack = currentStack();
  return stack != nullptr ? stack->clone() : nullptr;
}

void LOGNDC::inherit(LOGStack* stack) {
  vrkTranslateErrors(VRK_HERE, [&] {
    if (stack != nullptr && stack != currentStack()) setStack(ownerOf(stack));
  });
}
