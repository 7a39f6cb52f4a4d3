#pragma once

namespace varno::solve {

/// Makes a number that cannot be allocated a std::bad_alloc, as any other object; GMP and MPFR end
/// the process by themselves otherwise. Call it before the first number is made.
void ThrowWhereMemoryIsShort();

/// Lets heaps grow by large pieces: those of threads ask the system for each page otherwise. Call
/// it before there are threads.
void GrowHeapsByLargePieces();

}  // namespace varno::solve
