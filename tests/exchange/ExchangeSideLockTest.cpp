#include "ombrix/exchange/ExchangeSideLock.h"

#include "support/ExchangeFixtures.h"
#include "support/TestSupport.h"

#include <gtest/gtest.h>

using Ombrix::ExchangeRole;
using Ombrix::ExchangeSideLock;

TEST(ExchangeSideLock, ASecondOwnerIsRefusedUntilTheHolderIsKilled)
{
  OmbrixTest::TempDir dir;
  const std::string directory = dir.path().string();
  OmbrixTest::ForkedChild holder(
      [&](const std::function<void()>& ready)
      {
        const ExchangeSideLock lock(ExchangeRole::Solver, directory);
        ready();
        while (true)
          ::pause();
      });
  const std::string host = FileSystem::FileLock::currentProcess().host;
  EXPECT_THROW_MSG(ExchangeSideLock(ExchangeRole::Solver, directory + "/"), std::runtime_error,
                   "The solver side of the exchange directory " + directory + " is held by process " +
                       std::to_string(holder.pid()) + " on host " + host +
                       ": stop that solver or give this one another directory");
  holder.kill();
  const ExchangeSideLock takenOver(ExchangeRole::Solver, directory);
  EXPECT_EQ(OmbrixTest::readFile(dir.file("out.lock")), std::to_string(::getpid()) + " " + host + "\n");

  EXPECT_THROW_MSG(ExchangeSideLock(ExchangeRole::Client, dir.file("missing")), std::runtime_error,
                   "Cannot create the lock file " + dir.file("missing") +
                       "/in.lock: No such file or directory");
}
