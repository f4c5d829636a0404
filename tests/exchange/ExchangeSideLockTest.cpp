#include "ombrix/exchange/ExchangeSideLock.h"

#include "support/TestSupport.h"

#include <csignal>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

using Ombrix::ExchangeRole;
using Ombrix::ExchangeSideLock;
using OmbrixTest::TempDir;

namespace
{

// Kills and reaps the child however the test ends.
struct Child
{
  pid_t pid;
  ~Child()
  {
    ::kill(pid, SIGKILL);
    ::waitpid(pid, nullptr, 0);
  }
};

} // namespace

TEST(ExchangeSideLock, ASecondOwnerIsRefusedUntilTheHolderIsKilled)
{
  TempDir dir;
  int ready[2];
  ASSERT_EQ(::pipe(ready), 0);
  const pid_t holder = ::fork();
  ASSERT_GE(holder, 0);
  if (holder != 0)
    ::close(ready[1]);
  else
  {
    const ExchangeSideLock lock(ExchangeRole::Solver, dir.path().string());
    const char byte = 1;
    if (::write(ready[1], &byte, 1) == 1)
      ::pause();
    std::_Exit(1);
  }
  const Child child{holder};
  char byte = 0;
  ASSERT_EQ(::read(ready[0], &byte, 1), 1);
  ::close(ready[0]);
  const std::string host = FileSystem::FileLock::currentProcess().host;
  EXPECT_THROW_MSG(ExchangeSideLock(ExchangeRole::Solver, dir.path().string() + "/"), std::runtime_error,
                   "The solver side of the exchange directory " + dir.path().string() +
                       " is held by process " + std::to_string(holder) + " on host " + host +
                       ": stop that solver or give this one another directory");
  {
    // The other side is free.
    const ExchangeSideLock client(ExchangeRole::Client, dir.path().string());
  }

  ::kill(holder, SIGKILL);
  ::waitpid(holder, nullptr, 0);
  const ExchangeSideLock takenOver(ExchangeRole::Solver, dir.path().string());
  EXPECT_EQ(OmbrixTest::readFile(dir.file("out.lock")), std::to_string(::getpid()) + " " + host + "\n");
}

TEST(ExchangeSideLock, AMissingDirectoryIsReported)
{
  TempDir dir;
  EXPECT_THROW_MSG(ExchangeSideLock(ExchangeRole::Client, dir.file("missing")), std::runtime_error,
                   "Cannot create the lock file " + dir.file("missing") +
                       "/in.lock: No such file or directory");
}
