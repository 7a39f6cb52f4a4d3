#include "solve/command/memory.h"

#include <cstddef>
#include <cstdlib>
#include <new>

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

}  // namespace varno::solve
