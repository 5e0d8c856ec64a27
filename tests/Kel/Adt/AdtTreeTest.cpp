#include "Kel/Adt/AdtTree.h"

#include <gtest/gtest.h>

#include <string>

#include "Kel/Dov/Node.h"

namespace {

typedef KelAdt::Tree<KelDov::Node*> NodeTree;

// parent/previous/next/first/last of an entry.
std::string Links(NodeTree& tree, std::uint32_t id) {
  const auto& e = tree[id];
  return std::to_string(e.parent) + "/" + std::to_string(e.previousSibling) + "/" +
         std::to_string(e.nextSibling) + "/" + std::to_string(e.firstChild) + "/" +
         std::to_string(e.lastChild);
}

template <class Call>
void ExpectElementNotFound(Call call, const char* method) {
  try {
    call();
    ADD_FAILURE() << "no exception";
  } catch (const Kel::Util::Exception& e) {
    EXPECT_EQ(5, e.GetCode());
    EXPECT_STREQ("Element Not Found", e.GetDescription());
    EXPECT_NE(std::string::npos, std::string(e.what()).find(method));
  }
}

TEST(AdtTreeTest, ChainsAndSiblingsInCreationOrder) {
  NodeTree tree;
  EXPECT_EQ(1u, tree.GetCurrentNode().id);
  EXPECT_EQ(nullptr, tree.GetCurrentNode().value);
  tree.MoveToParent();  // stays at the root
  tree.AddNode();       // 2
  tree.AddNode();       // 3
  tree.AddNode();       // 4
  tree.MoveToParent();
  tree.MoveToParent();
  tree.AddNode();  // 5, after 3 under 2
  tree.MoveToParent();
  tree.AddNode();  // 6, after 5
  EXPECT_EQ("0/0/0/2/2", Links(tree, 1));
  EXPECT_EQ("1/0/0/3/6", Links(tree, 2));
  EXPECT_EQ("2/0/5/4/4", Links(tree, 3));
  EXPECT_EQ("3/0/0/0/0", Links(tree, 4));
  EXPECT_EQ("2/3/6/0/0", Links(tree, 5));
  EXPECT_EQ("2/5/0/0/0", Links(tree, 6));
  std::uint32_t expected = 1;
  for (const auto& entry : tree) EXPECT_EQ(expected++, entry.first);
  EXPECT_EQ(tree.GetNextId() - 1, tree.size());
}

TEST(AdtTreeTest, CursorFailures) {
  NodeTree tree;
  tree.AddNode();
  tree.AddNode();  // next id is 4
  tree.SetCurrentId(3);
  ExpectElementNotFound([&] { tree.SetCurrentId(4); },
                        "KelAdt::Tree<class KelDov::Node *>::SetCurrentId");
  EXPECT_EQ(3u, tree.GetCurrentId());  // a failure leaves the cursor alone
  tree.SetCurrentId(0);                // passes: only the next id is tested
  ExpectElementNotFound([&] { tree.GetCurrentNode(); },
                        "KelAdt::Tree<class KelDov::Node *>::GetCurrentNode");
  EXPECT_EQ(3u, tree.size());  // the failed lookup made nothing
}

}  // namespace
