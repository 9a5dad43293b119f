# What every target of this tree compiles with. Warnings stay private to the build; nothing of this reaches a consumer.
set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
set(CMAKE_INSTALL_RPATH "$ORIGIN;$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")

option(ORLO_WARNINGS_AS_ERRORS "Treat warnings as errors" OFF)
option(ORLO_CCACHE "Compile through ccache where it is installed" OFF)
option(ORLO_COVERAGE "Instrument for gcov" OFF)
option(ORLO_FUZZ_TARGETS "Offer the fuzz targets, which need clang" OFF)
set(ORLO_SANITIZERS "" CACHE STRING "Sanitizers, as -fsanitize takes them: address,undefined or thread")

if(ORLO_SANITIZERS MATCHES "thread")
    # With hidden inlines cpprestsdk uses copies of the standard library's code that are not instrumented, and every
    # reference count looks like a race.
    set(CMAKE_CXX_VISIBILITY_PRESET default)
    set(CMAKE_VISIBILITY_INLINES_HIDDEN OFF)
endif()

if(ORLO_CCACHE)
    find_program(ORLO_CCACHE_PROGRAM ccache)
    if(ORLO_CCACHE_PROGRAM)
        set(CMAKE_CXX_COMPILER_LAUNCHER ${ORLO_CCACHE_PROGRAM})
    endif()
endif()

add_library(orlo_options INTERFACE)
target_compile_features(orlo_options INTERFACE cxx_std_17)
# cpprestsdk defines a macro U unless told otherwise, which breaks other people's headers.
target_compile_definitions(orlo_options INTERFACE _TURN_OFF_PLATFORM_STRING)
target_compile_options(orlo_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow
    # Logs name sources relative to the root of the tree, never a build machine's path.
    -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)
# A product and a sum stay two operations, on machines that could do them in one too: what a grid measures is the same everywhere.
target_compile_options(orlo_options INTERFACE $<$<CXX_COMPILER_ID:GNU,Clang,AppleClang>:-ffp-contract=off>)
if(ORLO_WARNINGS_AS_ERRORS)
    target_compile_options(orlo_options INTERFACE -Werror)
endif()
if(CMAKE_UNITY_BUILD)
    # A source of its own may well have a fixture in an unnamed namespace.
    target_compile_options(orlo_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
endif()
if(ORLO_SANITIZERS)
    # The check of vptrs takes the packaged cpprestsdk, which hides its type information, for broken.
    target_compile_options(orlo_options INTERFACE
        -fsanitize=${ORLO_SANITIZERS} -fno-sanitize=vptr -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
    target_link_options(orlo_options INTERFACE -fsanitize=${ORLO_SANITIZERS})
    if(ORLO_FUZZ_TARGETS)
        target_compile_options(orlo_options INTERFACE -fsanitize-ignorelist=${PROJECT_SOURCE_DIR}/tests/fuzz/ubsan.ignore)
    endif()
endif()
if(ORLO_COVERAGE)
    target_compile_options(orlo_options INTERFACE --coverage)
    target_link_options(orlo_options INTERFACE --coverage)
endif()
