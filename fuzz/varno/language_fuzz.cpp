// Reads any text as equations, converts them and computes the terms of one step.

#include <cstdint>
#include <cstdio>
#include <memory>

#include "fuzz/varno/bounded_run.h"
#include "varno/core/global_data.h"
#include "varno/expr/differential.h"
#include "varno/expr/initialization.h"
#include "varno/output/dumps.h"
#include "varno/output/result_table.h"
#include "varno/parser/parse.h"
#include "varno/parser/scanner.h"

namespace {

void Solve()
{
  if (!varno::ParseInput()) return;
  varno::InitializeEquations();
  varno::DumpTrees();
  varno::WriteHeader(std::cout);
  varno::WriteRow(std::cout, false);
  varno::DumpTerms(varno::Expr::Global->_T);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
  varno::PrepareRuns();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
  if (size == 0) return 0;  // no file for fmemopen
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> input(
      fmemopen(const_cast<std::uint8_t*>(data), size, "r"), std::fclose);
  varno::SetScannerInput(input.get());
  const varno::BoundedRun run;
  try {
    Solve();
  } catch (const varno::EndOfRun&) {
  }
  return 0;
}
