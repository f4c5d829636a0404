// The host SDK's view of a array attribute, which holds an ordered array of entities; its calls are those of
// IEntityLinkAttribute.
#pragma once

#include "ombrix/sdk/IEntityLinkAttribute.h"

namespace KorvanSDK::Model
{

class OMBRIX_API IArrayAttribute : public IEntityLinkAttribute
{
};

} // namespace KorvanSDK::Model
