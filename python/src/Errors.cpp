// Library exceptions become Python exceptions with the library's text. The classes share the base
// ombrix.Error; those for a missing entity or attribute and for a refused value are also KeyError and
// ValueError, so that ordinary Python handlers catch them.
#include "ombrix/csv/AttributeReadError.h"
#include "ombrix/model/AccessException.h"

#include "Bindings.h"

#include <new>
#include <stdexcept>

namespace OmbrixPython
{

namespace
{

PyObject* errorType = nullptr;
PyObject* accessErrorType = nullptr;
PyObject* readErrorType = nullptr;
PyObject* notFoundType = nullptr;
PyObject* argumentType = nullptr;

// A new exception class `ombrix.<name>` with `bases`, added to the module. `plainText`: str() gives the
// message as it is (KeyError would quote it).
PyObject* makeError(py::module_& module, const char* name, py::tuple bases, const char* doc, bool plainText)
{
  py::dict members;
  if (plainText)
    members["__str__"] = py::module_::import("builtins").attr("BaseException").attr("__str__");
  const std::string qualified = std::string("ombrix.") + name;
  PyObject* type = PyErr_NewExceptionWithDoc(qualified.c_str(), doc, bases.ptr(), members.ptr());
  if (!type)
    throw py::error_already_set();
  module.add_object(name, py::handle(type));
  return type;
}

} // namespace

void bindErrors(py::module_& module)
{
  const py::handle runtimeError(PyExc_RuntimeError);
  errorType = makeError(module, "Error", py::make_tuple(runtimeError),
                        "An error reported by the OmbrixModel library; the text is the library's.", false);
  const py::handle error(errorType);
  accessErrorType = makeError(module, "AccessError", py::make_tuple(error),
                              "A user read or write that the attribute's access type does not allow.", false);
  readErrorType = makeError(module, "AttributeReadError", py::make_tuple(error),
                            "A row of an exchange file that names or describes an attribute that cannot be "
                            "read into the model.",
                            false);
  notFoundType = makeError(module, "NotFoundError", py::make_tuple(error, py::handle(PyExc_KeyError)),
                           "An entity or attribute that the model does not have.", true);
  argumentType =
      makeError(module, "ArgumentError", py::make_tuple(error, py::handle(PyExc_ValueError)),
                "A value or argument the library refuses (its std::logic_error family: out of range, invalid "
                "argument, not implemented).",
                false);

  py::register_exception_translator(
      [](std::exception_ptr pending)
      {
        try
        {
          if (pending)
            std::rethrow_exception(pending);
        }
        catch (const py::builtin_exception&)
        {
          throw; // pybind11's own, already the right Python type
        }
        catch (const py::error_already_set&)
        {
          throw;
        }
        catch (const std::bad_alloc&)
        {
          throw;
        }
        catch (const Ombrix::Model::AccessException& e)
        {
          PyErr_SetString(accessErrorType, e.what());
        }
        catch (const Ombrix::AttributeReadError& e)
        {
          PyErr_SetString(readErrorType, e.what());
        }
        catch (const NotFound& e)
        {
          PyErr_SetString(notFoundType, e.what());
        }
        catch (const std::logic_error& e)
        {
          // out_of_range, invalid_argument and the like; "Not implemented" and "Invalid type" too.
          PyErr_SetString(argumentType, e.what());
        }
        catch (const std::exception& e)
        {
          PyErr_SetString(errorType, e.what());
        }
      });
}

} // namespace OmbrixPython
