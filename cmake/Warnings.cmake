# Our own code builds without warnings; third-party headers come in as system includes.
# TAMBERLYNE_WERROR turns the warnings into errors: on in `make test` and CI, off by default so
# that a newer or older compiler's new diagnostics never stop a by-hand build.
option(TAMBERLYNE_WERROR "Treat compiler warnings in our own code as errors" OFF)

set(TAMBERLYNE_WARNING_FLAGS
  -Wall -Wextra -Wpedantic
  -Wshadow -Wcast-qual -Wold-style-cast -Wdouble-promotion -Wsign-conversion)
if(TAMBERLYNE_WERROR)
  list(APPEND TAMBERLYNE_WARNING_FLAGS -Werror)
endif()

function(tamberlyne_warnings target)
  target_compile_options(${target} PRIVATE ${TAMBERLYNE_WARNING_FLAGS})
endfunction()
