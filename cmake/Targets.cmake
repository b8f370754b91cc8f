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
  target_compile_options(zemrak_options INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(zemrak_options INTERFACE -fsanitize=address,undefined)
endif()
if(ZEMRAK_FUZZ)
  set(fuzz_checks address,undefined,float-cast-overflow)
  target_compile_options(zemrak_options INTERFACE
    -O1 -fsanitize=fuzzer-no-link,${fuzz_checks} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(zemrak_options INTERFACE -fsanitize=${fuzz_checks})
endif()

# zemrak_room(NAME SOURCES... [LINK ...]): one room of src/ as a static library.
function(zemrak_room name)
  cmake_parse_arguments(ROOM "" "" "LINK" ${ARGN})
  add_library(zemrak_${name} STATIC ${ROOM_UNPARSED_ARGUMENTS})
  target_include_directories(zemrak_${name} PUBLIC ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(zemrak_${name} PUBLIC ${ROOM_LINK} PRIVATE zemrak_options)
endfunction()
