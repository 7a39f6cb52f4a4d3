#include "bench/varno/operation_count.h"

#include <algorithm>
#include <limits>
#include <set>

#include <gmp.h>

#include "arith/mpf.h"
#include "bench/cpu_clock.h"
#include "varno/core/global_data.h"
#include "varno/expr/bin_op.h"
#include "varno/expr/differential.h"

namespace varno {

using arith::Mpf;

namespace {

/// The terms of a node from which on all are 0.
int RowLength(const Expr& node)
{
  switch (node.Type()) {
    case kNumber:
    case kAlgebraic:
      return 1;
    case kTime:
      return 2;
    default:
      return std::numeric_limits<int>::max();
  }
}

/// Products a[k-j] b[j] of term k that are not identically 0, j from 0 to `last`.
int ProductsOfTerm(int k, int last, int aLength, int bLength)
{
  const int first = aLength > k ? 0 : k - (aLength - 1);
  return std::max(0, std::min(last, bLength - 1) - first + 1);
}

OperationCount CountTerms(const BinOp& node)
{
  OperationCount count;
  const int terms = node.CachedTerms();
  const int a = RowLength(*node.Left());
  const int b = RowLength(*node.Right());
  for (int k = 0; k < terms; ++k) {
    if (node.Type() == kMultiply) {
      const int products = ProductsOfTerm(k, k, a, b);
      count += {double(products), double(products)};
    } else if (node.Type() == kDivide) {
      // the quotient's own terms times those of the divisor, then a difference and a division
      const int products = ProductsOfTerm(k, k - 1, b, std::numeric_limits<int>::max());
      count += {products + 1.0, products + 1.0};
    } else {
      count.additions += 1;
    }
  }
  return count;
}

OperationCount CountTerms(const Expr& node)
{
  switch (node.Type()) {
    case kPlus:
    case kMinus:
    case kMultiply:
    case kDivide:
      return CountTerms(static_cast<const BinOp&>(node));
    case kDifferential: {
      // h / k for all terms but one; the sum and the test of each term
      const double terms = node.CachedTerms();
      return {2 * terms - 1, terms};
    }
    default:
      return {};
  }
}

void Collect(const Expr::Ref& ref, std::set<Expr*>& nodes)
{
  if (!nodes.insert(&*ref).second) return;
  for (const Expr::Ref& operand : ref->Operands()) Collect(operand, nodes);
}

/// Seconds for one call of an operation on operands of full size: the best of several rounds.
template <class Operation>
double SecondsEach(Operation operation)
{
  constexpr int kCalls = 2000;
  constexpr int kRounds = 50;
  double best = std::numeric_limits<double>::max();
  for (int round = 0; round < kRounds; ++round) {
    const double start = CpuSeconds();
    for (int call = 0; call < kCalls; ++call) operation();
    best = std::min(best, (CpuSeconds() - start) / kCalls);
  }
  return best;
}

}  // namespace

std::vector<Expr*> AllNodes()
{
  std::set<Expr*> nodes;
  for (const auto& [name, entry] : Expr::Global->_EQUATIONS) Collect(entry, nodes);
  return {nodes.begin(), nodes.end()};
}

OperationCount CountCachedTerms(const std::vector<Expr*>& nodes)
{
  OperationCount count;
  for (const Expr* node : nodes) count += CountTerms(*node);
  return count;
}

double SecondsByGmp(const OperationCount& operations)
{
  // 1/3 and 1/7 fill all limbs.
  Mpf a(1.0), b(1.0), product, sum;
  mpf_div_ui(a, a, 3);
  mpf_div_ui(b, b, 7);
  const double multiplication = SecondsEach([&] { mpf_mul(product, a, b); });
  const double addition = SecondsEach([&] { mpf_add(sum, a, product); });
  return operations.multiplications * multiplication + operations.additions * addition;
}

}  // namespace varno
