# Writes a C++ header from GLSL files: one array of characters for each, named as its file.
#
#     cmake -D "SHADERS=a.glsl;b.glsl" -D HEADER=shaderSources.h -P embedShaders.cmake
#
# Comments are removed, since a driver would read them at each start; their lines become empty, so that
# the line numbers in a driver's messages are those of the file.

set(header "#pragma once\n\n// Made from resources/shaders/*.glsl by cmake/embedShaders.cmake.\n\n")
string(APPEND header "namespace ravolt::glsl {\n")
foreach(shader IN LISTS SHADERS)
    get_filename_component(name ${shader} NAME_WE)
    file(READ ${shader} text)
    string(REGEX REPLACE "[ \t]*//[^\n]*" "" text "${text}")
    string(APPEND header "\nconstexpr char ${name}[] = R\"glsl(${text})glsl\";\n")
endforeach()
string(APPEND header "\n} // namespace ravolt::glsl\n")
file(WRITE ${HEADER} "${header}")
