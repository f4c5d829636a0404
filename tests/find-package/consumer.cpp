// Builds against an installed OmbrixModel through find_package and uses it.
#include "ombrix/model/AttributePath.h"

#include <iostream>

int main()
{
  const Ombrix::Model::AttributePath path("Results.Time");
  std::cout << path.toString() << '\n';
  return path.size() == 2 ? 0 : 1;
}
