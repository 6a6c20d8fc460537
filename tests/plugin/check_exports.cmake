# Checks that the plug-in module exports exactly its main entry and the twelve entry-point
# names: everything else must stay inside the module.
#   cmake -DNM=<nm> -DMODULE=<path> -P check_exports.cmake
execute_process(COMMAND ${NM} -D --defined-only ${MODULE}
                OUTPUT_VARIABLE listing ERROR_VARIABLE error RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "${NM} failed on ${MODULE}: ${error}")
endif()

string(REPLACE "\n" ";" lines "${listing}")
set(exported "")
foreach(line IN LISTS lines)
  if(line MATCHES "^[0-9a-fA-F]+ [A-Za-z] ([^ ]+)$")
    list(APPEND exported ${CMAKE_MATCH_1})
  endif()
endforeach()
list(SORT exported)

set(expected main
  StavioExtensionVersion StavioExtensionInit StavioExtensionEnumerate
  StavioExtensionGetMenuStatus StavioExtensionInvoke StavioExtensionTerminate
  Ext_getversion Ext_init Ext_enumerate Ext_getmenustatus Ext_invoke Ext_terminate)
list(SORT expected)

if(NOT exported STREQUAL expected)
  message(FATAL_ERROR "${MODULE} exports\n  ${exported}\nexpected exactly\n  ${expected}")
endif()
message(STATUS "exports: ${exported}")
