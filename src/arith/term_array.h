#pragma once

#include <cstddef>
#include <memory>

#include <gmp.h>

namespace arith {

/// The numbers 0..termCount at the precision in force when the array is made, first 0; or none.
///
/// All digits lie in one block behind one another: the integration walks many such arrays once per
/// step, and numbers allocated one by one would make it wait for memory. That is why the numbers
/// are laid out here instead of by mpf_init; they must not be cleared or given another precision.
class TermArray {
 public:
  TermArray() = default;
  /// A negative count counts as 0. Throws std::bad_alloc when there is no room.
  explicit TermArray(int termCount);

  /// The bytes of memory that an array takes at the precision in force.
  static std::size_t BytesFor(int termCount);

  std::size_t Size() const { return size; }
  bool IsEmpty() const { return numbers == nullptr; }
  mpf_t& operator[](int k) { return numbers[k]; }
  const mpf_t& operator[](int k) const { return numbers[k]; }
  /// The numbers one behind the other; null when there are none.
  mpf_srcptr Data() const { return numbers != nullptr ? numbers[0] : nullptr; }

 private:
  std::size_t size = 0;
  std::unique_ptr<mpf_t[]> numbers;
  std::unique_ptr<mp_limb_t[]> limbs;
};

}  // namespace arith
