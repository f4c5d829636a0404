// The compiled half of the Python package `ombrix`: the model, bulk values as numpy arrays, and the
// exchange protocol's files. The pure-Python half (ombrix/__init__.py, ombrix/client.py) builds the
// client loop on top.
#include "Bindings.h"

PYBIND11_MODULE(_ombrix, module)
{
  module.doc() = "OmbrixModel bindings: the exchanged model, data files as numpy arrays, state and alive "
                 "files. Import the package `ombrix` rather than this module.";
  OmbrixPython::bindErrors(module);
  OmbrixPython::bindModel(module);
  OmbrixPython::bindExchange(module); // its enumerations are defaults of the value classes
  OmbrixPython::bindValues(module);
}
