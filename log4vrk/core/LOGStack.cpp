#include "log4vrk/core/LOGStack.h"

#include "log4vrk/platform/VRKThrowable.h"

namespace {

// The caller's object, which is never freed here.
std::shared_ptr<LOGObject> lent(LOGObject* object) {
  return std::shared_ptr<LOGObject>(std::shared_ptr<LOGObject>(), object);
}

}  // namespace

LOGStack::LOGStack() { instance("LOGStack"); }

// One lock after the other, since two stacks may be copied into each other at once.
LOGStack::LOGStack(const LOGStack& other) : LOGMutex(other), LOGObject(other) {
  VRKList<std::shared_ptr<LOGObject>> objects;
  {
    const VRKThreadGuard guard(other.m_critSection);
    objects = other.m_objects;
  }
  const VRKThreadGuard guard(m_critSection);
  m_objects.swap(objects);
}

LOGStack::~LOGStack() = default;

void LOGStack::push(LOGObject* object) { push(lent(object)); }

void LOGStack::push(std::shared_ptr<LOGObject> object) {
  const VRKThreadGuard guard(m_critSection);
  m_objects.push_front(std::move(object));
}

bool LOGStack::popShared(std::shared_ptr<LOGObject>& top) {
  const VRKThreadGuard guard(m_critSection);
  if (!peekShared(top)) return false;
  m_objects.pop_front();
  return true;
}

bool LOGStack::peekShared(std::shared_ptr<LOGObject>& top) const {
  const VRKThreadGuard guard(m_critSection);
  if (m_objects.empty()) return false;
  top = m_objects.front();
  return true;
}

// The caller gets a bare pointer. An object that stacks share might be freed under it, so this one keeps its share.
LOGObject* LOGStack::pop() {
  const VRKThreadGuard guard(m_critSection);
  std::shared_ptr<LOGObject> top;
  if (popShared(top) && top.use_count() > 0) m_givenOut.push_back(top);
  return top.get();
}

LOGObject* LOGStack::peek() const {
  std::shared_ptr<LOGObject> top;
  peekShared(top);
  return top.get();
}

int LOGStack::size() const {
  const VRKThreadGuard guard(m_critSection);
  return static_cast<int>(m_objects.size());
}

int LOGStack::search(const LOGObject* object) const {
  const VRKThreadGuard guard(m_critSection);
  int distance = 1;
  for (const std::shared_ptr<LOGObject>& candidate : m_objects) {
    if (candidate && object != nullptr && *candidate == *object) return distance;
    ++distance;
  }
  return -1;
}

void LOGStack::setSize(int) {}

LOGStack* LOGStack::clone() const { return vrkNew<LOGStack>(VRK_HERE, *this); }
