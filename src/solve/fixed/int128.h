#pragma once

#include <cstdint>

namespace varno::solve {

/// A compiler's own 128-bit integer; shifts to the right keep the sign.
__extension__ using Int128 = __int128;
__extension__ using UInt128 = unsigned __int128;

/// How many bits |x| takes: 0 for 0.
inline int BitLength(Int128 x)
{
  const UInt128 size = x < 0 ? -static_cast<UInt128>(x) : static_cast<UInt128>(x);
  const auto high = static_cast<std::uint64_t>(size >> 64);
  if (high != 0) return 128 - __builtin_clzll(high);
  const auto low = static_cast<std::uint64_t>(size);
  return low == 0 ? 0 : 64 - __builtin_clzll(low);
}

}  // namespace varno::solve
