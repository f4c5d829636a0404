// The host SDK's view of an attribute that holds child attributes.
#pragma once

#include "ombrix/sdk/IAttribute.h"

namespace KorvanSDK::Model
{

class OMBRIX_API ICompositeAttribute : public IAttribute
{
};

} // namespace KorvanSDK::Model
