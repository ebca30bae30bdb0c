# What the project's own targets are compiled with; nothing of it reaches a program that links the library.
add_library(tessel_options INTERFACE)
target_compile_definitions(tessel_options INTERFACE
    QT_NO_CAST_TO_ASCII
    QT_NO_CAST_FROM_BYTEARRAY
    QT_NO_URL_CAST_FROM_STRING
    QT_DEPRECATED_WARNINGS)
target_compile_options(tessel_options INTERFACE
    -Wall -Wextra -Wpedantic -Wnon-virtual-dtor -Wold-style-cast -Wcast-align
    -Woverloaded-virtual -Wformat=2
    $<$<CXX_COMPILER_ID:GNU>:-Wshadow=local>
    # QSKIP with a text alone; entities, whose table has no destructor and which nothing derives from.
    $<$<CXX_COMPILER_ID:Clang>:-Wno-gnu-zero-variadic-macro-arguments>
    $<$<CXX_COMPILER_ID:Clang>:-Wno-delete-non-abstract-non-virtual-dtor>
    $<$<BOOL:${TESSEL_DEVELOPER}>:-Werror>)
if(TESSEL_SANITIZERS)
    target_compile_options(tessel_options INTERFACE
        -fsanitize=${TESSEL_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(tessel_options INTERFACE -fsanitize=${TESSEL_SANITIZERS})
endif()
