// The host SDK's view of one attribute of the model.
#pragma once

#include "ombrix/OmbrixExport.h"

namespace KorvanSDK::Model
{

class OMBRIX_API IAttribute
{
public:
  virtual ~IAttribute() = default;
};

} // namespace KorvanSDK::Model
