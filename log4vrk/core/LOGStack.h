// A stack of objects.

#pragma once

#include <memory>
#include <vector>

#include "log4vrk/core/LOGMutex.h"
#include "log4vrk/core/LOGObject.h"
#include "log4vrk/platform/VRKExport.h"
#include "log4vrk/platform/VRKList.h"

/// Thread safety: any thread.
/// Ownership: objects that were pushed by pointer stay the caller's. Shared ones live as long as a stack holds them,
/// and those that pop() gave out as long as the stack.
class LOG4VRK_EXPORT LOGStack : public LOGMutex, public LOGObject {
 public:
  LOGStack();
  LOGStack(const LOGStack& other);
  LOGStack& operator=(const LOGStack&) = delete;
  ~LOGStack() override;

  void push(LOGObject* object);
  /// Removes the top and returns it, null when there is none.
  LOGObject* pop();
  LOGObject* peek() const;
  bool isEmpty() const { return size() == 0; }
  int size() const;
  /// How far from the top the first equal object is, the top being 1; -1 when there is none.
  int search(const LOGObject* object) const;
  /// Does nothing, on purpose: a stack is shortened by pop() only.
  void setSize(int size);
  /// A new stack with the same objects in the same order.
  LOGStack* clone() const override;

  void push(std::shared_ptr<LOGObject> object);
  /// As pop() and peek(), with a share in the object, so that the last one frees it. False when the stack is empty.
  bool popShared(std::shared_ptr<LOGObject>& top);
  bool peekShared(std::shared_ptr<LOGObject>& top) const;

 private:
  VRKList<std::shared_ptr<LOGObject>> m_objects VRK_GUARDED_BY(m_critSection);
  std::vector<std::shared_ptr<LOGObject>> m_givenOut VRK_GUARDED_BY(m_critSection);
};
