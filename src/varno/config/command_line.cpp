#include "varno/config/command_line.h"

#include <cstdio>
#include <cstring>
#include <iostream>
#include <unistd.h>

#include "varno/config/options.h"
#include "varno/config/usage_text.h"
#include "varno/core/global_data.h"
#include "varno/parser/scanner.h"
#include "varno/sys/messages.h"

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
      std::cout << "VARNO/C version 1.0\n";
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

/// Whether something can be read: directories, for one, open without an error.
bool IsReadable(std::FILE* file)
{
  const int first = std::getc(file);
  if (first == EOF) return std::ferror(file) == 0;
  std::ungetc(first, file);
  return true;
}

void OpenInput(const char* name)
{
  std::FILE* const file = std::fopen(name, "r");
  if (file == nullptr || !IsReadable(file)) {
    std::perror("#(WARN) Error by opening input file");
    Exit(kFailure);
  }
  SetScannerInput(file);
}

/// A negative interval -n asks for n equally spaced rows up to Tmax.
void SettlePrintInterval()
{
  GlobalData& global = *Expr::Global;
  if (mpf_cmp(global._PRINTEVERY, global._ZERO) >= 0) return;
  mpf_neg(global._PRINTEVERY, global._PRINTEVERY);
  mpf_div(global._PRINTEVERY, global._TMAX, global._PRINTEVERY);
}

}  // namespace

int ReadCommandLine(int argc, char** argv)
{
  const std::string letters = OptionString();
  for (int letter = 0; (letter = getopt(argc, argv, letters.c_str())) != -1;) {
    ApplyOption(letter, optarg);
  }
  if (optind < argc && std::strcmp(argv[optind], "-") != 0) OpenInput(argv[optind]);
  if (optind + 1 < argc) {
    std::clog << tag::kWarning << "Some unused parameters in the way..." << std::endl;
  }
  SettlePrintInterval();
  return 0;
}

}  // namespace varno
