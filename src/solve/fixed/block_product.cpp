#include "solve/fixed/block_product.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

#include "solve/fixed/int128.h"
#include "solve/fixed/residues.h"

namespace varno::solve {

namespace {

constexpr long kNoBits = std::numeric_limits<long>::min() / 4;
/// Digits are made of words that fit a double with room.
constexpr int kMostWordBits = 45;

// ---------------------------------------------------------------------------------------------
// Which bits of the terms count

/// How the bits behind those that count are dropped: of term u of x below 2^(xDrop - slope u), of
/// term v of y below 2^(yDrop - slope v), so that what is left of a product counts in units that
/// depend on u + v alone.
struct Drops {
  long slope, xDrop, yDrop;
  long xBits, yBits;  // of the longest terms that are left
};

std::vector<long> BitLengths(const TermBlock& block)
{
  std::vector<long> lengths(block.count, kNoBits);
  for (int i = 0; i < block.count; ++i) {
    const LongTerms::Row& row = block.terms->rows[block.first + i];
    if (row.size == 0) continue;
    const auto top = static_cast<std::uint64_t>(block.terms->Limbs(row)[row.size - 1]);
    lengths[i] = long{kLimbBits} * row.size - std::countl_zero(top);
  }
  return lengths;
}

/// The largest of this and all later ones.
std::vector<long> LargestBehind(std::vector<long> lengths)
{
  for (std::size_t i = lengths.size() - 1; i > 0; --i)
    lengths[i - 1] = std::max(lengths[i - 1], lengths[i]);
  return lengths;
}

/// The most that may be dropped of x: what is dropped of term u, times any y it meets, stays below
/// 2^unit.
long DropOf(std::size_t count, const std::vector<long>& largestOther, int half, long slope,
            long unit)
{
  long drop = std::numeric_limits<long>::max();
  for (std::size_t u = 0; u < count; ++u) {
    const auto met = static_cast<std::size_t>(std::max<long>(0, half - static_cast<long>(u)));
    if (met >= largestOther.size() || largestOther[met] == kNoBits) continue;
    drop = std::min(drop, unit - largestOther[met] + slope * static_cast<long>(u));
  }
  return drop;
}

long BitsLeft(const std::vector<long>& lengths, long drop, long slope)
{
  long most = 0;
  for (std::size_t u = 0; u < lengths.size(); ++u) {
    if (lengths[u] != kNoBits)
      most = std::max(most, lengths[u] - drop + slope * static_cast<long>(u));
  }
  return most;
}

/// Nothing where all products stay below the unit.
std::optional<Drops> DropsOf(const std::vector<long>& x, const std::vector<long>& y, int half,
                             long slope, long unit)
{
  const std::vector<long> largestX = LargestBehind(x), largestY = LargestBehind(y);
  constexpr long kAll = std::numeric_limits<long>::max();
  const long xDrop = DropOf(x.size(), largestY, half, slope, unit);
  const long yDrop = DropOf(y.size(), largestX, half, slope, unit);
  if (xDrop == kAll || yDrop == kAll) return std::nullopt;
  const Drops drops{slope, xDrop, yDrop, BitsLeft(x, xDrop, slope), BitsLeft(y, yDrop, slope)};
  if (drops.xBits == 0 || drops.yBits == 0) return std::nullopt;
  return drops;
}

/// By how many bits the terms fall from one to the next.
long SlopeOf(const std::vector<long>& lengths)
{
  const auto shown = [](long length) { return length != kNoBits; };
  const auto first = std::ranges::find_if(lengths, shown);
  const auto last = std::find_if(lengths.rbegin(), lengths.rend(), shown);
  if (first == lengths.end()) return 0;
  const long distance = (last.base() - 1) - first;
  return distance == 0 ? 0 : std::max(0L, (*first - *last) / distance);
}

// ---------------------------------------------------------------------------------------------
// Digits

/// How terms are cut into digits, and how many points and primes tell their products.
struct Cut {
  int primes = 0;
  int digitBits = 0, words = 0, wordBits = 0;
  int length = 0;  // of transforms over digits
  int digits = 0;  // of products
};

int BitWidth(int x)
{
  return static_cast<int>(std::bit_width(static_cast<unsigned>(x)));
}

/// With this many primes; `sumBits` is log2 of how many products of terms are added.
Cut CutFor(int primes, long xBits, long yBits, int sumBits)
{
  const auto digitsFor = [](long bits, int digitBits) {
    return static_cast<int>((bits + digitBits - 1) / digitBits);
  };
  Cut cut;
  cut.primes = primes;
  // Sums of products of digits are below 2^(2 digitBits + sumBits) times the digits of a factor,
  // and must be below a quarter of the product of the primes.
  const int room = kModulusBits * primes - 3 - sumBits;
  const int least = digitsFor(std::min(xBits, yBits), room / 2 - 8);
  const int digitBits = (room - BitWidth(least)) / 2;
  cut.words = (digitBits + kMostWordBits - 1) / kMostWordBits;
  cut.wordBits = digitBits / cut.words;
  cut.digitBits = cut.wordBits * cut.words;
  cut.digits = digitsFor(xBits, cut.digitBits) + digitsFor(yBits, cut.digitBits) - 1;
  cut.length = std::max(kLanes, static_cast<int>(std::bit_ceil(static_cast<unsigned>(cut.digits))));
  return cut;
}

Cut BestCut(long xBits, long yBits, int sumBits)
{
  Cut best;
  for (int primes = 2; primes <= kModulusCount; ++primes) {
    const Cut cut = CutFor(primes, xBits, yBits, sumBits);
    if (cut.length > kMostTransform) continue;
    if (best.primes == 0 || cut.primes * cut.length < best.primes * best.length) best = cut;
  }
  return best;
}

/// Bits first..first+count-1, count < 64, of a number; bits outside are 0.
std::uint64_t BitsOf(const mp_limb_t* limbs, int size, long first, int count)
{
  std::uint64_t bits = 0;
  if (first < 0) {
    if (first + count <= 0) return 0;
    return BitsOf(limbs, size, 0, count + static_cast<int>(first)) << -first;
  }
  const long limb = first / kLimbBits;
  const int offset = static_cast<int>(first % kLimbBits);
  if (limb >= size) return 0;
  bits = static_cast<std::uint64_t>(limbs[limb]) >> offset;
  if (offset + count > kLimbBits && limb + 1 < size)
    bits |= static_cast<std::uint64_t>(limbs[limb + 1]) << (kLimbBits - offset);
  return bits & ((std::uint64_t{1} << count) - 1);
}

// ---------------------------------------------------------------------------------------------
// The product

/// The terms of a block, cut into words, by which loops over kLanes of them run: word w of digit d
/// of term u is words[((u / kLanes * cut.words + w) * digits + d) * kLanes + u % kLanes].
struct Words {
  int terms = 0;
  int digits = 0;
  std::vector<double> words;

