#include "varno/solver/driver.h"

#include <iostream>

#include "varno/config/command_line.h"
#include "varno/config/settings_file.h"
#include "varno/core/global_data.h"
#include "varno/expr/initialization.h"
#include "varno/output/dumps.h"
#include "varno/output/gnuplot_script.h"
#include "varno/output/result_table.h"
#include "varno/parser/parse.h"
#include "varno/solver/input_file.h"
#include "varno/solver/integration.h"
#include "varno/solver/run_report.h"
#include "varno/sys/messages.h"
#include "varno/sys/resource_report.h"

namespace varno {

namespace {

constexpr int kDefaultMaximumOrder = 30;
constexpr mp_bitcnt_t kDefaultPrecisionBits = 80;

/// Built-in defaults, then the settings file, then the command line. The defaults come in this
/// order on purpose: the first `_STEPDIV` is older than the default precision and does not have it.
void ReadSettings(int argc, char** argv)
{
  Expr::Global->SetTermCount(kDefaultMaximumOrder + Expr::Global->_ZEROTERMS);
  mpf_set_str(Expr::Global->_ACCURACY, "1e-10", 10);
  mpf_set_default_prec(kDefaultPrecisionBits);
  ReadSettingsFile();
  const CommandLine commandLine = ReadCommandLine(argc, argv);
  if (commandLine.inputFile != nullptr) OpenInput(commandLine.inputFile);
  if (commandLine.hasUnusedArguments) {
    std::clog << tag::kWarning << "Some unused parameters in the way..." << std::endl;
  }
}

void ReadEquations()
{
  std::clog << tag::kInfo << "Parsing input" << std::endl;
  if (!ParseInput()) Fail("Compile error occured...", kSyntaxError);
}

void WriteLeadingOutput()
{
  if (Expr::Global->_GNUPLOT) WriteScriptHead(std::cout);
  WriteHeader(std::cout);
}

void WriteClosingOutput()
{
  // With only the last row wanted, the loop has held every row back, and this is the one.
  WriteRow(std::cout, !Expr::Global->_PRINTONLYTMAX);
  PrintUsage();
  if (Expr::Global->_GNUPLOT) WriteScriptTail(std::cout);
}

}  // namespace

int RunProgram(int argc, char** argv)
{
  ReportRunAtPrompt();
  ReadSettings(argc, argv);
  ReadEquations();
  std::clog << tag::kInfo << "Initializing values" << std::endl;
  InitializeEquations();
  if (Expr::Global->_DUMPTREE) DumpTrees();
  std::clog << tag::kInfo << "Starting solving" << std::endl << std::endl;
  WriteLeadingOutput();
  StartUsage();
  Integration().Run();
  EndUsage();
  WriteClosingOutput();
  FinishOutput();
  return kSuccess;
}

}  // namespace varno
