#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <type_traits>
#include <vector>

#include "solve/tape/tape.h"

namespace varno::solve {

/// Whether sums of products are made of blocks, of which each sum finds what earlier ones left.
template <class Arithmetic>
inline constexpr bool kIsRelaxed = !std::is_empty_v<typename Arithmetic::Product>;

/// A recurrence has so many sums of products at most.
inline constexpr int kMostConvolutions = 3;

/// What the terms of a tape's lines are made of. All outlives who is given it.
template <class Arithmetic>
struct LineOperands {
  using Products = std::array<typename Arithmetic::Product, kMostConvolutions>;

  const Tape& tape;
  const std::vector<bool>& leftOut;                           ///< by line: counts as 0
  std::vector<typename Arithmetic::Terms>& terms;             ///< by line
  std::vector<typename Arithmetic::Terms>& weighted;          ///< j times term j
  const std::vector<std::uint32_t>& weightedRows;             ///< by line, in `weighted`
  const std::vector<typename Arithmetic::Factor>& constants;  ///< by constant
  const std::vector<typename Arithmetic::Factor>& exponents;  ///< by constant: it + 1
  const std::vector<typename Arithmetic::Factor>& divisors;   ///< by line: a reciprocal
  std::vector<Products>& convolutions;                        ///< by line, of relaxed sums
  /// Grows when the exponent of a line changes, when a line gets one, or where its terms stand.
  std::atomic<std::int64_t>& arrangement;

  void Rearrange() const { arrangement.fetch_add(1, std::memory_order_relaxed); }
  std::int64_t Arrangement() const { return arrangement.load(std::memory_order_relaxed); }
};

}  // namespace varno::solve
