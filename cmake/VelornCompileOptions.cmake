# Options that every target of the project shares, carried by the interface target velorn_options.
add_library(velorn_options INTERFACE)
target_compile_features(velorn_options INTERFACE cxx_std_20 c_std_99)
target_compile_options(velorn_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror
    # Results are defined to the last bit: no fused operations that the source does not write.
    -ffp-contract=off
    $<$<CONFIG:Release,RelWithDebInfo>:-O3>)
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
    target_compile_options(velorn_options INTERFACE -msse2 -mfpmath=sse)
endif()

if(VELORN_SANITIZE)
    add_compile_options(-fsanitize=${VELORN_SANITIZE} -fno-omit-frame-pointer
                        -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${VELORN_SANITIZE})
    # Instrumented code looks faulty to the compiler where it is not, in its own headers too.
    target_compile_options(velorn_options INTERFACE
        -Wno-maybe-uninitialized -Wno-stringop-overflow)
endif()
