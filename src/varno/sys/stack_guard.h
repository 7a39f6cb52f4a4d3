#pragma once

#include <cstddef>
#include <cstdint>

namespace varno {

/// Lowest stack address that recursion over expressions may use; 0 before GuardStack().
extern std::uintptr_t stackFloor;

/// Gives the main thread a larger stack where the system allows it and sets `stackFloor` for it.
/// Call it once, from main.
void GuardStack();

/// Ends the run with "#(ERR) The stack is too small: ..." when less than `bytes` are left of it.
void RequireStack(std::size_t bytes);

/// Writes "#(ERR) Expressions are nested too deeply" and ends the process with status 1.
[[noreturn]] void FailNestedTooDeeply();

/// Ends the run with a message where deeper recursion would overflow the stack. Everything that
/// walks expression trees recursively calls it, since their depth is the user's.
inline void CheckStack()
{
  if (reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)) < stackFloor) {
    FailNestedTooDeeply();
  }
}

}  // namespace varno
