// The options records of the exchange's event handlers, read from a data stream of either encoding.
#include "ombrix/exchange/AIEventHandlerOptions.h"
#include "ombrix/exchange/CSVEventHandlerOptions.h"
#include "ombrix/exchange/TrivialEventHandlerOptions.h"

#include "StreamRoundTrip.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
  return OmbrixFuzz::streamTarget<Ombrix::CSVEventHandlerOptions, Ombrix::AIEventHandlerOptions,
                                  Ombrix::TrivialEventHandlerOptions>(data, size);
}
