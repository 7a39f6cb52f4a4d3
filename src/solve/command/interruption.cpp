#include "solve/command/interruption.h"

namespace varno::solve {

namespace {

volatile std::sig_atomic_t pendingSignal = 0;

void Remember(int signal)
{
  pendingSignal = signal;
}

void Install(int signal, struct sigaction& old)
{
  sigaction(signal, nullptr, &old);
  if (old.sa_handler == SIG_IGN) return;
  struct sigaction action = {};
  action.sa_handler = Remember;
  // Without SA_RESTART: a write that waits for its reader must notice.
  action.sa_flags = SA_RESETHAND;
  sigemptyset(&action.sa_mask);
  sigaction(signal, &action, nullptr);
}

}  // namespace

Interruption::Interruption()
{
  pendingSignal = 0;
  Install(SIGINT, oldInt);
  Install(SIGTERM, oldTerm);
}

Interruption::~Interruption()
{
  sigaction(SIGINT, &oldInt, nullptr);
  sigaction(SIGTERM, &oldTerm, nullptr);
}

int Interruption::Signal()
{
  return pendingSignal;
}

}  // namespace varno::solve
