# Installs NAME.pc, made of cmake/NAME.pc.in; further arguments go to install(). The paths in it start
# from the file itself, so an installed tree may be moved.
function(install_pkgconfig name)
    set(pkgconfig ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
    file(RELATIVE_PATH prefix_from_pkgconfig ${pkgconfig} ${CMAKE_INSTALL_PREFIX})
    string(REGEX REPLACE "/$" "" prefix_from_pkgconfig ${prefix_from_pkgconfig})
    file(RELATIVE_PATH includes_from_pkgconfig ${pkgconfig} ${CMAKE_INSTALL_FULL_INCLUDEDIR})
    configure_file(${PROJECT_SOURCE_DIR}/cmake/${name}.pc.in ${name}.pc @ONLY)
    install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${name}.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig ${ARGN})
endfunction()
