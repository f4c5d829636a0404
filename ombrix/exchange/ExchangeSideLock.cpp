#include "ombrix/exchange/ExchangeSideLock.h"

#include "ombrix/platform/Path.h"

#include <stdexcept>

namespace Ombrix
{

ExchangeSideLock::ExchangeSideLock(ExchangeRole role, const std::string& directory)
{
  const std::string folder = FileSystem::Path::stripTrailingSlash(directory);
  if (m_lock.tryLock(folder + "/" + lockFile(role)))
    return;
  const FileSystem::FileLock::Holder& holder = m_lock.holder();
  const std::string side = exchangeRoleToString(role);
  const std::string who = holder.pid != 0
                              ? "process " + std::to_string(holder.pid) + " on host " + holder.host
                              : "another process";
  const std::string text = "The " + side + " side of the exchange directory " + folder + " is held by " +
                           who + ": stop that " + side + " or give this one another directory";
  throw std::runtime_error(text);
}

std::string ExchangeSideLock::lockFile(ExchangeRole role)
{
  return role == ExchangeRole::Solver ? "out.lock" : "in.lock";
}

} // namespace Ombrix
