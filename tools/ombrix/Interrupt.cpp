#include "Interrupt.h"

#include <atomic>
#include <csignal>

namespace Ombrix::Tools
{

namespace
{

std::atomic<bool> interrupted{false};

extern "C" void onSignal(int)
{
  interrupted = true;
}

} // namespace

void Interrupt::install()
{
  std::signal(SIGINT, onSignal);
  std::signal(SIGTERM, onSignal);
}

bool Interrupt::requested()
{
  return interrupted;
}

} // namespace Ombrix::Tools
