# `cmake --install build --prefix P` lays out an installed host:
#   bin/tamberlyne                                   the command
#   lib/libstavio.so, lib/libtoolbox.so              our shared libraries
#   lib/tamberlyne/PlugIns/Tamberlyne.bundle/        the plug-in module and its Resources/
#   share/tamberlyne/Tamberlyne/                     the bundled groove library
#   share/doc/tamberlyne/                            the documentation
# (lib/ and share/ as GNUInstallDirs names them). Every run path is relative to $ORIGIN, and the
# command finds its plug-in folder and groove library relative to itself, so the installed tree
# can be moved to another prefix.
set(CMAKE_INSTALL_DOCDIR share/doc/tamberlyne CACHE PATH "Documentation (DOCDIR)")
include(GNUInstallDirs)

set(TAMBERLYNE_INSTALL_PLUGIN_DIR ${CMAKE_INSTALL_LIBDIR}/tamberlyne/PlugIns)
set(TAMBERLYNE_INSTALL_BUNDLE_DIR ${TAMBERLYNE_INSTALL_PLUGIN_DIR}/Tamberlyne.bundle)
set(TAMBERLYNE_INSTALL_GROOVE_DIR ${CMAKE_INSTALL_DATADIR}/tamberlyne/Tamberlyne)

# Paths from one installed folder to another, for run paths and for the command's look-ups.
function(tamberlyne_install_relative out from to)
  file(RELATIVE_PATH relative ${CMAKE_INSTALL_PREFIX}/${from} ${CMAKE_INSTALL_PREFIX}/${to})
  set(${out} ${relative} PARENT_SCOPE)
endfunction()
tamberlyne_install_relative(lib_from_bin ${CMAKE_INSTALL_BINDIR} ${CMAKE_INSTALL_LIBDIR})
tamberlyne_install_relative(lib_from_bundle ${TAMBERLYNE_INSTALL_BUNDLE_DIR} ${CMAKE_INSTALL_LIBDIR})
tamberlyne_install_relative(plugins_from_bin ${CMAKE_INSTALL_BINDIR} ${TAMBERLYNE_INSTALL_PLUGIN_DIR})
tamberlyne_install_relative(grooves_from_bin ${CMAKE_INSTALL_BINDIR} ${TAMBERLYNE_INSTALL_GROOVE_DIR})

set_target_properties(tamberlyne_cli PROPERTIES INSTALL_RPATH "$ORIGIN/${lib_from_bin}")
set_target_properties(stavio PROPERTIES INSTALL_RPATH "$ORIGIN")
set_target_properties(tamberlyne_module PROPERTIES INSTALL_RPATH "$ORIGIN/${lib_from_bundle}")
target_compile_definitions(tamberlyne_cli PRIVATE TAMBERLYNE_INSTALLED_PLUGIN_FOLDER="${plugins_from_bin}"
                                                 TAMBERLYNE_INSTALLED_GROOVE_LIBRARY="${grooves_from_bin}")

install(TARGETS tamberlyne_cli RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(TARGETS stavio toolbox LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS tamberlyne_module LIBRARY DESTINATION ${TAMBERLYNE_INSTALL_BUNDLE_DIR})
install(FILES ${PROJECT_SOURCE_DIR}/tamberlyne/resources/Tamberlyne.rsrc
        DESTINATION ${TAMBERLYNE_INSTALL_BUNDLE_DIR}/Resources)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/grooves/Tamberlyne/ DESTINATION ${TAMBERLYNE_INSTALL_GROOVE_DIR})

# The documentation keeps the tree's folders, so that its links between files still hold.
foreach(doc README.md stavio/README.md stavio/docs/records.md stavio/docs/preference-records.md
            stavio/midi_import/README.md stavio/dialogs/README.md toolbox/RESOURCES.md toolbox/DIALOGS.md
            grooves/README.md)
  get_filename_component(doc_folder ${doc} DIRECTORY)
  install(FILES ${PROJECT_SOURCE_DIR}/${doc} DESTINATION ${CMAKE_INSTALL_DOCDIR}/${doc_folder})
endforeach()
