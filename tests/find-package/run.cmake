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

# The version query, and a build through pkg-config alone, as a host without CMake does it.
execute_process(COMMAND ${BINARY_DIR}/consumer/version_check RESULT_VARIABLE result)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "Ombrix::getVersion() differs from OMBRIX_VERSION_STRING")
endif()
find_program(PKG_CONFIG pkg-config)
if(PKG_CONFIG)
  file(GLOB pc_dir ${prefix}/lib*/pkgconfig ${prefix}/lib/*/pkgconfig)
  execute_process(COMMAND ${CMAKE_COMMAND} -E env PKG_CONFIG_PATH=${pc_dir} ${PKG_CONFIG} --cflags --libs OmbrixModel
                  OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE RESULT_VARIABLE result)
  separate_arguments(flags UNIX_COMMAND "${flags}")
  execute_process(COMMAND c++ -std=c++20 ${SOURCE_DIR}/tests/find-package/consumer.cpp ${flags}
                          -o ${BINARY_DIR}/pkgconfig_consumer RESULT_VARIABLE built)
  execute_process(COMMAND ${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${pc_dir}/.. ${BINARY_DIR}/pkgconfig_consumer
                  RESULT_VARIABLE ran)
  if(NOT result EQUAL 0 OR NOT built EQUAL 0 OR NOT ran EQUAL 0)
    message(FATAL_ERROR "pkg-config build failed (pkg-config ${result}, build ${built}, run ${ran}) with ${flags}")
  endif()
endif()
