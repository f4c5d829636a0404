# Installs the library into a scratch prefix, then configures, builds and runs a consumer against it.
set(prefix ${BINARY_DIR}/prefix)
file(REMOVE_RECURSE ${BINARY_DIR})
foreach(step
    "${CMAKE_COMMAND};-S;${SOURCE_DIR};-B;${BINARY_DIR}/lib;-G;${GENERATOR};-DCMAKE_BUILD_TYPE=Release;-DOMBRIX_BUILD_TESTS=OFF;-DOMBRIX_BUILD_BENCH=OFF;-DOMBRIX_BUILD_EXAMPLES=OFF;-DOMBRIX_BUILD_PYTHON=OFF"
    "${CMAKE_COMMAND};--build;${BINARY_DIR}/lib"
    "${CMAKE_COMMAND};--install;${BINARY_DIR}/lib;--prefix;${prefix}"
    "${CMAKE_COMMAND};-S;${SOURCE_DIR}/tests/find-package;-B;${BINARY_DIR}/consumer;-G;${GENERATOR};-DCMAKE_PREFIX_PATH=${prefix}"
    "${CMAKE_COMMAND};--build;${BINARY_DIR}/consumer"
    "${BINARY_DIR}/consumer/consumer")
  execute_process(COMMAND ${step} RESULT_VARIABLE result)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "step failed (${result}): ${step}")
  endif()
endforeach()
