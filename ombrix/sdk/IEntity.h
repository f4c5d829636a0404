// The host SDK's view of an entity.
#pragma once

#include "ombrix/sdk/ICompositeAttribute.h"

namespace KorvanSDK::Model
{

class OMBRIX_API IEntity : public ICompositeAttribute
{
};

} // namespace KorvanSDK::Model
