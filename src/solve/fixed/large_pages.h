#pragma once

#include <memory_resource>

namespace varno::solve {

/// Memory of which blocks of 2 MiB and more are of large pages, where the system has these: the
/// terms of a large system stand on so many small ones that a processor looks up their places
/// again and again.
///
/// To be used by way of a resource that asks for large blocks. Throws std::bad_alloc.
std::pmr::memory_resource* LargePages();

}  // namespace varno::solve
