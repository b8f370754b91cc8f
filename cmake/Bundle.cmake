# zemrak_bundle(): the relocatable folder that is the application, brought up to date by every build.
function(zemrak_bundle executable)
  set_target_properties(${executable} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${ZEMRAK_BUNDLE_DIR}/bin")
  add_custom_target(bundle ALL
    COMMAND ${CMAKE_COMMAND}
      -DSOURCE=${PROJECT_SOURCE_DIR} -DBUNDLE=${ZEMRAK_BUNDLE_DIR} -DNODE=${ZEMRAK_NODE}
      -DVERSION=${PROJECT_VERSION}
      -P ${PROJECT_SOURCE_DIR}/cmake/AssembleBundle.cmake
    DEPENDS ${executable} zemrak-window textrender pdfrender
    COMMENT "Assembling the application bundle"
    VERBATIM)
endfunction()
