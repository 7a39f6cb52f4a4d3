#include "solve/sweep/ordered_output.h"

#include <utility>

namespace varno::solve {

OrderedOutput::OrderedOutput(TextSink& rows, TextSink& messages, Frame frame,
                             std::size_t mostWaiting)
    : rowSink(rows), messageSink(messages), frame(std::move(frame)), mostWaiting(mostWaiting)
{}

void OrderedOutput::ThrowIfStopped() const
{
  if (isStopped) throw Stopped();
}

/// Does what writes; when that fails, the output ends for all.
template <typename Write>
void OrderedOutput::Guarded(Write write)
{
  try {
    write();
  } catch (...) {
    isStopped = true;
    changed.notify_all();
    throw;
  }
}

void OrderedOutput::AwaitRoom()
{
  std::unique_lock lock(mutex);
  changed.wait(lock, [&] { return isStopped || waitingBytes < mostWaiting; });
  ThrowIfStopped();
}

void OrderedOutput::AddRows(std::int64_t run, std::string_view text)
{
  std::unique_lock lock(mutex);
  changed.wait(lock, [&] { return isStopped || run == current || waitingBytes < mostWaiting; });
  ThrowIfStopped();
  if (run == current) {
    Guarded([&] { WriteRows(text); });
    return;
  }
  waiting[run].rows += text;
  waitingBytes += text.size();
}

void OrderedOutput::AddMessage(std::int64_t run, std::string_view text)
{
  const std::scoped_lock lock(mutex);
  ThrowIfStopped();
  if (run == current) {
    messageSink.Write(text);
    return;
  }
  waiting[run].messages += text;
  waitingBytes += text.size();
}

void OrderedOutput::Finish(std::int64_t run)
{
  const std::scoped_lock lock(mutex);
  ThrowIfStopped();
  waiting[run].isFinished = true;
  // A run that left nothing takes memory, too.
  waitingBytes += sizeof(Texts);
  if (run == current) Guarded([&] { WriteFinishedRuns(); });
  changed.notify_all();
}

void OrderedOutput::Stop()
{
  const std::scoped_lock lock(mutex);
  isStopped = true;
  changed.notify_all();
}

/// Of the current run.
void OrderedOutput::WriteRows(std::string_view text)
{
  if (text.empty()) return;
  const std::string& before = hasHeader ? frame.separator : frame.header;
  if (!currentHasRows && !before.empty()) rowSink.Write(before);
  hasHeader = currentHasRows = true;
  rowSink.Write(text);
}

/// The current run has ended: takes its turn from it, and from all finished ones behind it. What
/// the next one has made so far comes out.
void OrderedOutput::WriteFinishedRuns()
{
  for (auto run = waiting.begin(); run != waiting.end() && run->first == current;
       run = waiting.begin()) {
    Texts& texts = run->second;
    WriteRows(texts.rows);
    if (!texts.messages.empty()) messageSink.Write(texts.messages);
    waitingBytes -= texts.rows.size() + texts.messages.size();
    texts.rows.clear();
    texts.messages.clear();
    if (!texts.isFinished) return;
    waitingBytes -= sizeof(Texts);
    waiting.erase(run);
    ++current;
    currentHasRows = false;
  }
}

}  // namespace varno::solve
