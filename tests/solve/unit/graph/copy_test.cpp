// Copies against the same nodes built in the other graph.

#include "solve/graph/copy.h"

#include <vector>

#include <gtest/gtest.h>

namespace varno::solve {
namespace {

class CopyTest : public testing::Test {
 protected:
  /// The copy of a node, after those of all before it.
  NodeId Copied(NodeId id)
  {
    while (copies.size() < from.Size())
      copies.push_back(CopyNode(from, static_cast<NodeId>(copies.size()), copies, to));
    return copies[id];
  }

  Graph from, to;
  std::vector<NodeId> copies;
};

TEST_F(CopyTest, Leaves)
{
  const NodeId state = from.State(3, {}), parameter = from.Parameter(2, {});
  const NodeId time = from.Leaf(Operation::kTime, {}), number = from.Number(Rational(2, 3), {});
  EXPECT_EQ(to.State(3, {}), Copied(state));
  EXPECT_EQ(to.Parameter(2, {}), Copied(parameter));
  EXPECT_EQ(to.Leaf(Operation::kTime, {}), Copied(time));
  EXPECT_EQ(to.Number(Rational(2, 3), {}), Copied(number));
}

TEST_F(CopyTest, OperationsKeepTheOrderOfOperands)
{
  const NodeId x = from.State(0, {}), y = from.State(1, {});
  const NodeId difference = from.Make(Operation::kSubtract, x, y, {});
  const NodeId sine = from.Make(Operation::kSin, difference, {});
  const NodeId choice = from.Make(Operation::kIf, sine, x, y, {});
  Copied(choice);
  EXPECT_EQ(to.Make(Operation::kSubtract, copies[x], copies[y], {}), copies[difference]);
  EXPECT_EQ(to.Make(Operation::kSin, copies[difference], {}), copies[sine]);
  EXPECT_EQ(to.Make(Operation::kIf, copies[sine], copies[x], copies[y], {}), copies[choice]);
}

TEST_F(CopyTest, KeepsPlaces)
{
  const NodeId time = from.Leaf(Operation::kTime, {0, 7, 9});
  EXPECT_EQ((Place{0, 7, 9}), to[Copied(time)].place);
}

// Operations over numbers alone are carried out.
TEST_F(CopyTest, FoldsWhereOperandsBecameNumbers)
{
  const NodeId x = from.State(0, {}), y = from.State(1, {});
  const NodeId sum = from.Make(Operation::kAdd, x, y, {});
  copies = {to.Number(2, {}), to.Number(3, {})};
  EXPECT_EQ(to.Number(5, {}), Copied(sum));
}

}  // namespace
}  // namespace varno::solve
