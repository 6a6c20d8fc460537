# Our own code builds without warnings; third-party headers come in as system includes.
function(tamberlyne_warnings target)
  target_compile_options(${target} PRIVATE -Wall -Wextra -Werror)
endfunction()
