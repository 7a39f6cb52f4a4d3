#pragma once

#include <compare>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "solve/number/rational.h"
#include "solve/number/real.h"

namespace varno::solve {

/// A real number that can be computed to any precision, such as 10*pi: sets the argument, at its
/// own precision, to the number rounded (the last bit may be wrong).
using Constant = std::function<void(mpfr_ptr)>;

/// An exact point in time, or an exact difference of two: a fraction, or a fraction plus multiples
/// of constants that are not rational. Sums and differences are exact, so 0 + 10 * 0.1 is 1.
class Moment {
 public:
  Moment(Rational rational = 0) : rational(std::move(rational)) {}
  /// 1 times the constant.
  explicit Moment(std::shared_ptr<const Constant> constant);

  bool IsRational() const { return multiples.empty(); }
  /// The fraction; what is there beside the constants when it is not rational.
  const Rational& RationalPart() const { return rational; }

  Moment& operator+=(const Moment& other);
  Moment& operator-=(const Moment& other);
  Moment& operator*=(const Rational& factor);
  friend Moment operator+(Moment a, const Moment& b)
  {
    a += b;
    return a;
  }
  friend Moment operator-(Moment a, const Moment& b)
  {
    a -= b;
    return a;
  }
  friend Moment operator*(Moment a, const Rational& factor)
  {
    a *= factor;
    return a;
  }

  /// Sets result, at its precision, to this moment: exact where it fits, else rounded with an error
  /// of at most one unit in the last place, however much cancels.
  void Evaluate(mpfr_ptr result) const;
  double ToDouble() const;
  /// -1, 0 or 1. Moments closer to 0 than 2^-20000 of their parts count as 0.
  int Sign() const;

  friend bool operator==(const Moment& a, const Moment& b) { return Compare(a, b) == 0; }
  friend std::strong_ordering operator<=>(const Moment& a, const Moment& b)
  {
    return Compare(a, b) <=> 0;
  }

 private:
  struct Multiple {
    Rational factor;
    std::shared_ptr<const Constant> constant;
  };
  static int Compare(const Moment& a, const Moment& b);
  void Add(const Rational& factor, const std::shared_ptr<const Constant>& constant);

  Rational rational;
  std::vector<Multiple> multiples;  // no factor 0, no constant twice
};

}  // namespace varno::solve
