#include "solve/command/memory.h"

#include <cstddef>
#include <cstdlib>
#include <new>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

#include <gmp.h>

namespace varno::solve {

namespace {

void* Checked(void* block)
{
  // It passes through functions of GMP and MPFR, which hold nothing but memory.
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

void* Allocate(std::size_t bytes)
{
  return Checked(std::malloc(bytes));
}

void* Reallocate(void* block, std::size_t, std::size_t bytes)
{
  return Checked(std::realloc(block, bytes));
}

void Free(void* block, std::size_t)
{
  std::free(block);
}

}  // namespace

void ThrowWhereMemoryIsShort()
{
  mp_set_memory_functions(Allocate, Reallocate, Free);
}

void GrowHeapsByLargePieces()
{
#if defined(__GLIBC__)
  constexpr int kMebibyte = 1 << 20;
  mallopt(M_TOP_PAD, kMebibyte);
  // Any setting ends the adaptation of these two: the largest values that it comes to.
  mallopt(M_MMAP_THRESHOLD, 32 * kMebibyte);
  mallopt(M_TRIM_THRESHOLD, 64 * kMebibyte);
#endif
}

}  // namespace varno::solve
