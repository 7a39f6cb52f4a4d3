#include "solve/switching/largest.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace varno::solve {

namespace {

constexpr double kPrecision = 0x1p-33;
/// Halves that are smaller than rounding tell nothing more.
constexpr int kMostHalvings = 50;
/// Terms that are so much smaller than the largest one change no digit that counts.
constexpr double kNegligible = 0x1p-60;

/// p(middle + half x) for -1 <= x <= 1, without terms that do not count.
class Piece {
 public:
  Piece(const std::vector<double>& coefficients, double middle, double half) : terms(coefficients)
  {
    // Taylor shift by Horner's rule
    for (std::size_t i = 0; i + 1 < terms.size(); ++i) {
      for (std::size_t k = terms.size() - 1; k-- > i;) terms[k] += middle * terms[k + 1];
    }
    double power = 1, largest = 0;
    for (double& term : terms) {
      term *= power;
      power *= half;
      largest = std::max(largest, std::abs(term));
    }
    while (terms.size() > 1 && std::abs(terms.back()) <= kNegligible * largest) terms.pop_back();
  }

  double Bound() const
  {
    double sum = 0;
    for (const double term : terms) sum += std::abs(term);
    return sum;
  }
  /// The largest magnitude in the middle and at both ends.
  double Reached() const
  {
    double even = 0, odd = 0;
    for (std::size_t k = 0; k < terms.size(); ++k) (k % 2 == 0 ? even : odd) += terms[k];
    return std::max(std::abs(terms.front()), std::abs(even) + std::abs(odd));
  }
  Piece Half(double middle) const { return {terms, middle, 0.5}; }

 private:
  std::vector<double> terms;
};

void Raise(double& largest, const Piece& piece, int halvings)
{
  largest = std::max(largest, piece.Reached());
  if (halvings == 0 || piece.Bound() <= largest * (1 + kPrecision)) return;
  Raise(largest, piece.Half(-0.5), halvings - 1);
  Raise(largest, piece.Half(0.5), halvings - 1);
}

}  // namespace

double LargestMagnitude(const std::vector<double>& coefficients, double begin, double end)
{
  if (coefficients.empty()) return 0;
  double largest = 0;
  Raise(largest, {coefficients, (begin + end) / 2, (end - begin) / 2}, kMostHalvings);
  return largest;
}

}  // namespace varno::solve
