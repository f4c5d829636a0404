#include "WatchCommand.h"

#include "ChangeWaiter.h"
#include "DirectoryInspector.h"
#include "ExitCode.h"
#include "Interrupt.h"

#include <chrono>
#include <cstdio>
#include <ctime>
#include <deque>
#include <thread>

namespace Ombrix::Tools
{

namespace
{

using Clock = std::chrono::steady_clock;

// The solver's iterations per second over the last few seconds.
class IterationRate
{
public:
  void add(Clock::time_point when, int iteration)
  {
    if (!m_samples.empty() && iteration < m_samples.back().second)
      m_samples.clear(); // a new run
    if (m_samples.empty() || iteration != m_samples.back().second)
      m_samples.emplace_back(when, iteration);
    while (m_samples.size() > 2 && when - m_samples[1].first > std::chrono::seconds(5))
      m_samples.pop_front();
  }

  std::string text(Clock::time_point now) const
  {
    if (m_samples.size() < 2 || now - m_samples.back().first > std::chrono::seconds(5))
      return "- iterations/s";
    const double seconds =
        std::chrono::duration<double>(m_samples.back().first - m_samples.front().first).count();
    char buffer[48];
    std::snprintf(buffer, sizeof buffer, "%.1f iterations/s",
                  static_cast<double>(m_samples.back().second - m_samples.front().second) / seconds);
    return buffer;
  }

private:
  std::deque<std::pair<Clock::time_point, int>> m_samples;
};

} // namespace

WatchCommand::WatchCommand()
    : Command(
          "watch",
          "A live view of 'inspect' that refreshes whenever a file of the directory changes, with the "
          "solver's iterations per second. On a terminal the view is redrawn; otherwise one line is printed "
          "per change of a side's state or iteration. Ends on Ctrl-C (exit 0), or with --until-finished when "
          "the solver has finished (exit 0) or failed (exit 1).",
          "  ombrix watch /tmp/exchange --grace 3 --until-finished")
{
}

void WatchCommand::do_addOptions(CLI::App& command)
{
  command.add_option("DIR", m_directory, "the exchange directory")->required();
  command.add_option("--grace", m_gracePeriod, "seconds after which a heartbeat counts as stopped")
      ->capture_default_str()
      ->check(CLI::PositiveNumber);
  command.add_flag("--until-finished", m_untilFinished, "end when the solver's state is Finished or Failed");
  command.add_option("--timeout", m_timeout, "end after this many seconds (0: no limit)")
      ->capture_default_str()
      ->check(CLI::NonNegativeNumber);
}

int WatchCommand::do_run()
{
  Interrupt::install();
  DirectoryInspector inspector(m_directory, m_gracePeriod);
  ChangeWaiter waiter(m_directory);
  const bool terminal = Console::isTerminal(stdout);
  const bool colour = Console::wantsColour(stdout);
  const auto start = Clock::now();
  IterationRate rate;
  std::string lastLine;
  while (true)
  {
    const DirectoryReport report = inspector.inspect();
    const auto now = Clock::now();
    if (report.solver.latestTime)
      rate.add(now, report.solver.latestTime->getIteration());
    const std::string summary = report.summary();
    if (terminal)
    {
      const std::string screen = "\033[H\033[2J" + report.render(colour) + rate.text(now) + "\n";
      std::fputs(screen.c_str(), stdout);
    }
    else if (summary != lastLine)
    {
      const std::time_t wall = std::time(nullptr);
      char clock[16];
      std::strftime(clock, sizeof clock, "%H:%M:%S", std::localtime(&wall));
      std::printf("%s  %s | %s\n", clock, summary.c_str(), rate.text(now).c_str());
    }
    lastLine = summary;
    std::fflush(stdout);
    if (m_untilFinished && report.solver.finished)
      return report.solver.state == static_cast<int>(KorvanSDK::SolveState::Failed) ? exitProblems : exitFine;
    if (Interrupt::requested() || (m_timeout > 0 && now - start >= std::chrono::duration<double>(m_timeout)))
      return exitFine;
    // Redrawn at least every second, so that ages move on; at most ten times a second.
    waiter.waitForChange(std::chrono::milliseconds(1000));
    if (terminal)
      std::this_thread::sleep_until(now + std::chrono::milliseconds(100));
  }
}

} // namespace Ombrix::Tools
