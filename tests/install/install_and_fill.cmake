# Installs the build into WORK_DIR/staging, moves the prefix to WORK_DIR/moved (the installed
# tree must not depend on where it was put), and runs the main job from there with the per-user
# folders inside WORK_DIR.
file(REMOVE_RECURSE ${WORK_DIR})
file(MAKE_DIRECTORY ${WORK_DIR})

execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${WORK_DIR}/staging
                RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "cmake --install failed (${status}):\n${output}")
endif()
file(RENAME ${WORK_DIR}/staging ${WORK_DIR}/moved)
set(prefix ${WORK_DIR}/moved)

foreach(installed ${BINDIR}/tamberlyne ${LIBDIR}/libstavio.so ${LIBDIR}/libtoolbox.so
                  ${BUNDLE_DIR}/libtamberlyne.so ${BUNDLE_DIR}/Resources/Tamberlyne.rsrc
                  "${GROOVE_DIR}/Rock 8ths.mid" ${DOCDIR}/README.md ${DOCDIR}/stavio/docs/records.md)
  if(NOT EXISTS "${prefix}/${installed}")
    message(FATAL_ERROR "the install has no ${installed}")
  endif()
endforeach()

execute_process(
  COMMAND ${CMAKE_COMMAND} -E env --unset=LD_LIBRARY_PATH XDG_DATA_HOME=${WORK_DIR}/data
          XDG_CONFIG_HOME=${WORK_DIR}/config
          ${prefix}/${BINDIR}/tamberlyne fill --measures 5-12 --groove "Rock 8ths" --staff Drums --style drums --yes
  WORKING_DIRECTORY ${WORK_DIR}
  RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE errors)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "the installed tamberlyne fill exited with ${status}:\n${output}\n${errors}")
endif()
foreach(expected "(filled from ${prefix}/${GROOVE_DIR}:" "Plug-in result: 1 (the score changed)"
                 "Staff 2 \"Drums\" (changed)" "  MIDI channel 10: yes" "  Acoustic Snare |----o-------o---|")
  string(FIND "${output}" "${expected}" at)
  if(at EQUAL -1)
    message(FATAL_ERROR "the report lacks \"${expected}\":\n${output}\n${errors}")
  endif()
endforeach()
if(NOT EXISTS "${WORK_DIR}/config/tamberlyne/tamberlyne Prefs")
  message(FATAL_ERROR "OK did not remember the option in ${WORK_DIR}/config/tamberlyne")
endif()
