#include "solve/roots/isolation.h"

#include <algorithm>
#include <utility>

#include "solve/roots/bernstein.h"

namespace varno::solve {

namespace {

/// Roots that may be of a higher multiplicity are not looked at more closely.
constexpr int kMostMultiplicity = 40;

/// A dyadic part of [0, 1]: from place / 2^depth, 2^-depth long.
struct Piece {
  Bernstein form;
  Real begin;
  long depth;

  Real End() const
  {
    Real end = begin, width(2);
    mpfr_set_si_2exp(width, 1, -depth, MPFR_RNDN);
    mpfr_add(end, end, width, MPFR_RNDN);
    return end;
  }
};

/// Finds the intervals from left to right.
class Isolation {
 public:
  explicit Isolation(const UncertainPolynomial& polynomial)
      : mostDepth(polynomial.Bits()), placeBits(polynomial.Bits() + 2)
  {
    open.push_back({Bernstein(polynomial), Real(placeBits), 0});
    while (!open.empty()) Look();
  }

  std::vector<RootInterval> found;

 private:
  void Look()
  {
    Piece piece = std::move(open.back());
    open.pop_back();
    const Bernstein::Signs signs = piece.form.ReadSigns();
    if (signs.allEqual) return;
    const bool crosses = signs.first * signs.last < 0;
    if (signs.changeOnce || (crosses && piece.form.IsMonotone())) {
      found.push_back({piece.begin, piece.End(), signs.first, signs.last, 1});
    } else if (signs.nothingStandsOut || piece.depth >= mostDepth) {
      AddUndecided(piece, signs);
    } else {
      Split(piece);
    }
  }

  void Split(const Piece& piece)
  {
    auto [left, right] = piece.form.Halves();
    Piece first{std::move(left), piece.begin, piece.depth + 1};
    Real middle = first.End();
    open.push_back({std::move(right), std::move(middle), piece.depth + 1});
    open.push_back(std::move(first));
  }

  /// Joins it to an undecided neighbour.
  void AddUndecided(const Piece& piece, const Bernstein::Signs& signs)
  {
    const bool touches = !found.empty() && found.back().mostRoots == 0 &&
                         mpfr_equal_p(found.back().end, piece.begin);
    if (touches) {
      found.back().end = piece.End();
      found.back().signAfter = signs.last;
    } else {
      found.push_back({piece.begin, piece.End(), signs.first, signs.last, 0});
    }
  }

  long mostDepth;
  mpfr_prec_t placeBits;
  std::vector<Piece> open;
};

/// The least m > 0 such that derivative m has no root from begin to begin + width, which leaves
/// room for m roots at most. The derivatives are those of the terms, of which the errors are known
/// better than those of a sum that is nearly 0.
int MostRoots(const UncertainPolynomial& polynomial, const Real& begin, const Real& width)
{
  UncertainPolynomial derivative = polynomial;
  int m = 0;
  while (++m <= kMostMultiplicity && static_cast<std::size_t>(m) <= polynomial.Degree()) {
    derivative = Derivative(derivative);
    if (Bernstein(Restricted(derivative, begin, width)).ReadSigns().allEqual) return m;
  }
  return static_cast<int>(polynomial.Degree()) + 1;
}

/// Looks at an undecided interval with some room around it: in most cases that shows the signs on
/// both sides and how many roots there can be.
void Classify(const UncertainPolynomial& polynomial, RootInterval& interval, const Real& from,
              const Real& to)
{
  Real width(interval.begin.Bits());
  mpfr_sub(width, interval.end, interval.begin, MPFR_RNDN);
  Real begin = interval.begin, end = interval.end;
  mpfr_sub(begin, begin, width, MPFR_RNDN);
  mpfr_add(end, end, width, MPFR_RNDN);
  mpfr_max(begin, begin, from, MPFR_RNDN);
  mpfr_min(end, end, to, MPFR_RNDN);
  mpfr_sub(width, end, begin, MPFR_RNDN);
  const Bernstein::Signs signs = Bernstein(Restricted(polynomial, begin, width)).ReadSigns();
  const int mostRoots = MostRoots(polynomial, begin, width);
  interval = {std::move(begin), std::move(end), signs.first, signs.last, mostRoots};
}

}  // namespace

std::vector<RootInterval> IsolateRoots(const UncertainPolynomial& polynomial)
{
  std::vector<RootInterval> found = Isolation(polynomial).found;
  Real from(polynomial.Bits()), one(2);
  mpfr_set_ui(one, 1, MPFR_RNDN);
  for (std::size_t i = 0; i < found.size(); ++i) {
    if (found[i].mostRoots == 0)
      Classify(polynomial, found[i], from, i + 1 < found.size() ? found[i + 1].begin : one);
    from = found[i].end;
  }
  return found;
}

}  // namespace varno::solve
