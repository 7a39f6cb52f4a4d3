#pragma once

namespace varno::solve {

/// Makes a number that cannot be allocated a std::bad_alloc, as any other object; GMP and MPFR end
/// the process by themselves otherwise. Call it before the first number is made.
void ThrowWhereMemoryIsShort();

}  // namespace varno::solve
