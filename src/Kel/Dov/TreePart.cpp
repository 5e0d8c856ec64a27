// One part of a tree that several writers save into one file: its entries
// renumbered behind those of the parts in front, and its datasets moved
// behind theirs in "Heavy Data".

#include <algorithm>

#include "Kel/Dov/Tree.h"

namespace KelDov {

namespace {

// An id of the part as the whole file knows it; 0 (no entry) and the root
// stay as they are.
std::uint32_t Shifted(std::uint32_t id, std::uint32_t shift) {
  return id == 0 || id == Tree::RootId ? id : id + shift;
}

void RelocateContent(Node* node, const PartPlacement& placement) {
  auto geometry = dynamic_cast<Geometry*>(node);
  if (geometry == nullptr) return;
  for (auto& offset : geometry->datasetOffsets)
    offset.second = placement.HeavyOffset(offset.second);
  for (Geometry::Variable& variable : geometry->variables)
    if (variable.linked)
      variable.linkTarget.entryId = Shifted(variable.linkTarget.entryId, placement.entryShift);
}

}  // namespace

std::uint64_t PartPlacement::HeavyOffset(std::uint64_t offset) const {
  // The last piece that begins at or before the offset holds its dataset.
  auto behind = std::upper_bound(
      heavyPieces.begin(), heavyPieces.end(), offset,
      [](std::uint64_t value, const HeavyPiece& piece) { return value < piece.begin; });
  return behind == heavyPieces.begin() ? offset : offset + (behind - 1)->shift;
}

void Tree::RelocatePart(const PartPlacement& placement) {
  const std::uint32_t shift = placement.entryShift;
  const std::uint32_t firstTop = Shifted(FirstTop(), shift);
  const std::uint32_t lastTop = Shifted(LastTop(), shift);
  std::map<std::uint32_t, Entry> moved;
  for (const auto& item : entries) {
    Entry entry = item.second;
    entry.id = Shifted(entry.id, shift);
    entry.parent = Shifted(entry.parent, shift);
    entry.previousSibling = Shifted(entry.previousSibling, shift);
    entry.nextSibling = Shifted(entry.nextSibling, shift);
    entry.firstChild = Shifted(entry.firstChild, shift);
    entry.lastChild = Shifted(entry.lastChild, shift);
    RelocateContent(entry.value, placement);
    moved[entry.id] = entry;
  }
  // The top-level entries of all parts are one chain of siblings under the
  // first part's root.
  if (firstTop != 0) moved[firstTop].previousSibling = placement.previousTop;
  if (lastTop != 0) moved[lastTop].nextSibling = placement.nextTop;
  moved[RootId].firstChild = placement.firstTop;
  moved[RootId].lastChild = placement.lastTop;
  entries.swap(moved);
  nextId = static_cast<std::uint32_t>(entries.rbegin()->first + 1);
}

}  // namespace KelDov
