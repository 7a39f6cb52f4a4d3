#include "solve/sweep/ordered_output.h"

#include <algorithm>
#include <utility>

namespace varno::solve {

OrderedOutput::OrderedOutput(TextSink& rows, TextSink& messages, Frame frame,
                             std::size_t mostWaiting, std::int64_t runCount, SweepState given)
    : rowSink(rows),
      messageSink(messages),
      frame(std::move(frame)),
      mostWaiting(mostWaiting),
      runCount(runCount),
      state(std::move(given)),
      written(state.rowsOfCurrent),
      next(state.current)
{
  for (SweepState::FinishedRun& run : state.waiting) {
    waitingBytes += run.rows.size() + run.messages.size() + sizeof(Texts);
    waiting[run.run] = {std::move(run.rows), std::move(run.messages), true};
    finishedBefore.insert(run.run);
  }
  state.waiting.clear();
}

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

void OrderedOutput::GoOn()
{
  const std::scoped_lock lock(mutex);
  Guarded([&] { WriteFinishedRuns(); });
}

/// The next runs that were not handed out, and were not made by an earlier process.
std::optional<RunRange> OrderedOutput::Next(std::int64_t most)
{
  while (finishedBefore.contains(next)) ++next;
  if (next >= runCount) return std::nullopt;
  const auto behind = finishedBefore.upper_bound(next);
  const std::int64_t end = behind == finishedBefore.end() ? runCount : *behind;
  const RunRange range{next, std::min(most, end - next)};
  next += range.count;
  return range;
}

std::optional<RunRange> OrderedOutput::Take(std::int64_t most)
{
  std::unique_lock lock(mutex);
  changed.wait(lock, [&] { return isStopped || MayAdd(next); });
  ThrowIfStopped();
  return Next(most);
}

std::optional<RunRange> OrderedOutput::TryTake(std::int64_t most)
{
  const std::scoped_lock lock(mutex);
  ThrowIfStopped();
  if (!MayAdd(next)) return RunRange{next, 0};
  return Next(most);
}

bool OrderedOutput::HasRoom(std::int64_t run) const
{
  const std::scoped_lock lock(mutex);
  return MayAdd(run);
}

bool OrderedOutput::IsStopped() const
{
  const std::scoped_lock lock(mutex);
  return isStopped;
}

void OrderedOutput::AddRows(std::int64_t run, std::string_view text)
{
  std::unique_lock lock(mutex);
  changed.wait(lock, [&] { return isStopped || MayAdd(run); });
  Add(run, text);
}

void OrderedOutput::AddRowsAtOnce(std::int64_t run, std::string_view text)
{
  const std::scoped_lock lock(mutex);
  Add(run, text);
}

void OrderedOutput::Add(std::int64_t run, std::string_view text)
{
  ThrowIfStopped();
  if (run == state.current) {
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
  waiting[run].messages += text;
  waitingBytes += text.size();
}

void OrderedOutput::Finish(std::int64_t run, RunOutcome outcome)
{
  std::int64_t done = 0;
  {
    const std::scoped_lock lock(mutex);
    ThrowIfStopped();
    waiting[run].isFinished = true;
    // A run that left nothing takes memory, too.
    waitingBytes += sizeof(Texts);
    done = ++state.result.done;
    if (outcome != RunOutcome::kAllRows) ++state.result.failed;
    if (outcome == RunOutcome::kRowWasWrong) ++state.result.wrong;
    if (run == state.current) Guarded([&] { WriteFinishedRuns(); });
    changed.notify_all();
  }
  const std::unique_lock lock(watchMutex, std::try_to_lock);
  if (lock.owns_lock() && watch) watch(done);
}

void OrderedOutput::Stop()
{
  const std::scoped_lock lock(mutex);
  isStopped = true;
  changed.notify_all();
}

SweepResult OrderedOutput::Result() const
{
  const std::scoped_lock lock(mutex);
  return state.result;
}

SweepState OrderedOutput::State() const
{
  const std::scoped_lock lock(mutex);
  SweepState now = state;
  // Runs that are under way begin again, whoever goes on.
  for (const auto& [run, texts] : waiting) {
    if (texts.isFinished) now.waiting.push_back({run, texts.rows, texts.messages});
  }
  return now;
}

/// Of the current run.
void OrderedOutput::WriteRows(std::string_view text)
{
  text = written.Rest(text);
  if (text.empty()) return;
  // What stands in front belongs to the rows: neither counts as written without the other.
  std::string whole;
  if (state.rowsOfCurrent.Bytes() == 0) {
    const std::string& before = state.hasHeader ? frame.separator : frame.header;
    if (!before.empty()) whole.append(before).append(text);
  }
  const std::string_view all = whole.empty() ? text : whole;
  rowSink.Write(all);
  state.hasHeader = true;
  state.rowsOfCurrent.Add(text);
  state.rowBytes += static_cast<std::int64_t>(all.size());
}

/// The current run has ended: takes its turn from it, and from all finished ones behind it. What
/// the next one has made so far comes out.
void OrderedOutput::WriteFinishedRuns()
{
  for (auto run = waiting.begin(); run != waiting.end() && run->first == state.current;
       run = waiting.begin()) {
    Texts& texts = run->second;
    WriteRows(texts.rows);
    waitingBytes -= texts.rows.size();
    texts.rows.clear();
    if (!texts.isFinished) return;
    if (!written.IsThrough()) throw TextChanged();
    if (!texts.messages.empty()) messageSink.Write(texts.messages);
    waitingBytes -= texts.messages.size() + sizeof(Texts);
    waiting.erase(run);
    ++state.current;
    state.rowsOfCurrent = {};
  }
}

}  // namespace varno::solve
