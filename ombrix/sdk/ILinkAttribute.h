// The host SDK's view of a link attribute, which holds at most one entity; its calls are those of
// IEntityLinkAttribute.
#pragma once

#include "ombrix/sdk/IEntityLinkAttribute.h"

namespace KorvanSDK::Model
{

class OMBRIX_API ILinkAttribute : public IEntityLinkAttribute
{
};

} // namespace KorvanSDK::Model
