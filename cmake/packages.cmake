# The Debian packages, written by `cpack` in a build folder whose prefix is /usr: libravolt1,
# libravolt-dev and, with the tool, ravolt-tools. Each is one component of the install rules.
set(RAVOLT_MAINTAINER "Ravolt developers <developers@ravolt.invalid>" CACHE STRING
    "Name and address of who is responsible for the packages")
set(RAVOLT_PACKAGES runtime=libravolt${PROJECT_VERSION_MAJOR} dev=libravolt-dev)
if(RAVOLT_TOOLS)
    list(APPEND RAVOLT_PACKAGES tools=ravolt-tools)
endif()

# The time of all files of the packages, if SOURCE_DATE_EPOCH does not say otherwise.
file(STRINGS cmake/debian/changelog.in signature REGEX "^ -- ")
string(REGEX REPLACE "^ -- .*  " "" RAVOLT_RELEASE_DATE "${signature}")
execute_process(COMMAND date --date=${RAVOLT_RELEASE_DATE} +%s
    OUTPUT_VARIABLE RAVOLT_RELEASE_TIME OUTPUT_STRIP_TRAILING_WHITESPACE)

set(RAVOLT_VIDEO_NOTE "without libmpeg2: no video loads.")
if(RAVOLT_VIDEO)
    set(RAVOLT_VIDEO_NOTE "with RAVOLT_VIDEO=ON, so that the library is linked with libmpeg2,
 which is under the GNU General Public License, version 2 or later (on Debian systems its text is in
 /usr/share/common-licenses/GPL-2). If a program that links such a library is distributed, the program
 as a whole must be licensed under the terms of the GPL, with its source. Packages that are built with
 RAVOLT_VIDEO=OFF contain and need nothing of libmpeg2.")
endif()
foreach(file copyright changelog shlibs complete.cmake repack.cmake)
    configure_file(cmake/debian/${file}.in ${PROJECT_BINARY_DIR}/debian/${file} @ONLY)
endforeach()
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_BINARY_DIR}/debian/complete.cmake)
set(CPACK_POST_BUILD_SCRIPTS ${PROJECT_BINARY_DIR}/debian/repack.cmake)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 0ravolt1) # 1 would be that of a package in Debian
set(CPACK_DEBIAN_PACKAGE_SOURCE ravolt)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${RAVOLT_MAINTAINER})
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_COMPONENTS_ALL)
foreach(package ${RAVOLT_PACKAGES})
    string(REGEX MATCH "^(.*)=(.*)$" matched ${package})
    list(APPEND CPACK_COMPONENTS_ALL ${CMAKE_MATCH_1})
    string(TOUPPER ${CMAKE_MATCH_1} component)
    set(CPACK_DEBIAN_${component}_PACKAGE_NAME ${CMAKE_MATCH_2})
endforeach()

# The first line of each description is the summary; else cpack adds the project's as another one.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")
set(about "Ravolt draws scenes of meshes, lights, particles, terrains, water and
widgets with OpenGL 1.x and its ARB and EXT extensions, in a window of
SDL 1.2.")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
    ${PROJECT_BINARY_DIR}/debian/shlibs ${PROJECT_SOURCE_DIR}/cmake/debian/triggers)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION "real-time 3D graphics engine (shared library)
${about}
.
This package has the shared library that programs need to run.")

set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_DEV_DEPENDS runtime)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "libgl-dev, libsdl1.2-dev")
set(CPACK_DEBIAN_DEV_DESCRIPTION "real-time 3D graphics engine (development files)
${about}
.
This package has what programs need to be built: headers, static
libraries, and files for CMake and pkg-config.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION graphics)
set(CPACK_COMPONENT_TOOLS_DEPENDS runtime)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}) # the library, a component
set(CPACK_DEBIAN_TOOLS_PACKAGE_RECOMMENDS libsdl1.2-compat) # pictures without a display
set(CPACK_DEBIAN_TOOLS_DESCRIPTION "real-time 3D graphics engine (content tool)
${about}
.
This package has the program ravolt, which converts models, makes
terrains and fonts, and shows and draws what the engine loads.")

include(CPack)
