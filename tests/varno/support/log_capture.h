#pragma once

#include <sstream>
#include <streambuf>
#include <string>

namespace varno {

/// Collects what is written as commentary, to std::clog, for the length of the scope.
class LogCapture {
 public:
  LogCapture();
  ~LogCapture();
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  std::string Text() const { return text.str(); }

 private:
  std::ostringstream text;
  std::streambuf* const saved;
};

}  // namespace varno
