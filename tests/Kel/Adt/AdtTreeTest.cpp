#include "Kel/Adt/AdtTree.h"

#include <gtest/gtest.h>

#include <string>

#include "Kel/Dov/Node.h"

namespace {

typedef KelAdt::Tree<KelDov::Node*> NodeTree;

// The links of an entry as one comparable value.
std::string Links(NodeTree& tree, std::uint32_t id) {
  const auto& e = tree[id];
  return std::to_string(e.parent) + "/" + std::to_string(e.previousSibling) + "/" +
         std::to_string(e.nextSibling) + "/" + std::to_string(e.firstChild) + "/" +
         std::to_string(e.lastChild);
}

void ExpectElementNotFound(void (*call)(NodeTree&), NodeTree& tree, const char* method) {
  try {
    call(tree);
    FAIL() << "no exception";
  } catch (const Kel::Util::Exception& e) {
    EXPECT_EQ(5, e.GetCode());
    EXPECT_STREQ("Element Not Found", e.GetDescription());
    EXPECT_NE(std::string::npos, std::string(e.what()).find(method));
  }
}

TEST(AdtTreeTest, NewTreeHoldsOnlyTheRoot) {
  NodeTree tree;
  EXPECT_EQ(1u, tree.size());
  auto& root = tree.GetCurrentNode();
  EXPECT_EQ(1u, root.id);
  EXPECT_EQ(nullptr, root.value);
  EXPECT_EQ("0/0/0/0/0", Links(tree, 1));
}

TEST(AdtTreeTest, RepeatedAddNodeMakesAChain) {
  NodeTree tree;
  for (int i = 0; i < 3; ++i) tree.AddNode();
  EXPECT_EQ(4u, tree.size());
  EXPECT_EQ(4u, tree.GetCurrentId());
  EXPECT_EQ("0/0/0/2/2", Links(tree, 1));
  EXPECT_EQ("1/0/0/3/3", Links(tree, 2));
  EXPECT_EQ("2/0/0/4/4", Links(tree, 3));
  EXPECT_EQ("3/0/0/0/0", Links(tree, 4));
}

TEST(AdtTreeTest, SiblingsFormADoublyLinkedListInCreationOrder) {
  NodeTree tree;
  tree.AddNode();  // 2
  tree.AddNode();  // 3
  tree.MoveToParent();
  tree.AddNode();  // 4
  tree.MoveToParent();
  tree.AddNode();  // 5
  EXPECT_EQ("1/0/0/3/5", Links(tree, 2));
  EXPECT_EQ("2/0/4/0/0", Links(tree, 3));
  EXPECT_EQ("2/3/5/0/0", Links(tree, 4));
  EXPECT_EQ("2/4/0/0/0", Links(tree, 5));

  // Ids ascend in creation order and the count matches next id - 1.
  std::uint32_t expected = 1;
  for (const auto& entry : tree) EXPECT_EQ(expected++, entry.first);
  EXPECT_EQ(tree.GetNextId() - 1, tree.size());
}

TEST(AdtTreeTest, MoveToParentStaysAtTheRoot) {
  NodeTree tree;
  tree.MoveToParent();
  EXPECT_EQ(1u, tree.GetCurrentId());
  tree.AddNode();
  tree.MoveToParent();
  tree.MoveToParent();
  EXPECT_EQ(1u, tree.GetCurrentId());
}

TEST(AdtTreeTest, SetCurrentIdAcceptsOnlyIdsBelowNextId) {
  NodeTree tree;
  tree.AddNode();
  tree.AddNode();  // next id is 4
  tree.SetCurrentId(3);
  EXPECT_EQ(3u, tree.GetCurrentId());
  ExpectElementNotFound([](NodeTree& t) { t.SetCurrentId(4); }, tree,
                        "KelAdt::Tree<class KelDov::Node *>::SetCurrentId");
  EXPECT_EQ(3u, tree.GetCurrentId());  // a failure leaves the cursor alone
  tree.SetCurrentId(2);
  tree.AddNode();
  EXPECT_EQ(2u, tree[4].parent);
  EXPECT_EQ(3u, tree[4].previousSibling);
}

TEST(AdtTreeTest, IdZeroPassesButHasNoEntry) {
  NodeTree tree;
  tree.SetCurrentId(0);
  ExpectElementNotFound([](NodeTree& t) { t.GetCurrentNode(); }, tree,
                        "KelAdt::Tree<class KelDov::Node *>::GetCurrentNode");
  EXPECT_EQ(1u, tree.size());  // the failed lookup made nothing
}

TEST(AdtTreeTest, ValueStoredThroughCurrentNodeStays) {
  NodeTree tree;
  KelDov::Node node("n");
  tree.AddNode();
  tree.GetCurrentNode().value = &node;
  tree.MoveToParent();
  EXPECT_EQ(&node, tree[2].value);
}

}  // namespace
