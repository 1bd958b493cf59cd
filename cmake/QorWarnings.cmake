# Our own targets build with -Wall -Wextra as errors; third-party code is not touched.
function(qor_set_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Werror)
endfunction()
