#ifndef DOVWRITER_KEL_ADT_ADTTREE_H
#define DOVWRITER_KEL_ADT_ADTTREE_H

// A tree whose entries live in a map keyed by a small id, built through a
// current entry. Links between entries are ids, so the whole shape of the
// tree can be written out as numbers. Entries are only ever added.

#include <cstdint>
#include <map>

#include "Kel/Util/Raise.h"

namespace KelDov {
class Node;
}

namespace KelAdt {

template <class T>
struct TreeEntry {
  std::uint32_t id = 0;
  std::uint32_t parent = 0;
  std::uint32_t previousSibling = 0;
  std::uint32_t nextSibling = 0;
  std::uint32_t firstChild = 0;
  std::uint32_t lastChild = 0;
  T value{};
};

// The name under which failures of the tree are reported.
template <class T>
struct TreeTraits {
  static const char* SetCurrentIdMethod() { return "KelAdt::Tree::SetCurrentId"; }
  static const char* GetCurrentNodeMethod() { return "KelAdt::Tree::GetCurrentNode"; }
};

// The scene tree's instance reports under its full template name. Declared
// here, beside the primary template, so that no translation unit can
// instantiate the tree without it.
template <>
struct TreeTraits<KelDov::Node*> {
  static const char* SetCurrentIdMethod() {
    return "KelAdt::Tree<class KelDov::Node *>::SetCurrentId";
  }
  static const char* GetCurrentNodeMethod() {
    return "KelAdt::Tree<class KelDov::Node *>::GetCurrentNode";
  }
};

template <class T>
class Tree {
 public:
  typedef TreeEntry<T> Entry;
  typedef typename std::map<std::uint32_t, Entry>::const_iterator const_iterator;

  Tree() {
    Entry& root = entries[1];
    root.id = 1;
  }

  // Adds a child under the current entry and makes it current. The parent
  // is looked up with entry access, so a current id without an entry (0)
  // gets an all-zero entry, as entry access always does.
  void AddNode() {
    const std::uint32_t id = nextId++;
    Entry& parent = entries[currentId];
    Entry entry;
    entry.id = id;
    entry.parent = currentId;
    entry.previousSibling = parent.lastChild;
    if (parent.lastChild == 0)
      parent.firstChild = id;
    else
      entries[parent.lastChild].nextSibling = id;
    parent.lastChild = id;
    entries[id] = entry;
    currentId = id;
  }

  // Only tests the id against the next id, not the map: 0 passes.
  void SetCurrentId(std::uint32_t id) {
    if (id >= nextId) KEL_RAISE_CODE(5, TreeTraits<T>::SetCurrentIdMethod());
    currentId = id;
  }

  // Never creates an entry.
  Entry& GetCurrentNode() {
    auto found = entries.find(currentId);
    if (found == entries.end()) KEL_RAISE_CODE(5, TreeTraits<T>::GetCurrentNodeMethod());
    return found->second;
  }

  // The entry of `id`; an id without an entry gets one with all fields 0.
  Entry& operator[](std::uint32_t id) { return entries[id]; }

  // At the root, whose parent is 0, the cursor stays.
  void MoveToParent() {
    auto found = entries.find(currentId);
    if (found != entries.end() && found->second.parent != 0) currentId = found->second.parent;
  }

  std::uint32_t GetCurrentId() const { return currentId; }
  std::uint32_t GetNextId() const { return nextId; }
  std::uint64_t size() const { return entries.size(); }
  const_iterator begin() const { return entries.begin(); }
  const_iterator end() const { return entries.end(); }

 protected:
  std::map<std::uint32_t, Entry> entries;
  std::uint32_t nextId = 2;
  std::uint32_t currentId = 1;
};

}  // namespace KelAdt

#endif
