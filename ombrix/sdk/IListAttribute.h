// The host SDK's view of a list attribute.
#pragma once

#include "ombrix/sdk/IAttribute.h"

namespace KorvanSDK::Model
{

class OMBRIX_API IListAttribute : public IAttribute
{
};

} // namespace KorvanSDK::Model
