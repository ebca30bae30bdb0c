# Finds libreadstat, which installs neither a CMake nor a pkg-config file.
# Target: readstat::readstat. Cache entries: readstat_INCLUDE_DIR, readstat_LIBRARY.
find_path(readstat_INCLUDE_DIR readstat.h)
find_library(readstat_LIBRARY readstat)
mark_as_advanced(readstat_INCLUDE_DIR readstat_LIBRARY)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(readstat REQUIRED_VARS readstat_LIBRARY readstat_INCLUDE_DIR)

if(readstat_FOUND AND NOT TARGET readstat::readstat)
    add_library(readstat::readstat UNKNOWN IMPORTED)
    set_target_properties(readstat::readstat PROPERTIES
        IMPORTED_LOCATION "${readstat_LIBRARY}"
        INTERFACE_INCLUDE_DIRECTORIES "${readstat_INCLUDE_DIR}")
endif()
