#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include <mpfr.h>

namespace varno::solve {

/// Rows of MPFR numbers of one precision, all digits in one block: row after row, term after term.
class TermStore {
 public:
  /// Zeros. `termCount` terms in each of `rowCount` rows.
  TermStore(std::size_t rowCount, int termCount, mpfr_prec_t bits);

  /// Makes room for so many terms in each row, or more; what is there stays.
  void Grow(int wanted);

  int TermCount() const { return termCount; }
  mpfr_ptr Row(std::size_t row) { return &numbers[row * static_cast<std::size_t>(termCount)]; }
  mpfr_srcptr Row(std::size_t row) const
  {
    return &numbers[row * static_cast<std::size_t>(termCount)];
  }

 private:
  std::size_t rowCount;
  int termCount;
  mpfr_prec_t bits;
  std::vector<__mpfr_struct> numbers;
  std::unique_ptr<mp_limb_t[]> limbs;
};

}  // namespace varno::solve