  std::size_t Size() const { return static_cast<std::size_t>(digits) * kLanes; }
  const double* Of(int group, int w, const Cut& cut) const
  {
    return &words[(static_cast<std::size_t>(group) * cut.words + w) * Size()];
  }
};

Words WordsOf(const TermBlock& block, long bits, long drop, long slope, const Cut& cut)
{
  Words result;
  result.terms = block.count;
  result.digits = static_cast<int>((bits + cut.digitBits - 1) / cut.digitBits);
  const int groups = (block.count + kLanes - 1) / kLanes;
  result.words.resize(result.Size() * groups * cut.words);
  for (int u = 0; u < block.count; ++u) {
    const LongTerms::Row& row = block.terms->rows[block.first + u];
    const mp_limb_t* const limbs = block.terms->Limbs(row);
    for (int w = 0; w < cut.words; ++w) {
      double* const to =
          &result.words[(static_cast<std::size_t>(u / kLanes) * cut.words + w) * result.Size() +
                        u % kLanes];
      long bit = drop - slope * u + long{cut.wordBits} * w;
      for (std::size_t d = 0; d < result.Size(); d += kLanes, bit += cut.digitBits) {
        const auto word = static_cast<double>(BitsOf(limbs, row.size, bit, cut.wordBits));
        to[d] = row.isNegative ? -word : word;
      }
    }
  }
  return result;
}

/// Points stand in strips of kLanes: point p of term u at ((p / kLanes) rows + u) kLanes + p %
/// kLanes.
using Strips = std::vector<double>;

class Multiplication {
 public:
  Multiplication(int half, const Cut& cut, SumBlock sums, const std::function<void()>& poll)
      : half(half),
        cut(cut),
        sums(sums),
        poll(poll),
        kernels(*BestResidueKernels()),
        groups((sums.count + kLanes - 1) / kLanes),
        residues(static_cast<std::size_t>(cut.primes) * groups * GroupSize())
  {}

