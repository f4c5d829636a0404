// The alive file: any content is judged alive or not, never crashes the reader.
#include "ombrix/exchange/AliveFileReaderWriter.h"

#include "FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
  const std::string_view text = OmbrixFuzz::asText(data, size);
  // Without an end marker the reader only waits for the writer to finish (ten tries 200 ms apart):
  // nothing there is worth the fuzzer's time.
  if (text.find("<END>") == std::string_view::npos)
    return 0;
  static const std::string path = OmbrixFuzz::scratchFile("fuzz.alive");
  OmbrixFuzz::writeFile(path, text);
  Ombrix::AliveFileReaderWriter reader(path);
  reader.setGracePeriod(30);
  const bool alive = reader.checkAlive();
  if (alive != reader.isAlive())
    OmbrixFuzz::fail("checkAlive and isAlive disagree");
  return 0;
}
