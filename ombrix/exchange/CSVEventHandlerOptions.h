// The settings of the CSV exchange, kept by the host in its project data and streamed through the data
// streams as the group "CSVEventHandlerOptions". A plain value.
#pragma once

#include "ombrix/OmbrixExport.h"
#include "ombrix/exchange/CSVFileMode.h"
#include "ombrix/exchange/ExchangeModes.h"

#include <cstdint>
#include <string>

namespace FileSystem
{
class DataOStream;
class DataIStream;
} // namespace FileSystem

namespace Ombrix
{

struct OMBRIX_API CSVEventHandlerOptions
{
  std::string ombrixDirectory;
  std::int32_t inFileTryAttempts = 5;
  CSVFileMode fileMode = CSVFileMode::Fixed;
  SyncMode syncMode = SyncMode::Iteration;
  std::int32_t syncStartIteration = 0;
  std::int32_t syncIterationInterval = 1;
  bool useFullEntityNames = false;
  StateFileMode stateFileMode = StateFileMode::WriteAndWait;
  ReadFailureHandling readFailureHandling = ReadFailureHandling::Fail;
  std::int32_t solverHeartBeatInterval = 10;    // seconds
  std::int32_t clientHeartBeatGracePeriod = 30; // seconds
};

// Compares everything but useFullEntityNames: options that differ only in how names are written
// describe the same exchange.
OMBRIX_API bool operator==(const CSVEventHandlerOptions& a, const CSVEventHandlerOptions& b);
OMBRIX_API bool operator!=(const CSVEventHandlerOptions& a, const CSVEventHandlerOptions& b);

// Every field, under its key ("OmbrixDirectory", "InFileTryAttempts", ...), in declaration order.
OMBRIX_API FileSystem::DataOStream& operator<<(FileSystem::DataOStream& out,
                                               const CSVEventHandlerOptions& options);
// Reads every key unconditionally; a missing key or malformed value fails the stream.
OMBRIX_API FileSystem::DataIStream& operator>>(FileSystem::DataIStream& in, CSVEventHandlerOptions& options);

} // namespace Ombrix
