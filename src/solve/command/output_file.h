#pragma once

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>

#include "solve/command/file_descriptor.h"
#include "solve/rows/text_sink.h"

namespace varno::solve {

/// Output that could not be written. what() names the file and the reason.
class OutputError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Nobody reads the pipe any longer that output goes into.
class OutputClosed : public std::exception {};

/// Somebody wanted the run to end while output waited for its reader.
class OutputInterrupted : public std::exception {};

/// A file, or standard output, that text is written into at once: there is no buffer, so that a row
/// is there for others as soon as it is written, and a full disk shows at the first lost row.
///
/// Write throws OutputError, OutputClosed (SIGPIPE must be ignored) or, when a signal arrives while
/// it waits and `interrupted` says so, OutputInterrupted.
class OutputFile final : public TextSink {
 public:
  static OutputFile StandardOutput(std::function<bool()> interrupted);
  /// Creates a file or empties it; throws OutputError.
  static OutputFile Open(const std::string& path, std::function<bool()> interrupted);
  /// Goes on with a file behind its first `bytes`; what follows them is cut off. Throws
  /// OutputError, also where the file is shorter.
  static OutputFile Continue(const std::string& path, std::int64_t bytes,
                             std::function<bool()> interrupted);

  void Write(std::string_view text) override;
  /// Ends the output: some file systems only now tell that text is lost. Throws OutputError.
  void Close();
  bool IsTerminal() const;

 private:
  OutputFile(FileDescriptor file, std::string name, std::function<bool()> interrupted);
  std::size_t WriteSome(std::string_view text);
  [[noreturn]] void Fail(int error) const;

  FileDescriptor file;
  std::string name;
  std::function<bool()> interrupted;
};

}  // namespace varno::solve
