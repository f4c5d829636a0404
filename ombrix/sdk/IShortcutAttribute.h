// The host SDK's view of a shortcut attribute.
#pragma once

#include "ombrix/sdk/IAttribute.h"

namespace KorvanSDK::Model
{

class OMBRIX_API IShortcutAttribute : public IAttribute
{
};

} // namespace KorvanSDK::Model
