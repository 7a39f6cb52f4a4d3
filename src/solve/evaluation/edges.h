#pragma once

#include <optional>

#include "solve/evaluation/size.h"
#include "solve/graph/operation.h"
#include "solve/number/real.h"

namespace varno::solve {

/// How close to the edge of a function's domain, or to its jump, an argument counts as on it.
struct EdgeRule {
  double noiseBits;     ///< closer than its size times 2^-noiseBits, it may be on either side
  double zeroBits;      ///< closer than its size times 2^-zeroBits, too, it counts as on the edge
  bool mayDeclareZero;  ///< whether the argument is computed so exactly
  /// What may count as on the edge: arguments whose noise is smaller than the smallest number that
  /// they are made of, to this power, or than the inverse of the largest.
  double spanFactor = 1;

  /// Whether an argument made of numbers from 2^-span to 2^span may count as on the edge.
  bool MayDeclareZero(double span) const
  {
    return mayDeclareZero && noiseBits >= spanFactor * span;
  }
};

/// Thrown where an argument may be on an edge or not, and more bits decide.
struct EdgeInDoubt {
  double noiseBits = 0;  ///< below which the noise must come for that at least (-log2)
};

/// The point of an edge that an argument is on.
struct Edge {
  Real argument;
  bool isSecond;  ///< whether it is the second operand's: of a quotient
  /// Beside the edge the function differs from its value there like the distance to this power; 0
  /// where it has no value there, or jumps.
  double power;
};

/// The edge that an operand is on as far as can be told: radicands and bases of powers at 0, the
/// sine and the cosine of an angle at +-1, divisors at 0 and the like; the sign's argument at 0,
/// those of floor, ceil and trunc at integers where they jump, the operands of a comparison where
/// they are equal. None where all of them are clear of edges, or exactly 0. Throws EdgeInDoubt.
std::optional<Edge> EdgeAt(Operation operation, bool hasWholeExponent, const SizedValue& a,
                           const SizedValue& b, const EdgeRule& rule);

/// Whether an angle is on a pole of the tangent or the cotangent, as far as can be told, to judge
/// by the result: beside the pole that is the inverse of the distance. Throws EdgeInDoubt.
bool IsOnPole(Operation operation, mpfr_srcptr result, double angleSize, const EdgeRule& rule);

/// log2 of the size of a result on an edge: a zero to this size's unit is what a distance within
/// the rule makes of it.
double SizeAtEdge(const Edge& edge, mpfr_srcptr result, double argumentSize, const EdgeRule& rule);

}  // namespace varno::solve
