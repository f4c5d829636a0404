// ExchangeSideLock: one owner per side of an exchange directory. The solver's side is held through the
// lock file "out.lock", the client's through "in.lock", each locked with flock() and recording the
// holder's process ID and host. The system releases the lock when its holder ends in any way, so the
// lock of a crashed side is taken over by the next one. One thread at a time.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/exchange/ExchangeRole.h"
#include "ombrix/platform/FileLock.h"

#include <string>

namespace Ombrix
{

class OMBRIX_API ExchangeSideLock
{
public:
  // Claims `role`'s side of `directory` until the object goes. Throws std::runtime_error when another
  // process holds it: "The solver side of the exchange directory <directory> is held by process <pid> on
  // host <host>: stop that solver or give this one another directory"; and when the lock file cannot be
  // created or locked (a missing directory, say), with the system's reason.
  ExchangeSideLock(ExchangeRole role, const std::string& directory);
  ExchangeSideLock(const ExchangeSideLock&) = delete;
  ExchangeSideLock& operator=(const ExchangeSideLock&) = delete;
  // Releases the side and removes the lock file.
  ~ExchangeSideLock() = default;

  // "out.lock" for the solver, "in.lock" for the client.
  static std::string lockFile(ExchangeRole role);

private:
  FileSystem::FileLock m_lock;
};

} // namespace Ombrix
