#include "solve/fixed/large_pages.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <new>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

namespace varno::solve {
namespace {

constexpr std::size_t kPage = std::size_t{1} << 21;

/// Whether the system has been asked for large pages where this stands: by what it says of the
/// memory of a process.
bool HasLargePages(const void* block)
{
  const auto place = reinterpret_cast<std::uintptr_t>(block);
  std::ifstream maps("/proc/self/smaps");
  bool isThere = false;
  for (std::string line; std::getline(maps, line);) {
    std::uintptr_t begin = 0, end = 0;
    char dash = 0;
    std::istringstream words(line);
    if (words >> std::hex >> begin >> dash >> end && dash == '-')
      isThere = begin <= place && place < end;
    if (isThere && line.starts_with("VmFlags:")) return line.find(" hg") != std::string::npos;
  }
  return false;
}

TEST(LargePages, AreAskedForWhereBlocksAreLarge)
{
  if (!std::filesystem::exists("/sys/kernel/mm/transparent_hugepage"))
    GTEST_SKIP() << "the system has none";
  void* const block = LargePages()->allocate(3 * kPage, 64);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % kPage, 0);
  EXPECT_TRUE(HasLargePages(block));
  LargePages()->deallocate(block, 3 * kPage, 64);
}

TEST(LargePages, HoldWhatIsWritten)
{
  for (const std::size_t bytes : {std::size_t{1}, kPage - 1, kPage, kPage + 1, 5 * kPage / 2}) {
    auto* const block = static_cast<unsigned char*>(LargePages()->allocate(bytes, 64));
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 64, 0) << bytes;
    std::memset(block, 0xa5, bytes);
    EXPECT_EQ(block[bytes - 1], 0xa5) << bytes;
    LargePages()->deallocate(block, bytes, 64);
  }
}

// Whole pages for so much are more than an address can tell.
TEST(LargePages, ThrowWhereThereIsNoMemory)
{
  constexpr std::size_t kAll = std::numeric_limits<std::size_t>::max();
  for (const std::size_t bytes : {kAll, kAll - kPage / 2})
    EXPECT_THROW((void)LargePages()->allocate(bytes, 64), std::bad_alloc) << bytes;
}

TEST(LargePages, AreOneMemory)
{
  EXPECT_TRUE(LargePages()->is_equal(*LargePages()));
  EXPECT_FALSE(LargePages()->is_equal(*std::pmr::new_delete_resource()));
}

}  // namespace
}  // namespace varno::solve
