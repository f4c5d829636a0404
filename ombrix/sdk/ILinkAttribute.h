// The host SDK's view of a link attribute.
#pragma once

#include "ombrix/sdk/IAttribute.h"

namespace KorvanSDK::Model
{

class OMBRIX_API ILinkAttribute : public IAttribute
{
};

} // namespace KorvanSDK::Model
