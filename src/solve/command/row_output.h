#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "solve/command/command_line.h"
#include "solve/command/event_output.h"
#include "solve/command/output_file.h"
#include "solve/library/solve.h"
#include "solve/rows/row_writer.h"
#include "solve/rows/text_digest.h"
#include "solve/rows/text_skip.h"

namespace varno::solve {

/// Brings rows in the chosen format into a file, and events into another one if one is given.
///
/// What stands before the rows is written with the first of them: a run that fails at its start
/// leaves no header alone.
class RowOutput {
 public:
  /// `known` is what an earlier process has written, which is left out.
  RowOutput(OutputFile file, const CommandLine& commandLine, const Solution& solution,
            const TextDigest& known = {});
  RowOutput(const RowOutput&) = delete;
  RowOutput& operator=(const RowOutput&) = delete;

  /// Throws what OutputFile::Write does; an OutputError names the row. Throws TextChanged where the
  /// rows differ from those that are known.
  void Print(const Row& row);
  /// Closes the file. Throws what OutputFile does.
  void Finish();
  bool GoesToTerminal() const { return file.IsTerminal(); }
  /// Whether what earlier processes have written has all come again.
  bool HasCaughtUp() const { return file.HasCaughtUp(); }
  /// All that is written, by earlier processes, too.
  const TextDigest& Written() const { return file.Written(); }

 private:
  /// A file whose beginning is there already.
  class Continuation final : public TextSink {
   public:
    Continuation(OutputFile file, const TextDigest& known)
        : file(std::move(file)), skip(known), written(known)
    {}
    void Write(std::string_view text) override;
    void Close() { file.Close(); }
    bool IsTerminal() const { return file.IsTerminal(); }
    bool HasCaughtUp() const { return skip.IsThrough(); }
    const TextDigest& Written() const { return written; }

   private:
    OutputFile file;
    TextSkip skip;
    TextDigest written;
  };

  Continuation file;
  std::unique_ptr<RowWriter> writer;
  std::optional<std::string> periodOf;  // a variable
  std::optional<EventOutput> events;
  bool hasBegun = false;
};

}  // namespace varno::solve
