#include "tests/support/captured_output.h"

#include <iostream>

namespace support {

CapturedOutput::CapturedOutput()
    : savedOut(std::cout.rdbuf(out.rdbuf())), savedLog(std::clog.rdbuf(log.rdbuf()))
{}

CapturedOutput::~CapturedOutput()
{
  std::cout.rdbuf(savedOut);
  std::clog.rdbuf(savedLog);
}

std::vector<std::string> LinesStarting(const std::string& text, const std::string& start)
{
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) {
    if (line.starts_with(start)) lines.push_back(line);
  }
  return lines;
}

}  // namespace support
