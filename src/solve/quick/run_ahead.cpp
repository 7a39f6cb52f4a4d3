#include "solve/quick/run_ahead.h"

#include <new>
#include <utility>

#include "solve/team/start_elsewhere.h"

namespace varno::solve::quick {

namespace {

constexpr std::uint32_t kOver = std::uint32_t{1} << 31;
/// So often who waits for a step looks for it before it sleeps: for as long as some steps take.
constexpr int kMostLooks = 2000;

}  // namespace

RunAhead::KeptStep::KeptStep(const StepView& step)
    : step(step),
      terms(step.terms.begin(), step.terms.end()),
      sizes(step.sizes.begin(), step.sizes.end())
{}

StepView RunAhead::KeptStep::View() const
{
  StepView view = step;
  view.terms = terms;
  view.sizes = sizes;
  return view;
}

RunAhead::RunAhead(const Program& program, const RunSettings& settings, const Way& way,
                   std::vector<Number> states)
    : run(program, settings, way, std::move(states)), length(way.length)
{}

RunAhead::~RunAhead()
{
  if (!thread.joinable()) return;
  isStopped = true;
  thread.join();
}

void RunAhead::GoAhead(std::uint32_t mostSteps)
{
  steps.reserve(mostSteps + std::size_t{1});
  steps.emplace_back(run.Latest());
  stepsBefore = run.Steps() - 1;
  made = taken = 1;
  thread = StartElsewhere([this] { MakeSteps(); });
  if (thread.joinable()) kept = steps.data();
}

void RunAhead::MakeSteps()
{
  std::uint32_t count = 1;
  try {
    while (!isStopped && steps.size() < steps.capacity() && run.Latest().end < length &&
           run.Step()) {
      steps.emplace_back(run.Latest());
      made.store(++count, std::memory_order_release);
      made.notify_one();
    }
  } catch (const std::bad_alloc&) {
    // Who asks for more than was made learns that there is none.
  }
  made.store(count | kOver, std::memory_order_release);
  made.notify_one();
}

bool RunAhead::Step()
{
  if (kept == nullptr) return run.Step();
  for (std::uint32_t known = made.load(std::memory_order_acquire); (known & ~kOver) == taken;
       known = made.load(std::memory_order_acquire)) {
    if (known & kOver) return false;
    WaitForMore(known);
  }
  ++taken;
  return true;
}

void RunAhead::WaitForMore(std::uint32_t known) const
{
  for (int look = 0; look < kMostLooks; ++look) {
    if (made.load(std::memory_order_relaxed) != known) return;
  }
  made.wait(known, std::memory_order_relaxed);
}

}  // namespace varno::solve::quick
