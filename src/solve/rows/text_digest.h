#pragma once

#include <cstdint>
#include <string_view>

namespace varno::solve {

/// The length of a text that comes in pieces, and a number by which to know it again: FNV-1a with
/// 64 bits (Fowler, Noll, Vo).
class TextDigest {
 public:
  TextDigest() = default;
  TextDigest(std::int64_t bytes, std::uint64_t hash) : bytes(bytes), hash(hash) {}

  void Add(std::string_view text)
  {
    bytes += static_cast<std::int64_t>(text.size());
    for (const char character : text)
      hash = (hash ^ static_cast<unsigned char>(character)) * 0x100000001B3U;
  }
  std::int64_t Bytes() const { return bytes; }
  std::uint64_t Hash() const { return hash; }
  bool operator==(const TextDigest&) const = default;

 private:
  std::int64_t bytes = 0;
  std::uint64_t hash = 0xCBF29CE484222325U;
};

}  // namespace varno::solve
