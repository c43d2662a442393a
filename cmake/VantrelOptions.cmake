# Compiler options that every target of this project shares.
function(vantrel_options target)
    # Also puts the standard on the command line, where clang-tidy looks for it.
    set_target_properties(${target} PROPERTIES CXX_EXTENSIONS OFF)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wshadow -Wnon-virtual-dtor)
    # A class that overrides one overload of an operation hides its siblings on purpose, so this
    # warning is only on where no class of the object model is derived from.
    if(ARGV1 STREQUAL "NO_OVERLOADED_VIRTUAL")
        target_compile_options(${target} PRIVATE -Wno-overloaded-virtual)
    endif()
    if(VANTREL_WARNINGS_AS_ERRORS)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
    if(VANTREL_SANITIZE)
        target_compile_options(${target} PRIVATE
            -fsanitize=${VANTREL_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
        target_link_options(${target} PRIVATE -fsanitize=${VANTREL_SANITIZE})
    endif()
endfunction()
