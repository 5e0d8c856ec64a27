// The links of a scene, checked once when it is read: each entry's parent
// comes before it, the sibling and child links agree with the parents, and
// every variable link leads to a variable with values. After that no walk
// over the tree or along links can loop, and none needs to be repeated.

#include <string>

#include "reader/LinkChains.h"
#include "reader/Scene.h"
#include "reader/SceneCursor.h"

namespace DovReader {

namespace {

std::string Entry(std::uint32_t id) { return "entry " + std::to_string(id); }

void ExpectLink(const TreeRecord& record, const char* link, std::uint32_t stored,
                std::uint32_t expected) {
  if (stored != expected)
    throw ReadError(Entry(record.id) + ": " + link + " " + std::to_string(stored) +
                    ", but the parent links make it " + std::to_string(expected));
}

}  // namespace

// The writer gives ids in the order of creation and a parent before its
// children, so a parent id is always lower than the entry's own; only the
// first entry, the root, has none.
void Scene::AddRecord(TreeRecord record, const SceneCursor& tree) {
  const std::uint32_t previousId = records.empty() ? 0 : records.back().id;
  if (record.id <= previousId) tree.Fail("tree ids do not ascend at " + std::to_string(record.id));
  if (records.empty() ? record.parent != 0 : record.parent == 0)
    tree.Fail(Entry(record.id) + (records.empty() ? " is the first, yet has a parent"
                                                  : " has no parent, yet is not the first"));
  if (record.parent >= record.id)
    tree.Fail(Entry(record.id) + " names parent " + std::to_string(record.parent) +
              ", which is not lower than its own id");
  depths.push_back(records.empty() ? 0 : depths[IndexOf(record.parent)] + 1);
  records.push_back(std::move(record));
}

// Children are linked in the order of creation, which is the order of ids:
// each entry must be the next sibling of the child of its parent met before
// it, or else the parent's first child.
void Scene::CheckSiblingLinks() const {
  if (records.empty()) return;
  const TreeRecord& root = records.front();
  ExpectLink(root, "previous sibling", root.previousSibling, 0);
  ExpectLink(root, "next sibling", root.nextSibling, 0);
  std::vector<std::uint32_t> lastChildren(records.size(), 0);  // met so far, by record index
  for (std::size_t i = 1; i < records.size(); ++i) {
    const TreeRecord& child = records[i];
    const std::size_t parent = IndexOf(child.parent);
    const std::uint32_t previous = lastChildren[parent];
    ExpectLink(child, "previous sibling", child.previousSibling, previous);
    if (previous == 0)
      ExpectLink(records[parent], "first child", records[parent].firstChild, child.id);
    else
      ExpectLink(Record(previous), "next sibling", Record(previous).nextSibling, child.id);
    lastChildren[parent] = child.id;
  }
  for (std::size_t i = 0; i < records.size(); ++i) {
    const std::uint32_t last = lastChildren[i];
    ExpectLink(records[i], "last child", records[i].lastChild, last);
    if (last == 0)
      ExpectLink(records[i], "first child", records[i].firstChild, 0);
    else
      ExpectLink(Record(last), "next sibling", Record(last).nextSibling, 0);
  }
}

void Scene::ResolveLinks() {
  std::vector<Position> positions;
  for (std::size_t r = 0; r < records.size(); ++r) {
    firstVariables.push_back(positions.size());
    for (std::uint32_t v = 0; v < records[r].variables.size(); ++v) positions.push_back({r, v});
  }
  auto target = [this, &positions](std::size_t at) {
    const Variable& variable = records[positions[at].record].variables[positions[at].variable];
    if (!variable.linked) return NoLink;
    GetVariable(variable.linkEntryId, variable.linkVariableIndex);
    return firstVariables[IndexOf(variable.linkEntryId)] + variable.linkVariableIndex;
  };
  for (std::size_t end : ResolveChains(positions.size(), target)) holders.push_back(positions[end]);
}

}  // namespace DovReader
