#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <map>
#include <mutex>
#include <string>
#include <string_view>

#include "solve/rows/text_sink.h"

namespace varno::solve {

/// Brings the texts of many runs, which several threads make in any order, out in the order of the
/// runs. What is ahead of its turn waits in memory; when much waits, so do the threads that would
/// add to it, but for the one whose turn it is.
class OrderedOutput {
 public:
  /// Thrown to a thread when the output has ended because another one could not write.
  struct Stopped {};

  /// What stands in front: `header` before the first text of all, `separator` before that of each
  /// further run that has any.
  struct Frame {
    std::string header, separator;
  };

  /// `mostWaiting`: bytes that may wait before threads do.
  OrderedOutput(TextSink& rows, TextSink& messages, Frame frame, std::size_t mostWaiting);

  /// Waits until there is room for another run. Throws Stopped.
  void AwaitRoom();
  /// Adds to the rows of a run. Throws what the sink does, or Stopped.
  void AddRows(std::int64_t run, std::string_view text);
  /// Adds to the messages of a run, which come out behind its rows.
  void AddMessage(std::int64_t run, std::string_view text);
  /// Ends a run. Throws as AddRows does.
  void Finish(std::int64_t run);
  /// Ends the output: all threads that wait or write get Stopped. Nothing that waits comes out.
  void Stop();

 private:
  struct Texts {
    std::string rows, messages;
    bool isFinished = false;
  };

  void ThrowIfStopped() const;
  void WriteRows(std::string_view text);
  void WriteFinishedRuns();
  template <typename Write>
  void Guarded(Write write);

  TextSink& rowSink;
  TextSink& messageSink;
  Frame frame;
  std::size_t mostWaiting;

  std::mutex mutex;
  std::condition_variable changed;
  std::map<std::int64_t, Texts> waiting;  // by run
  std::size_t waitingBytes = 0;
  std::int64_t current = 0;  // whose turn it is
  bool hasHeader = false;
  bool currentHasRows = false;
  bool isStopped = false;
};

}  // namespace varno::solve
