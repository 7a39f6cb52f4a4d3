#include "solve/integration/step_feed.h"

#include <algorithm>
#include <cassert>
#include <iterator>
#include <utility>

#include "solve/number/exponent_range.h"
#include "solve/team/start_elsewhere.h"

namespace varno::solve {

namespace {

using std::chrono::milliseconds, std::chrono::microseconds;

/// So many steps may be ahead, and fewer where their series take much memory.
constexpr double kMostAhead = 6;
constexpr double kFewestAhead = 2;
constexpr double kMostBytesAhead = 1 << 25;
/// A waiting thread is called for each so many steps, or when so much time has passed: a call for
/// each step would take longer than a short step.
constexpr std::size_t kStepsPerCall = 3;
constexpr microseconds kTimePerCall{100};
/// How often a waiting thread looks around by itself.
constexpr milliseconds kLongestWait{10};
/// So long whoever asks for steps looks for them without a pause before it sleeps: it may take a
/// scheduler some milliseconds to wake it, which is as long as many a run.
constexpr milliseconds kLongestLook{2};

/// A series that takes more is a large part of a cache: a run that begins the same one again is
/// faster by more than a copy of its states takes.
constexpr double kBytesOfLargeSeries = 1 << 19;

/// What a series takes, about.
double BytesOf(std::size_t lineCount, const RunSettings& settings)
{
  return static_cast<double>(lineCount) * (settings.order + 2) *
         (static_cast<double>(settings.bits) / 8 + 32);
}

}  // namespace

StepFeed::StepFeed(const MakeStepper& make, const RunSettings& settings, const Moment& start,
                   std::vector<Real> states, const Moment& reach, Poll poll)
    : reach(reach),
      poll(std::move(poll)),
      run(make(settings, start, std::move(states), reach, [this] { PollRun(); })),
      bytesOfSeries(BytesOf(run->LineCount(), settings)),
      mostAhead(static_cast<std::size_t>(
          std::clamp(kMostBytesAhead / bytesOfSeries, kFewestAhead, kMostAhead))),
      latest(run->Latest())
{}

StepFeed::~StepFeed()
{
  if (!thread.joinable()) return;
  isStopped = true;
  room.notify_one();
  thread.join();
}

/// Within the steps of the run, and within the sums of its series, which others ask for.
void StepFeed::PollRun() const
{
  if (thread.joinable() && std::this_thread::get_id() == thread.get_id()) {
    if (isStopped) throw Stopped();
  } else if (poll) {
    poll();
  }
}

void StepFeed::GoAhead()
{
  if (thread.joinable()) return;
  latest = run->Latest();
  std::unique_lock lock(mutex);
  thread = StartElsewhere([this] { MakeSteps(); });
}

// ---------------------------------------------------------------------------------------------
// The thread that makes steps

void StepFeed::MakeSteps()
{
  {
    // Until `thread` is set.
    const std::lock_guard lock(mutex);
  }
  const ScopedExponentRange range;
  try {
    while (run->Latest().IsBehind(reach)) {
      run->Step();
      Offer(run->Latest());
    }
    Finish(nullptr);
  } catch (const Stopped&) {
    // Nobody waits for anything.
  } catch (...) {
    Finish(std::current_exception());
  }
  mpfr_free_cache();
}

void StepFeed::Offer(const DenseStep& step)
{
  DenseStep offer = TakeSpent();
  offer = step;
  if (bytesOfSeries > kBytesOfLargeSeries) {
    if (auto states = step.series->CopyOfStates()) offer.series = std::move(states);
  }
  std::unique_lock lock(mutex);
  offered.push_back(std::move(offer));
  const auto now = std::chrono::steady_clock::now();
  const bool isFull = offered.size() >= mostAhead;
  if (isFull || offered.size() % kStepsPerCall == 0 || now - latestCall > kTimePerCall) {
    latestCall = now;
    isOffered = true;
    offers.notify_one();
  }
  while (offered.size() >= mostAhead) {
    if (isStopped) throw Stopped();
    room.wait_for(lock, kLongestWait);
  }
}

/// A step whose memory may be used again, or a new one.
DenseStep StepFeed::TakeSpent()
{
  if (spare.empty()) {
    const std::lock_guard lock(mutex);
    spare.swap(spent);
  }
  if (spare.empty()) return {};
  DenseStep step = std::move(spare.back());
  spare.pop_back();
  return step;
}

void StepFeed::Finish(std::exception_ptr reason)
{
  const std::lock_guard lock(mutex);
  end = std::move(reason);
  isFinished = isOffered = true;
  offers.notify_one();
}

// ---------------------------------------------------------------------------------------------
// The thread that asks for them

void StepFeed::Advance()
{
  if (!thread.joinable()) {
    run->Step();
    return;
  }
  if (taken == inHand.size()) TakeOffered();
  std::swap(latest, inHand[taken]);
  inHand[taken].series = nullptr;  // for steps to come
  ++taken;
}

void StepFeed::LookForOffer() const
{
  const auto lookedEnough = std::chrono::steady_clock::now() + kLongestLook;
  while (!isOffered && std::chrono::steady_clock::now() < lookedEnough) std::this_thread::yield();
}

/// Waits until there are steps; throws what ended the run when there will be none.
void StepFeed::TakeOffered()
{
  LookForOffer();
  std::unique_lock lock(mutex);
  while (offered.empty()) {
    if (isFinished) {
      assert(end != nullptr && "nobody asks for steps beyond the end");
      std::rethrow_exception(end);
    }
    offers.wait_for(lock, kLongestWait);
    if (!offered.empty() || !poll) continue;
    lock.unlock();
    poll();
    lock.lock();
  }
  std::ranges::move(inHand, std::back_inserter(spent));
  inHand.clear();
  inHand.swap(offered);
  isOffered = isFinished;
  taken = 0;
  room.notify_one();
}

}  // namespace varno::solve
