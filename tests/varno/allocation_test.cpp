// Once under way, the integration takes no memory from the heap, neither through operator new nor
// through GMP.

#include <cstddef>
#include <cstdlib>
#include <iostream>
#include <new>
#include <streambuf>
#include <string>

#include <gmp.h>
#include <gtest/gtest.h>

#include "tests/varno/support/parsed_input.h"
#include "tests/varno/support/scoped_global.h"
#include "varno/core/global_data.h"
#include "varno/expr/initialization.h"
#include "varno/solver/integration.h"

namespace {

long allocations = 0;

void* Allocate(std::size_t bytes)
{
  ++allocations;
  void* const block = std::malloc(bytes);
  if (block == nullptr) std::abort();
  return block;
}

void* Reallocate(void* block, std::size_t, std::size_t bytes)
{
  ++allocations;
  void* const moved = std::realloc(block, bytes);
  if (moved == nullptr) std::abort();
  return moved;
}

void Free(void* block, std::size_t)
{
  std::free(block);
}

}  // namespace

void* operator new(std::size_t bytes)
{
  return Allocate(bytes);
}

void operator delete(void* block) noexcept
{
  std::free(block);
}

void operator delete(void* block, std::size_t) noexcept
{
  std::free(block);
}

namespace varno {
namespace {

/// Takes everything and keeps nothing.
class NullBuffer : public std::streambuf {
  int overflow(int character) override { return character; }
  std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
};

struct System {
  const char* name;
  const char* equations;
};

void PrintTo(const System& system, std::ostream* out)
{
  *out << system.name;
}

class AllocationTest : public testing::TestWithParam<System> {
 protected:
  AllocationTest() : output(std::cout.rdbuf(&nowhere)), commentary(std::clog.rdbuf(&nowhere))
  {
    mp_set_memory_functions(Allocate, Reallocate, Free);
    mpf_set_ui(global->_TMAX, 1000);
    global->_STIFFEVERYSTEP = true;
  }

  ~AllocationTest() override
  {
    std::cout.rdbuf(output);
    std::clog.rdbuf(commentary);
  }

  /// What the passes allocate that come after the first ones.
  static long AllocationsUnderWay()
  {
    ParsedInput(GetParam().equations);
    InitializeEquations();
    Integration integration;
    integration.Begin();
    for (int pass = 0; pass < 20; ++pass) EXPECT_TRUE(integration.Pass());
    const long before = allocations;
    for (int pass = 0; pass < 200; ++pass) EXPECT_TRUE(integration.Pass());
    return allocations - before;
  }

  const ScopedGlobal global;

 private:
  NullBuffer nowhere;
  std::streambuf* const output;
  std::streambuf* const commentary;
};

constexpr System kSystems[] = {
    {"Products", "x' = 10*(y - x) & 1; y' = x*(28 - z) - y & 1; z' = x*y - 8/3*z & 1;"},
    {"Quotient", "x' = y & 1; y' = -x/(1 + x*x) & 0;"},
    {"Functions", "x' = y & 1; y' = -sin(x) - 0.1*y*exp(cos(x)) & 0;"},
    {"AlgebraicEquation", "x' = y & 1; y' = -x & 0; energy = x*x + y*y; clock' = 1; a = t*t;"},
    {"LongNames",
     "a_name_longer_than_a_short_string' = another_long_name_of_a_variable & 1;"
     "another_long_name_of_a_variable' = -a_name_longer_than_a_short_string;"},
};

INSTANTIATE_TEST_SUITE_P(Systems, AllocationTest, testing::ValuesIn(kSystems),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_P(AllocationTest, TheIntegrationUnderWayTakesNone)
{
  EXPECT_EQ(AllocationsUnderWay(), 0);
}

TEST_P(AllocationTest, NeitherDoesAWaitForTheSteadyState)
{
  global->_STEADYSTOP = 1000;
  EXPECT_EQ(AllocationsUnderWay(), 0);
}

TEST_P(AllocationTest, NeitherDoesItAtAHigherPrecision)
{
  mpf_set_default_prec(512);
  global->SetTermCount(60);
  EXPECT_EQ(AllocationsUnderWay(), 0);
}

TEST(AllocationCount, SeesBothKinds)
{
  const long before = allocations;
  delete new int(1);
  EXPECT_EQ(allocations, before + 1);
  mp_set_memory_functions(Allocate, Reallocate, Free);
  mpf_t number;
  mpf_init(number);
  mpf_clear(number);
  EXPECT_EQ(allocations, before + 2);
}

}  // namespace
}  // namespace varno
