#include "varno/solver/input_file.h"

#include <cstdio>

#include "varno/parser/scanner.h"
#include "varno/sys/messages.h"

namespace varno {

namespace {

/// Whether something can be read: directories, for one, open without an error.
bool IsReadable(std::FILE* file)
{
  const int first = std::getc(file);
  if (first == EOF) return std::ferror(file) == 0;
  std::ungetc(first, file);
  return true;
}

}  // namespace

void OpenInput(const char* name)
{
  std::FILE* const file = std::fopen(name, "r");
  if (file == nullptr || !IsReadable(file)) {
    std::perror("#(WARN) Error by opening input file");
    Exit(kFailure);
  }
  SetScannerInput(file);
}

}  // namespace varno
