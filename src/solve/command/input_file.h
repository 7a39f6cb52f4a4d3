#pragma once

#include <stdexcept>
#include <string>

namespace varno::solve {

/// A file that cannot be read. what() names it and the reason.
class InputFileError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// What an input file holds.
struct InputFile {
  std::string name;  ///< for messages
  std::string text;
};

/// Reads a file, or standard input for "-". Throws InputFileError, also for what cannot be a text
/// of equations: a file with NUL bytes or of more than 256 MiB.
InputFile ReadInputFile(const std::string& path);

}  // namespace varno::solve
