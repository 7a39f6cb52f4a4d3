#include <iostream>

#include "solver/driver.h"
#include "sys/memory.h"
#include "sys/stack_guard.h"

int main(int argc, char** argv)
{
  std::ios::sync_with_stdio(false);
  varno::GuardStack();
  varno::InstallMemoryLimits();
  return varno::RunProgram(argc, argv);
}
