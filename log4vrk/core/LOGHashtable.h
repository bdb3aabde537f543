// The name table of the library: loggers by name, and what the configurator keeps by name.

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "log4vrk/core/LOGLoggerKey.h"
#include "log4vrk/core/LOGMutex.h"
#include "log4vrk/platform/VRKExport.h"
#include "log4vrk/platform/VRKList.h"

class LOGObject;

/// A hash table with chaining that doubles when it holds as many entries as buckets.
///
/// Thread safety: not thread-safe. It has a lock for its owner to take, and never takes it.
/// Ownership: keys are the table's, values are not.
class LOG4VRK_EXPORT LOGHashtable : public LOGMutex {
 public:
  LOGHashtable() : LOGHashtable(200) {}
  /// A number of buckets that is not positive makes a table that takes nothing.
  explicit LOGHashtable(long capacity);
  /// The load factor is not used.
  LOGHashtable(long capacity, float loadFactor);
  LOGHashtable(const LOGHashtable&) = delete;
  LOGHashtable& operator=(const LOGHashtable&) = delete;
  ~LOGHashtable() override;

  /// Takes the key over. Does not look for an equal key: a second entry hides the first, until it is removed. Returns
  /// the new number of entries, or 0 when nothing was put. A null key or value is refused, and so is every entry of a
  /// table that is full and could not be doubled: the key stays the caller's. Without memory for the entry that is
  /// reported, and the key deleted.
  int put(LOGLoggerKey* key, LOGObject* value);
  /// The same under a key that the table makes, and frees when nothing was put. Raises VRKOutOfMemoryError when there
  /// is no memory for the key.
  int put(const I18NString& name, LOGObject* value);
  LOGObject* get(const LOGLoggerKey* key) const;
  LOGObject* get(const I18NString& name) const;
  /// Of a name whose hash code is known.
  LOGObject* get(std::u16string_view name, std::uint32_t hash) const;
  /// Puts the value in place of the one under the name. False when there is none.
  bool replace(const I18NString& name, LOGObject* value);
  bool containsKey(const I18NString& name) const { return get(name) != nullptr; }
  bool contains(const LOGObject* value) const;
  /// Returns the value, or null.
  LOGObject* remove(const LOGLoggerKey* key);
  LOGObject* remove(const I18NString& name);
  void clear();
  /// Doubles the number of buckets. Without memory that is reported, and the table stays as it is.
  void reSize();

  int size() const { return m_count; }
  long capacity() const { return static_cast<long>(m_buckets.size()); }
  /// New lists that the caller owns, in bucket order.
  VRKList<LOGLoggerKey*>* keys() const;
  VRKList<LOGObject*>* elements() const;
  /// Hands over every value, in the same order, without a list. The visitor does not change the table.
  void forEach(const std::function<void(LOGObject*)>& visitor) const;

 private:
  struct Entry;
  using Link = std::unique_ptr<Entry>;

  Link& bucketOf(std::uint32_t hash) { return m_buckets[hash % m_buckets.size()]; }
  LOG4VRK_HIDDEN Entry* find(std::uint32_t hash, std::u16string_view name) const;
  LOG4VRK_HIDDEN bool hasRoom();
  LOG4VRK_HIDDEN int link(std::unique_ptr<LOGLoggerKey> key, LOGObject* value);
  template <typename Visitor>
  void visit(Visitor visitor) const;

  int m_count = 0;
  std::vector<Link> m_buckets;
};
