# A room is a folder of the tree with a target of its own. The targets are object libraries: each compiles alone, with
# the same warnings, and all of them are gathered into the library or the plug-in.

function(paneweld_warnings target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion
        -Wnon-virtual-dtor -Woverloaded-virtual)
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
        # GCC 12 sees overlapping copies in std::string's operator+ when it optimises (GCC bug 105651).
        target_compile_options(${target} PRIVATE -Wno-restrict)
    endif()
    if(PANEWELD_WERROR)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
endfunction()

# paneweld_room(name DIR folder [ONLY stem...] [EXCEPT stem...] [NEEDS room...] [LIBRARIES target...])
function(paneweld_room name)
    cmake_parse_arguments(ROOM "" "DIR" "ONLY;EXCEPT;NEEDS;LIBRARIES" ${ARGN})
    file(GLOB sources CONFIGURE_DEPENDS ${ROOM_DIR}/*.cpp)
    file(GLOB headers CONFIGURE_DEPENDS ${ROOM_DIR}/*.h ${ROOM_DIR}/*.hpp)
    foreach(list sources headers)
        foreach(file ${${list}})
            cmake_path(GET file STEM LAST_ONLY stem)
            if((ROOM_ONLY AND NOT stem IN_LIST ROOM_ONLY) OR stem IN_LIST ROOM_EXCEPT)
                list(REMOVE_ITEM ${list} ${file})
            endif()
        endforeach()
    endforeach()

    if(sources)
        add_library(${name}_room OBJECT ${sources})
        set(kind PUBLIC)
        paneweld_warnings(${name}_room)
    else()
        add_library(${name}_room INTERFACE)
        set(kind INTERFACE)
    endif()
    target_include_directories(${name}_room ${kind} ${CMAKE_SOURCE_DIR} ${CMAKE_SOURCE_DIR}/host)
    foreach(need ${ROOM_NEEDS})
        # An object library passes on include folders and libraries only; its objects are gathered once, at the end.
        target_link_libraries(${name}_room ${kind} ${need}_room)
    endforeach()
    target_link_libraries(${name}_room ${kind} ${ROOM_LIBRARIES})
    if(headers)
        target_sources(${name}_room ${kind} FILE_SET interface TYPE HEADERS BASE_DIRS ${CMAKE_SOURCE_DIR} FILES ${headers})
        set_target_properties(${name}_room PROPERTIES VERIFY_INTERFACE_HEADER_SETS ON)
    endif()
endfunction()

# paneweld_gather(target room...): the objects and the libraries of the rooms become part of the target.
function(paneweld_gather target)
    foreach(room ${ARGN})
        target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:${room}_room>)
    endforeach()
endfunction()

# paneweld_copy_tree(target from to [EXCEPT file...]): copies a folder at build time, and again when one of its files
# changes.
function(paneweld_copy_tree target from to)
    cmake_parse_arguments(TREE "" "" "EXCEPT" ${ARGN})
    list(TRANSFORM TREE_EXCEPT PREPEND ${to}/)
    if(TREE_EXCEPT)
        set(drop COMMAND ${CMAKE_COMMAND} -E rm -f ${TREE_EXCEPT})
    endif()
    file(GLOB_RECURSE files CONFIGURE_DEPENDS ${from}/*)
    add_custom_command(OUTPUT ${to}/.copied
        COMMAND ${CMAKE_COMMAND} -E copy_directory ${from} ${to}
        ${drop}
        COMMAND ${CMAKE_COMMAND} -E touch ${to}/.copied
        DEPENDS ${files})
    add_custom_target(${target} ALL DEPENDS ${to}/.copied)
endfunction()
