#pragma once

#include <vector>

#include "varno/core/expr.h"

namespace varno {

/// Multiplications and additions that the recurrences need, docs/varno/recurrences.md: what is left
/// of a run when everything but the arithmetic is taken away. A division counts as a
/// multiplication.
struct OperationCount {
  double multiplications = 0;
  double additions = 0;

  OperationCount& operator+=(const OperationCount& other)
  {
    multiplications += other.multiplications;
    additions += other.additions;
    return *this;
  }
};

/// All nodes of the equations in the table, each once.
std::vector<Expr*> AllNodes();

/// What the terms that the nodes have cached now have cost.
OperationCount CountCachedTerms(const std::vector<Expr*>& nodes);

/// Seconds that the operations take with GMP at the default precision, measured on operands of full
/// size: `operations.multiplications` times mpf_mul and `operations.additions` times mpf_add.
double SecondsByGmp(const OperationCount& operations);

}  // namespace varno
