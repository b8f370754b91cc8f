# The compiler settings every target of ours shares. Warnings are errors here and nowhere else.
add_library(zemrak_options INTERFACE)
target_compile_options(zemrak_options INTERFACE
  -Wall -Wextra -Wpedantic -Werror -Wshadow -Wconversion -Wno-sign-conversion -Wnon-virtual-dtor
  -Woverloaded-virtual -Wimplicit-fallthrough
  -Wno-missing-field-initializers) # leaving a member at its default is what designated initializers are for
target_compile_definitions(zemrak_options INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING QT_NO_FOREACH
  QT_DISABLE_DEPRECATED_BEFORE=0x060400
  ZEMRAK_VERSION="${PROJECT_VERSION}")
if(ZEMRAK_SANITIZE)
  # Checks of memory as calls in place of code of their own at every access: half the time to compile.
  target_compile_options(zemrak_options INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer
    --param asan-instrumentation-with-call-threshold=0)
  target_link_options(zemrak_options INTERFACE -fsanitize=address,undefined)
endif()
if(ZEMRAK_FUZZ)
  set(fuzz_checks address,undefined,float-cast-overflow)
  target_compile_options(zemrak_options INTERFACE
    -O1 -fsanitize=fuzzer-no-link,${fuzz_checks} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(zemrak_options INTERFACE -fsanitize=${fuzz_checks})
endif()

# The headers that most sources include, read once for all targets. It is compiled with no more definitions than every
# target of ours has, as the compiler takes it only where all of those are the same.
add_library(zemrak_pch OBJECT cmake/pch.cpp)
target_precompile_headers(zemrak_pch PRIVATE cmake/pch.h)
target_link_libraries(zemrak_pch PRIVATE Qt6::Core zemrak_options)
set_target_properties(zemrak_pch PROPERTIES AUTOMOC OFF)

# zemrak_ours(TARGET): what every target with sources of ours has.
function(zemrak_ours target)
  target_link_libraries(${target} PRIVATE zemrak_options)
  target_precompile_headers(${target} REUSE_FROM zemrak_pch)
endfunction()

# zemrak_room(NAME SOURCES... [LINK ...]): one room of src/ as a static library.
function(zemrak_room name)
  cmake_parse_arguments(ROOM "" "" "LINK" ${ARGN})
  add_library(zemrak_${name} STATIC ${ROOM_UNPARSED_ARGUMENTS})
  target_include_directories(zemrak_${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(zemrak_${name} PUBLIC ${ROOM_LINK})
  zemrak_ours(zemrak_${name})
endfunction()
