#pragma once

// The members of BlockSeries, for block_series.h only.

namespace varno::solve {

/// A term is set in as many places of a tile as it has digits. While the tiles that are set in stay
/// in a processor's own cache, that is cheap; in larger systems it takes longer than products do.
inline constexpr std::size_t kMostBytesOfTiles = 400'000;
/// All tiles of the factors of products and squares in a step: where these take more, they come
/// from memory for each sum, and RowsAhead is faster.
inline constexpr std::size_t kMostBytesOfAllTiles = 300'000;

template <class Arithmetic>
void BlockSeries<Arithmetic>::PrepareForProducts(int usualOrder)
{
  if constexpr (requires { arithmetic.PrepareForProducts(terms[0]); }) {
    const auto [inProducts, elsewhere] = LinesMultiplied(tape);
    const auto tiles = static_cast<std::size_t>(usualOrder) / DigitTiles::kTerms + 1;
    const auto bytesOf = [&](const std::vector<bool>& lines) {
      return static_cast<std::size_t>(std::ranges::count(lines, true)) * arithmetic.BytesOfTile();
    };
    const bool areAhead = bytesOf(inProducts) * tiles > kMostBytesOfAllTiles;
    std::vector<bool> inTiles = elsewhere;
    for (LineId id = 0; id < terms.size(); ++id) {
      if (inProducts[id] && areAhead) arithmetic.PrepareForRowsAhead(terms[id]);
      if (inProducts[id] && !areAhead) inTiles[id] = true;
    }
    if (bytesOf(inTiles) + weightedTerms.size() * arithmetic.BytesOfTile() > kMostBytesOfTiles)
      return;
    for (LineId id = 0; id < terms.size(); ++id) {
      if (inTiles[id]) arithmetic.PrepareForProducts(terms[id]);
    }
    for (Terms& row : weightedTerms) arithmetic.PrepareForProducts(row);
  }
}

/// Where there are waves, lines stand in levels, in each of which neighbours are side by side.
template <class Arithmetic>
LineSchedule BlockSeries<Arithmetic>::ScheduleFor(int usualOrder) const
{
  if (team != nullptr) return LineSchedule(tape, bits, usualOrder, team->MemberCount());
  if (BytesInUse(usualOrder) < kBytesForWaves) return LineSchedule(tape);
  return LineSchedule(tape, bits, usualOrder, 1);
}

template <class Arithmetic>
void BlockSeries<Arithmetic>::PrepareWaves(int usualOrder, const Poll& poll)
{
  // Tiles may hold no more terms of a factor than a sum takes.
  const auto keepsTiles = [](const Terms& row) {
    if constexpr (requires { row.tiles; }) return row.tiles != nullptr;
    return false;
  };
  if (BytesInUse(usualOrder) < kBytesForWaves || std::ranges::any_of(terms, keepsTiles) ||
      std::ranges::any_of(weightedTerms, keepsTiles))
    return;
  const double bytesOfLine = Arithmetic::BytesInUse(bits, usualOrder);
  waves.emplace(tape, schedule, static_cast<std::size_t>(kBytesOfGroup / bytesOfLine));
  if (!waves->IsWorthwhile()) {
    waves.reset();
    return;
  }
  for (int member = 0; waves->HasRest() && member < schedule.MemberCount(); ++member)
    rests.push_back(
        std::make_unique<Member>(Operands(), waves->RestLines(member), bits, PollOf(member, poll)));
}

template <class Arithmetic>
void BlockSeries<Arithmetic>::Reserve(int count)
{
  if (count <= reserved) return;
  // By a half at least: what was there before stays as long as the series.
  reserved = std::max(count, reserved + reserved / 2);
  for (Terms& row : terms) arithmetic.Reserve(row, reserved);
  for (Terms& row : weightedTerms) arithmetic.Reserve(row, reserved);
  Operands().Rearrange();
  for (std::pmr::vector<double>& row : logs) row.resize(static_cast<std::size_t>(reserved));
}

template <class Arithmetic>
void BlockSeries<Arithmetic>::ConvertConstants()
{
  for (ConstantId id = 0; id < tape.constants.size(); ++id) {
    constants.push_back(arithmetic.ToFactor(arithmetic.FromNumber(precise.Constant(id))));
    exponentsPlusOne.push_back(
        arithmetic.ToFactor(arithmetic.FromNumber(precise.ExponentPlusOne(id))));
  }
}

// ---------------------------------------------------------------------------------------------
// Term 0

template <class Arithmetic>
void BlockSeries<Arithmetic>::StartLines()
{
  isStarted = true;
  Reserve(1);
  const auto begin = [this](BlockRecurrences<Arithmetic>& recurrences) {
    recurrences.Begin(scaleExponent, isBackwards);
    if constexpr (Arithmetic::kDropsDigits) recurrences.DropBits(rise, coarsest);
  };
  std::atomic<bool> fits = true;
  Together(1, [this, &begin, &fits](int number, std::size_t) {
    Member& member = *members[static_cast<std::size_t>(number)];
    begin(member.recurrences);
    if (!rests.empty()) begin(rests[static_cast<std::size_t>(number)]->recurrences);
    for (const LineId id : schedule.Lines(number)) {
      if (!StartLine(id)) fits = false;
      if (!leftOut[id]) StartDivisor(id, member.reciprocal);
    }
  });
  if (!fits) Refine();
}

/// log2 |x| as of other terms.
inline double Log2OfFirst(mpfr_srcptr x)
{
  if (mpfr_regular_p(x) == 0) return Log2Size(x);
  const auto* const limbs = static_cast<const mp_limb_t*>(mpfr_custom_get_significand(x));
  const std::uint64_t first = limbs[(mpfr_get_prec(x) - 1) / GMP_NUMB_BITS];
  constexpr int kDoubleBits = 53;
  return FastLog2(static_cast<double>(static_cast<std::int64_t>(first >> (64 - kDoubleBits))),
                  mpfr_get_exp(x) - kDoubleBits);
}

/// Whether the number fits the arithmetic.
template <class Arithmetic>
bool BlockSeries<Arithmetic>::StartLine(LineId id)
{
  if constexpr (Arithmetic::kDropsDigits) {
    const double most = kMostLostBits - kSparedBits - Arithmetic::kErrorBits;
    coarsest[id] = largest[id] == kUnknown
                       ? -kInfinity
                       : static_cast<double>(largest[id] - 1) + most - static_cast<double>(bits);
  }
  const Value first = arithmetic.FromNumber(precise.Number(id, 0));
  const long least = largest[id] == kUnknown ? kUnknown : arithmetic.ExponentFor(largest[id]);
  arithmetic.Reset(terms[id], least);
  if constexpr (kIsNarrow) {
    arithmetic.Start(terms[id], first);
  } else {
    arithmetic.Store(terms[id], 0, first);
  }
  logs[id][0] = sizes[id] = Log2OfFirst(precise.Number(id, 0));
  if (weightedRows[id] != kNone) {
    arithmetic.Reset(Weighted(id), least);
    arithmetic.Store(Weighted(id), 0, Value());
  }
  if constexpr (kIsRelaxed<Arithmetic>) {
    for (auto& product : convolutions[id]) product.Reset();
  }
  return std::abs(first.exponent) <= Arithmetic::kMostExponent;
}

/// The reciprocal of term 0 of a divisor, of twice the root, of a base.
template <class Arithmetic>
void BlockSeries<Arithmetic>::StartDivisor(LineId id, mpfr_ptr reciprocal)
{
  const Line& line = tape.lines[id];
  LineId divisor = kNone;
  switch (line.kind) {
    case LineKind::kQuotient:
    case LineKind::kIntegralOfQuotient:
      divisor = line.b;
      break;
    case LineKind::kSquareRoot:
      divisor = id;
      break;
    case LineKind::kPower:
      divisor = line.a;
      break;
    case LineKind::kAngle:
      divisor = line.c;
      break;
    default:
      return;
  }
  // It has more bits than the number: its conversion rounds at once to what a factor holds.
  mpfr_ui_div(reciprocal, 1, precise.Number(divisor, 0), MPFR_RNDN);
  if (line.kind == LineKind::kSquareRoot) mpfr_div_2ui(reciprocal, reciprocal, 1, MPFR_RNDN);
  divisors[id] = arithmetic.ToFactor(arithmetic.FromNumber(reciprocal));
}

// ---------------------------------------------------------------------------------------------
// Term k > 0

template <class Arithmetic>
void BlockSeries<Arithmetic>::ComputeTerms(int first, int last)
{
  int k = first, unlogged = first;  // the first order without logs
  if constexpr (!kIsRelaxed<Arithmetic>) {
    // Lines are steady after an order or two, mostly, and again after a wave that was not finished.
    while (waves && k <= last) {
      const OrdersLeft left = AreSteady() ? MakeWaves(k, unlogged, last) : OrdersLeft{k, k};
      if (left.first > k) unlogged = left.first;
      if (left.first <= left.last) MakeOrders(left.first, left.last);
      k = left.last + 1;
    }
  }
  if (k <= last) MakeOrders(k, last);
  if (unlogged > last) return;
  Together(1, [&](int member, std::size_t) {
    for (const LineId id : schedule.Lines(member)) FindLogs(id, unlogged, last);
  });
}

/// Order after order of all lines.
template <class Arithmetic>
void BlockSeries<Arithmetic>::MakeOrders(int first, int last)
{
  const std::size_t phases = schedule.PhaseCount();
  const std::size_t rounds = phases * static_cast<std::size_t>(last - first + 1);
  Together(rounds, [&](int member, std::size_t round) {
    const std::size_t phase = round % phases;
    const int k = first + static_cast<int>(round / phases);
    members[static_cast<std::size_t>(member)]->recurrences.StoreTerms(
        schedule.Begin(member, phase), schedule.End(member, phase), k);
  });
}

/// Makes terms of steady lines by waves, up to one in which an exponent changes: what that has made
/// is to be made anew, order after order, as far as where it stopped. Finds their logs while they
/// are at hand, those of `unlogged` and later orders below `first`, too, unless the first wave
/// stops.
///
/// In a wave operands may have more terms than a line reads. That is nothing to the line as long as
/// exponents stay.
template <class Arithmetic>
auto BlockSeries<Arithmetic>::MakeWaves(int first, int unlogged, int last) -> OrdersLeft
{
  const std::size_t phases = rests.empty() ? 1 : 2;
  const int orders = last - first + 1;
  const int count = (orders + LineWaves::kOrders - 1) / LineWaves::kOrders;
  std::atomic<int> unfinished = last + 1;        // the first order of that wave
  std::vector<int> stops(members.size(), last);  // by member: where it stopped in that
  Together(phases * static_cast<std::size_t>(count), [&](int number, std::size_t round) {
    const int wave = static_cast<int>(round / phases);
    const int begin = first + orders * wave / count, end = first + orders * (wave + 1) / count;
    const auto member = static_cast<std::size_t>(number);
    const auto make = [&](Member& with, std::span<const LineId> lines,
                          std::span<const LineWaves::Stretch> stretches) {
      for (const auto& [firstLine, lastLine, inWave] : stretches) {
        if (unfinished <= begin) return;
        const int k = begin + inWave;
        if (k >= end) continue;
        if (!with.recurrences.StoreSteadyTerms(firstLine, lastLine, k)) {
          unfinished = begin;
          stops[member] = k;
        } else if (k == end - 1) {
          for (const LineId id : lines.subspan(firstLine, lastLine - firstLine))
            FindLogs(id, wave == 0 ? unlogged : begin, k);
        }
      }
    };
    if (round % phases == 0) {
      make(*members[member], schedule.Lines(number), waves->Stretches(number));
    } else {
      make(*rests[member], waves->RestLines(number), waves->Rest(number));
    }
  });
  const int left = unfinished;
  if (left > last) return {last + 1, last};
  ForgetSizesFrom(left > first ? left : unlogged);
  return {left, std::ranges::min(stops)};
}

/// Has `sizes` be those of the terms below this order.
template <class Arithmetic>
void BlockSeries<Arithmetic>::ForgetSizesFrom(int behind)
{
  for (LineId id = 0; id < tape.lines.size(); ++id)
    sizes[id] = std::ranges::max(std::span(logs[id]).first(static_cast<std::size_t>(behind)));
}

/// Whether nothing but exponents can change in what further terms find of their operands.
template <class Arithmetic>
bool BlockSeries<Arithmetic>::AreSteady() const
{
  const auto isSteady = [](const Terms& row) { return !row.started || row.inexact; };
  for (LineId id = 0; id < tape.lines.size(); ++id) {
    const LineKind kind = tape.lines[id].kind;
    if (leftOut[id] || kind == LineKind::kConstant || kind == LineKind::kTime) continue;
    const std::uint32_t weighted = weightedRows[id];
    if (!isSteady(terms[id]) || (weighted != kNone && !isSteady(weightedTerms[weighted])))
      return false;
  }
  return true;
}

/// The logs of the terms first..last, and the largest of all.
template <class Arithmetic>
void BlockSeries<Arithmetic>::FindLogs(LineId id, int first, int last)
{
  const auto begin = static_cast<std::size_t>(first), end = static_cast<std::size_t>(last) + 1;
  const std::span found = std::span(logs[id]).subspan(begin, end - begin);
  if constexpr (requires { arithmetic.FindLogs(terms[id], first, found); }) {
    sizes[id] = std::max(sizes[id], arithmetic.FindLogs(terms[id], first, found));
  } else {
    for (double& log : found) {
      log = arithmetic.Log2(terms[id], first++);
      sizes[id] = std::max(sizes[id], log);
    }
  }
}

// ---------------------------------------------------------------------------------------------
// What others ask

template <class Arithmetic>
void BlockSeries<Arithmetic>::SumStates(mpfr_srcptr offset, std::span<Real> results,
                                        std::span<unsigned char> areRounded) const
{
  if (isRefined) {
    Series::SumStates(offset, results, areRounded);
    return;
  }
  ForEachState([&](std::size_t state, BlockSums<Arithmetic>& sums) {
    mpfr_clear_inexflag();
    sums.Sum(ForSums(static_cast<LineId>(state)), offset, results[state]);
    areRounded[state] = mpfr_inexflag_p() != 0 ? 1 : 0;
  });
}

template <class Arithmetic>
void BlockSeries<Arithmetic>::SumStatesWithDerivatives(mpfr_srcptr offset, std::span<Real> values,
                                                       std::span<Real> derivatives) const
{
  if (isRefined) {
    Series::SumStatesWithDerivatives(offset, values, derivatives);
    return;
  }
  ForEachState([&](std::size_t state, BlockSums<Arithmetic>& sums) {
    sums.SumWithDerivative(ForSums(static_cast<LineId>(state)), offset, values[state],
                           derivatives[state]);
  });
}

template <class Arithmetic>
std::unique_ptr<StateTerms> BlockSeries<Arithmetic>::CopyOfStates() const
{
  if constexpr (requires { CopyOf(terms[0], order); }) {
    if (isRefined || !isStarted) return nullptr;
    std::vector<typename BlockStates<Arithmetic>::State> states;
    states.reserve(tape.rightHandSides.size());
    for (LineId id = 0; id < tape.rightHandSides.size(); ++id) {
      const std::span<const double> ofTerms = Logs(id);
      states.push_back(
          {CopyOf(terms[id], order + 1), {ofTerms.begin(), ofTerms.end()}, Real(bits)});
      mpfr_set(states.back().first, precise.Number(id, 0), MPFR_RNDN);
    }
    return std::make_unique<BlockStates<Arithmetic>>(std::move(states), bits);
  }
  return nullptr;
}

template <class Arithmetic>
double BlockSeries<Arithmetic>::MissingBits(double log2, const Exactness& asked)
{
  if (isRefined) return 0;
  const double missing = std::isfinite(log2) ? FindLargest(log2, asked) : kInfinity;
  // What was found with a scale too far off says nothing about the next terms.
  if (missing > 0) std::ranges::fill(largest, kUnknown);
  return missing;
}

/// The largest of logs[i] + begin + i slope and of what is known to be met; no log is above `most`.
inline double LargestAt(std::span<const double> logs, double begin, double slope, double most,
                        double known)
{
  for (const double log : logs) {
    if (slope <= 0 && most + begin <= known) break;
    known = std::max(known, log + begin);
    begin += slope;
  }
  return known;
}

/// Finds the largest terms over a step, and how many bits are missing beside these.
template <class Arithmetic>
double BlockSeries<Arithmetic>::FindLargest(double log2, const Exactness& asked)
{
  double missing = 0;
  for (LineId id = 0; id < tape.lines.size(); ++id) {
    if (!terms[id].started) {
      largest[id] = kUnknown;
      continue;
    }
    if (std::abs(terms[id].exponent) > Arithmetic::kMostExponent) return kInfinity;
    const std::span sizesOfTerms = std::span(logs[id]).first(static_cast<std::size_t>(order) + 1);
    const auto half = static_cast<std::size_t>(order / 2) + 1;
    const double early = LargestAt(sizesOfTerms.first(half), 0, log2, sizes[id], -kInfinity);
    const double size = LargestAt(sizesOfTerms.subspan(half), static_cast<double>(half) * log2,
                                  log2, sizes[id], early);
    // Terms that rise are no measure for errors.
    if (size > early + kMostRiseBits) return kInfinity;
    largest[id] = static_cast<long>(std::floor(size)) + 1;
    const double least = asked.leastSizes.empty() ? -kInfinity : asked.leastSizes[id];
    const double unit = std::max(size, least) - asked.bits;
    const double error = OwnResolution(id) +
                         std::max(0.0, BlockSums<Arithmetic>::LastTerm(Logs(id)) * (log2 + rise));
    // Of a line of which little is left MPFR rounds each term less than this one all.
    missing = std::max(
        {missing, error - unit - kMostLostBits, Resolution(id) - unit - mostCancelledBits});
  }
  return missing;
}

/// What errors of the operands make of the terms of a line, beside its own rounding.
template <class Arithmetic>
double BlockSeries<Arithmetic>::ResolutionOf(const Line& line, LineId id) const
{
  const auto product = [this](LineId a, LineId b) {
    return std::max(resolutions[a] + sizes[b], sizes[a] + resolutions[b]);
  };
  switch (line.kind) {
    case LineKind::kConstant:
    case LineKind::kTime:
      return -kInfinity;
    case LineKind::kState:
      return resolutions[tape.rightHandSides[line.index]] + static_cast<double>(scaleExponent);
    case LineKind::kCombination: {
      double sum = -kInfinity;
      for (std::uint32_t i = 0; i < line.factorCount; ++i) {
        const std::uint32_t factor = line.firstFactor + i;
        sum = std::max(sum, precise.FactorLogs()[factor] + resolutions[tape.factors[factor].line]);
      }
      return sum;
    }
    case LineKind::kProduct:
    case LineKind::kIntegralOfProduct:
      return product(line.a, line.b);
    case LineKind::kSquare:
      return product(line.a, line.a) + 1;
    case LineKind::kQuotient:
    case LineKind::kIntegralOfQuotient:
      return std::max(resolutions[line.a], product(id, line.b)) - Log2(line.b, 0);
    case LineKind::kSquareRoot:
      return resolutions[line.a] - 1 - Log2(id, 0);
    case LineKind::kPower:
      return product(id, line.a) - Log2(line.a, 0) +
             std::max(0.0, precise.Log2Constant(line.constant));
    case LineKind::kAngle:
      return std::max({product(line.a, line.b), product(id, line.c)}) - Log2(line.c, 0);
  }
  return -kInfinity;
}

/// What rounding leaves open of a line itself.
template <class Arithmetic>
double BlockSeries<Arithmetic>::OwnResolution(LineId id) const
{
  if (!terms[id].started) return -kInfinity;
  double unit = arithmetic.UnitLog2(terms[id].exponent);
  if constexpr (Arithmetic::kDropsDigits) {
    const double spare = SpareDigits(terms[id], coarsest[id]);
    if (spare + order * rise / Arithmetic::kDigitBits >= 1) unit += Arithmetic::kDigitBits * spare;
  }
  return unit + Arithmetic::kErrorBits;
}

/// Errors go round: those of a derivative into its state, and from there into the next term.
template <class Arithmetic>
void BlockSeries<Arithmetic>::FindResolutions() const
{
  for (LineId id = 0; id < tape.lines.size(); ++id) resolutions[id] = OwnResolution(id);
  constexpr int kPasses = 2;
  for (int pass = 0; pass < kPasses; ++pass) {
    for (LineId id = 0; id < tape.lines.size(); ++id) {
      const double passed = leftOut[id] ? -kInfinity : ResolutionOf(tape.lines[id], id);
      resolutions[id] = std::max(OwnResolution(id), std::isnan(passed) ? -kInfinity : passed);
    }
  }
  resolvedOrder = order;
}

}  // namespace varno::solve
