// An opaque block of bytes, such as the content of an AI module definition.
#pragma once

#include <cstdint>
#include <vector>

namespace Utilities
{

using bytearray = std::vector<std::uint8_t>;

} // namespace Utilities
