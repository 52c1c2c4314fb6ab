// CList.h - a doubly linked list whose positions stay valid.
//
//   for (POSITION position = list.GetHeadPosition(); position != nullptr;) {
//     Use(list.GetNext(position));
//   }
//
// or, if the loop adds and removes nothing, `for (const CString& name : list)`.
//
// A POSITION identifies one element and is valid until that element is removed, regardless of the
// others.  Nodes are allocated in blocks, which are freed when the list becomes empty.
#pragma once

#include <cstddef>
#include <iterator>
#include <memory>
#include <type_traits>
#include <vector>

#include "platform/classlib/CArchive.h"
#include "platform/classlib/CObject.h"

inline namespace kozor_names {

// The links of an element.  Private to CList.
struct CListLinks {
  CListLinks* next;
  CListLinks* previous;
};
using POSITION = CListLinks*;

// Stores or loads `count` elements as raw bytes.  A type that isn't trivially copyable needs a
// specialisation.
template <class TYPE>
void SerializeElements(CArchive& archive, TYPE* elements, int count) {
  static_assert(std::is_trivially_copyable_v<TYPE>);
  const auto bytes = static_cast<unsigned int>(sizeof(TYPE)) * static_cast<unsigned int>(count);
  if (archive.IsStoring()) {
    archive.Write(elements, bytes);
  } else if (archive.Read(elements, bytes) != bytes) {
    throw new CArchiveException(CArchiveException::endOfFile);
  }
}
template <>
inline void SerializeElements(CArchive& archive, CString* elements, int count) {
  for (CString* element = elements; element != elements + count; ++element) {
    if (archive.IsStoring()) {
      archive << *element;
    } else {
      archive >> *element;
    }
  }
}

template <class TYPE, class ARG_TYPE = const TYPE&>
class CList : public CObject {
 public:
  // `nodesPerBlock`: elements allocated at a time.
  explicit CList(int nodesPerBlock = 10) : blockSize(nodesPerBlock > 0 ? nodesPerBlock : 10) {}
  ~CList() override { RemoveAll(); }

  int GetCount() const { return count; }
  bool IsEmpty() const { return count == 0; }

  // The position of the new element.
  POSITION AddTail(ARG_TYPE element) { return Insert(element, tail, nullptr); }
  POSITION AddHead(ARG_TYPE element) { return Insert(element, nullptr, head); }

  // Null if the list is empty.
  POSITION GetHeadPosition() const { return head; }
  POSITION GetTailPosition() const { return tail; }
  // Returns a copy of the element at `position` and advances `position`, to null after the last.
  TYPE GetNext(POSITION& position) const;
  TYPE GetPrev(POSITION& position) const;
  TYPE& GetAt(POSITION position) { return static_cast<Node*>(position)->element; }
  const TYPE& GetAt(POSITION position) const { return static_cast<Node*>(position)->element; }

  void RemoveAt(POSITION position);
  void RemoveAll();

  // Stores the count and the elements.  Loading appends to the list; if it throws, the elements
  // read so far stay.
  void Serialize(CArchive& archive) override;

  class const_iterator {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = TYPE;
    using difference_type = std::ptrdiff_t;
    using pointer = const TYPE*;
    using reference = const TYPE&;

    const_iterator() = default;
    explicit const_iterator(POSITION first) : position(first) {}
    reference operator*() const { return static_cast<Node*>(position)->element; }
    pointer operator->() const { return &**this; }
    const_iterator& operator++() {
      position = position->next;
      return *this;
    }
    const_iterator operator++(int) {
      const_iterator before = *this;
      ++*this;
      return before;
    }
    bool operator==(const const_iterator&) const = default;

   private:
    POSITION position = nullptr;
  };
  const_iterator begin() const { return const_iterator(head); }
  const_iterator end() const { return const_iterator(); }

 private:
  struct Node : CListLinks {
    explicit Node(ARG_TYPE value) : CListLinks{}, element(value) {}
    TYPE element;
  };
  // Memory for one node; a free slot links to the next free one.
  union Slot {
    Slot() : nextFree(nullptr) {}
    ~Slot() {}
    Slot* nextFree;
    Node node;
  };

  POSITION Insert(ARG_TYPE element, POSITION previous, POSITION next);
  Slot* TakeSlot();

  POSITION head = nullptr;
  POSITION tail = nullptr;
  int count = 0;
  int blockSize;
  Slot* freeSlots = nullptr;
  std::vector<std::unique_ptr<Slot[]>> blocks;
};

template <class TYPE, class ARG_TYPE>
TYPE CList<TYPE, ARG_TYPE>::GetNext(POSITION& position) const {
  POSITION here = position;
  position = here->next;
  return GetAt(here);
}

template <class TYPE, class ARG_TYPE>
TYPE CList<TYPE, ARG_TYPE>::GetPrev(POSITION& position) const {
  POSITION here = position;
  position = here->previous;
  return GetAt(here);
}

template <class TYPE, class ARG_TYPE>
void CList<TYPE, ARG_TYPE>::RemoveAt(POSITION position) {
  (position->previous != nullptr ? position->previous->next : head) = position->next;
  (position->next != nullptr ? position->next->previous : tail) = position->previous;
  auto* node = static_cast<Node*>(position);
  std::destroy_at(node);
  auto* slot = reinterpret_cast<Slot*>(node);
  slot->nextFree = freeSlots;
  freeSlots = slot;
  if (--count == 0) RemoveAll();
}

template <class TYPE, class ARG_TYPE>
void CList<TYPE, ARG_TYPE>::RemoveAll() {
  for (POSITION position = head; position != nullptr;) {
    auto* node = static_cast<Node*>(position);
    position = position->next;
    std::destroy_at(node);
  }
  head = tail = nullptr;
  count = 0;
  freeSlots = nullptr;
  blocks.clear();
  blocks.shrink_to_fit();
}

template <class TYPE, class ARG_TYPE>
void CList<TYPE, ARG_TYPE>::Serialize(CArchive& archive) {
  if (archive.IsStoring()) {
    archive.WriteCount(static_cast<DWORD>(count));
    for (POSITION position = head; position != nullptr; position = position->next) {
      SerializeElements<TYPE>(archive, &GetAt(position), 1);
    }
    return;
  }
  for (DWORD left = archive.ReadCount(); left > 0; --left) {
    TYPE element{};
    SerializeElements<TYPE>(archive, &element, 1);
    AddTail(element);
  }
}

template <class TYPE, class ARG_TYPE>
POSITION CList<TYPE, ARG_TYPE>::Insert(ARG_TYPE element, POSITION previous, POSITION next) {
  Slot* slot = TakeSlot();
  Node* node = std::construct_at(&slot->node, element);
  node->previous = previous;
  node->next = next;
  (previous != nullptr ? previous->next : head) = node;
  (next != nullptr ? next->previous : tail) = node;
  ++count;
  return node;
}

// If constructing the node throws, its slot stays unused until the list becomes empty.
template <class TYPE, class ARG_TYPE>
typename CList<TYPE, ARG_TYPE>::Slot* CList<TYPE, ARG_TYPE>::TakeSlot() {
  if (freeSlots == nullptr) {
    blocks.push_back(std::make_unique<Slot[]>(static_cast<std::size_t>(blockSize)));
    Slot* block = blocks.back().get();
    for (int i = blockSize; i-- > 0;) {
      block[i].nextFree = freeSlots;
      freeSlots = &block[i];
    }
  }
  Slot* slot = freeSlots;
  freeSlots = slot->nextFree;
  return slot;
}

}  // namespace kozor_names
