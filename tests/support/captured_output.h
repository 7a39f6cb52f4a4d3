#pragma once

#include <sstream>
#include <streambuf>
#include <string>
#include <vector>

namespace support {

/// Collects what is written to std::cout and to std::clog for the length of the scope.
class CapturedOutput {
 public:
  CapturedOutput();
  ~CapturedOutput();
  CapturedOutput(const CapturedOutput&) = delete;
  CapturedOutput& operator=(const CapturedOutput&) = delete;

  std::string Results() const { return out.str(); }
  std::string Commentary() const { return log.str(); }

 private:
  std::ostringstream out;
  std::ostringstream log;
  std::streambuf* const savedOut;
  std::streambuf* const savedLog;
};

/// The lines of a text that begin with `start`, without their ends.
std::vector<std::string> LinesStarting(const std::string& text, const std::string& start);

}  // namespace support
