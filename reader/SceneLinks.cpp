// The links of a scene, checked once when it is read: each entry's parent
// comes before it, the sibling and child links agree with the parents, and
// every variable link leads to a variable with values. After that no walk
// over the tree or along links can loop, and none needs to be repeated.

#include <string>

#include "reader/LinkChains.h"
#include "reader/Scene.h"

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

// Children are linked in the order of creation, which is the order of ids.
void Scene::CheckSiblingLinks() const {
  if (records.empty()) return;
  std::vector<std::vector<std::uint32_t>> children(records.size());
  for (std::size_t i = 1; i < records.size(); ++i)
    children[IndexOf(records[i].parent)].push_back(records[i].id);
  ExpectLink(records.front(), "previous sibling", records.front().previousSibling, 0);
  ExpectLink(records.front(), "next sibling", records.front().nextSibling, 0);
  for (std::size_t i = 0; i < records.size(); ++i) {
    const std::vector<std::uint32_t>& list = children[i];
    ExpectLink(records[i], "first child", records[i].firstChild, list.empty() ? 0 : list.front());
    ExpectLink(records[i], "last child", records[i].lastChild, list.empty() ? 0 : list.back());
    for (std::size_t k = 0; k < list.size(); ++k) {
      const TreeRecord& child = records[IndexOf(list[k])];
      ExpectLink(child, "previous sibling", child.previousSibling, k == 0 ? 0 : list[k - 1]);
      ExpectLink(child, "next sibling", child.nextSibling, k + 1 == list.size() ? 0 : list[k + 1]);
    }
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
