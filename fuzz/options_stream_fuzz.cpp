// The options records of the exchange's event handlers, read from a data stream of either encoding.
#include "ombrix/exchange/AIEventHandlerOptions.h"
#include "ombrix/exchange/CSVEventHandlerOptions.h"
#include "ombrix/exchange/TrivialEventHandlerOptions.h"

#include "StreamRoundTrip.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
  std::string_view input = OmbrixFuzz::asText(data, size);
  if (input.empty())
    return 0;
  FileSystem::DataStreamKind kind{};
  switch (OmbrixFuzz::splitSelector(input, kind, 3))
  {
  case 0:
    OmbrixFuzz::streamRoundTrip<Ombrix::CSVEventHandlerOptions>(input, kind);
    break;
  case 1:
    OmbrixFuzz::streamRoundTrip<Ombrix::AIEventHandlerOptions>(input, kind);
    break;
  default:
    OmbrixFuzz::streamRoundTrip<Ombrix::TrivialEventHandlerOptions>(input, kind);
    break;
  }
  return 0;
}
