#pragma once

#include <streambuf>

namespace varno {

/// Takes everything and keeps nothing.
class NullBuffer : public std::streambuf {
  int overflow(int character) override { return character; }
  std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
};

}  // namespace varno
