#pragma once

#include <system_error>
#include <thread>
#include <utility>

namespace varno::solve {

/// The number of the processor that the calling thread runs on; below 0 where that is not known.
int ThisProcessor();

/// Moves a thread that runs on a processor to another one, where it may run on another one at all.
/// From then on the scheduler moves it as it likes. `thread` must not have been joined.
void LeaveProcessor(std::thread::native_handle_type thread, int processor);

/// Starts a thread that runs at once, if a processor is free: a scheduler may let a new thread wait
/// behind the one that started it for some milliseconds, though the other processors have nothing
/// to do, and so much is as long as many an integration.
///
/// Where there is no thread to be had, the one returned is not joinable.
template <class Body>
std::thread StartElsewhere(Body body)
{
  const int here = ThisProcessor();
  std::thread thread;
  try {
    thread = std::thread([here, body = std::move(body)]() mutable {
      LeaveProcessor(pthread_self(), here);  // the one that starts it may wait behind it, too
      body();
    });
  } catch (const std::system_error&) {
    return thread;
  }
  LeaveProcessor(thread.native_handle(), here);
  return thread;
}

}  // namespace varno::solve
