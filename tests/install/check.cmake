# Installs the build in BUILD_DIR under a fresh prefix and validates what a desktop reads: the
# desktop entry with desktop-file-validate and the AppStream description with appstreamcli.
set(prefix ${BUILD_DIR}/install-check)
file(REMOVE_RECURSE ${prefix})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix}
                RESULT_VARIABLE result OUTPUT_QUIET ERROR_VARIABLE output)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "install failed:\n${output}")
endif()

foreach(installed bin/ovel-web share/applications/org.ovel.Web.desktop
                  share/metainfo/org.ovel.Web.metainfo.xml
                  share/icons/hicolor/scalable/apps/org.ovel.Web.svg
                  share/icons/hicolor/symbolic/apps/org.ovel.Web-symbolic.svg)
  if(NOT EXISTS ${prefix}/${installed})
    message(FATAL_ERROR "not installed: ${installed}")
  endif()
endforeach()

execute_process(COMMAND desktop-file-validate ${prefix}/share/applications/org.ovel.Web.desktop
                RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
if(NOT result EQUAL 0 OR NOT output STREQUAL "")
  message(FATAL_ERROR "desktop-file-validate:\n${output}")
endif()
execute_process(COMMAND appstreamcli validate --no-net --explain
                        ${prefix}/share/metainfo/org.ovel.Web.metainfo.xml
                RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "appstreamcli validate:\n${output}")
endif()
message(STATUS "installed files validate")
file(REMOVE_RECURSE ${prefix})
