// The state file: whatever its content, reading it gives a state, and a state with a text that was read
// writes a file that reads back to it.
#include "ombrix/exchange/StateFileReaderWriter.h"
#include "ombrix/sdk/SolveState.h"

#include "FuzzSupport.h"

#include <cctype>
#include <stdexcept>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
  const std::string_view text = OmbrixFuzz::asText(data, size);
  // A file that does not start with a number only makes the reader pause and try again: pure waiting.
  const std::size_t first = text.find_first_not_of(" \t\n\r\v\f");
  if (first == std::string_view::npos ||
      !(std::isdigit(static_cast<unsigned char>(text[first])) || text[first] == '-' || text[first] == '+'))
    return 0;
  static const std::string path = OmbrixFuzz::scratchFile("fuzz.state");
  OmbrixFuzz::writeFile(path, text);
  Ombrix::StateFileReaderWriter file(path);
  const KorvanSDK::SolveState state = file.readState(1);
  try
  {
    KorvanSDK::toString(state); // only states with a text can be written
  }
  catch (const std::logic_error&)
  {
    return 0;
  }
  file.writeState(state, 1);
  if (file.readState(1) != state)
    OmbrixFuzz::fail("a state read from a file does not survive writing it again");
  return 0;
}
