# What makes errors in memory hard to exploit, for all that is installed: a stack protector, checks of the
# C library on the sizes of buffers, and tables of addresses that are read-only before the first call. Each
# option is used if compiler and linker accept it. tests/house/hardening.py checks the results.
include(CheckCXXCompilerFlag)
include(CheckLinkerFlag)

add_library(ravolt_hardening INTERFACE)
check_cxx_compiler_flag(-fstack-protector-strong RAVOLT_STACK_PROTECTOR)
# Sanitizers have checks of their own, and a distribution chooses its level. Those of sizes need optimization.
if(NOT RAVOLT_INSTRUMENTED)
    if(RAVOLT_STACK_PROTECTOR AND NOT CMAKE_CXX_FLAGS MATCHES "-fstack-protector")
        target_compile_options(ravolt_hardening INTERFACE -fstack-protector-strong)
    endif()
    if(NOT CMAKE_CXX_FLAGS MATCHES "_FORTIFY_SOURCE")
        target_compile_options(ravolt_hardening INTERFACE
            $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE> # some compilers set a level
            $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-D_FORTIFY_SOURCE=2>)
    endif()
endif()
foreach(keyword relro now noexecstack)
    check_linker_flag(CXX LINKER:-z,${keyword} RAVOLT_LINKER_${keyword})
    if(RAVOLT_LINKER_${keyword})
        target_link_options(ravolt_hardening INTERFACE LINKER:-z,${keyword})
    endif()
endforeach()

# Names that the linker adds are not exported from the library.
set(RAVOLT_EXPORTS ${CMAKE_CURRENT_LIST_DIR}/exports.map)
check_linker_flag(CXX LINKER:--version-script=${RAVOLT_EXPORTS} RAVOLT_VERSION_SCRIPT)
function(ravolt_exports_interface_only target)
    if(RAVOLT_VERSION_SCRIPT)
        target_link_options(${target} PRIVATE LINKER:--version-script=${RAVOLT_EXPORTS})
        set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${RAVOLT_EXPORTS})
    endif()
endfunction()
