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

# What the libraries of the package share: both kinds of sources, visibility, version, link-time
# optimisation of releases, installation. The lists class_sources, other_sources and headers are
# those of the caller; headers go into the directory of that name.
function(vantrel_library target export_name header_dir)
    add_library(${target} SHARED ${headers} ${class_sources} ${other_sources})
    add_library(Vantrel::${export_name} ALIAS ${target})
    vantrel_options(${target})
    set_source_files_properties(${other_sources} PROPERTIES COMPILE_OPTIONS "-Woverloaded-virtual")
    set_source_files_properties(${class_sources} PROPERTIES COMPILE_OPTIONS "-Wno-overloaded-virtual")
    target_compile_features(${target} PUBLIC cxx_std_17)
    target_compile_definitions(${target} PRIVATE QT_NO_CAST_FROM_ASCII)
    set_target_properties(${target} PROPERTIES
        EXPORT_NAME ${export_name}
        INSTALL_RPATH "$ORIGIN"
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR})
    include(CheckIPOSupported)
    check_ipo_supported(RESULT ipo_supported LANGUAGES CXX)
    if(ipo_supported)
        set_target_properties(${target} PROPERTIES INTERPROCEDURAL_OPTIMIZATION_RELEASE ON)
    endif()
    install(TARGETS ${target} EXPORT VantrelTargets LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}")
    install(FILES ${headers} DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/vantrel/${header_dir}")
endfunction()
