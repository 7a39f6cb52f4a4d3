#include "tests/varno/support/log_capture.h"

#include <iostream>

namespace varno {

LogCapture::LogCapture() : saved(std::clog.rdbuf(text.rdbuf())) {}

LogCapture::~LogCapture()
{
  std::clog.rdbuf(saved);
}

}  // namespace varno
