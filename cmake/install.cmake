# What an installed Ravolt consists of: the library, the kit and the recorder for tests, their headers,
# the documents with their pictures, a CMake package and files for pkg-config. tools/CMakeLists.txt adds the
# program and the default font.
# The components are those of the packages: runtime, dev, and tools for what tools/CMakeLists.txt adds.
include(CMakePackageConfigHelpers)
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME dev)

install(TARGETS ravolt ravolt_kit ravolt_kit_core ravolt_testing EXPORT RavoltTargets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT dev)
install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h")
install(DIRECTORY docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR}
    FILES_MATCHING PATTERN "*.md" PATTERN "*.json" PATTERN "*.jpg")
install(EXPORT RavoltTargets NAMESPACE Ravolt::
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Ravolt)

configure_package_config_file(cmake/RavoltConfig.cmake.in
    ${PROJECT_BINARY_DIR}/RavoltConfig.cmake
    INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Ravolt)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/RavoltConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/RavoltConfig.cmake ${PROJECT_BINARY_DIR}/RavoltConfigVersion.cmake
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/Ravolt)

# The relative path from ravolt.pc to the prefix, so that an installed tree may be moved.
file(RELATIVE_PATH RAVOLT_BACK_TO_PREFIX
    ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
# Needed only by a program that links the library statically. As required packages they would have to
# be installed for every program, since pkg-config checks all that it reads.
set(RAVOLT_PRIVATE_LIBRARIES "-lSDL -lGL -lX11 -ltinyxml")
if(RAVOLT_VIDEO)
    string(APPEND RAVOLT_PRIVATE_LIBRARIES " -lmpeg2 -lmpeg2convert")
endif()
foreach(package ravolt ravolt-kit ravolt-testing)
    configure_file(cmake/${package}.pc.in ${PROJECT_BINARY_DIR}/${package}.pc @ONLY)
    install(FILES ${PROJECT_BINARY_DIR}/${package}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
