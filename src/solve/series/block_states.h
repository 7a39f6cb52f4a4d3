#pragma once

#include <cstddef>
#include <span>
#include <utility>
#include <vector>

#include "solve/series/block_sums.h"
#include "solve/series/series.h"

namespace varno::solve {

/// The states of a BlockSeries, apart from it.
template <class Arithmetic>
class BlockStates final : public StateTerms {
 public:
  struct State {
    typename Arithmetic::Terms terms;
    std::vector<double> logs;
    Real first;
  };

  BlockStates(std::vector<State> states, mpfr_prec_t bits)
      : states(std::move(states)), arithmetic(bits), sums(bits)
  {}

  int Order() const override { return static_cast<int>(states.front().logs.size()) - 1; }
  double Log2(LineId state, int k) const override { return Logs(state)[k]; }
  std::span<const double> Logs(LineId state) const override { return states[state].logs; }
  void Sum(LineId state, mpfr_srcptr offset, mpfr_ptr result) const override
  {
    const State& of = states[state];
    sums.Sum({of.terms, of.logs, of.first}, offset, result);
  }
  void Term(LineId state, int k, mpfr_ptr result) const override
  {
    if (k == 0) {
      mpfr_set(result, states[state].first, MPFR_RNDN);
    } else {
      arithmetic.ToNumber(arithmetic.Load(states[state].terms, k), result);
    }
  }

 private:
  std::vector<State> states;
  Arithmetic arithmetic;
  mutable BlockSums<Arithmetic> sums;
};

}  // namespace varno::solve