  /// Finds the residues of all digits of all sums modulo one prime.
  void FindResidues(int prime, std::span<const std::array<Words, 2>> factors, bool twice);
  /// Adds to the sums what the residues tell; 2^firstPlace is the unit of the digit 0 of the first
  /// sum, in units of the sums.
  void AddToSums(int n, long firstPlace, long slope);

 private:
  std::size_t GroupSize() const { return static_cast<std::size_t>(cut.digits) * kLanes; }
  double* ResiduesOf(int prime, int group)
  {
    return &residues[(static_cast<std::size_t>(prime) * groups + group) * GroupSize()];
  }
  Strips Evaluate(const Modulus& m, const Words& words) const;
  void Convolve(const Modulus& m, int strip, std::span<const std::array<Strips, 2>> values,
                Strips& products);
  void Interpolate(const Modulus& m, int prime, const Strips& products, double factor);

  int half;
  Cut cut;
  SumBlock sums;
  const std::function<void()>& poll;
  const ResidueKernels& kernels;
  int groups;  // of kLanes sums
  std::vector<double> residues;
  std::vector<double> x, y, product;  // scratch of Convolve
};

/// The values of the polynomials whose coefficients are the digits of terms.
Strips Multiplication::Evaluate(const Modulus& m, const Words& words) const
{
  Strips strips(static_cast<std::size_t>(cut.length) * words.terms);
  std::vector<double> values(static_cast<std::size_t>(cut.length) * kLanes);
  const double radix = ResidueOf(m, std::int64_t{1} << cut.wordBits);
  const auto size = static_cast<long>(words.Size());
  for (int begin = 0; begin < words.terms; begin += kLanes) {
    if (poll) poll();
    const int group = begin / kLanes, lanes = std::min(kLanes, words.terms - begin);
    std::copy_n(words.Of(group, cut.words - 1, cut), size, values.begin());
    std::fill(values.begin() + size, values.end(), 0);
    for (int w = cut.words - 2; w >= 0; --w)
      kernels.scaleAndAdd(m, values.data(), radix, words.Of(group, w, cut), size);
    kernels.reduce(m, values.data(), size);
    kernels.transform(m, values.data(), cut.length);
    kernels.reduce(m, values.data(), static_cast<long>(values.size()));
    for (int p = 0; p < cut.length; ++p) {
      double* const strip =
          &strips[(static_cast<std::size_t>(p / kLanes) * words.terms + begin) * kLanes +
                  p % kLanes];
      for (int lane = 0; lane < lanes; ++lane)
        strip[static_cast<std::size_t>(lane) * kLanes] =
            values[static_cast<std::size_t>(p) * kLanes + lane];
    }
  }
  return strips;
}

/// The products of the series of values at kLanes points: cyclic ones of length 2 half, which are
/// right from `half` on.
void Multiplication::Convolve(const Modulus& m, int strip,
                              std::span<const std::array<Strips, 2>> values, Strips& products)
{
  const std::size_t size = static_cast<std::size_t>(2) * half * kLanes;
  const auto load = [&](const Strips& from, std::vector<double>& to) {
    const std::size_t count = from.size() / cut.length * kLanes;
    to.resize(size);
    std::copy_n(from.begin() + static_cast<std::ptrdiff_t>(count * strip), count, to.begin());
    std::fill(to.begin() + static_cast<std::ptrdiff_t>(count), to.end(), 0);
    kernels.transform(m, to.data(), 2 * half);
  };
  product.resize(size);
  for (std::size_t i = 0; i < values.size(); ++i) {
    load(values[i][0], x);
    load(values[i][1], y);
    (i == 0 ? kernels.multiply : kernels.addProducts)(m, x.data(), y.data(), product.data(),
                                                      static_cast<long>(size));
  }
  kernels.transformBack(m, product.data(), 2 * half);
  std::copy_n(product.begin() + static_cast<std::ptrdiff_t>(half + sums.first) * kLanes,
              static_cast<std::size_t>(sums.count) * kLanes,
              products.begin() + static_cast<std::ptrdiff_t>(sums.count) * strip * kLanes);
}

/// From values at all points to digits.
void Multiplication::Interpolate(const Modulus& m, int prime, const Strips& products, double factor)
{
  std::vector<double> values(static_cast<std::size_t>(cut.length) * kLanes);
  for (int group = 0; group < groups; ++group) {
    const int begin = group * kLanes, lanes = std::min(kLanes, sums.count - begin);
    for (int p = 0; p < cut.length; ++p) {
      const double* const strip =
          &products[(static_cast<std::size_t>(p / kLanes) * sums.count + begin) * kLanes +
                    p % kLanes];
      for (int lane = 0; lane < lanes; ++lane)
        values[static_cast<std::size_t>(p) * kLanes + lane] =
            strip[static_cast<std::size_t>(lane) * kLanes];
    }
    kernels.transformBack(m, values.data(), cut.length);
    kernels.scale(m, values.data(), factor, static_cast<long>(GroupSize()));
    std::copy_n(values.begin(), GroupSize(), ResiduesOf(prime, group));
  }
}

void Multiplication::FindResidues(int prime, std::span<const std::array<Words, 2>> factors,
                                  bool twice)
{
  const Modulus& m = ModulusOf(prime);
  std::vector<std::array<Strips, 2>> values;
  for (const auto& [left, right] : factors)
    values.push_back({Evaluate(m, left), Evaluate(m, right)});
  Strips products(static_cast<std::size_t>(cut.length) * sums.count);
  for (int strip = 0; strip < cut.length / kLanes; ++strip) {
    if (poll) poll();
    Convolve(m, strip, values, products);
  }
  const double points = ResidueOf(m, std::int64_t{2} * half * cut.length);
  Interpolate(m, prime, products, ProductOf(m, InverseOf(m, points), twice ? 2 : 1));
}

/// The integer with mixed-radix digits v[i * stride], v[0] + p0 (v[1] + p1 (v[2] + ...)), as two's
/// complement of so many limbs.
void FromMixedRadix(const double* v, std::size_t stride, int primes, mp_limb_t* limbs, int size)
{
  const auto digit = [&](int i) { return static_cast<std::int64_t>(v[stride * i]); };
  const auto add = [&](std::int64_t x) {
    if (x < 0) {
      mpn_sub_1(limbs, limbs, size, static_cast<mp_limb_t>(-x));
    } else {
      mpn_add_1(limbs, limbs, size, static_cast<mp_limb_t>(x));
    }
  };
  std::fill_n(limbs, size, 0);
  add(digit(primes - 1));
  for (int i = primes - 2; i >= 0; --i) {
    mpn_mul_1(limbs, limbs, size, static_cast<mp_limb_t>(ModulusOf(i).p));
    add(digit(i));
  }
}

/// Adds x 2^place, in two's complement with room for a bit more, to a row; what is below 1 goes.
void AddAt(mp_limb_t* row, int rowSize, mp_limb_t* x, int size, long place)
{
  const bool isNegative = x[size - 1] >> (kLimbBits - 1) != 0;
  if (isNegative) mpn_neg(x, x, size);
  const long whole = place >= 0 ? place / kLimbBits : -((-place + kLimbBits - 1) / kLimbBits);
  const int part = static_cast<int>(place - whole * kLimbBits);
  x[size] = part == 0 ? 0 : mpn_lshift(x, x, size, part);
  const auto drop = static_cast<int>(std::max(0L, std::min<long>(-whole, size + 1)));
  const auto begin = static_cast<int>(std::max(0L, whole));
  int count = size + 1 - drop;
  while (count > 0 && x[drop + count - 1] == 0) --count;
  if (count == 0) return;
  (isNegative ? mpn_sub : mpn_add)(row + begin, row + begin, rowSize - begin, x + drop, count);
}

void Multiplication::AddToSums(int n, long firstPlace, long slope)
{
  const auto stride = static_cast<std::size_t>(groups) * GroupSize();
  const auto count = static_cast<long>(GroupSize());
  const int size = (kModulusBits * cut.primes + kLimbBits - 1) / kLimbBits;
  std::vector<mp_limb_t> limbs(size + 1);
  for (int group = 0; group < groups; ++group) {
    if (poll) poll();
    // Garner's algorithm: residue i becomes digit i of a mixed radix.
    for (int i = 1; i < cut.primes; ++i) {
      const Modulus& m = ModulusOf(i);
      for (int j = 0; j < i; ++j) {
        const double inverse =
            InverseOf(m, ResidueOf(m, static_cast<std::int64_t>(ModulusOf(j).p)));
        kernels.subtractAndScale(m, ResiduesOf(i, group), ResiduesOf(j, group), inverse, count);
      }
    }
    const int begin = group * kLanes, lanes = std::min(kLanes, sums.count - begin);
    for (int lane = 0; lane < lanes; ++lane) {
      mp_limb_t* const row = sums.limbs + static_cast<std::size_t>(LongSum::Size(n)) *
                                              static_cast<std::size_t>(begin + lane);
      for (int d = 0; d < cut.digits; ++d) {
        const long place = firstPlace - slope * (begin + lane) + long{cut.digitBits} * d;
        if (place + long{kModulusBits} * cut.primes <= 0) continue;
        FromMixedRadix(ResiduesOf(0, group) + static_cast<std::size_t>(d) * kLanes + lane, stride,
                       cut.primes, limbs.data(), size);
        AddAt(row, LongSum::Size(n), limbs.data(), size, place);
      }
    }
  }
}

}  // namespace

void AddBlockProducts(int n, std::span<const BlockPair> pairs, int half, bool twice, SumBlock sums,
                      const std::function<void()>& poll)
{
  // The limb behind the last one of a term.
  const long unit = long{kLimbBits} * (n - 1);
  std::vector<BlockPair> kept;
  std::vector<Drops> drops;
  std::vector<std::array<std::vector<long>, 2>> lengths;
  long steepest = 0;
  for (const BlockPair& pair : pairs) {
    lengths.push_back({BitLengths(pair.x), BitLengths(pair.y)});
    steepest = std::max(steepest, SlopeOf(lengths.back()[1]));
  }
  long least = std::numeric_limits<long>::max();
  for (const long slope : {steepest, steepest + 1, 0L}) {
    std::vector<BlockPair> found;
    std::vector<Drops> foundDrops;
    long most = 0, total = std::numeric_limits<long>::max();
    for (std::size_t i = 0; i < pairs.size(); ++i) {
      const auto drop = DropsOf(lengths[i][0], lengths[i][1], half, slope, unit);
      if (!drop) continue;
      found.push_back(pairs[i]);
      foundDrops.push_back(*drop);
      total = std::min(total, drop->xDrop + drop->yDrop);
    }
    for (Drops& drop : foundDrops) {
      // One unit for the products of all pairs.
      const long excess = drop.xDrop + drop.yDrop - total;
      drop.xDrop -= excess;
      drop.xBits += excess;
      most = std::max(most, drop.xBits + drop.yBits);
    }
    if (most >= least) continue;
    least = most;
    kept = found;
    drops = foundDrops;
  }
  if (kept.empty()) return;
  long xBits = 0, yBits = 0;
  for (const Drops& drop : drops) {
    xBits = std::max(xBits, drop.xBits);
    yBits = std::max(yBits, drop.yBits);
  }
  const int products = half * static_cast<int>(kept.size());
  const int sumBits = BitWidth(twice ? 2 * products : products);
  const Cut cut = BestCut(xBits, yBits, sumBits);
  std::vector<std::array<Words, 2>> factors;
  for (std::size_t i = 0; i < kept.size(); ++i) {
    const auto& [slope, xDrop, yDrop, xLength, yLength] = drops[i];
    factors.push_back({WordsOf(kept[i].x, xLength, xDrop, slope, cut),
                       WordsOf(kept[i].y, yLength, yDrop, slope, cut)});
  }
  Multiplication multiplication(half, cut, sums, poll);
  for (int prime = 0; prime < cut.primes; ++prime)
    multiplication.FindResidues(prime, factors, twice);
  const long slope = drops.front().slope;
  const long place = drops.front().xDrop + drops.front().yDrop - slope * (half + sums.first);
  multiplication.AddToSums(n, place - LongSum::UnitBits(n), slope);
}

}  // namespace varno::solve
