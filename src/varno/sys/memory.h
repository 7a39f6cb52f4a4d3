#pragma once

#include <cstddef>

namespace varno {

/// Makes every number and object that cannot be allocated end the run with "#(ERR) Out of memory"
/// and status 1. Numbers count as impossible once all of them together would take more than two
/// thirds of the memory that was available at the call: the kernel would grant them and kill the
/// process later.
/// Call it before the first number is made that the run is to account for.
void InstallMemoryLimits();
/// The same with a limit in bytes.
void InstallMemoryLimits(std::size_t limit);

/// Ends the run with "#(ERR) Out of memory" when one block of `bytes` is beyond all memory.
void RequireMemory(std::size_t bytes);

/// Writes "#(ERR) Out of memory" and ends the process with status 1.
[[noreturn]] void FailOutOfMemory();

}  // namespace varno
