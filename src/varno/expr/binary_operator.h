#pragma once

#include <gmp.h>

#include "varno/core/expr_type.h"

namespace varno {

/// One of the four operations on numbers and on expressions.
struct BinaryOperator {
  ExprType type;
  char symbol;
  void (*apply)(mpf_ptr result, mpf_srcptr a, mpf_srcptr b);
};

/// The row of a binary kind; null for any other kind.
const BinaryOperator* FindBinaryOperator(ExprType type);

}  // namespace varno
