#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "solve/rows/text_digest.h"

namespace varno::solve {

/// A text that is made again differs from what it was.
struct TextChanged {};

/// Leaves out the beginning of a text that comes in pieces: what was written before.
class TextSkip {
 public:
  explicit TextSkip(const TextDigest& known = {}) : known(known) {}

  /// The part of the next piece that is new. Throws TextChanged where the text does not begin as it
  /// did.
  std::string_view Rest(std::string_view piece)
  {
    if (IsThrough()) return piece;
    const auto left = static_cast<std::size_t>(known.Bytes() - seen.Bytes());
    const std::string_view old = piece.substr(0, std::min(left, piece.size()));
    seen.Add(old);
    if (IsThrough() && seen != known) throw TextChanged();
    return piece.substr(old.size());
  }
  /// Whether all that was written before has come again.
  bool IsThrough() const { return seen.Bytes() == known.Bytes(); }

 private:
  TextDigest known, seen;
};

}  // namespace varno::solve
