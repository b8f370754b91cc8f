# Copies what changed into the bundle's resources; the print service is bundled by bundle-service.mjs.
set(resources "${BUNDLE}/resources")
file(MAKE_DIRECTORY "${resources}")

file(REAL_PATH "${NODE}" node_real)
if(IS_SYMLINK "${resources}/node")
  file(READ_SYMLINK "${resources}/node" node_linked)
endif()
if(NOT "${node_linked}" STREQUAL "${node_real}")
  file(REMOVE "${resources}/node")
  file(CREATE_LINK "${node_real}" "${resources}/node" SYMBOLIC)
endif()

# The version of the bundle as a whole, by which updates are compared.
file(CONFIGURE OUTPUT "${resources}/version" CONTENT "${VERSION}\n" @ONLY)
file(COPY "${SOURCE}/resources/logo-circle.png" "${SOURCE}/resources/install-update.sh" DESTINATION "${resources}")
file(COPY "${SOURCE}/resources/fonts" DESTINATION "${resources}")
file(COPY "${SOURCE}/sdk" DESTINATION "${resources}")
