#pragma once

#include <cstdint>

namespace varno::solve {

/// A stretch of a source text: bytes begin..end-1 of the text with the number `source` in Sources.
struct Place {
  std::uint32_t source = 0;
  std::uint32_t begin = 0;
  std::uint32_t end = 0;

  bool operator==(const Place&) const = default;
};

/// From the first place to the last one of the same text.
constexpr Place Cover(Place first, Place last)
{
  return {first.source, first.begin, last.end};
}

/// The empty place where another one ends.
constexpr Place After(Place place)
{
  return {place.source, place.end, place.end};
}

}  // namespace varno::solve
