#include <iostream>

#include "varno/solver/driver.h"
#include "varno/sys/memory.h"
#include "varno/sys/stack_guard.h"

int main(int argc, char** argv)
{
  std::ios::sync_with_stdio(false);
  varno::GuardStack();
  varno::InstallMemoryLimits();
  return varno::RunProgram(argc, argv);
}
