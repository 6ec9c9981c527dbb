# Builds the layering probes in BUILD_DIR: the allowed ones must compile, each forbidden one must
# fail on its include and nothing else.
function(build target result_var output_var)
  execute_process(COMMAND ${CMAKE_COMMAND} --build ${BUILD_DIR} --target ${target}
                  RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  set(${result_var} ${result} PARENT_SCOPE)
  set(${output_var} "${output}" PARENT_SCOPE)
endfunction()

foreach(target ovel_layering_view_includes_state ovel_layering_core_includes_glib)
  build(${target} result output)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${target} includes only what it may and does not compile:\n${output}")
  endif()
endforeach()

foreach(probe "ovel_layering_view_includes_engine|webkit/WebKitEngine.h"
              "ovel_layering_core_includes_view|chrome/WebContainer.h"
              "ovel_layering_core_includes_gio|gio/gio.h"
              "ovel_layering_core_includes_gobject|glib-object.h")
  string(REPLACE "|" ";" parts "${probe}")
  list(GET parts 0 target)
  list(GET parts 1 header)
  build(${target} result output)
  if(result EQUAL 0)
    message(FATAL_ERROR "${target} compiled: ${header} is reachable across a layer boundary")
  endif()
  if(NOT output MATCHES "${header}: No such file or directory")
    message(FATAL_ERROR "${target} failed for another reason than its include:\n${output}")
  endif()
  message(STATUS "${target}: refused (${header} not found)")
endforeach()
