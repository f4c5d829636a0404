// The host SDK's view of a array attribute.
#pragma once

#include "ombrix/sdk/IAttribute.h"

namespace KorvanSDK::Model
{

class OMBRIX_API IArrayAttribute : public IAttribute
{
};

} // namespace KorvanSDK::Model
