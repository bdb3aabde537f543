// A doubly linked list whose iterators stay valid when elements go.

#pragma once

#include <cstddef>
#include <iterator>
#include <memory>
#include <utility>

template <typename T>
class VRKListIterator;

/// A list of values in the order of insertion. It owns its nodes, never what pointer elements point to.
///
/// begin() and end() are ordinary iterators: erasing an element ends those that stand on it. A VRKListIterator survives
/// that.
/// Thread safety: as the standard containers.
template <typename T>
class VRKList {
  struct Node {
    explicit Node(T v) : value(std::move(v)) {}
    // What follows may be a long chain that this node is the last to hold: freed one by one, not one inside the other.
    ~Node() {
      std::shared_ptr<Node> following = std::move(next);
      while (following && following.use_count() == 1) following = std::shared_ptr<Node>(std::move(following->next));
    }
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;
    T value;
    std::shared_ptr<Node> next;
    Node* previous = nullptr;
  };

  template <typename Value>
  class BasicIterator {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = T;
    using difference_type = std::ptrdiff_t;
    using pointer = Value*;
    using reference = Value&;

    BasicIterator() = default;
    reference operator*() const { return m_node->value; }
    pointer operator->() const { return &m_node->value; }
    BasicIterator& operator++() {
      m_node = m_node->next.get();
      return *this;
    }
    BasicIterator operator++(int) {
      BasicIterator before = *this;
      ++*this;
      return before;
    }
    friend bool operator==(BasicIterator a, BasicIterator b) { return a.m_node == b.m_node; }
    friend bool operator!=(BasicIterator a, BasicIterator b) { return a.m_node != b.m_node; }

   private:
    friend class VRKList;
    explicit BasicIterator(Node* node) : m_node(node) {}
    Node* m_node = nullptr;
  };

 public:
  using value_type = T;
  using iterator = BasicIterator<T>;
  using const_iterator = BasicIterator<const T>;

  VRKList() = default;
  VRKList(const VRKList& other) {
    for (const T& value : other) push_back(value);
  }
  VRKList(VRKList&& other) noexcept { swap(other); }
  VRKList& operator=(VRKList other) noexcept {
    swap(other);
    return *this;
  }
  ~VRKList() { clear(); }

  iterator begin() { return iterator(m_first.get()); }
  iterator end() { return iterator(); }
  const_iterator begin() const { return const_iterator(m_first.get()); }
  const_iterator end() const { return const_iterator(); }

  std::size_t size() const { return m_size; }
  bool empty() const { return m_size == 0; }
  T& front() { return m_first->value; }
  const T& front() const { return m_first->value; }

  void push_back(T value) { insert(end(), std::move(value)); }
  void push_front(T value) { insert(begin(), std::move(value)); }
  void pop_front() { erase(begin()); }

  /// Puts the value before `position` and returns where it stands.
  iterator insert(iterator position, T value) {
    auto node = std::make_shared<Node>(std::move(value));
    Node* const after = position.m_node;
    Node* const before = after != nullptr ? after->previous : m_last;
    std::shared_ptr<Node>& link = before != nullptr ? before->next : m_first;
    node->previous = before;
    node->next = std::move(link);
    (after != nullptr ? after->previous : m_last) = node.get();
    link = node;
    ++m_size;
    return iterator(node.get());
  }

  /// Returns what followed the element. The node keeps its own way onwards for iterators that still stand on it.
  iterator erase(iterator position) {
    Node* const node = position.m_node;
    std::shared_ptr<Node>& link = node->previous != nullptr ? node->previous->next : m_first;
    const std::shared_ptr<Node> keptUntilUnlinked = std::move(link);
    link = node->next;
    (node->next ? node->next->previous : m_last) = node->previous;
    --m_size;
    return iterator(link.get());
  }

  /// An iterator that stands on an element reaches its end with the next step.
  void clear() {
    std::shared_ptr<Node> node = std::move(m_first);
    while (node) node = std::move(node->next);
    m_last = nullptr;
    m_size = 0;
  }

  void swap(VRKList& other) noexcept {
    m_first.swap(other.m_first);
    std::swap(m_last, other.m_last);
    std::swap(m_size, other.m_size);
  }

 private:
  friend class VRKListIterator<T>;

  std::shared_ptr<Node> m_first;
  Node* m_last = nullptr;
  std::size_t m_size = 0;
};

/// Walks a list and shares the node it stands on, so that unlinking the element does not pull it away.
///
/// Thread safety: not thread-safe; walking while another thread changes the list is the caller's to serialise.
/// Lifetime: the list outlives the iterator's use.
template <typename T>
class VRKListIterator {
 public:
  VRKListIterator() = default;
  explicit VRKListIterator(const VRKList<T>& list) : m_list(&list), m_node(list.m_first) {}

  /// Back to the first element.
  void reset() { m_node = m_list != nullptr ? m_list->m_first : nullptr; }
  bool atEnd() const { return m_node == nullptr; }
  T& operator*() const { return m_node->value; }
  VRKListIterator& operator++() {
    m_node = m_node->next;
    return *this;
  }

 private:
  const VRKList<T>* m_list = nullptr;
  std::shared_ptr<typename VRKList<T>::Node> m_node;
};
