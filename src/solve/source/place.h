#pragma once

#include <cstdint>

namespace varno::solve {

/// A stretch of a source text: bytes begin..end-1 of the text with the number `source` in Sources.
struct Place {
  std::uint32_t source = 0;
  std::uint32_t begin = 0;
  std::uint32_t end = 0;
};

}  // namespace varno::solve
