# Options that every target of the project shares, carried by the interface target velorn_options.
add_library(velorn_options INTERFACE)
target_compile_features(velorn_options INTERFACE cxx_std_20 c_std_99)
# Targets with the property VELORN_COMPILE_FAST spend their time in other targets' code.
set(optimisation "$<IF:$<BOOL:$<TARGET_PROPERTY:VELORN_COMPILE_FAST>>,-O1,-O3>")
# Below -O3, GCC 12 reports false positives in its own std::string (its bug 105651).
set(false_positives
    "$<$<CXX_COMPILER_ID:GNU>:-Wno-array-bounds;-Wno-restrict;-Wno-stringop-overflow>")
target_compile_options(velorn_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror
    # Results are defined to the last bit: no fused operations that the source does not write.
    -ffp-contract=off
    $<$<CONFIG:Release,RelWithDebInfo>:${optimisation}>
    "$<$<BOOL:$<TARGET_PROPERTY:VELORN_COMPILE_FAST>>:${false_positives}>")
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    target_compile_options(velorn_options INTERFACE -msse2 -mfpmath=sse)
endif()

if(VELORN_SCALAR)
    target_compile_definitions(velorn_options INTERFACE HWY_COMPILE_ONLY_SCALAR)
endif()

if(VELORN_SANITIZE)
    # Line numbers are the only debug information that the sanitizers' reports use.
    add_compile_options(-O1 -g1 -fsanitize=${VELORN_SANITIZE} -fno-omit-frame-pointer
                        -fno-sanitize-recover=all)
    add_compile_definitions(_GLIBCXX_ASSERTIONS)
    add_link_options(-fsanitize=${VELORN_SANITIZE})
    # The compiler reports false positives in instrumented code, in its own headers too. Warnings of
    # the other presets remain errors.
    target_compile_options(velorn_options INTERFACE
        -Wno-error -Wno-maybe-uninitialized "${false_positives}")
endif()

# Sources of vector code hand vectors through many small functions. Checks of these objects take
# more than half of the time that the tests of the search need; accesses to arrays remain checked.
function(velorn_sanitize_vector_code)
    if(NOT VELORN_SANITIZE)
        return()
    endif()
    foreach(source ${ARGN})
        file(STRINGS ${source} dispatch REGEX "hwy/foreach_target\\.h" LIMIT_COUNT 1)
        if(dispatch)
            set_source_files_properties(${source} PROPERTIES COMPILE_OPTIONS
                "-O2;-fno-sanitize-address-use-after-scope;-fno-sanitize=null,alignment,object-size")
        endif()
    endforeach()
endfunction()
