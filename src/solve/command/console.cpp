#include "solve/command/console.h"

#include <string>

namespace varno::solve {

void Console::Say(std::string_view message) const
{
  Print("varno-solve: " + std::string(message));
}

void Console::Print(std::string_view text) const
{
  if (text.empty()) return;
  std::string lines(text);
  if (lines.back() != '\n') lines += '\n';
  errors.Write(lines);
}

}  // namespace varno::solve
