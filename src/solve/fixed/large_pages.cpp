#include "solve/fixed/large_pages.h"

#include <cstddef>
#include <cstdlib>
#include <new>
#include <sys/mman.h>

namespace varno::solve {

namespace {

/// Of most processors: on others the system takes pages of its own sizes.
constexpr std::size_t kPage = std::size_t{1} << 21;

class LargePageMemory final : public std::pmr::memory_resource {
 private:
  void* do_allocate(std::size_t bytes, std::size_t alignment) override
  {
    if (bytes < kPage) return std::pmr::new_delete_resource()->allocate(bytes, alignment);
    const std::size_t whole = (bytes + kPage - 1) / kPage * kPage;
    void* const block = whole < bytes ? nullptr : std::aligned_alloc(kPage, whole);
    if (block == nullptr) throw std::bad_alloc();
    // Only a wish: with small pages it is the same memory, somewhat slower.
    madvise(block, whole, MADV_HUGEPAGE);
    return block;
  }

  void do_deallocate(void* block, std::size_t bytes, std::size_t alignment) override
  {
    if (bytes < kPage) {
      std::pmr::new_delete_resource()->deallocate(block, bytes, alignment);
    } else {
      std::free(block);
    }
  }

  bool do_is_equal(const std::pmr::memory_resource& other) const noexcept override
  {
    return this == &other;
  }
};

}  // namespace

std::pmr::memory_resource* LargePages()
{
  static LargePageMemory memory;
  return &memory;
}

}  // namespace varno::solve
