#include "log4vrk/core/LOGHashtable.h"

#include <new>

#include "log4vrk/core/LOGLogLog.h"
#include "log4vrk/core/LOGObject.h"
#include "log4vrk/platform/VRKThrowable.h"

bool LOGLoggerKey::equals(const LOGLoggerKey* other) const { return other != nullptr && m_name == other->m_name; }

bool LOGLoggerKey::equals(const LOGObject* other) const { return other != nullptr && m_name == other->toString(); }

std::uint32_t LOGLoggerKey::hashOf(const I18NString& name) {
  std::uint32_t hash = 0;
  for (char16_t unit : name.view()) hash = hash * 31 + unit;
  return hash;
}

struct LOGHashtable::Entry {
  std::unique_ptr<LOGLoggerKey> key;
  LOGObject* value;
  Link next;
};

LOGHashtable::LOGHashtable(long capacity) {
  try {
    if (capacity > 0) m_buckets.resize(static_cast<std::size_t>(capacity));
  } catch (const std::bad_alloc&) {
    // No buckets: every put fails.
  }
}

LOGHashtable::LOGHashtable(long capacity, float) : LOGHashtable(capacity) {}

LOGHashtable::~LOGHashtable() { clear(); }

int LOGHashtable::put(LOGLoggerKey* key, LOGObject* value) {
  if (key == nullptr || value == nullptr || !hasRoom()) return 0;
  return link(std::unique_ptr<LOGLoggerKey>(key), value);
}

int LOGHashtable::put(const I18NString& name, LOGObject* value) {
  if (value == nullptr || !hasRoom()) return 0;
  return link(std::unique_ptr<LOGLoggerKey>(vrkNew<LOGLoggerKey>(VRK_HERE, name)), value);
}

bool LOGHashtable::hasRoom() {
  if (m_count == capacity()) reSize();
  return m_count < capacity();
}

// At the head of the chain, so that it hides an older entry of the name.
int LOGHashtable::link(std::unique_ptr<LOGLoggerKey> key, LOGObject* value) {
  Link entry(new (std::nothrow) Entry{nullptr, value, nullptr});
  if (!entry) {
    LOGLogLog::error("LOGHashtable::put ---- Could not allocate memory");
    return 0;
  }
  Link& bucket = bucketOf(key->hashCode());
  entry->key = std::move(key);
  entry->next = std::move(bucket);
  bucket = std::move(entry);
  return ++m_count;
}

// Each entry goes to the end of its new chain: the entry that hid another goes on hiding it.
void LOGHashtable::reSize() {
  std::vector<Link> old;
  try {
    old.resize(m_buckets.size() * 2);
  } catch (const std::bad_alloc&) {
    LOGLogLog::error("LOGHashtable::reSize ---- Could not allocate memory");
    return;
  }
  old.swap(m_buckets);
  for (Link& chain : old) {
    while (chain) {
      Link entry = std::move(chain);
      chain = std::move(entry->next);
      Link* end = &bucketOf(entry->key->hashCode());
      while (*end) end = &(*end)->next;
      *end = std::move(entry);
    }
  }
}

// Names are compared only when their hash codes are equal, so that looking for a name that is not there costs the same
// however long it is.
LOGHashtable::Entry* LOGHashtable::find(std::uint32_t hash, std::u16string_view name) const {
  if (m_buckets.empty()) return nullptr;
  Entry* entry = m_buckets[hash % m_buckets.size()].get();
  while (entry != nullptr && (entry->key->hashCode() != hash || entry->key->getName().view() != name))
    entry = entry->next.get();
  return entry;
}

LOGObject* LOGHashtable::get(const LOGLoggerKey* key) const {
  const Entry* const entry = key != nullptr ? find(key->hashCode(), key->getName().view()) : nullptr;
  return entry != nullptr ? entry->value : nullptr;
}

LOGObject* LOGHashtable::get(const I18NString& name) const { return get(name.view(), LOGLoggerKey::hashOf(name)); }

LOGObject* LOGHashtable::get(std::u16string_view name, std::uint32_t hash) const {
  const Entry* const entry = find(hash, name);
  return entry != nullptr ? entry->value : nullptr;
}

bool LOGHashtable::replace(const I18NString& name, LOGObject* value) {
  Entry* const entry = find(LOGLoggerKey::hashOf(name), name.view());
  if (entry != nullptr) entry->value = value;
  return entry != nullptr;
}

LOGObject* LOGHashtable::remove(const LOGLoggerKey* key) { return key != nullptr ? remove(key->getName()) : nullptr; }

LOGObject* LOGHashtable::remove(const I18NString& name) {
  const std::uint32_t hash = LOGLoggerKey::hashOf(name);
  const Entry* const found = find(hash, name.view());
  if (found == nullptr) return nullptr;
  Link* link = &bucketOf(hash);
  while (link->get() != found) link = &(*link)->next;
  const Link entry = std::move(*link);
  *link = std::move(entry->next);
  --m_count;
  return entry->value;
}

void LOGHashtable::clear() {
  for (Link& chain : m_buckets) {
    while (chain) {
      const Link entry = std::move(chain);
      chain = std::move(entry->next);
    }
  }
  m_count = 0;
}

template <typename Visitor>
void LOGHashtable::visit(Visitor visitor) const {
  for (const Link& chain : m_buckets) {
    for (const Entry* entry = chain.get(); entry != nullptr; entry = entry->next.get()) visitor(*entry);
  }
}

bool LOGHashtable::contains(const LOGObject* value) const {
  bool found = false;
  visit([&](const Entry& entry) { found = found || entry.value == value; });
  return found;
}

VRKList<LOGLoggerKey*>* LOGHashtable::keys() const {
  std::unique_ptr<VRKList<LOGLoggerKey*>> list(vrkNew<VRKList<LOGLoggerKey*>>(VRK_HERE));
  visit([&](const Entry& entry) { list->push_back(entry.key.get()); });
  return list.release();
}

VRKList<LOGObject*>* LOGHashtable::elements() const {
  std::unique_ptr<VRKList<LOGObject*>> list(vrkNew<VRKList<LOGObject*>>(VRK_HERE));
  visit([&](const Entry& entry) { list->push_back(entry.value); });
  return list.release();
}

void LOGHashtable::forEach(const std::function<void(LOGObject*)>& visitor) const {
  visit([&](const Entry& entry) { visitor(entry.value); });
}
