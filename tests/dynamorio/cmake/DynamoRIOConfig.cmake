# What find_package(DynamoRIO) gives a client's build, over the declarations next door and without libraries: the library
# that comes out can't be run, but it is configured, compiled and linked as it is with an installation. This file does to
# a target what the installed one does, above all that it overwrites flags.
if(NOT CMAKE_C_COMPILER_LOADED)
    message(FATAL_ERROR "DynamoRIO needs the C language enabled")
endif()

set(DynamoRIO_FOUND TRUE)
set(DynamoRIO_declarations ${CMAKE_CURRENT_LIST_DIR}/../include)
set(DynamoRIO_definitions "-DLINUX -DARM_64 -DUSE_VISIBILITY_ATTRIBUTES -DPUBLISHED_VERSION=${OSTREL_PUBLISHED_VERSION}")

# The flags of the whole directory are put aside.
macro(DynamoRIO_blank_flags scope)
    foreach(language C CXX)
        foreach(variable CMAKE_${language}_FLAGS CMAKE_${language}_FLAGS_DEBUG CMAKE_${language}_FLAGS_RELEASE
                         CMAKE_${language}_FLAGS_RELWITHDEBINFO)
            set(ORIG_${variable} "${${variable}}" ${scope})
            set(${variable} "" ${scope})
        endforeach()
    endforeach()
endmacro()

function(configure_DynamoRIO_client target)
    DynamoRIO_blank_flags(PARENT_SCOPE)
    set_target_properties(${target} PROPERTIES COMPILE_FLAGS "${DynamoRIO_definitions}" LINK_FLAGS "-Wl,-z,now"
                          INCLUDE_DIRECTORIES ${DynamoRIO_declarations})
    get_target_property(sources ${target} SOURCES)
    set_source_files_properties(${sources} PROPERTIES COMPILE_FLAGS -fno-stack-protector)
    target_link_libraries(${target} dl)
endfunction()

function(use_DynamoRIO_extension target extension)
    if(NOT extension MATCHES "^(drmgr|drreg|droption)$")
        message(FATAL_ERROR "there is no extension ${extension}")
    endif()
    if(extension STREQUAL droption)
        set_property(TARGET ${target} APPEND_STRING PROPERTY COMPILE_FLAGS " -std=c++17")
    endif()
    target_link_libraries(${target} m)
endfunction()
