// Base of every object handed to the host: the interface I, a handle type number N, and the code and
// message of the last failed call, kept for the caller to read. One thread at a time.
#pragma once

#include "ombrix/OmbrixExport.h"

#include <string>

namespace KorvanSDK
{

template <class I, int N>
class OMBRIX_API Handle : public I
{
public:
  static constexpr int handleType = N;
};

} // namespace KorvanSDK
