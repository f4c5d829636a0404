// The host SDK's view of the whole exchanged model.
#pragma once

#include "ombrix/OmbrixExport.h"

namespace KorvanSDK::Model
{

class OMBRIX_API IEntityCollection
{
public:
  virtual ~IEntityCollection() = default;
};

} // namespace KorvanSDK::Model
