# What an app brings along is all there, finds itself wherever it is put, and is enough to build and to start a host.
# The host is alone: nobody's desktop shows it.
unset(ENV{DISPLAY})
set(ENV{DBUS_SESSION_BUS_ADDRESS} unix:path=${PREFIX}/no-bus)
set(at_home ${PREFIX}-at-home)
file(REMOVE_RECURSE ${PREFIX} ${at_home})

function(run)
    execute_process(COMMAND ${ARGN} OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${at_home} --component runtime)
foreach(file ${LIBRARY} ${BUNDLE}/Paneweld ${BUNDLE}/Resources/Info.plist ${BUNDLE}/Resources/MailHandlers.scpt
        ${BUNDLE}/Resources/en.lproj/Localizable.strings)
    if(NOT EXISTS ${at_home}/${file})
        message(SEND_ERROR "${file} is not installed")
    endif()
endforeach()

file(READ_ELF ${at_home}/${BUNDLE}/Paneweld RUNPATH folders)
if(NOT folders STREQUAL "\$ORIGIN/..")
    message(SEND_ERROR "the plug-in looks for its library in ${folders}")
endif()
file(READ_ELF ${at_home}/${LIBRARY} RUNPATH others)
if(others)
    message(SEND_ERROR "the library looks for others in ${others}")
endif()

# Elsewhere than it was installed to, as in a package that is unpacked somewhere.
run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${at_home} --component development)
file(RENAME ${at_home} ${PREFIX})
run(${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR} -B ${PREFIX}/stranger -DCMAKE_PREFIX_PATH=${PREFIX}
    -DCMAKE_CXX_COMPILER=${COMPILER})
run(${CMAKE_COMMAND} --build ${PREFIX}/stranger)
run(${PREFIX}/stranger/stranger ${PREFIX}/${BUNDLE})

# The same for those who build with other tools.
cmake_path(GET LIBRARY PARENT_PATH libraries)
set(ENV{PKG_CONFIG_PATH} ${PREFIX}/${libraries}/pkgconfig)
execute_process(COMMAND pkg-config --cflags --libs paneweld OUTPUT_VARIABLE words COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(words UNIX_COMMAND "${words} -Wl,-rpath,${PREFIX}/${libraries}")
run(${COMPILER} -std=c++20 ${CMAKE_CURRENT_LIST_DIR}/stranger.cpp -o ${PREFIX}/other-stranger ${words})
run(${PREFIX}/other-stranger ${PREFIX}/${BUNDLE})
