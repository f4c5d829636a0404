#include "ombrix/OmbrixVersion.h"

namespace Ombrix
{

const char* getVersion()
{
  return OMBRIX_VERSION_STRING;
}

} // namespace Ombrix
