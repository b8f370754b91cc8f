# zemrak_bundled(TARGET FOLDER): the built program or library goes into FOLDER of the bundle, without its symbols. Those
# stay in what the build folder has, which debuggers take for it.
function(zemrak_bundled target folder)
  if(ZEMRAK_SANITIZE)
    set(copy ${CMAKE_COMMAND} -E copy $<TARGET_FILE:${target}>)
  else()
    set(copy ${CMAKE_STRIP} $<TARGET_FILE:${target}> -o)
  endif()
  add_custom_command(TARGET ${target} POST_BUILD
    COMMAND ${CMAKE_COMMAND} -E make_directory ${ZEMRAK_BUNDLE_DIR}/${folder}
    COMMAND ${copy} ${ZEMRAK_BUNDLE_DIR}/${folder}/$<TARGET_FILE_NAME:${target}>
    VERBATIM)
endfunction()

# zemrak_bundle(): the relocatable folder that is the application, brought up to date by every build.
function(zemrak_bundle executable)
  zemrak_bundled(${executable} bin)

  # The print service. The depfile names its modules, so a change to one bundles it anew, in a third of a second.
  set(bundler ${PROJECT_SOURCE_DIR}/cmake/bundle-service.mjs)
  set(agent ${ZEMRAK_BUNDLE_DIR}/resources/agent)
  set(service ${agent}/bin/zemrak-local-print.mjs)
  add_custom_command(OUTPUT ${service}
    COMMAND ${ZEMRAK_NODE} ${bundler} ${PROJECT_SOURCE_DIR} ${agent} ${PROJECT_BINARY_DIR}/service.d
    DEPENDS ${bundler}
    DEPFILE ${PROJECT_BINARY_DIR}/service.d
    COMMENT "Bundling the print service"
    VERBATIM)
  add_custom_target(service DEPENDS ${service}) # of its own: it does not wait for what is compiled

  add_custom_target(bundle ALL
    COMMAND ${CMAKE_COMMAND}
      -DSOURCE=${PROJECT_SOURCE_DIR} -DBUNDLE=${ZEMRAK_BUNDLE_DIR} -DNODE=${ZEMRAK_NODE}
      -DVERSION=${PROJECT_VERSION}
      -P ${PROJECT_SOURCE_DIR}/cmake/AssembleBundle.cmake
    DEPENDS ${executable} zemrak-window textrender pdfrender paper-twin service
    COMMENT "Assembling the application bundle"
    VERBATIM)
endfunction()
