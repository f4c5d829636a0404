// The host SDK's view of a list attribute, which holds an ordered list of entities; its calls are those of
// IEntityLinkAttribute.
#pragma once

#include "ombrix/sdk/IEntityLinkAttribute.h"

namespace KorvanSDK::Model
{

class OMBRIX_API IListAttribute : public IEntityLinkAttribute
{
};

} // namespace KorvanSDK::Model
