# Installs the build into a scratch prefix and imports the installed package from there, with nothing of
# the build tree on the path: the module must find libOmbrixModel through its own run path.
file(REMOVE_RECURSE ${PREFIX})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BINARY_DIR} --prefix ${PREFIX} OUTPUT_QUIET
  RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "install into ${PREFIX} failed (${result})")
endif()
# Run from the prefix: Python puts the working directory first on its path, and the build tree's
# package must not be found there.
execute_process(
  COMMAND ${CMAKE_COMMAND} -E env --unset=LD_LIBRARY_PATH PYTHONPATH=${PREFIX}/${PACKAGE_DIR}
    ${PYTHON} -c "import ombrix; print(ombrix.__file__); print(ombrix.ExchangeFiles('/x').def_file)"
  WORKING_DIRECTORY ${PREFIX}
  OUTPUT_VARIABLE output RESULT_VARIABLE result)
if(NOT result EQUAL 0 OR NOT output MATCHES "^${PREFIX}/${PACKAGE_DIR}/ombrix/__init__.py\n/x/def.csv\n$")
  message(FATAL_ERROR "the installed package did not import from ${PREFIX} (${result}):\n${output}")
endif()
file(REMOVE_RECURSE ${PREFIX})
