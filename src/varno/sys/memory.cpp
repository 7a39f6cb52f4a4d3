#include "varno/sys/memory.h"

#include <cstdlib>
#include <fstream>
#include <limits>
#include <new>
#include <string>
#include <unistd.h>

#include <gmp.h>

#include "varno/sys/messages.h"

namespace varno {

namespace {

/// What a number takes besides its limbs: its struct, and what the allocator adds to a block.
constexpr std::size_t kNumberOverhead = sizeof(mpf_t) + 16;

std::size_t memoryLimit = std::numeric_limits<std::size_t>::max();
std::size_t numberBytes = 0;

/// Bytes that the system can give without swapping; all physical memory where it does not tell.
std::size_t AvailableMemory()
{
  std::ifstream memoryInfo("/proc/meminfo");
  std::string key;
  for (std::size_t kibibytes = 0; memoryInfo >> key >> kibibytes; memoryInfo.ignore(64, '\n')) {
    if (key == "MemAvailable:") return kibibytes * 1024;
  }
  return static_cast<std::size_t>(sysconf(_SC_PHYS_PAGES)) *
         static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

void Account(std::size_t bytes)
{
  if (bytes > memoryLimit - numberBytes) FailOutOfMemory();
  numberBytes += bytes;
}

void* AllocateNumber(std::size_t bytes)
{
  Account(bytes + kNumberOverhead);
  void* block = std::malloc(bytes);
  if (block == nullptr) FailOutOfMemory();
  return block;
}

void FreeNumber(void* block, std::size_t bytes)
{
  const std::size_t accounted = bytes + kNumberOverhead;
  // Numbers older than the account (the record's) were never added to it.
  numberBytes -= accounted < numberBytes ? accounted : numberBytes;
  std::free(block);
}

void* ReallocateNumber(void* block, std::size_t oldBytes, std::size_t newBytes)
{
  if (newBytes > oldBytes) {
    Account(newBytes - oldBytes);
  } else {
    numberBytes -= oldBytes - newBytes < numberBytes ? oldBytes - newBytes : numberBytes;
  }
  void* moved = std::realloc(block, newBytes);
  if (moved == nullptr) FailOutOfMemory();
  return moved;
}

}  // namespace

void InstallMemoryLimits()
{
  // The rest is for what is not accounted, nodes and names, and for other processes.
  InstallMemoryLimits(AvailableMemory() / 3 * 2);
}

void InstallMemoryLimits(std::size_t limit)
{
  memoryLimit = limit;
  std::set_new_handler(FailOutOfMemory);
  mp_set_memory_functions(AllocateNumber, ReallocateNumber, FreeNumber);
}

void RequireMemory(std::size_t bytes)
{
  if (bytes > memoryLimit) FailOutOfMemory();
}

void FailOutOfMemory()
{
  Fail("Out of memory");
}

}  // namespace varno
