#include "varno/config/command_line.h"

#include <cstring>
#include <iostream>
#include <unistd.h>

#include "varno/config/options.h"
#include "varno/config/usage_text.h"
#include "varno/core/global_data.h"
#include "varno/sys/messages.h"
#include "version.h"

namespace varno {

namespace {

void ApplyOption(int letter, const char* argument)
{
  switch (letter) {
    case ':':
      std::clog << tag::kWarning << "Missing argument for some option" << std::endl;
      return;
    case 'h':
    case '?':
      WriteUsage(std::clog);
      Exit(kFailure);
    case 'v':
      std::cout << "VARNO/C version " << kVersion << '\n';
      FinishOutput();
      Exit(kSuccess);
    default:
      break;
  }
  const Option* const option = FindOption(letter);
  if (option == nullptr) {
    std::clog << tag::kWarning << "Wrong parameter " << letter << '\n' << std::flush;
    Exit(kFailure);
  }
  option->apply(argument);
}

/// A negative interval -n asks for n equally spaced rows up to Tmax.
void SettlePrintInterval()
{
  if (mpf_cmp(Expr::Global->_PRINTEVERY, Expr::Global->_ZERO) >= 0) return;
  mpf_neg(Expr::Global->_PRINTEVERY, Expr::Global->_PRINTEVERY);
  mpf_div(Expr::Global->_PRINTEVERY, Expr::Global->_TMAX, Expr::Global->_PRINTEVERY);
}

}  // namespace

CommandLine ReadCommandLine(int argc, char** argv)
{
  const std::string letters = OptionString();
  for (int letter = 0; (letter = getopt(argc, argv, letters.c_str())) != -1;) {
    ApplyOption(letter, optarg);
  }
  SettlePrintInterval();
  CommandLine rest;
  if (optind < argc && std::strcmp(argv[optind], "-") != 0) rest.inputFile = argv[optind];
  rest.hasUnusedArguments = optind + 1 < argc;
  return rest;
}

}  // namespace varno
