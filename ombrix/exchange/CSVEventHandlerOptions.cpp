#include "ombrix/exchange/CSVEventHandlerOptions.h"

#include "ombrix/platform/DataIStream.h"
#include "ombrix/platform/DataOStream.h"

namespace Ombrix
{
namespace
{

template <typename E> void writeInt(FileSystem::DataOStream& out, const char* key, E value)
{
  out.key(key);
  out << static_cast<std::int32_t>(value);
}

template <typename E> void readInt(FileSystem::DataIStream& in, const char* key, E& value)
{
  std::int32_t raw = 0;
  in.key(key);
  in >> raw;
  if (in)
    value = static_cast<E>(raw);
}

} // namespace

bool operator==(const CSVEventHandlerOptions& a, const CSVEventHandlerOptions& b)
{
  return a.ombrixDirectory == b.ombrixDirectory && a.inFileTryAttempts == b.inFileTryAttempts &&
         a.fileMode == b.fileMode && a.syncMode == b.syncMode && a.stateFileMode == b.stateFileMode &&
         a.readFailureHandling == b.readFailureHandling &&
         a.solverHeartBeatInterval == b.solverHeartBeatInterval &&
         a.clientHeartBeatGracePeriod == b.clientHeartBeatGracePeriod &&
         a.syncStartIteration == b.syncStartIteration && a.syncIterationInterval == b.syncIterationInterval;
}

bool operator!=(const CSVEventHandlerOptions& a, const CSVEventHandlerOptions& b)
{
  return !(a == b);
}

FileSystem::DataOStream& operator<<(FileSystem::DataOStream& out, const CSVEventHandlerOptions& options)
{
  out.beginSection("CSVEventHandlerOptions");
  out.key("OmbrixDirectory");
  out << options.ombrixDirectory;
  writeInt(out, "InFileTryAttempts", options.inFileTryAttempts);
  writeInt(out, "FileMode", options.fileMode);
  writeInt(out, "SyncMode", options.syncMode);
  writeInt(out, "SyncStartIteration", options.syncStartIteration);
  writeInt(out, "SyncIterationInterval", options.syncIterationInterval);
  out.key("UseFullEntityNames");
  out << options.useFullEntityNames;
  writeInt(out, "StateFileMode", options.stateFileMode);
  writeInt(out, "ReadFailureHandling", options.readFailureHandling);
  writeInt(out, "SolverHeartBeatInterval", options.solverHeartBeatInterval);
  writeInt(out, "ClientHeartBeatGracePeriod", options.clientHeartBeatGracePeriod);
  out.endSection();
  return out;
}

FileSystem::DataIStream& operator>>(FileSystem::DataIStream& in, CSVEventHandlerOptions& options)
{
  in.beginSection("CSVEventHandlerOptions");
  in.key("OmbrixDirectory");
  in >> options.ombrixDirectory;
  readInt(in, "InFileTryAttempts", options.inFileTryAttempts);
  readInt(in, "FileMode", options.fileMode);
  readInt(in, "SyncMode", options.syncMode);
  readInt(in, "SyncStartIteration", options.syncStartIteration);
  readInt(in, "SyncIterationInterval", options.syncIterationInterval);
  in.key("UseFullEntityNames");
  in >> options.useFullEntityNames;
  readInt(in, "StateFileMode", options.stateFileMode);
  readInt(in, "ReadFailureHandling", options.readFailureHandling);
  readInt(in, "SolverHeartBeatInterval", options.solverHeartBeatInterval);
  readInt(in, "ClientHeartBeatGracePeriod", options.clientHeartBeatGracePeriod);
  in.endSection();
  return in;
}

} // namespace Ombrix
