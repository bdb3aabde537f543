#include "log4vrk/core/LOGContext.h"

#include <exception>

#include "log4vrk/core/internal/LOGThreadState.h"

namespace {

// Memory that a thread keeps when its context is empty again, in bytes.
constexpr std::size_t MOST_KEPT = 4096;

}  // namespace

LOGContext LOGContext::capture() {
  LOGContext context;
  context.m_fields = LOGThreadState::current().fields.view();
  return context;
}

std::string LOGContext::get(std::string_view name) {
  I18NUtf8Buffer text;
  LOGFields::Reader reader(LOGThreadState::current().fields.view());
  for (LOGFields::Field field; reader.next(field);) {
    if (field.name != name) continue;
    text.clear();
    field.appendValue(text);
  }
  return std::string(text.view());
}

// What is inside only ever comes behind what is outside. An event that is on its way, and whose message adds to the
// context while it is rendered, finds its own part unchanged.
void LOGContext::Scope::begin(std::string_view fields) {
  try {
    LOGThreadState& thread = LOGThreadState::current();
    m_before = thread.fields.size();
    thread.fields.appendChecked(fields);
    m_thread = &thread;
  } catch (const std::exception&) {
    m_thread = nullptr;  // nothing to take back
  }
}

LOGContext::Scope::~Scope() {
  if (m_thread == nullptr) return;
  LOGThreadState& thread = LOGThreadState::current();
  if (&thread != m_thread || thread.fields.size() < m_before) return;
  thread.fields.cutTo(m_before);
  if (m_before == 0) thread.fields.limitMemory(MOST_KEPT);
}
