// The library found at run time is the one whose headers were compiled against.
#include "ombrix/OmbrixVersion.h"

#include <cstdio>
#include <cstring>

int main()
{
  std::printf("OmbrixModel %s\n", Ombrix::getVersion());
  return std::strcmp(Ombrix::getVersion(), OMBRIX_VERSION_STRING) == 0 ? 0 : 1;
}
