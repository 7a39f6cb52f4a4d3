#include "solve/fixed/relaxed_product.h"

#include <algorithm>
#include <array>
#include <span>

#include "solve/fixed/block_product.h"

namespace varno::solve {

LongSum RelaxedProduct::Sum(int n, const LongTerms& a, const LongTerms& b, TermRange range, int k,
                            const std::function<void()>& poll)
{
  const Factors factors{a, b, range, &a == &b};
  const int skipped = range.aFirst + range.bFirst, i = k - skipped;
  if (known == 0) exponent = a.exponent + b.exponent;
  Rescale(n, a.exponent + b.exponent);
  // As many as the rows of terms: so many will be asked for.
  Grow(n, factors, static_cast<int>(std::min(a.rows.size(), b.rows.size())) - skipped, poll);
  if (i > 0 && i % kLeastBlock == 0) AddBlocks(n, factors, i, i, settled, poll);
  AddTerms(n, factors, i);
  known = i + 1;
  return {n, Row(n, i)};
}

/// A term that did not fit has changed the unit of its series.
void RelaxedProduct::Rescale(int n, long newExponent)
{
  const auto down = newExponent - exponent;
  exponent = newExponent;
  if (down <= 0) return;
  const int size = LongSum::Size(n);
  for (int i = known; i < settled; ++i) {
    mp_limb_t* const row = Row(n, i);
    const bool isNegative = row[size - 1] >> (kLimbBits - 1) != 0;
    if (isNegative) mpn_com(row, row, size);
    const int whole = static_cast<int>(std::min<long>(down / kLimbBits, size));
    const int part = static_cast<int>(down % kLimbBits);
    std::copy(row + whole, row + size, row);
    std::fill(row + size - whole, row + size, 0);
    if (part != 0) mpn_rshift(row, row, size, part);
    if (isNegative) mpn_com(row, row, size);
  }
}

/// Makes rows for so many sums, and adds to those that are new what earlier blocks bring.
void RelaxedProduct::Grow(int n, const Factors& factors, int count,
                          const std::function<void()>& poll)
{
  if (count <= settled) return;
  const std::size_t size = LongSum::Size(n);
  if (sums.size() < size * count) sums.resize(size * count);
  std::fill(sums.begin() + static_cast<std::ptrdiff_t>(size * settled),
            sums.begin() + static_cast<std::ptrdiff_t>(size * count), 0);
  const int before = settled;
  settled = count;
  for (int i = kLeastBlock; i < known; i += kLeastBlock)
    AddBlocks(n, factors, i, std::max(i, before), count, poll);
}

/// With i terms of each series known, i a multiple of half = 2^m: the products of the block of
/// `half` terms before i with the first 2 half terms of the other series, in the sums
/// i..i+half-1, as far as these lie between from and to. In the first half of all terms the block
/// is these terms themselves.
void RelaxedProduct::AddBlocks(int n, const Factors& factors, int i, int from, int to,
                               const std::function<void()>& poll)
{
  const int half = i & -i;
  to = std::min(to, i + half);
  if (from >= to) return;
  const auto& [a, b, range, isSquare] = factors;
  const SumBlock block{Row(n, from), from - i, to - from};
  if (half == i) {
    const std::array<BlockPair, 1> pair = {{{{&a, range.aFirst, half}, {&b, range.bFirst, half}}}};
    AddBlockProducts(n, pair, half, false, block, poll);
    return;
  }
  const std::array<BlockPair, 2> pairs = {
      {{{&a, range.aFirst + i - half, half}, {&b, range.bFirst, 2 * half}},
       {{&b, range.bFirst + i - half, half}, {&a, range.aFirst, 2 * half}}}};
  const std::span<const BlockPair> all = pairs;
  AddBlockProducts(n, isSquare ? all.first(1) : all, half, isSquare, block, poll);
}

/// The products with the terms behind the last block.
void RelaxedProduct::AddTerms(int n, const Factors& factors, int i)
{
  const auto& [a, b, range, isSquare] = factors;
  scratch.resize(2 * static_cast<std::size_t>(n) + 3);
  LongSum sum(n, Row(n, i));
  const int begin = i / kLeastBlock * kLeastBlock;
  const int middle = begin == 0 ? (i + 1) / 2 : begin;
  for (int j = middle; j <= i; ++j) {
    const int other = i - j;
    if (isSquare || j == other) {
      sum.AddProduct(a, range.aFirst + j, b, range.bFirst + other, j != other, scratch.data());
    } else {
      sum.AddProduct(a, range.aFirst + j, b, range.bFirst + other, false, scratch.data());
      sum.AddProduct(a, range.aFirst + other, b, range.bFirst + j, false, scratch.data());
    }
  }
}

}  // namespace varno::solve
