#pragma once

namespace varno {

/// Makes equal subexpressions of the right-hand sides in `_EQUATIONS` one node, so that their terms
/// are computed once. To be called after conversion.
///
/// Two subexpressions are equal when they do the same operations in the same order on the same
/// differential variables and equal numbers: they have the same terms and the same value, digit for
/// digit. Expressions with the time or with an algebraic variable in them stay apart: their values
/// may depend on when they are asked for.
void ShareSubexpressions();

}  // namespace varno
